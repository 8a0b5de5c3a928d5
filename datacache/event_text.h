#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "common/Wwn.h"
#include "common/export.h"
#include "datacache/DataCacheEvent.h"

namespace datacache {

/** The class of an event by its type code, "DCEventFanRemove"; "?" for a code that no class has. */
DC_EXPORT const char* eventName(int32_t type);

/** What the value of an event's field is. Later versions may add more at the end. */
enum class EventFieldKind : uint8_t { Name, Flag, Number, Text, List };

/**
 * One field of an event, as visitFields() shows it; good for that call alone. A host that meets a kind that
 * it does not know, as the library may be newer, shows its words().
 */
class DC_EXPORT EventField {
  public:
    EventField(const EventField&) = delete;
    EventField& operator=(const EventField&) = delete;

    /** The field's name in its class: "portWwn". A constant. */
    const char* label() const;
    EventFieldKind kind() const;
    /** The value as eventText() writes it, whatever its kind. */
    std::string words() const;

    // The value itself; null for a field of another kind.
    const Wwn* name() const;
    const bool* flag() const;
    const uint16_t* number() const;
    const std::string* text() const;
    const std::vector<unsigned short>* list() const;

  private:
    friend class EventFieldMaker;
    DC_HIDDEN EventField(const char* label, EventFieldKind kind, const void* value);
    template <typename Value>
    DC_HIDDEN const Value* as(EventFieldKind kind) const;

    const char* const _label;
    const EventFieldKind _kind;
    const void* const _value;
};

/**
 * Shows an event's fields in their order: "wwn", where the event has one that means something, then those of
 * its class. None for a type code that no class has.
 */
DC_EXPORT void visitFields(const DataCacheEvent& event, const std::function<void(const EventField&)>& visit);

/**
 * An event as one line without its end: "DCEventFanRemove wwn=1000001122AABBCC index=3 count=2". Texts are
 * quoted, and in them quotes, backslashes and all that is not printable ASCII are escaped.
 */
DC_EXPORT std::string eventText(const DataCacheEvent& event);

}  // namespace datacache
