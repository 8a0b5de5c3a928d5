#pragma once

#include <string>
#include <vector>

/**
 * All that a host can read of the cache, one line for each thing, with its area as the first word ("port 3
 * present 2 ..."). Asks the switch library for the zoning's objects.
 */
std::vector<std::string> cacheState();
