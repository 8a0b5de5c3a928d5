// The shortest correct host: prints each change of the switch, and what the cache knows once it is complete.
#include <unistd.h>

#include <cstdio>

#include "datacache/DataCache.h"
#include "simulator/vexsim.h"

// Runs on the cache's thread with the cache locked: copy what you keep, throw nothing, wait for nobody.
static void onEvent(DataCacheEvent* event) {
    if (event->type == DCEventDataCacheUpdateComplete::TYPE) return;  // its name means nothing
    std::printf("event of type %d about %s\n", static_cast<int>(event->type), event->wwn.tostring().c_str());
}

int main(int argc, char** argv) {
    // On a switch the process brings the real vexlib and needs no file.
    char error[512] = "one argument: the file of the simulated switch";
    if (argc != 2 || vexsim_load_switch(argv[1], error, sizeof error) != 0) {
        std::fprintf(stderr, "%s\n", error);
        return 2;
    }

    DataCache::setSnapshots(true);
    DataCache::init();  // returns when the switch is connected, however long that takes
    DataCache::start(onEvent);

    while (!DataCache::waitReady(60'000)) {
        for (const std::string& problem : DataCache::health().problems())
            std::printf("%s\n", problem.c_str());
    }
    const auto now = DataCache::snapshot();  // never waits for the switch, and never changes
    if (now) {                               // there is memory for it
        std::printf("switch %s has %u power supplies\n", now->localSwitch().switchWwn.tostring().c_str(),
                    unsigned{now->chassis().powerSupplyCount});
    }

    std::fflush(stdout);
    _exit(0);  // the cache's thread never ends, so nothing may be torn down under it
}
