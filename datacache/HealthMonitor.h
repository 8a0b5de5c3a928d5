#pragma once

#include <chrono>

#include "common/Mutex.h"
#include "datacache/Health.h"
#include "switchlib/ReadTrace.h"

namespace datacache {

/**
 * Keeps the process's Health: the cache tells it what happens, anybody copies it. Its mutex is held for a few
 * stores at a time and nothing is called with it held, so a copy never waits for a pass.
 */
class HealthMonitor {
  public:
    /** The process's own. There is one for all instances of the cache, so that a host may ask before there is
     * one. */
    static HealthMonitor& instance();

    Health copy() DC_EXCLUDES(_mutex);
    /** Back to a process that has just begun. */
    void reset() DC_EXCLUDES(_mutex);

    void connecting(int32_t result, bool connected) DC_EXCLUDES(_mutex);
    void mark(CacheArea area) DC_EXCLUDES(_mutex);
    void beginPass() DC_EXCLUDES(_mutex);
    void endPass() DC_EXCLUDES(_mutex);
    /** A notification came; then it is dropped or accepted, which is in the queue by then. */
    void received() DC_EXCLUDES(_mutex);
    void dropped() DC_EXCLUDES(_mutex);
    void accepted() DC_EXCLUDES(_mutex);
    void queued() DC_EXCLUDES(_mutex);
    void dispatched() DC_EXCLUDES(_mutex);
    /** Whether no switch event waits anywhere in the cache. */
    bool noEventWaits() DC_EXCLUDES(_mutex);
    /** Whether a pass could bring an area up to date. */
    bool anyAreaStale() DC_EXCLUDES(_mutex);

    void domainList(bool full) DC_EXCLUDES(_mutex);
    void portEntriesBeyond(uint32_t entries) DC_EXCLUDES(_mutex);
    void switchGivenUp() DC_EXCLUDES(_mutex);
    void localPorts(int64_t beyond) DC_EXCLUDES(_mutex);
    void slots(int64_t beyond) DC_EXCLUDES(_mutex);

  private:
    friend class AreaRead;
    using Clock = std::chrono::steady_clock;

    void beginArea(CacheArea area, bool inPass) DC_EXCLUDES(_mutex);
    void endArea(CacheArea area, bool inPass, bool good, Duration took, const ReadTrace& trace)
        DC_EXCLUDES(_mutex);

    Mutex _mutex;  ///< below the access lock and the evaluation signal's mutex
    Health _health DC_GUARDED_BY(_mutex);
    Clock::time_point _passBegan DC_GUARDED_BY(_mutex){};
    uint32_t _passCalls DC_GUARDED_BY(_mutex) = 0;
    Duration _slowest DC_GUARDED_BY(_mutex){};  ///< of the areas of the running pass
    CacheArea _slowestArea DC_GUARDED_BY(_mutex) = CacheArea::Switch;
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
