// A host compiled against these headers; it runs with this library and with one whose records have a field
// more, and prints the same with both. Times and the pace of the passes are left out.
#include <unistd.h>

#include <atomic>
#include <cstdio>

#include "datacache/DataCache.h"
#include "datacache/event_text.h"
#include "simulator/vexsim.h"
#include "zoning/ZoningSession.h"

using namespace datacache;

namespace {

std::atomic<bool> editing{false};  // what an edit causes comes at any time

void onEvent(DataCacheEvent* event) {
    if (!editing && event->type != DCEventDataCacheUpdateComplete::TYPE)
        std::printf("%s\n", eventText(*event).c_str());
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

void show(const Snapshot& now) {
    std::printf("snapshot %d %d%d\n", now.isReady(), now.area(CacheArea::Ports).known,
                now.area(CacheArea::Accounts).upToDate);
    std::printf("%u fans, %u slots, %u ports, %zu accounts, %zu zones\n", unsigned{now.chassis().fanCount},
                unsigned{now.blades().slotCount}, unsigned{now.ports().portCount}, now.accounts().size(),
                now.zoning().zones.size());
    for (unsigned port = 0; port < 3; ++port) {
        std::printf("%s %u %s\n", now.localPortName(port).tostring().c_str(),
                    unsigned{now.ports().portStatus[port]}, now.transceivers().mediaVendorSN[port].c_str());
    }
}

void show(const ZoningOutcome& outcome) {
    const ZoningOutcome copy = outcome;
    const ZoningFailure& failure = copy.failure();
    std::printf("%s [%d %u %s %s]\n", copy.text().c_str(), static_cast<int>(copy.status()), copy.code(),
                failure.name.c_str(), failure.held.c_str());
    for (uint32_t i = 0; i < copy.broughtCount(); ++i) {
        std::printf("%s %s %d\n", copy.brought(i).zoneset.c_str(), copy.brought(i).zone.c_str(),
                    copy.brought(i).removedHere);
    }
}

void edit() {
    ZoningSession session = DataCache::zoningSession("later-host");
    show(session.lockOutcome());
    show(session.createZone("later", VEX_ZT_SOFT));
    show(session.createZone("later", VEX_ZT_SOFT));
    show(session.addMemberToZone("nowhere", VEX_ZMT_WWN, "1000001122334455"));
    show(session.removeZoneFromZoneset("production", "backup"));
    show(session.check());
    show(session.commit());
    show(DataCache::zoningSession("later-host").createZoneset("[UberZoneSetKey]"));
}

}  // namespace

int main(int argc, char** argv) {
    char error[512] = "one argument: the file of the simulated switch";
    if (argc != 2 || vexsim_load_switch(argv[1], error, sizeof error) != 0) {
        std::fprintf(stderr, "%s\n", error);
        return 2;
    }
    DataCache::setSnapshots(true);
    DataCache::init();
    DataCache::start(onEvent);
    constexpr uint32_t kPatience_ms = 60000;
    bool good = DataCache::waitReady(kPatience_ms) && DataCache::waitIdle(kPatience_ms);
    show(DataCache::health());
    editing = true;
    edit();
    good = DataCache::waitIdle(kPatience_ms) && good;
    const auto now = DataCache::snapshot();
    if (now) show(*now);
    std::fflush(stdout);
    _exit(good ? 0 : 1);
}
