#pragma once

#include <cstddef>

#include "common/thread_annotations.h"

namespace datacache {

// How tests see the log, and keep it out of /tmp.

/** The log mutex, the library's innermost lock: held while a line is written and around a fork. */
extern LockToken logLock;

/**
 * Sees each finished line after it was written: `length` bytes, prefix included, whose message begins at
 * `message` (0 to length). Called with the log mutex held; it must not log, and must not keep `line`, which
 * is not necessarily terminated by a line feed but always by a zero byte at line[length].
 */
using LogObserver = void (*)(void* context, unsigned int level, const char* line, std::size_t length,
                             std::size_t message);

/** Moves the process's log to two other paths, which are not copied, or with null to nowhere. */
void redirectLog(const char* mainPath, const char* criticalPath) DC_EXCLUDES(logLock);

/** Observes the process's log, until null is set; the observer before is not called any more. */
void observeLog(LogObserver observer, void* context) DC_EXCLUDES(logLock);

}  // namespace datacache
