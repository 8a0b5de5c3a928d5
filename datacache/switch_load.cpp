#include "common/wwn_text.h"
#include "datacache/DataCache.h"
#include "datacache/cim_status.h"
#include "datacache/reports.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

int DataCache::_getSwitchInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getSwitchInfo()\n");
    SmlBatch batch;
    const size_t principalKey = batch.add("Oper.Switch.WhoIsPrincipal");
    const size_t wwnKey = batch.add("Oper.Switch.WWN");
    const size_t stateKey = batch.add("Oper.Switch.OperState");
    const size_t transparentFeatureKey = batch.add("Oper.Switch.TransparentModeFeature");
    const size_t transparentModeKey = batch.add("Config.Switch.TransparentMode");
    batch.add("Config.Mfg.ProductFeatureType");  // part of the request, read by nobody
    const size_t fcoeKey = batch.add("Oper.Switch.FCOEFeature");
    const size_t passthroughKey = batch.add("Oper.Switch.EthernetPassthroughFeature");
    if (!batch.read(_handle)) {
        logUpdateFailed("_getSwitchInfo", 1351);
        return 0;
    }
    const Wwn principal = parseWwn(batch.text(principalKey));
    const Wwn name = parseWwn(batch.text(wwnKey));
    if (name.isNull()) {
        batch.note(ReadFault::BadValue, wwnKey);
        logUpdateFailed("_getSwitchInfo", 1364);
        return 0;
    }

    _prevSwitchState = _switchState;
    _switchState.switchWwn = name;
    // The chassis is read after the switch, so these are the faults of the pass before.
    _switchState.operationalStatus =
        cimSwitchStatus(batch.text(stateKey), _chassisState.loaded ? getSwitchFaults() : StatusList{});
    _switchState.transparent = batch.isTrue(transparentFeatureKey) && batch.isTrue(transparentModeKey);
    _switchState.fcoe = batch.isTrue(fcoeKey);
    _switchState.ethernetPassthrough = batch.isTrue(passthroughKey);

    const StatusList& before = _prevSwitchState.operationalStatus;
    const StatusList& now = _switchState.operationalStatus;
    if (_prevSwitchState.loaded && now != before) {
        notify(_callback, DCEventSwitchStatusChange(name, principal, before, now));
    }
    _switchState.loaded = true;
    return 1;
}

bool DataCache::isTransparentSwitch() const {
    const AccessGuard guard;
    return _switchState.transparent;
}

bool DataCache::isFCOESwitch() const {
    const AccessGuard guard;
    return _switchState.fcoe;
}

Wwn DataCache::getRootSwitchWorldWideName() const {
    const AccessGuard guard;
    return _switchState.switchWwn;
}

std::string DataCache::getRootSwitchWwn() const {
    return getRootSwitchWorldWideName().tostring();
}
