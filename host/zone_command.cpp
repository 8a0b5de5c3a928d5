#include <iostream>

#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/commands.h"
#include "host/staleness.h"
#include "host/zone_session.h"

namespace {

bool zoningUpToDate() {
    const CacheReader cache;
    return upToDate(*cache, "zoning");
}

/** Carries the statements out; returns whether all were done. */
bool edit(Session& session, const HostRequest& request) {
    if (!zoningUpToDate()) {
        std::cerr << "datacache-host: no statement carried out: what the cache has is not the switch's zoning"
                  << std::endl;
        return false;
    }
    ZoneSession zoning(session);
    bool done =
        carryOut(session, request, [&](const Statement& statement) { return zoning.carryOut(statement); });
    if (zoning.locked()) {  // nobody is to wait for a lock that this process takes to its grave
        printOutcome("abandon", zoning.carryOut({ZONE_UNLOCK, {}, ""}), request.json);
        done = false;
    }
    if (session.interrupted()) return false;
    session.setUndone("showing the zoning");
    {
        const CacheReader cache;
        cache->reloadZoning();  // what the switch has now, not what was edited here
    }
    return session.waitRead(request.timeout) && done;
}

}  // namespace

int zoneCommand(Session& session, const HostRequest& request) {
    if (!session.waitRead(request.timeout)) return EXIT_NOT_DONE;
    const bool done = edit(session, request);
    if (session.interrupted()) return EXIT_NOT_DONE;
    session.setUndone("showing the zoning");
    const std::vector<Json> areas = readAreas("zoning");
    session.finish();
    const bool good = printAreas(std::cout, areas, request.json);
    session.setUndone("");
    return done && good ? EXIT_DONE : EXIT_NOT_DONE;
}
