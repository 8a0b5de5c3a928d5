#include <algorithm>

#include "common/number_text.h"
#include "common/wwn_text.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/add_switch.h"
#include "datacache/cim_status.h"
#include "datacache/port_walk.h"
#include "datacache/reports.h"
#include "datacache/transceivers.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

namespace {

/** Ports that are scanned, whatever the switch claims. */
constexpr int32_t kMaxRootPorts = 128;

constexpr const char* kScan = "_getPortInfo";

/** Reads how many ports are scanned; ports behind them do not exist any more. */
bool readPortCount(uint32_t handle, PortState& ports) {
    SmlBatch batch;
    const size_t maxPortsKey = batch.add("Oper.Switch.MaxPorts");
    if (!batch.read(handle)) {
        logUpdateFailed(kScan, 1617);
        return false;
    }
    const int32_t claimed = batch.number(maxPortsKey);
    HealthMonitor::instance().localPorts(int64_t{claimed} - kMaxRootPorts);
    // A negative number of ports is none.
    const auto count = static_cast<uint16_t>(std::clamp(claimed, 0, kMaxRootPorts));
    if (count == 0) {
        batch.note(ReadFault::BadValue, maxPortsKey);
        logUpdateFailed(kScan, 1630);
        return false;
    }
    for (size_t port = count; port < ports.portCount; ++port) ports.localPortsPresent[port] = false;
    ports.portCount = count;
    return true;
}

bool readPort(uint32_t handle, SmlBatch& batch, unsigned port, PortState& ports, TransceiverState& media) {
    batch.clear();
    const size_t operKey = batch.add("Oper.UserPort.0.%u.OperState", port);
    const size_t adminKey = batch.add("Oper.UserPort.0.%u.AdminState", port);
    const size_t typeKey = batch.add("Config.UserPort.0.%u.Type", port);
    const size_t ddmKey = batch.add("Oper.UserPort.0.%u.DDM.Supported", port);
    const size_t data0Key = batch.add("Oper.UserPort.0.%u.SFPData0_31", port);
    const size_t data32Key = batch.add("Oper.UserPort.0.%u.SFPData32_63", port);
    const size_t serialKey = batch.add("Oper.UserPort.0.%u.SFPSerialNumber", port);
    const size_t hardwareKey = batch.add("Oper.UserPort.0.%u.HWType", port);
    if (!batch.read(handle)) return false;

    const std::string_view state = batch.text(operKey);
    const bool present = state != "NotInstalled" && state != "PoweredOff";
    ports.localPortsPresent[port] = present;
    ports.portStatus[port] = cimPortStatus(state, batch.text(adminKey));
    if (present) {
        ports.portType[port] = cimPortType(batch.text(typeKey));
        ports.portHWType[port] = cimPortHardwareType(batch.text(hardwareKey));
    }
    media.clear(port);
    if (batch.isTrue(ddmKey)) {
        media.mediaPresent[port] = true;
        media.mediaFormat[port] = mediaFormatOf(batch.text(data0Key));
        media.mediaVendorOUI[port] = vendorOUIOf(batch.text(data32Key));
        media.mediaVendorSN[port] = sanitizedSerial(batch.text(serialKey));
    }
    return true;
}

/** Reads the marked ports; before the first complete scan, when nothing is known, every port. */
bool readMarkedPorts(uint32_t handle, const std::bitset<kPortRows>& marked, PortState& ports,
                     TransceiverState& media) {
    SmlBatch batch;  // one for all ports: room for a batch costs more than the rest of a port
    for (unsigned port = 0; port < ports.portCount; ++port) {
        if (ports.portsLoaded && !marked[port]) continue;
        if (readPort(handle, batch, port, ports, media)) continue;
        logUpdateFailed(kScan, 1659);
        return false;
    }
    return true;
}

/** The local switch's record, made where the fabric has none yet; only then it gets its ports' base name. */
SwitchCache& localSwitch(FabricCache& fabric, const Wwn& name, const Wwn& portBase) {
    auto* const known = fabric.findSwitchCacheElement(name);
    if (known != nullptr) return *known->item();
    SwitchCache& made = addSwitch(fabric, name);
    made._port_base_wwn = portBase;
    made._local = true;
    return made;
}

void updateLocalSwitch(FabricCache& fabric, const Wwn& name, uint8_t domain, const PortState& ports) {
    SwitchCache& record = localSwitch(fabric, name, ports.port0Wwn);
    record._domain_id = domain;
    record._port_count = 0;
    record._stale = false;
    cim_log(CIM_LOG_TRACE, "DCACHE: _processPort0Wwn() update local switch in fabric\n");

    const unsigned firstField = name.isCisco() ? 1 : 0;  // Cisco counts the port fields of names from 1
    for (unsigned port = 0; port < kPortRows; ++port) {
        if (!ports.localPortsPresent[port]) continue;
        const bool skipped = ports.portType[port] == kPortTypeDonor;
        cim_log(CIM_LOG_TRACE, "DCACHE: _processPort0Wwn() %s port %u with smlindex %u\n",
                skipped ? "skipping" : "adding", unsigned{record._port_count}, port);
        if (!skipped) record.addPort(port + firstField, port);
    }
}

}  // namespace

bool DataCache::_getPortInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getPortInfo()\n");
    _prevPortState = _portState;
    if (!readPortCount(_handle, _portState) ||
        !readMarkedPorts(_handle, _localPortRefresh, _portState, _transceivers)) {
        _portState = _prevPortState;
        return false;
    }
    if (!_processPort0Wwn()) return false;
    _localPortRefresh.reset();
    _portState.portsLoaded = true;
    return true;
}

bool DataCache::_processPort0Wwn() {
    const unsigned first = nextRootPort(_portState, 0);
    SmlBatch batch;
    const size_t nameKey = batch.add("Oper.UserPort.0.%u.WWN", first == kPortRows ? 0 : first);
    const size_t domainKey = batch.add("Oper.Switch.DomainID");
    const size_t principalKey = batch.add("Oper.Switch.WhoIsPrincipal");
    if (!batch.read(_handle)) {
        // Required: what the scan read of the ports stays; only failures before this one put the old state
        // back.
        logUpdateFailed(kScan, 1758);
        return false;
    }
    _portState.port0Wwn = parseWwn(batch.text(nameKey));
    if (!_switchState.loaded) return true;
    updateLocalSwitch(_fabric, _switchState.switchWwn, toUint8(batch.text(domainKey)), _portState);
    // The first scan finds every port new, which is no news.
    if (_portState.portsLoaded) _reportPorts(parseWwn(batch.text(principalKey)));
    return true;
}

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
            notify(_callback, DCEventPortAdd(name, portName, false));
        } else {
            cim_log(CIM_LOG_TRACE,
                    "DCACHE: _processPort0Wwn() send DCEventPortStatusChange for port %u, %s, fabricWwn=%s, "
                    "currstatus=%u, origstatus=%u\n",
                    port, portName.tostring().c_str(), fabric.tostring().c_str(), unsigned{now},
                    unsigned{before});
            notify(_callback, DCEventPortStatusChange(name, portName, fabric, {before}, {now}));
        }
    }
}
