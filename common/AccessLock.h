#pragma once

#include <pthread.h>

#include "common/export.h"
#include "common/thread_annotations.h"

/**
 * The access lock: one recursive mutex that guards all that the cache holds, zoning included.
 *
 * A holder may call anything of the cache. It is held for a whole evaluation pass, the host callback
 * included. Order: the access lock, then the evaluation signal's mutex, then the health's, then the log's.
 *
 * DataCache::init() initialises the mutex. Until then it is a recursive mutex as well, so that a host that
 * asks too early gets a null instance and not a deadlock.
 */
extern DC_EXPORT pthread_mutex_t access_mutex;
extern DC_EXPORT pthread_mutexattr_t access_mutex_attr;

/** Stands for `access_mutex` in thread-safety annotations. */
extern LockToken access_lock;

namespace datacache {

/** Lock and unlock `access_mutex`, and note since when it is held. Every lock has its unlock on its thread.
 * Hosts call DataCache::getInstance() and releaseInstance(), or make a CacheReader. */
DC_EXPORT void lockAccess() DC_ACQUIRE(access_lock);
DC_EXPORT void unlockAccess() DC_RELEASE(access_lock);

/** Holds the access lock for a scope; the one way to take it inside the library. */
class DC_SCOPED_CAPABILITY AccessGuard {
  public:
    AccessGuard() DC_ACQUIRE(access_lock) { lockAccess(); }
    ~AccessGuard() DC_RELEASE() { unlockAccess(); }
    AccessGuard(const AccessGuard&) = delete;
    AccessGuard& operator=(const AccessGuard&) = delete;
};

}  // namespace datacache
