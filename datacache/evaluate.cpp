#include <utility>

#include "common/LockUse.h"
#include "common/access_holder.h"
#include "common/changes.h"
#include "datacache/AreaRow.h"
#include "datacache/HealthMonitor.h"
#include "datacache/SnapshotPublisher.h"
#include "datacache/readiness.h"
#include "datacache/reports.h"
#include "datacache/wake_ups.h"

using namespace datacache;

namespace {

/** Tells the health that a pass runs, for as long as it lives. */
class PassWatch {
  public:
    PassWatch() DC_REQUIRES(access_lock) : _use(LockHolder::Pass) { HealthMonitor::instance().beginPass(); }
    ~PassWatch() { HealthMonitor::instance().endPass(); }
    PassWatch(const PassWatch&) = delete;
    PassWatch& operator=(const PassWatch&) = delete;

  private:
    const LockUse _use;
};

/** Counts a dispatch for as long as it goes on. */
class DispatchWatch {
  public:
    explicit DispatchWatch(size_t& dispatching) : _dispatching(dispatching) { ++_dispatching; }
    ~DispatchWatch() { --_dispatching; }
    DispatchWatch(const DispatchWatch&) = delete;
    DispatchWatch& operator=(const DispatchWatch&) = delete;

  private:
    size_t& _dispatching;
};

}  // namespace

bool DataCache::evaluateCaches() {
    const PassWatch watch;
    SnapshotPass snapshot(*this);
    cim_log(CIM_LOG_TRACE, "DCACHE: evaluateCaches\n");
    try {
        _drainEventQueue();
        _updateAreas();
    } catch (const char* message) {
        cim_log(CIM_LOG_CRITICAL, "DCACHE: Exception: %s\n", message);
    }

    bool ready = true;
    for (const CacheArea area : kAllCacheAreas) {
        const AreaRow& row = _rowOf(area);
        if (this->*row.ok) continue;
        cim_log(CIM_LOG_TRACE, "%s", row.failed);
        ready = false;
    }
    const bool before = std::exchange(_cacheReady, ready);
    snapshot.publish();
    HealthMonitor::instance().setReady(ready);  // so that whoever waits for it finds the snapshot
    if (ready != before) tellReadiness(ready);
    if (_cacheReady) notify(_callback, DCEventDataCacheUpdateComplete());
    return _cacheReady;
}

void DataCache::_drainEventQueue() {
    // Entries at the front are under dispatch where a callback runs this pass: they stay with the passes
    // around it, and only what stands behind them is taken up.
    while (_eventQueue.size() > _dispatching) {
        const size_t place = _dispatching;
        vex_event_s* event = _eventQueue[place];
        if (event != nullptr) {
            const DispatchWatch watch(_dispatching);
            _vexlibNotificationCB(event);
        }
        // The entry leaves the queue only after its dispatch, so a dispatch that throws sees it again.
        _eventQueue.erase(_eventQueue.begin() + static_cast<std::ptrdiff_t>(place));
        HealthMonitor::instance().dispatched();
        delete event;
    }
}

void DataCache::_updateAreas() {
    for (const CacheArea area : kAllCacheAreas) _readArea(area);
    // A session was committed inside the callback.
    if (_zoningCache._refreshWanted) _markArea(CacheArea::Zoning, {MarkCause::Session});
}

bool DataCache::isCacheReady() {
    const AccessGuard guard;
    return _cacheReady;
}

bool DataCache::waitReady(uint32_t milliseconds) {
    const auto ready = [] { return HealthMonitor::instance().ready(); };
    return holdsAccess() ? ready() : awaitChange(milliseconds, ready);
}

bool DataCache::waitIdle(uint32_t milliseconds) {
    return holdsAccess() ? idle() : awaitChange(milliseconds, idle);
}

void DataCache::setReadinessCallback(void (*callback)(bool ready, void* context), void* context) {
    const AccessGuard guard;
    setReadinessTarget(callback, context);
}

Health DataCache::health() {
    return HealthMonitor::instance().copy();
}

bool DataCache::idle() {
    // Events are asked for before, as one that no longer waits was taken up by a pass, which still shows in
    // the second test; and after, as one may have come while that pass ended.
    HealthMonitor& health = HealthMonitor::instance();
    return health.noEventWaits() && evaluationIdle() && LockUse::now().holder == LockHolder::Nobody &&
           health.noEventWaits();
}
