#include <iostream>

#include "host/areas.h"
#include "host/commands.h"

int showCommand(Session& session, const HostRequest& request) {
    if (!session.waitReady(request.timeout)) return EXIT_NOT_DONE;
    showArea(std::cout, request.area, request.json);
    return EXIT_DONE;
}
