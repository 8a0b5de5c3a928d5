#pragma once

#include <ostream>

#include "host/json_text.h"

/**
 * The fabric as a graph: its "name", its "switches" with "domain", "wwn", "local", "principal" and "ports"
 * (each an "index" and, on the local switch, a CIM "status"), its "links" between domains ("from", "to",
 * "port"), and how far to trust it: the areas of the cache that are "notUpToDate", and whether it is
 * "complete". Takes the access lock and reads the links from the switch.
 */
Json fabricGraph();

/** Writes such a graph as Graphviz DOT, for `dot`. */
void writeDot(std::ostream& out, const Json& graph);
