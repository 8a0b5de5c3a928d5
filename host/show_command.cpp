#include <iostream>

#include "host/areas.h"
#include "host/commands.h"
#include "host/domain_list.h"

int showCommand(Session& session, const HostRequest& request) {
    const bool connected =
        isLive(request.area) ? session.waitConnected(request.timeout) : session.waitRead(request.timeout);
    if (!connected) return EXIT_NOT_DONE;
    session.setUndone("showing " + request.area);
    if (request.area == "fabric" || request.area == "all") checkDomainList();
    if (request.area == "accounts" || request.area == "all") readAccounts();
    const std::vector<Json> areas = readAreas(request.area);
    session.finish();
    const bool good = printAreas(std::cout, areas, request.json);
    session.setUndone("");
    return good ? EXIT_DONE : EXIT_NOT_DONE;
}
