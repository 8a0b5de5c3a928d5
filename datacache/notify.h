#pragma once

#include "datacache/DataCacheEvent.h"

/** Hands an event to the host, which sees it for the length of the call. A host without a callback gets none.
 */
inline void notify(void (*callback)(DataCacheEvent*), DataCacheEvent&& event) {
    if (callback != nullptr) callback(&event);
}
