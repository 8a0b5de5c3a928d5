#pragma once

#include <chrono>
#include <cstdint>

#include "common/export.h"
#include "vexlib/vexlib.h"

namespace datacache {

/** A call of the switch library that has not returned. Plain data, every text terminated. */
struct PendingCall {
    char call[48] = {};                             ///< the function
    char key[VEX_SML_KEY_SIZE] = {};                ///< the first key or name that it is about, or empty
    uint32_t keys = 0;                              ///< keys that it asks for; 0 where it asks for none
    std::chrono::system_clock::time_point since{};  ///< when it was made
    // New fields are added here, at the end.
};

}  // namespace datacache
