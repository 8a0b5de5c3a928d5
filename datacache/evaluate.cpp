#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/reports.h"

using namespace datacache;

namespace {

/** Tells the health that a pass runs, for as long as it lives. */
class PassWatch {
  public:
    PassWatch() { HealthMonitor::instance().beginPass(); }
    ~PassWatch() { HealthMonitor::instance().endPass(); }
    PassWatch(const PassWatch&) = delete;
    PassWatch& operator=(const PassWatch&) = delete;
};

/** Reads an area; one that failed stays marked, so that the next pass tries it again. */
template <typename Result>
void read(DataCache& cache, CacheArea area, Result (DataCache::*load)(), bool& ok, bool& update) {
    AreaRead read(area, true);
    try {
        ok = read.done((cache.*load)() != Result{});
    } catch (const char* message) {
        ReadTrace::failed(ReadFault::Exception, "", message, 0, 0);
        read.done(false);
        throw;
    }
    if (ok) update = false;
}

void reportFailed(bool ok, const char* name) {
    if (!ok) cim_log(CIM_LOG_TRACE, "DCACHE: %s = false\n", name);
}

}  // namespace

bool DataCache::evaluateCaches() {
    const PassWatch watch;
    cim_log(CIM_LOG_TRACE, "DCACHE: evaluateCaches\n");
    try {
        _drainEventQueue();
        _updateAreas();
    } catch (const char* message) {
        cim_log(CIM_LOG_CRITICAL, "DCACHE: Exception: %s\n", message);
    }

    reportFailed(_switchOK, "_switchOK");
    reportFailed(_chassisOK, "_chassisOK");
    reportFailed(_bladesOK, "_bladesOK");
    reportFailed(_portsOK, "_portsOK");
    reportFailed(_accountsOK, "_accountsOK");
    reportFailed(_fabricOK, "_fabricOK");
    reportFailed(_zoningOK, "_zoningOK");

    _cacheReady = _switchOK && _chassisOK && _bladesOK && _portsOK && _fabricOK && _accountsOK && _zoningOK;
    if (_cacheReady) notify(_callback, DCEventDataCacheUpdateComplete());
    return _cacheReady;
}

void DataCache::_drainEventQueue() {
    while (!_eventQueue.empty()) {
        // The entry leaves the queue only after its dispatch, so a dispatch that throws sees it again.
        vex_event_s* event = _eventQueue.front();
        if (event != nullptr) _vexlibNotificationCB(event);
        _eventQueue.pop_front();
        HealthMonitor::instance().dispatched();
        delete event;
    }
}

void DataCache::_updateAreas() {
    if (_switchUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating switch cache\n");
        read(*this, CacheArea::Switch, &DataCache::_getSwitchInfo, _switchOK, _switchUpdate);
    }
    if (_chassisUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating chassis cache\n");
        read(*this, CacheArea::Chassis, &DataCache::_getChassisInfo, _chassisOK, _chassisUpdate);
    }
    if (_bladesUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating blades cache\n");
        read(*this, CacheArea::Blades, &DataCache::_getBladeInfo, _bladesOK, _bladesUpdate);
    }
    if (_portsUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating ports cache\n");
        read(*this, CacheArea::Ports, &DataCache::_getPortInfo, _portsOK, _portsUpdate);
    }
    // Required: the accounts count as read though no pass reads them, since only the host asks for them.
    _accountsOK = true;
    _accountsUpdate = false;
    if (_fabricUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating fabric cache\n");
        read(*this, CacheArea::Fabric, &DataCache::_getFabricInfo, _fabricOK, _fabricUpdate);
    }
    if (_zoningUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating zoning cache\n");
        read(*this, CacheArea::Zoning, &DataCache::_getZoningInfo, _zoningOK, _zoningUpdate);
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating zoning cache (Done)\n");
        if (_zoningCache._reloadWanted) updateZoning();  // a session ended inside the callback
    }
}

bool DataCache::isCacheReady() {
    const AccessGuard guard;
    return _cacheReady;
}

Health DataCache::health() {
    return HealthMonitor::instance().copy();
}

bool DataCache::idle() {
    // Events are asked for before, as one that no longer waits was taken up by a pass, which still shows in
    // the second test; and after, as one may have come while that pass ended.
    HealthMonitor& health = HealthMonitor::instance();
    return health.noEventWaits() && evaluationIdle() && health.noEventWaits();
}
