#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/bit_sets.h"
#include "datacache/port_walk.h"

using namespace datacache;

namespace {

uint16_t portIndex(const std::string& text) {
    return static_cast<uint16_t>(strtoul32(text, 10));
}

/**
 * Whether the port exists and has a transceiver with diagnostics. Of the texts that are read as 0, which no
 * number is as well, only "0" itself means port 0. Throws std::out_of_range "bitset::test" above 255.
 */
bool hasTransceiver(const PortState& ports, const TransceiverState& transceivers, const std::string& text) {
    const uint16_t port = portIndex(text);
    if (port == 0 && text != "0") return false;
    return bitTest(ports.localPortsPresent, port) && transceivers.mediaPresent[port];
}

/** The next port of a walk; no port without the name from which ports are named. */
std::string walkFrom(const PortState& ports, unsigned from) {
    if (ports.port0Wwn.isNull()) return {};
    const unsigned port = nextRootPort(ports, from);
    return port == kPortRows ? std::string() : std::to_string(port);
}

}  // namespace

unsigned datacache::nextRootPort(const PortState& ports, unsigned from) {
    for (unsigned port = from; port < ports.portCount; ++port) {
        if (bitTest(ports.localPortsPresent, port) && ports.portType[port] != kPortTypePassThrough)
            return port;
    }
    return kPortRows;
}

uint16_t DataCache::getPortType(const std::string& index) const {
    const AccessGuard guard;
    const uint16_t port = portIndex(index);
    return port < kPortRows ? _portState.portType[port] : uint16_t{0};
}

uint16_t DataCache::getPortHWType(const std::string& index) const {
    const AccessGuard guard;
    const uint16_t port = portIndex(index);
    return port < kPortRows ? _portState.portHWType[port] : uint16_t{0};
}

uint8_t DataCache::getTransceiverFormat(const std::string& index) const {
    const AccessGuard guard;
    if (!hasTransceiver(_portState, _transceivers, index)) return MEDIA_UNKNOWN;
    return _transceivers.mediaFormat[portIndex(index)];
}

bool DataCache::getTransceiverDDMSupported(const std::string& index) const {
    const AccessGuard guard;
    return hasTransceiver(_portState, _transceivers, index);
}

std::string DataCache::getTransceiverVendorSN(const std::string& index) const {
    const AccessGuard guard;
    if (!hasTransceiver(_portState, _transceivers, index)) return {};
    return _transceivers.mediaVendorSN[portIndex(index)];
}

std::string DataCache::getTransceiverVendorOUI(const std::string& index) const {
    const AccessGuard guard;
    if (!hasTransceiver(_portState, _transceivers, index)) return {};
    return _transceivers.mediaVendorOUI[portIndex(index)];
}

std::string DataCache::getRootPortIndexForTransceiver(const std::string& oui,
                                                      const std::string& serial) const {
    const AccessGuard guard;
    for (unsigned port = 0; port < _portState.portCount; ++port) {
        if (bitTest(_portState.localPortsPresent, port) && _transceivers.mediaPresent[port] &&
            _transceivers.mediaVendorOUI[port] == oui && _transceivers.mediaVendorSN[port] == serial)
            return std::to_string(port);
    }
    return {};
}

std::string DataCache::getFirstRootPortIndex() const {
    const AccessGuard guard;
    return walkFrom(_portState, 0);
}

std::string DataCache::getNextRootPortIndex(const std::string& index) const {
    const AccessGuard guard;
    return walkFrom(_portState, portIndex(index) + 1U);
}

uint16_t DataCache::getMaxRootPorts() const {
    const AccessGuard guard;
    return _portState.portCount;
}
