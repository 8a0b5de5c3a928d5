#pragma once

#include <string>

#include "datacache/DataCache.h"
#include "host/json_text.h"

/**
 * The zoning database as JSON: the zonesets in the cache's order, each with its zones and their members; the
 * uber zoneset, which holds every zone and every alias, with its aliases too.
 */
Json zonesetsOf(ZoningCache& zoning) DC_REQUIRES(access_lock);
