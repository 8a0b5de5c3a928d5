#include <iostream>

#include "host/cache_reader.h"
#include "host/commands.h"
#include "host/fabric_graph.h"

int graphCommand(Session& session, const HostRequest& request) {
    if (!session.waitReady(request.timeout)) return EXIT_NOT_DONE;
    Json graph;
    {
        const CacheReader cache;
        graph = fabricGraph(*cache);
    }
    if (request.json) {
        std::cout << jsonLine(graph) << '\n';
    } else {
        writeDot(std::cout, graph);
    }
    return EXIT_DONE;
}
