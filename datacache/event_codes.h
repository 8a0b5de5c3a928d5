#pragma once

#include <array>
#include <cstdint>

#include "vexlib/vexlib.h"

namespace datacache {

/** Codes that the library has no names for. */
enum UnnamedCode : int32_t {
    EVENT_VOLTAGE_HIGH = 74,
    EVENT_VOLTAGE_LOW = 75,
    EVENT_MEDIA_INSERTED = 76,
    EVENT_MEDIA_REMOVED = 77,
};

/** The codes that the cache registers for, in the order of registration, results 0. */
using EventRegistrations = std::array<vex_eventreg_s, 28>;
EventRegistrations eventRegistrations();

/** A code's printed name; "VEX_EVENT_OTHER" for codes without one. */
const char* eventCodeName(int32_t code);

/** Whether a notification with this code is queued; all others are logged and dropped. */
bool isQueuedEvent(int32_t code);

}  // namespace datacache
