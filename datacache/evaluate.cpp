#include "datacache/DataCache.h"

namespace {

/** Records a loader's result: what failed stays marked, so that the next pass tries it again. */
void record(bool result, bool& ok, bool& update) {
    ok = result;
    if (result) update = false;
}

void reportFailed(bool ok, const char* name) {
    if (!ok) cim_log(CIM_LOG_TRACE, "DCACHE: %s = false\n", name);
}

}  // namespace

bool DataCache::evaluateCaches() {
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
    if (_cacheReady) {
        DCEventDataCacheUpdateComplete event;
        _notifyHost(event);
    }
    return _cacheReady;
}

void DataCache::_drainEventQueue() {
    while (!_eventQueue.empty()) {
        // The entry leaves the queue only after its dispatch, so a dispatch that throws sees it again.
        vex_event_s* event = _eventQueue.front();
        if (event != nullptr) _vexlibNotificationCB(event);
        _eventQueue.pop_front();
        delete event;
    }
}

void DataCache::_updateAreas() {
    if (_switchUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating switch cache\n");
        record(_getSwitchInfo() != 0, _switchOK, _switchUpdate);
    }
    if (_chassisUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating chassis cache\n");
        record(_getChassisInfo() != 0, _chassisOK, _chassisUpdate);
    }
    if (_bladesUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating blades cache\n");
        record(_getBladeInfo(), _bladesOK, _bladesUpdate);
    }
    if (_portsUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating ports cache\n");
        record(_getPortInfo(), _portsOK, _portsUpdate);
    }
    // The pass never loads the accounts: only the host asks for them.
    record(true, _accountsOK, _accountsUpdate);
    if (_fabricUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating fabric cache\n");
        record(_getFabricInfo(), _fabricOK, _fabricUpdate);
    }
    if (_zoningUpdate) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating zoning cache\n");
        record(_getZoningInfo() != 0, _zoningOK, _zoningUpdate);
        cim_log(CIM_LOG_TRACE, "DCACHE: Updating zoning cache (Done)\n");
    }
}

void DataCache::_notifyHost(DataCacheEvent& event) {
    if (_callback != nullptr) _callback(&event);
}
