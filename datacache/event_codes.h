#pragma once

#include <array>
#include <cstdint>

#include "vexlib/vexlib.h"

namespace datacache {

/** The codes that the cache registers for, in the order of registration, results 0. */
using EventRegistrations = std::array<vex_eventreg_s, 28>;
EventRegistrations eventRegistrations();

/** A code's printed name; "VEX_EVENT_OTHER" for codes without one. */
const char* eventCodeName(int32_t code);

/** Whether a notification with this code is queued; all others are logged and dropped. */
bool isQueuedEvent(int32_t code);

}  // namespace datacache
