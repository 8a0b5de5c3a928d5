#include "datacache/SwitchCache.h"

#include "common/cim_log.h"
#include "common/number_text.h"

using namespace datacache;

namespace {

PortCache portOfRow(const SwitchCache& owner, unsigned row) {
    Wwn name = owner._port_base_wwn;
    name.Set_Port(owner._wwn_portno[row]);
    return {name, owner._lsdb_port_index[row]};
}

}  // namespace

SwitchCache::SwitchCache() = default;

unsigned char SwitchCache::getDomainID() const {
    return _domain_id;
}

Wwn SwitchCache::getWorldWideName() const {
    return _wwn;
}

std::string SwitchCache::getWwn() const {
    return _wwn.tostring();
}

bool SwitchCache::isLocal() const {
    return _local;
}

unsigned char SwitchCache::getStatus() const {
    return _status;
}

uint16_t SwitchCache::getPortCount() const {
    return _port_count;
}

uint8_t SwitchCache::getManagementServerErrors() const {
    return _mserver_errors;
}

bool SwitchCache::isManagementServerGivenUp() const {
    return _mserver_timeout;
}

PortCache SwitchCache::getFirstPort() const {
    if (_port_base_wwn.isNull() || _port_count == 0) return {};
    return portOfRow(*this, 0);
}

PortCache SwitchCache::getNextPort(const PortCache& port) const {
    if (_port_base_wwn.isNull()) return {};
    for (unsigned row = 0; row + 1 < _port_count; ++row) {
        // Required: by the index alone; a port whose name is of another switch goes on in this one.
        if (_lsdb_port_index[row] == port._port_index) return portOfRow(*this, row + 1);
    }
    return {};
}

PortCache SwitchCache::getPortByWorldWideName(const Wwn& name) const {
    if (_port_base_wwn.isNull() || !_port_base_wwn.Same_Base(name)) return {};
    unsigned portField = kNoPortField;
    name.Get_Port(portField);
    if (portField >= kNoPortField) return {};
    for (unsigned row = 0; row < _port_count; ++row) {
        if (_wwn_portno[row] == portField) return {name, _lsdb_port_index[row]};
    }
    return {};
}

PortCache SwitchCache::getPortByWwn(const std::string& name) const {
    return getPortByWorldWideName(Wwn(name));
}

PortCache SwitchCache::getPortByLSDBPortIndex(const std::string& index) const {
    if (_port_base_wwn.isNull()) return {};
    uint32_t port = strtoul32(index, 0);
    const bool cisco = _wwn.isCisco();
    if (port > 255) {
        if (!cisco || _local) {
            cim_log(CIM_LOG_TRACE,
                    "DCACHE: SwitchCache::getPortByLSDBPortIndex( %s ) port=%u is out of range\n",
                    index.c_str(), port);
            return {};
        }
        port = ((port >> 2) & 0xFC0U) + (port & 63U);  // slot and port, packed as the port field has them
    }
    const unsigned wanted = port + (cisco ? 1U : 0U);  // Cisco numbers its port fields from 1
    cim_log(CIM_LOG_TRACE,
            "DCACHE: SwitchCache::getPortByLSDBPortIndex( %s ) searching for _wwn_portno 0x%3.3x\n",
            index.c_str(), wanted);
    for (unsigned row = 0; row < _port_count; ++row) {
        if (_wwn_portno[row] == wanted) return portOfRow(*this, row);
    }
    return {};
}

bool SwitchCache::addPort(unsigned portField, unsigned index) {
    if (_port_count >= kMaxPorts) return false;
    _wwn_portno[_port_count] = static_cast<uint16_t>(portField);
    _lsdb_port_index[_port_count] = static_cast<uint8_t>(index);
    ++_port_count;
    return true;
}
