#pragma once

#include "common/cim_log.h"
#include "switchlib/ReadTrace.h"

/** How every loader reports a read that failed; `line` is the number that support staff know the place by. */
inline void logUpdateFailed(const char* function, int line) {
    datacache::ReadTrace::place(function, line);
    cim_log(CIM_LOG_TRACE, "DCACHE: Cache update failed: %s:%s:%d\n", "DataCache", function, line);
}
