#pragma once

#include <ostream>

#include "datacache/DataCache.h"
#include "host/json_text.h"

/**
 * The fabric as a graph: its "name", its "switches" with "domain", "wwn", "local", "principal" and "ports"
 * (each an "index" and, on the local switch, a CIM "status"), and its "links" between domains ("from", "to",
 * "port").
 */
Json fabricGraph(DataCache& cache) DC_REQUIRES(access_lock);

/** Writes such a graph as Graphviz DOT, for `dot`. */
void writeDot(std::ostream& out, const Json& graph);
