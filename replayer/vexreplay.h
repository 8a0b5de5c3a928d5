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
    VEXREPLAY_CALL = 0, /**< a call that somebody is to make, or a notification whose time is not come */
    VEXREPLAY_NOTIFICATION = 1, /**< a notification that can be delivered now */
    VEXREPLAY_MAIN = 2,  /**< a call that the process's main thread is to make, once nothing that listens
                            is at work: with the lock that callbacks take, and behind a vexreplay_deliver(),
                            which then delivers what came before the call */
    VEXREPLAY_OVER = 3,  /**< nothing */
    VEXREPLAY_ASIDE = 4, /**< a call of the recorded host's own, that nobody is to make */
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

/** What is to be done around notifications that come together, so that what listens takes them up together:
 * a lock that callbacks take, which must be recursive. Null for nothing, as at first. */
DC_EXPORT void vexreplay_guard(void (*begin)(void), void (*end)(void));

/** Whether the call at `place` has this text among its arguments. */
DC_EXPORT int32_t vexreplay_mentions(uint64_t place, const char* text);

/** Delivers the notification that can be delivered now, and those that came right behind it, on the calling
 * thread. */
DC_EXPORT void vexreplay_deliver(void);

/** Goes past the call at `place`, if that is still the next: nobody makes it. Strictly, that is a mistake and
 * ends the process. */
DC_EXPORT void vexreplay_skip(uint64_t place);

/** From now on nothing is told of calls that were never recorded: the caller sees to that. */
DC_EXPORT void vexreplay_hush(void);

/** At the end of a process that does not run its exit handlers: tells how many calls differed. Strictly, a
 * call that is missing ends the process. */
DC_EXPORT void vexreplay_finish(void);

DC_END_C

#endif
