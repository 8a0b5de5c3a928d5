#include <algorithm>

#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/cim_status.h"
#include "datacache/update_failed.h"
#include "switchlib/SmlBatch.h"

namespace {

/** Ports that are scanned, whatever the switch claims. */
constexpr int32_t kMaxRootPorts = 128;

}  // namespace

bool DataCache::_getPortInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getPortInfo()\n");
    _prevPortState = _portState;
    uint8_t domain = 0;
    Wwn principal;
    if (!_readPortCount() || !_readMarkedPorts() || !_readPortNames(domain, principal)) return false;

    if (_switchState.loaded) {
        _updateLocalSwitch(domain);
        // The first scan finds every port new, which is no news.
        if (_portState.portsLoaded) _reportPorts(principal);
    }
    _localPortRefresh.reset();
    _portState.portsLoaded = true;
    return true;
}

bool DataCache::_readPortCount() {
    SmlBatch batch(1);
    const size_t maxPortsKey = batch.add("Oper.Switch.MaxPorts");
    if (!batch.read(_handle)) {
        logUpdateFailed("_getPortInfo", 1617);
        return false;
    }
    // A negative number of ports is none.
    const auto count = static_cast<uint16_t>(std::clamp(batch.number(maxPortsKey), 0, kMaxRootPorts));
    if (count == 0) {
        batch.note(datacache::ReadFault::BadValue, maxPortsKey);
        _portState = _prevPortState;
        logUpdateFailed("_getPortInfo", 1630);
        return false;
    }
    for (size_t port = count; port < _portState.portCount; ++port) _portState.localPortsPresent[port] = false;
    _portState.portCount = count;
    return true;
}

bool DataCache::_readMarkedPorts() {
    // Nothing is known before the first scan is complete, so until then every port counts as marked.
    const bool all = !_portState.portsLoaded;
    SmlBatch batch(8);  // one for all ports, as room for a batch costs more than the rest of a port
    for (unsigned port = 0; port < _portState.portCount; ++port) {
        if (!all && !_localPortRefresh[port]) continue;
        if (!_readPort(batch, port)) {
            _portState = _prevPortState;
            logUpdateFailed("_getPortInfo", 1659);
            return false;
        }
    }
    return true;
}

bool DataCache::_readPort(SmlBatch& batch, unsigned port) {
    batch.clear();
    const size_t operKey = batch.add("Oper.UserPort.0.%u.OperState", port);
    const size_t adminKey = batch.add("Oper.UserPort.0.%u.AdminState", port);
    const size_t typeKey = batch.add("Config.UserPort.0.%u.Type", port);
    const size_t ddmKey = batch.add("Oper.UserPort.0.%u.DDM.Supported", port);
    const size_t data0Key = batch.add("Oper.UserPort.0.%u.SFPData0_31", port);
    const size_t data32Key = batch.add("Oper.UserPort.0.%u.SFPData32_63", port);
    const size_t serialKey = batch.add("Oper.UserPort.0.%u.SFPSerialNumber", port);
    const size_t hardwareKey = batch.add("Oper.UserPort.0.%u.HWType", port);
    if (!batch.read(_handle)) return false;

    const std::string_view state = batch.text(operKey);
    const bool present = state != "NotInstalled" && state != "PoweredOff";
    _portState.localPortsPresent[port] = present;
    _portState.portStatus[port] = cimPortStatus(state, batch.text(adminKey));
    if (present) {
        _portState.portType[port] = cimPortType(batch.text(typeKey));
        _portState.portHWType[port] = cimPortHardwareType(batch.text(hardwareKey));
    }
    _transceivers.clear(port);
    if (batch.isTrue(ddmKey)) {
        _transceivers.mediaPresent[port] = true;
        _transceivers.mediaFormat[port] = mediaFormatOf(batch.text(data0Key));
        _transceivers.mediaVendorOUI[port] = vendorOUIOf(batch.text(data32Key));
        _transceivers.mediaVendorSN[port] = sanitizedSerial(batch.text(serialKey));
    }
    return true;
}

bool DataCache::_readPortNames(uint8_t& domain, Wwn& principal) {
    const unsigned first = nextRootPort(_portState, 0);
    SmlBatch batch(3);
    const size_t nameKey = batch.add("Oper.UserPort.0.%u.WWN", first == kPortRows ? 0 : first);
    const size_t domainKey = batch.add("Oper.Switch.DomainID");
    const size_t principalKey = batch.add("Oper.Switch.WhoIsPrincipal");
    if (!batch.read(_handle)) {
        // Meant: what the scan read of the ports stays; only failures before this one put the old state back.
        logUpdateFailed("_getPortInfo", 1758);
        return false;
    }
    _portState.port0Wwn = parseWwn(batch.text(nameKey));
    domain = toUint8(batch.text(domainKey));
    principal = parseWwn(batch.text(principalKey));
    return true;
}
