#include "datacache/DataCache.h"

void DataCache::_reportPorts(const Wwn& fabric) {
    const Wwn name = _switchState.switchWwn;
    for (unsigned port = 0; port < kPortRows; ++port) {
        // A port that went sends nothing.
        if (!_portState.localPortsPresent[port]) continue;
        const uint16_t now = _portState.portStatus[port];
        const uint16_t before = _prevPortState.portStatus[port];
        const bool isNew = !_prevPortState.localPortsPresent[port];
        if (!isNew && now == before) continue;
        const Wwn portName = calcPortWorldWideName(name, static_cast<unsigned short>(port));
        if (isNew) {
            cim_log(CIM_LOG_TRACE, "DCACHE: _processPort0Wwn() send DCEventPortAdd for port %u, %s\n", port,
                    portName.tostring().c_str());
            DCEventPortAdd event(name, portName, false);
            _notifyHost(event);
        } else {
            cim_log(CIM_LOG_TRACE,
                    "DCACHE: _processPort0Wwn() send DCEventPortStatusChange for port %u, %s, fabricWwn=%s, "
                    "currstatus=%u, origstatus=%u\n",
                    port, portName.tostring().c_str(), fabric.tostring().c_str(), unsigned{now},
                    unsigned{before});
            DCEventPortStatusChange event(name, portName, fabric, {before}, {now});
            _notifyHost(event);
        }
    }
}
