#pragma once

#include "common/AccessLock.h"
#include "common/LockHolder.h"

namespace datacache {

/**
 * Says for what this thread holds the access lock, from construction to destruction; one inside another where
 * a callback begins something. A mutex of its own, below all others, is held for a few stores.
 */
class LockUse {
  public:
    /** What is said at the moment. */
    struct Now {
        LockHolder holder = LockHolder::Nobody;
        char step[96] = {};  ///< of a session, cut to the field; else empty
    };

    /** `step` may be null. */
    explicit LockUse(LockHolder holder, const char* step = nullptr) DC_REQUIRES(access_lock);
    /** Announces a change, as idle() may have come true. */
    ~LockUse();
    LockUse(const LockUse&) = delete;
    LockUse& operator=(const LockUse&) = delete;

    /** Of the innermost object of the thread that holds the lock. */
    static Now now();

  private:
    Now _outer;
};

}  // namespace datacache
