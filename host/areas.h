#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "datacache/DataCache.h"
#include "host/json_text.h"

/** Whether what the area shows comes from the switch when it is shown, and needs no cache. */
bool isLive(const std::string& area);

/** Reads the accounts, which the cache does only for its host; sends the events of those that came and went.
 */
void readAccounts();

/** Reads areas: one by its name, "all", or "cached" for those that the cache keeps. */
std::vector<Json> readAreas(const std::string& names);

/**
 * Prints areas, as text or as JSON, one area a line. Names on standard error those that are not up to date,
 * and returns whether there are none.
 */
bool printAreas(std::ostream& out, const std::vector<Json>& areas, bool json);

/** Names an area that is not up to date on standard error, with the reason. */
void reportStale(const std::string& area);

/**
 * Areas of the cache, each as one object of JSON that begins with "area". "upToDate" says whether the area's
 * last read succeeded and nothing has marked it for another one since.
 *
 * The tool is for diagnosis and shows more than the cache's getters tell, so it reads the cache's state
 * itself; each takes the access lock.
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

/** Zoning as a tree. */
void printZoning(std::ostream& out, const Json& area);

/**
 * Prints an area of the cache for a person.
 *
 * An area is an object: its "area" is the heading; a list of objects becomes a table whose columns are the
 * fields of its rows, and every other field a line of name and value. Names in camelCase are printed as
 * words.
 */
void printArea(std::ostream& out, const Json& area);

/** A name in camelCase as words: "powerSupplies" becomes "power supplies". */
std::string wordsOf(const std::string& name);

/**
 * Reads the switch's list of domains and warns, once, when it fills its value: the cache then knows a part of
 * the fabric only.
 */
void checkDomainList();

/** Whether that was so at the last check. */
bool domainListFilled();

/** Reads one key from the switch, past the cache; nothing when the switch does not give it. */
std::optional<std::string> readKey(const std::string& key);

/** Whether the area's last read succeeded and nothing has marked it for another one since. */
bool upToDate(const DataCache& cache, const std::string& area) DC_REQUIRES(access_lock);

/** The areas whose last read failed, in the order in which a pass reads them. */
std::vector<std::string> staleAreas(const DataCache& cache) DC_REQUIRES(access_lock);

/** Why the area is not up to date, for a person: "chassis is not up to date (...)". */
std::string staleReason(const std::string& area);

/** Names with commas. */
std::string listed(const std::vector<std::string>& names);
