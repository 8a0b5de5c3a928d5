#pragma once

#include <chrono>

#include "common/LockUse.h"
#include "common/Mutex.h"
#include "datacache/HealthRecord.h"
#include "datacache/SilentChanges.h"
#include "datacache/event_codes.h"
#include "datacache/event_marks.h"
#include "switchlib/ReadTrace.h"

namespace datacache {

/** Why an area is marked; `event` is the code for MarkCause::Event. */
struct MarkReason {
    MarkCause cause = MarkCause::Host;
    int32_t event = 0;
};

/**
 * Keeps the process's Health: the cache tells it what happens, anybody copies it. Its mutex is held for a few
 * stores at a time and nothing is called with it held, so a copy never waits for a pass.
 */
class HealthMonitor {
  public:
    /** The process's own. There is one for all instances of the cache, so that a host may ask before there is
     * one. */
    static HealthMonitor& instance();

    /** Throws std::bad_alloc. */
    Health copy() DC_EXCLUDES(_mutex);
    /** Back to a process that has just begun. */
    void reset() DC_EXCLUDES(_mutex);

    void connecting(int32_t result, bool connected) DC_EXCLUDES(_mutex);
    /** The library's answer to a registration of some codes, or of all; a code that it names as refused
     * before and does not ask for again stays refused. */
    void registered(int32_t result, const EventRegistrations& list, size_t count) DC_EXCLUDES(_mutex);
    /** The codes to register again, in the order of registration; gives their number. */
    size_t refusedCodes(EventRegistrations& list) DC_EXCLUDES(_mutex);
    void limits(bool read, const ReadFailure& failure) DC_EXCLUDES(_mutex);
    bool limitsMissing() DC_EXCLUDES(_mutex);
    void thread(bool made) DC_EXCLUDES(_mutex);

    void mark(CacheArea area, MarkReason reason) DC_EXCLUDES(_mutex);
    void beginPass() DC_EXCLUDES(_mutex);
    /** Whether the pass found every area up to date. */
    void setReady(bool ready) DC_EXCLUDES(_mutex);
    void endPass() DC_EXCLUDES(_mutex);
    /** A notification came; then it is dropped or accepted, which is in the queue by then. */
    void received() DC_EXCLUDES(_mutex);
    void dropped() DC_EXCLUDES(_mutex);
    void accepted() DC_EXCLUDES(_mutex);
    void queued() DC_EXCLUDES(_mutex);
    void dispatched() DC_EXCLUDES(_mutex);
    /** An event says what has changed; a difference that a read finds there is no surprise. */
    void announced(const EventMarks& marks) DC_EXCLUDES(_mutex);
    /** A read found these differences. */
    void found(CacheArea area, const Difference& difference) DC_EXCLUDES(_mutex);

    /** Whether no switch event waits anywhere in the cache. */
    bool noEventWaits() DC_EXCLUDES(_mutex);
    /** Whether a pass could bring an area up to date. */
    bool anyAreaStale() DC_EXCLUDES(_mutex);
    /** Whether the last pass found every area up to date. */
    bool ready() DC_EXCLUDES(_mutex);

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
    HealthRecord _record DC_GUARDED_BY(_mutex);
    SilentChanges _silent DC_GUARDED_BY(_mutex);
    uint32_t _passesUnderWay DC_GUARDED_BY(_mutex) = 0;  ///< more than 1 where a callback runs a pass
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
