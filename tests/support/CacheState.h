#pragma once

#include <string>
#include <vector>

#include "datacache/Snapshot.h"

/**
 * All that a host can read of the cache, one line for each thing, with its area as the first word ("port 3
 * present 2 ..."). Asks the switch library for the zoning's objects.
 */
std::vector<std::string> cacheState();

/** Expects that the cache's lookups, where all areas are up to date, say what its records say. */
void expectLookups();

/** What cacheState() would have said when the snapshot was published. */
std::vector<std::string> stateOf(const datacache::Snapshot& snapshot);
