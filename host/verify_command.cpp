#include <chrono>
#include <iostream>

#include "datacache/DataCache.h"
#include "host/areas.h"
#include "host/commands.h"
#include "host/follow.h"

namespace host {

using namespace datacache;

namespace {

/** How long an event may be on its way. */
constexpr std::chrono::seconds kOnTheWay{2};

/** Follows the switch for as long as the user wants. False for a scenario that ended early. */
bool watch(Session& session, const HostRequest& request) {
    if (request.scenario.empty() && request.seconds <= 0) return true;
    session.setUndone("following the switch");
    try {
        Readiness readiness;
        follow(session, request, readiness, [&] {
            session.wait();
            return true;
        });
        return true;
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        return false;
    }
}

/** Reads all that the cache keeps; false when that was not done in time. */
bool readAnew(Session& session, double timeout) {
    DataCache::refreshNow();
    if (!session.waitRead(timeout)) return false;
    readAccounts();
    return DataCache::idle() || session.waitRead(timeout);
}

void awaitEvents(Session& session) {
    const Session::Clock::time_point begin = Session::Clock::now();
    session.setUndone("waiting for events on their way");
    while (!session.interrupted() && Session::Clock::now() - begin < kOnTheWay) session.wait();
}

/** What was found to have changed without an event, and what could not be read. */
Json findings() {
    const Health health = DataCache::health();
    Json differences = Json::array();
    Json stale = Json::array();
    uint32_t changes = 0;
    for (const CacheArea area : kAllCacheAreas) {
        const AreaHealth& found = health[area];
        if (!found.upToDate) stale.push_back(cacheAreaName(area));
        if (found.silentChanges == 0) continue;
        changes += found.silentChanges;
        differences.push_back({{"area", cacheAreaName(area)},
                               {"silentChanges", found.silentChanges},
                               {"foundAt", timeOf(found.lastSilentChange)},
                               {"firstDifference", found.silentChange}});
    }
    return {
        {"area", "verify"}, {"silentChanges", changes}, {"notUpToDate", stale}, {"differences", differences}};
}

}  // namespace

int verifyCommand(Session& session, const HostRequest& request) {
    if (!session.waitRead(request.timeout)) return EXIT_NOT_DONE;
    readAccounts();
    if (!watch(session, request)) return EXIT_WRONG_INPUT;
    // A difference is known to be silent when the pass after the read has ended without an event that tells
    // of it.
    if (session.interrupted() || !readAnew(session, request.timeout)) return EXIT_NOT_DONE;
    awaitEvents(session);
    if (session.interrupted() || !readAnew(session, request.timeout)) return EXIT_NOT_DONE;
    session.setUndone("showing what was found");
    const Json found = findings();
    session.finish();
    printAreas(std::cout, {found}, request.json);
    for (const Json& area : found["notUpToDate"]) reportStale(area);
    session.setUndone("");
    return found["differences"].empty() && found["notUpToDate"].empty() ? EXIT_DONE : EXIT_NOT_DONE;
}

}  // namespace host
