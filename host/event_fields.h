#pragma once

#include <string>

#include "datacache/DataCacheEvent.h"
#include "host/json_text.h"

/**
 * A cache event as an object of JSON: "type", "class", "wwn" where the event has one, and the class's own
 * fields under their names, in their order. An event of no known class has its type alone.
 */
Json eventFields(const DataCacheEvent& event);

/** The same as one line of text: "DCEventFanRemove wwn=1000001122AABBCC index=3 count=2"; texts are quoted.
 */
std::string eventLine(const DataCacheEvent& event);
std::string eventLine(const Json& fields);
