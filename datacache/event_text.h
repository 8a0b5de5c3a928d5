#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/Wwn.h"
#include "common/export.h"
#include "datacache/DataCacheEvent.h"

namespace datacache {

/** The class of an event by its type code, "DCEventFanRemove"; "?" for a code that no class has. */
DC_EXPORT const char* eventName(int32_t type);

/** Takes the fields of one event, each under its name; what it is handed lives for the call alone. */
class EventFields {
  public:
    virtual ~EventFields() = default;
    virtual void name(const char* field, const Wwn& value) = 0;
    virtual void flag(const char* field, bool value) = 0;
    virtual void number(const char* field, uint16_t value) = 0;
    virtual void text(const char* field, const std::string& value) = 0;
    virtual void list(const char* field, const std::vector<unsigned short>& value) = 0;
};

/**
 * Hands over an event's fields in their order: "wwn", where the event has one that means something, then
 * those of its class. Nothing for a type code that no class has.
 */
DC_EXPORT void visitFields(const DataCacheEvent& event, EventFields& fields);

/**
 * An event as one line without its end: "DCEventFanRemove wwn=1000001122AABBCC index=3 count=2". Texts are
 * quoted, and in them quotes, backslashes and all that is not printable ASCII are escaped.
 */
DC_EXPORT std::string eventText(const DataCacheEvent& event);

}  // namespace datacache
