#pragma once

#include <string>
#include <vector>

#include "datacache/DataCache.h"

/** Whether the area's last read succeeded and nothing has marked it for another one since. */
bool upToDate(const DataCache& cache, const std::string& area) DC_REQUIRES(access_lock);

/** The areas whose last read failed, in the order in which a pass reads them. */
std::vector<std::string> staleAreas(const DataCache& cache) DC_REQUIRES(access_lock);

/** Why the area is not up to date, for a person: "chassis is not up to date (...)". */
std::string staleReason(const std::string& area);

/** Names with commas. */
std::string listed(const std::vector<std::string>& names);
