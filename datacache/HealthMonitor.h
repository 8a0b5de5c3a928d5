#pragma once

#include <pthread.h>

#include <chrono>

#include "common/thread_annotations.h"
#include "datacache/Health.h"
#include "switchlib/ReadTrace.h"

namespace datacache {

/** The mutex of the monitor, below the access lock and the evaluation signal's mutex. */
extern LockToken healthLock;

/**
 * Keeps the process's Health: the cache tells it what happens, anybody copies it. Its mutex is held for a few
 * stores at a time and nothing is called with it held, so a copy never waits for a pass.
 */
class HealthMonitor {
  public:
    /** The process's own. There is one for all instances of the cache, so that a host may ask before there is
     * one. */
    static HealthMonitor& instance();

    Health copy() DC_EXCLUDES(healthLock);
    /** Back to a process that has just begun. */
    void reset() DC_EXCLUDES(healthLock);

    void connecting(int32_t result, bool connected) DC_EXCLUDES(healthLock);
    void mark(CacheArea area) DC_EXCLUDES(healthLock);
    void beginPass() DC_EXCLUDES(healthLock);
    void endPass() DC_EXCLUDES(healthLock);
    /** A notification came; then it is dropped or accepted, which is in the queue by then. */
    void received() DC_EXCLUDES(healthLock);
    void dropped() DC_EXCLUDES(healthLock);
    void accepted() DC_EXCLUDES(healthLock);
    void queued() DC_EXCLUDES(healthLock);
    void dispatched() DC_EXCLUDES(healthLock);
    /** Whether no switch event waits anywhere in the cache. */
    bool noEventWaits() DC_EXCLUDES(healthLock);
    /** Whether a pass could bring an area up to date. */
    bool anyAreaStale() DC_EXCLUDES(healthLock);

    void domainList(bool full) DC_EXCLUDES(healthLock);
    void portEntriesBeyond(uint32_t entries) DC_EXCLUDES(healthLock);
    void switchGivenUp() DC_EXCLUDES(healthLock);
    void localPorts(int64_t beyond) DC_EXCLUDES(healthLock);
    void slots(int64_t beyond) DC_EXCLUDES(healthLock);

  private:
    friend class AreaRead;
    using Clock = std::chrono::steady_clock;

    void beginArea(CacheArea area, bool inPass) DC_EXCLUDES(healthLock);
    void endArea(CacheArea area, bool inPass, bool good, Duration took, const ReadTrace& trace)
        DC_EXCLUDES(healthLock);

    Health _health DC_GUARDED_BY(healthLock);
    Clock::time_point _passBegan DC_GUARDED_BY(healthLock){};
    uint32_t _passCalls DC_GUARDED_BY(healthLock) = 0;
    Duration _slowest DC_GUARDED_BY(healthLock){};  ///< of the areas of the running pass
    CacheArea _slowestArea DC_GUARDED_BY(healthLock) = CacheArea::Switch;
};

/**
 * One read of an area, from construction to destruction, with the trace of its calls. Without done() it
 * counts as one that an exception left.
 */
class AreaRead {
  public:
    AreaRead(CacheArea area, bool inPass);
    ~AreaRead();
    AreaRead(const AreaRead&) = delete;
    AreaRead& operator=(const AreaRead&) = delete;

    /** Takes the loader's result, and gives it back. */
    bool done(bool good);

  private:
    ReadTrace _trace;
    const CacheArea _area;
    const bool _inPass;
    bool _done = false;
    bool _good = false;
    const std::chrono::steady_clock::time_point _began = std::chrono::steady_clock::now();
};

}  // namespace datacache
