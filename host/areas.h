#pragma once

#include <ostream>
#include <string>

#include "datacache/DataCache.h"
#include "host/json_text.h"

/** Prints one area by its name, or "all", as text or as JSON, one area a line. Takes the access lock. */
void showArea(std::ostream& out, const std::string& name, bool json);

/** Prints every area that the cache keeps, less those that are read from the switch when they are shown. */
void showCachedState(std::ostream& out, bool json);

/**
 * Areas of the cache, each as one object of JSON that begins with "area". "upToDate" says whether the area's
 * last read succeeded and nothing has marked it for another one since.
 *
 * The tool is for diagnosis and shows more than the cache's getters tell, so it reads the cache's state
 * itself, under the access lock.
 */
Json switchArea(DataCache& cache) DC_REQUIRES(access_lock);
Json chassisArea(DataCache& cache) DC_REQUIRES(access_lock);
Json bladesArea(DataCache& cache) DC_REQUIRES(access_lock);
Json portsArea(DataCache& cache) DC_REQUIRES(access_lock);
Json fabricArea(DataCache& cache) DC_REQUIRES(access_lock);
Json zoningArea(DataCache& cache) DC_REQUIRES(access_lock);
/** Reads the accounts anew, which sends the events of those that came and went. */
Json accountsArea(DataCache& cache) DC_REQUIRES(access_lock);
/** Read from the switch, not from the cache. */
Json propertiesArea(DataCache& cache) DC_REQUIRES(access_lock);
Json lsdbArea(DataCache& cache) DC_REQUIRES(access_lock);

/** Zoning as a tree. */
void printZoning(std::ostream& out, const Json& area);
