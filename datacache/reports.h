#pragma once

#include "common/cim_log.h"
#include "datacache/DataCacheEvent.h"
#include "switchlib/ReadTrace.h"

namespace datacache {

/** Hands an event to the host, which sees it for the length of the call. A host without a callback gets none.
 */
inline void notify(void (*callback)(DataCacheEvent*), DataCacheEvent&& event) {
    if (callback != nullptr) callback(&event);
}

/** How every loader reports a read that failed; `line` is the number that support staff know the place by. */
inline void logUpdateFailed(const char* function, int line) {
    ReadTrace::place(function, line);
    cim_log(CIM_LOG_TRACE, "DCACHE: Cache update failed: %s:%s:%d\n", "DataCache", function, line);
}

}  // namespace datacache
