#include "datacache/DataCache.h"

namespace {

/** The local switch's record, made where the fabric has none yet; only then it gets its ports' base name. */
SwitchCache& localRecord(FabricCache& fabric, const Wwn& name, const Wwn& portBase) {
    const auto* known = fabric.findSwitchCacheElement(name);
    if (known != nullptr) return *known->item();
    SwitchCache& made = addSwitch(fabric, name);
    made._port_base_wwn = portBase;
    made._local = true;
    return made;
}

}  // namespace

void DataCache::_updateLocalSwitch(uint8_t domain) {
    const Wwn& name = _switchState.switchWwn;
    SwitchCache& record = localRecord(_fabric, name, _portState.port0Wwn);
    record._domain_id = domain;
    record._port_count = 0;
    record._stale = false;
    cim_log(CIM_LOG_TRACE, "DCACHE: _processPort0Wwn() update local switch in fabric\n");

    const unsigned firstField = name.isCisco() ? 1 : 0;  // Cisco counts the port fields of names from 1
    for (unsigned port = 0; port < kPortRows; ++port) {
        if (!_portState.localPortsPresent[port]) continue;
        const unsigned rows = record._port_count;
        if (_portState.portType[port] == kPortTypeDonor) {
            cim_log(CIM_LOG_TRACE, "DCACHE: _processPort0Wwn() skipping port %u with smlindex %u\n", rows,
                    port);
            continue;
        }
        cim_log(CIM_LOG_TRACE, "DCACHE: _processPort0Wwn() adding port %u with smlindex %u\n", rows, port);
        record.addPort(port + firstField, port);
    }
}
