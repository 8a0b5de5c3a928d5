#pragma once

#include <chrono>
#include <cstdint>

#include "common/export.h"
#include "vexlib/vexlib.h"

namespace datacache {

/** Why a read of the switch did not give what it was for. */
enum class ReadFault : uint8_t {
    None,        ///< nothing failed
    CallFailed,  ///< the library refused the call as a whole: `status` is its result
    KeyFailed,   ///< the call was carried out, one key of it was not: `status` is the key's
    BadValue,    ///< the switch answered `key` with something that cannot be used
    NoEnd,       ///< a list went on after the longest one that there can be, at `key`
    Exception,   ///< the load was left by an exception; `key` holds its text
};

/**
 * One failure of a read, as plain data: every text is terminated and cut to its field, so that noting one
 * takes no memory.
 */
struct ReadFailure {
    ReadFault fault = ReadFault::None;
    std::chrono::system_clock::time_point time{};  ///< when it was noted; the epoch where nothing failed
    char call[48] = {};                            ///< the function of the switch library
    char key[VEX_SML_KEY_SIZE] = {};  ///< the key that failed; of a call that failed its first key or name
    uint32_t keys = 0;                ///< keys that the call asked for; 0 where it asks for none
    int32_t status = 0;               ///< the key's status or the call's result
    char function[48] = {};           ///< where the log says "Cache update failed: DataCache:FUNCTION:LINE";
    int line = 0;                     ///< empty and 0 where it has no such line
};

}  // namespace datacache
