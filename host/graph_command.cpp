#include <iostream>

#include "host/areas.h"
#include "host/commands.h"
#include "host/domain_list.h"
#include "host/fabric_graph.h"

int graphCommand(Session& session, const HostRequest& request) {
    if (!session.waitRead(request.timeout)) return EXIT_NOT_DONE;
    session.setUndone("writing the graph");
    checkDomainList();
    const Json graph = fabricGraph();
    session.finish();
    if (request.json) {
        std::cout << jsonLine(graph) << '\n';
    } else {
        writeDot(std::cout, graph);
    }
    session.setUndone("");
    for (const Json& area : graph["notUpToDate"]) reportStale(area);
    return graph["notUpToDate"].empty() ? EXIT_DONE : EXIT_NOT_DONE;
}
