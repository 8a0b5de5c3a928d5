#pragma once

#include <cstdint>

#include "common/export.h"

namespace datacache {

/** What a number of the cache's records stands for. */
enum class CimValue : uint8_t {
    OperationalStatus,  ///< DMTF CIM schema, CIM_ManagedSystemElement; 32768 and 32769 are this system's own
    PortType,           ///< the switch's own letters for it
    PortHardwareType,
    HardwareStatus,  ///< of a fan or a power supply
    ComponentKind,   ///< BladeState::kind
    TransceiverFormat,
    MemberType,  ///< of a zone's or an alias's member
    ZoneType,
    EventType,    ///< DataCacheEvent::type: the class's name
    SwitchEvent,  ///< vex_eventcode_e: its name; "VEX_EVENT_OTHER" for a value that has none
};

/** The word for a value, as people read it; "?" for a value that has none. A constant: nobody's to free. */
DC_EXPORT const char* cimWord(CimValue what, uint32_t value);

}  // namespace datacache
