#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "common/Mutex.h"

namespace vexreplay {

/**
 * The pointers that the replayer hands out, and what they stand for.
 *
 * Objects are opaque, so their pointers are made up from their numbers, lead nowhere, and are good for ever:
 * a caller may destroy an object twice. Texts are real memory.
 */
class Handles {
  public:
    static constexpr uint64_t kUnknown = UINT64_MAX; /**< a pointer that was never handed out */

    /** Forgets which objects have ended; texts that are out can still be released. */
    void restart() DC_EXCLUDES(_mutex);

    /** The pointer of an object; null for 0. */
    void* object(uint64_t number) DC_EXCLUDES(_mutex);
    uint64_t numberOf(const void* object) const;
    /** Notes the end of an object; false when it has ended before. */
    bool destroy(uint64_t number) DC_EXCLUDES(_mutex);

    /** A copy of a text that becomes the caller's; null without memory. */
    char* text(uint64_t number, const std::string& bytes) DC_EXCLUDES(_mutex);
    uint64_t numberOfText(void* memory) DC_EXCLUDES(_mutex);
    /** Frees a text; false, and nothing freed, for any other pointer. */
    bool release(void* memory) DC_EXCLUDES(_mutex);

  private:
    datacache::Mutex _mutex;
    std::unordered_set<uint64_t> _ended DC_GUARDED_BY(_mutex);
    std::unordered_map<void*, uint64_t> _texts DC_GUARDED_BY(_mutex);
};

}  // namespace vexreplay
