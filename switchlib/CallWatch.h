#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

#include "switchlib/PendingCall.h"

namespace datacache {

/** How the calls to the switch library end: a library whose connection is gone refuses them all. */
struct CallResults {
    uint32_t failuresInARow = 0;  ///< calls that were refused as a whole since the last one that was not
    int32_t lastResult = 0;       ///< of the last one refused
    std::chrono::system_clock::time_point failingSince{};  ///< the first of the row
};

/**
 * Stands beside one call of the switch library, on the caller's stack, from before the call until after it,
 * so that anybody can ask meanwhile which calls have not returned. The texts must live as long as the object.
 * Takes no memory; its mutex is held for a few stores, with nothing called meanwhile.
 */
class CallWatch {
  public:
    explicit CallWatch(const char* call, const char* key = nullptr, uint32_t keys = 0);
    ~CallWatch();
    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

    /** Takes the call's result, 0 for a call that was carried out, and gives it back. */
    int32_t done(int32_t result);

    /** Copies the calls under way, the oldest first, at most `most` of them. Returns their number. */
    static size_t pending(PendingCall* calls, size_t most);
    static CallResults results();
    /** Back to a process that has made no call. */
    static void reset();

  private:
    const char* const _call;
    const char* const _key;
    const uint32_t _keys;
    const std::chrono::system_clock::time_point _since = std::chrono::system_clock::now();
    CallWatch* _older = nullptr;  ///< these two under the mutex
    CallWatch* _newer = nullptr;
};

}  // namespace datacache
