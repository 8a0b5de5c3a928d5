#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_set>

#include "simulator/Mutex.h"

namespace vexsim {

/** The texts that vex_smlGet handed out and that nobody has released yet. */
class TextHeap {
  public:
    /** A copy on the C heap, which its receiver releases with vex_libFreeMemory; null when memory is short.
     */
    char* give(const std::string& text) DC_EXCLUDES(_mutex);
    /** Frees what give() returned, and tells it; nothing for any other pointer, which is left alone. */
    std::optional<std::string> take(void* memory) DC_EXCLUDES(_mutex);

    size_t live() const DC_EXCLUDES(_mutex);
    /** Counts from 0 again; texts handed out before can still be released. */
    void restartCounts() DC_EXCLUDES(_mutex);

  private:
    mutable Mutex _mutex;
    std::unordered_set<void*> _texts DC_GUARDED_BY(_mutex);
    std::unordered_set<void*> _earlier DC_GUARDED_BY(_mutex);
};

}  // namespace vexsim
