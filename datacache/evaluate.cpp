#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/notify.h"

using datacache::AreaRead;
using datacache::CacheArea;
using datacache::HealthMonitor;

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
template <typename Load>
void read(CacheArea area, bool& ok, bool& update, Load load) {
    AreaRead read(area, true);
    try {
        ok = read.done(load());
    } catch (const char* message) {
        datacache::ReadTrace::failed(datacache::ReadFault::Exception, "", message, 0, 0);
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
        read(CacheArea::Switch, _switchOK, _switchUpdate,
             [this]() DC_REQUIRES(access_lock) { return _getSwitchInfo() != 0; });
    }
    if (_chassisUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating chassis cache\n");
        read(CacheArea::Chassis, _chassisOK, _chassisUpdate,
             [this]() DC_REQUIRES(access_lock) { return _getChassisInfo() != 0; });
    }
    if (_bladesUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating blades cache\n");
        read(CacheArea::Blades, _bladesOK, _bladesUpdate,
             [this]() DC_REQUIRES(access_lock) { return _getBladeInfo(); });
    }
    if (_portsUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating ports cache\n");
        read(CacheArea::Ports, _portsOK, _portsUpdate,
             [this]() DC_REQUIRES(access_lock) { return _getPortInfo(); });
    }
    // Required: the accounts count as read though no pass reads them, since only the host asks for them.
    _accountsOK = true;
    _accountsUpdate = false;
    if (_fabricUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating fabric cache\n");
        read(CacheArea::Fabric, _fabricOK, _fabricUpdate,
             [this]() DC_REQUIRES(access_lock) { return _getFabricInfo(); });
    }
    if (_zoningUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating zoning cache\n");
        read(CacheArea::Zoning, _zoningOK, _zoningUpdate,
             [this]() DC_REQUIRES(access_lock) { return _getZoningInfo() != 0; });
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating zoning cache (Done)\n");
    }
}
