#include "datacache/port_addressing.h"

#include <limits>

#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/bit_sets.h"

using namespace datacache;

namespace {

constexpr uint16_t kUnknownIndex = 65535;
/** Above any local index: what stays of it after a read tells a name without a port field. */
constexpr unsigned kNoPortField = 257;

unsigned localPortIndex(const std::bitset<kPortRows>& present, const Wwn& switchName, unsigned& area) {
    // Required: Cisco numbers its port fields from 1, and a field of 0 stands for port 0 all the same.
    if (switchName.isCisco() && area != 0) --area;
    return area < kPortRows && present[area] ? area : kUnknownIndex;
}

}  // namespace

Wwn datacache::localPortName(const PortState& ports, const Wwn& switchName, unsigned port) {
    if (ports.port0Wwn.isNull() || !bitTest(ports.localPortsPresent, port)) return {};
    Wwn name = ports.port0Wwn;
    name.Set_Port(switchName.isCisco() ? port + 1U : port);
    return name;
}

uint16_t DataCache::calcPortIndex(const Wwn& switchName, const Wwn& portName) {
    const AccessGuard guard;
    cim_log(CIM_LOG_TRACE, "DCACHE: calcPortIndex() port_wwn=%s, switch_wwn=%s, root_switch_wwn=%s\n",
            portName.tostring().c_str(), switchName.tostring().c_str(),
            _switchState.switchWwn.tostring().c_str());
    if (switchName == _switchState.switchWwn) {
        unsigned area = kNoPortField;
        portName.Get_Port(area);
        const unsigned result = localPortIndex(_portState.localPortsPresent, switchName, area);
        cim_log(CIM_LOG_TRACE, "DCACHE: calcPortIndex()local, area=%u, result=%u\n", area, result);
        return static_cast<uint16_t>(result);
    }
    uint16_t result = kUnknownIndex;
    if (const Element<SwitchCache>* remote = _fabric.findSwitchCacheElement(switchName)) {
        const PortCache port = remote->item()->getPortByWorldWideName(portName);
        if (port.isNull()) {
            cim_log(CIM_LOG_TRACE, "DCACHE: calcPortIndex() remote, port wwn not found on switch\n");
        } else {
            result = port._port_index;
        }
    }
    cim_log(CIM_LOG_TRACE, "DCACHE: calcPortIndex() remote, result=%u\n", result);
    return result;
}

std::string DataCache::calcPortIndex(const std::string& switchName, const std::string& portName) {
    const uint16_t index = calcPortIndex(Wwn(switchName), Wwn(portName));
    return index == kUnknownIndex ? std::string() : std::to_string(index);
}

Wwn DataCache::calcPortWorldWideName(const Wwn& switchName, unsigned short index) const {
    const AccessGuard guard;
    if (_portState.port0Wwn.isNull()) return {};
    if (switchName == _switchState.switchWwn) return localPortName(_portState, switchName, index);
    const Element<SwitchCache>* element = _fabric.findSwitchCacheElement(switchName);
    if (element == nullptr) return {};
    const SwitchCache& remote = *element->item();
    Wwn found;
    for (unsigned row = 0; row < remote._port_count; ++row) {
        if (remote._lsdb_port_index[row] != index) continue;
        found = remote._port_base_wwn;  // Required: the last matching row wins.
        found.Set_Port(remote._wwn_portno[row]);
    }
    return found;
}

std::string DataCache::calcPortWwn(const std::string& switchName, const std::string& index) const {
    const uint32_t value = strtoul32(index, 10);
    if (value == std::numeric_limits<uint32_t>::max()) return {};
    const Wwn port = calcPortWorldWideName(Wwn(switchName), static_cast<unsigned short>(value));
    return port.isNull() ? std::string() : port.tostring();
}
