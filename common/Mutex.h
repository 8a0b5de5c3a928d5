#pragma once

#include <condition_variable>
#include <mutex>

#include "common/thread_annotations.h"

namespace datacache {

/** A standard mutex that the thread-safety analysis can see. */
class DC_CAPABILITY("mutex") Mutex {
  public:
    std::mutex& raw() { return _mutex; }

  private:
    std::mutex _mutex;
};

/** Holds a Mutex for a scope; can wait on a condition meanwhile. */
class DC_SCOPED_CAPABILITY Lock {
  public:
    explicit Lock(Mutex& mutex) DC_ACQUIRE(mutex) : _lock(mutex.raw()) {}
    ~Lock() DC_RELEASE() {}
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    /** For a pause in between; the scope's end is right either way. */
    void unlock() DC_RELEASE() { _lock.unlock(); }
    void lock() DC_ACQUIRE() { _lock.lock(); }

    /** Waits once; as with every condition the caller tests its own and waits again. */
    void wait(std::condition_variable& changed) { changed.wait(_lock); }
    template <class Time>
    std::cv_status waitUntil(std::condition_variable& changed, const Time& time) {
        return changed.wait_until(_lock, time);
    }

  private:
    std::unique_lock<std::mutex> _lock;
};

}  // namespace datacache
