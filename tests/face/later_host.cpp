// A host compiled against these headers; it runs with this library and with one whose records have a field
// more, and prints the same with both. Times and the pace of the passes are left out.
#include <unistd.h>

#include <cstdio>

#include "datacache/DataCache.h"
#include "datacache/event_text.h"
#include "simulator/vexsim.h"

using namespace datacache;

namespace {

void onEvent(DataCacheEvent* event) {
    if (event->type != DCEventDataCacheUpdateComplete::TYPE) std::printf("%s\n", eventText(*event).c_str());
}

void show(const ReadFailure& failure) {
    std::printf(" [%d %s %s %u %d %s %d]", static_cast<int>(failure.fault), failure.call, failure.key,
                failure.keys, failure.status, failure.function, failure.line);
}

void show(const Health& health) {
    const Health copy = health;
    std::printf("well %d, thread %d%d, ready %d, %u refused, limits %d\n", copy.well(),
                copy.passes().threadAsked, copy.passes().threadMade, copy.passes().ready,
                copy.registration().refused, copy.limits().read);
    for (const std::string& problem : copy.problems()) std::printf("%s\n", problem.c_str());
    for (const CacheArea area : kAllCacheAreas) {
        const AreaHealth& one = copy[area];
        std::printf("%s %d%d %u %u %u %u %u %s", cacheAreaName(area), one.upToDate, one.marked, one.failures,
                    one.failuresInARow, one.gaps, one.silentChanges, static_cast<unsigned>(one.markedBy),
                    one.silentChange);
        show(one.lastFailure);
        show(one.firstGap);
        std::printf("\n");
    }
    const EventHealth& events = copy.events();
    std::printf("%u %u %u %d %u\n", events.received - events.queued, events.dropped, events.waiting,
                copy.capacity().complete(), copy.capacity().slotsBeyond);
    std::printf("%u %d %d\n", copy.connection().attempts, copy.connection().connected,
                copy.connection().lastResult);
}

}  // namespace

int main(int argc, char** argv) {
    char error[512] = "one argument: the file of the simulated switch";
    if (argc != 2 || vexsim_load_switch(argv[1], error, sizeof error) != 0) {
        std::fprintf(stderr, "%s\n", error);
        return 2;
    }
    DataCache::init();
    DataCache::start(onEvent);
    constexpr uint32_t kPatience_ms = 60000;
    bool good = DataCache::waitIdle(kPatience_ms);
    show(DataCache::health());
    std::fflush(stdout);
    _exit(good ? 0 : 1);
}
