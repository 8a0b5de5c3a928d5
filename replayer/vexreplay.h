/*
 * The replayer, as a program drives it that loads it itself. Without these functions, which are optional, the
 * environment says what to replay (docs/recording.md), and a thread of the replayer's own delivers the
 * notifications. Valid C and C++.
 */
#ifndef REPLAYER_VEXREPLAY_H
#define REPLAYER_VEXREPLAY_H

#include <stddef.h>
#include <stdint.h>

#include "common/export.h"

DC_BEGIN_C

/** Which calls must be the recorded ones. */
enum {
    VEXREPLAY_LENIENT = 0,
    VEXREPLAY_STRICT = 1,
    VEXREPLAY_STRICT_CACHE = 2, /**< those that the cache makes: not those of the process's main thread, and
                                   of the recorded thread that connected only those that come */
};

/** What the recording has next. */
enum {
    VEXREPLAY_CALL = 0, /**< a call that the cache is to make, or a notification whose time has not come */
    VEXREPLAY_NOTIFICATION = 1, /**< a notification that can be delivered now */
    VEXREPLAY_MAIN = 2,  /**< a call that the process's main thread is to make once the cache is idle. It
                            takes the lock that callbacks take, then calls vexreplay_deliver(), which
                            delivers the notifications before the call, and then makes the call */
    VEXREPLAY_OVER = 3,  /**< nothing */
    VEXREPLAY_ASIDE = 4, /**< a call of the recorded host, which nobody has to make */
};

/**
 * Replays the recording `path` from its begin; `strict` is one of the words above. `speed` is that of the
 * notifications, 1 as recorded, 0 for no waiting at all. From now on the caller delivers them. 0, or -1 with
 * nothing changed and one line of text in `error` (cut to `size` bytes, always terminated; null and 0 where
 * nobody wants it).
 */
DC_EXPORT int32_t vexreplay_open(const char* path, int32_t strict, double speed, char* error, size_t size);

/** What is next, and where in the recording that is; null where nobody wants it. A notification can be
 * delivered when nothing that listens is at work, which the caller knows. */
DC_EXPORT int32_t vexreplay_next(uint64_t* place);

/** Calls `begin` before and `end` after a group of notifications that one pass is to take up. They take and
 * release the lock that callbacks take, which must be recursive. Null, as at first, for no calls. */
DC_EXPORT void vexreplay_guard(void (*begin)(void), void (*end)(void));

/** Whether an argument of the call at `place` contains `text`. */
DC_EXPORT int32_t vexreplay_mentions(uint64_t place, const char* text);

/** Delivers the notification that can be delivered now, and those that came right behind it, on the calling
 * thread. */
DC_EXPORT void vexreplay_deliver(void);

/** Skips the call at `place`, if it is still the next. Strictly, a call that the cache should have made ends
 * the process. */
DC_EXPORT void vexreplay_skip(uint64_t place);

/** Stops the lines on standard error about calls that were never recorded. */
DC_EXPORT void vexreplay_mute(void);

/** At the end of a process that does not run its exit handlers: tells how many calls differed. Strictly, a
 * call that is missing ends the process. */
DC_EXPORT void vexreplay_finish(void);

DC_END_C

#endif
