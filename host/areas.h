#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "datacache/DataCache.h"
#include "datacache/Health.h"
#include "host/json_text.h"

namespace host {

/** Whether what the area shows comes from the switch when it is shown, and needs no cache. */
bool isLive(const std::string& area);

/** Reads the accounts, which the cache does only for its host; sends the events of those that came and went.
 */
void readAccounts();

/** Reads areas: one by its name, "all", or "cached" for those that the cache keeps. */
std::vector<Json> readAreas(const std::string& names);

/**
 * Prints areas, as text or as JSON, one area a line. Names on standard error those that are not up to date,
 * and returns whether there are none, and the health, where it is among them, is well.
 */
bool printAreas(std::ostream& out, const std::vector<Json>& areas, bool json);

/** Names an area that is not up to date on standard error, with the reason. */
void reportStale(const std::string& area);

/**
 * Areas of the cache, each as one object of JSON that begins with "area". "upToDate" says whether the area's
 * last read succeeded and nothing has marked it for another one since.
 * Each takes the access lock.
 */
Json switchArea();
Json chassisArea();
Json bladesArea();
Json portsArea();
Json fabricArea();
Json zoningArea();
/** As read by the last readAccounts(). */
Json accountsArea();
/** Read from the switch, not from the cache. */
Json propertiesArea();
Json lsdbArea();
/** What the cache knows of itself; waits for nothing. "well" takes the place of "upToDate". */
Json healthArea();

/**
 * The fabric as a graph: its "name", its "switches" with "domain", "wwn", "local", "principal" and "ports"
 * (each an "index" and, on the local switch, a CIM "status"), its "links" between domains ("from", "to",
 * "port"), and how far to trust it: the areas of the cache that are "notUpToDate", and whether it is
 * "complete". Takes the access lock and reads the links from the switch.
 */
Json fabricGraph();

/** The fabric's switches, each with "domain", "wwn", "local", "principal" and what `add` adds to it. The
 * caller holds the access lock. */
Json switchesOf(const FabricCache& fabric, const std::function<void(Json&, const SwitchCache&)>& add);

/** Zoning as a tree, and the health with its failures as one line each. */
void printZoning(std::ostream& out, const Json& area);
void printHealth(std::ostream& out, const Json& area);

/**
 * Prints an area of the cache for a person.
 *
 * An area is an object: its "area" is the heading; a list of objects becomes a table whose columns are the
 * fields of its rows, and every other field a line of name and value. Names in camelCase are printed as
 * words.
 */
void printArea(std::ostream& out, const Json& area);

/** Reads one key from the switch, past the cache; nothing when the switch does not give it. */
std::optional<std::string> readKey(const std::string& key);

/** Whether the area's last read succeeded and nothing has marked it for another one since. */
bool upToDate(datacache::CacheArea area);

/** Local time in ISO 8601 to the second; null for never. */
Json timeOf(datacache::WallTime time);

/** The areas that a pass reads and whose last read failed, in the order of a pass. */
std::vector<std::string> staleAreas(const datacache::Health& health);

/** Why the area is not up to date, for a person: "chassis is not up to date: Oper.Chassis.0.Fans has ...". */
std::string staleReason(const std::string& area);

/** Warns on standard error when the switch has more than the cache can hold or the switch can list; again
 * only when the numbers have changed. */
void warnOfCapacity();

/** Names with commas. */
std::string listed(const std::vector<std::string>& names);

}  // namespace host
