#include <iostream>

#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/commands.h"
#include "host/zone_session.h"

int zoneCommand(Session& session, const HostRequest& request) {
    if (!session.waitReady(request.timeout)) return EXIT_NOT_DONE;
    ZoneSession zoning(session);
    bool done =
        carryOut(session, request, [&](const Statement& statement) { return zoning.carryOut(statement); });
    if (zoning.locked()) {  // nobody is to wait for a lock that this process takes to its grave
        printOutcome("abandon", zoning.carryOut({ZONE_UNLOCK, {}, ""}), request.json);
        done = false;
    }
    {
        const CacheReader cache;
        cache->reloadZoning();  // what the switch has now, not what was edited here
    }
    session.waitSettled();
    showArea(std::cout, "zoning", request.json);
    return done ? EXIT_DONE : EXIT_NOT_DONE;
}
