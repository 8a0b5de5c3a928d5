#include "datacache/Snapshot.h"

#include "datacache/SnapshotPublisher.h"
#include "datacache/port_addressing.h"

namespace datacache {

Snapshot::Snapshot(std::unique_ptr<const Parts> parts) : _parts(std::move(parts)) {}

Snapshot::~Snapshot() = default;

uint64_t Snapshot::serial() const {
    return _parts->serial;
}

WallTime Snapshot::publishedAt() const {
    return _parts->publishedAt;
}

bool Snapshot::isReady() const {
    return _parts->ready;
}

const SnapshotArea& Snapshot::area(CacheArea area) const {
    static constexpr SnapshotArea kUnknown;
    const auto index = static_cast<size_t>(area);
    return index < _parts->areas.size() ? _parts->areas[index] : kUnknown;
}

const SwitchState& Snapshot::localSwitch() const {
    return *_parts->localSwitch;
}

const ChassisState& Snapshot::chassis() const {
    return *_parts->chassis;
}

const BladeState& Snapshot::blades() const {
    return *_parts->blades;
}

const PortState& Snapshot::ports() const {
    return *_parts->ports;
}

const TransceiverState& Snapshot::transceivers() const {
    return *_parts->transceivers;
}

const std::vector<std::string>& Snapshot::accounts() const {
    return *_parts->accounts;
}

const FabricCache& Snapshot::fabric() const {
    return *_parts->fabric;
}

const ZoningDatabase& Snapshot::zoning() const {
    return *_parts->zoning;
}

Wwn Snapshot::localPortName(unsigned port) const {
    if (port >= kPortRows) return {};
    return datacache::localPortName(ports(), localSwitch().switchWwn, port);
}

}  // namespace datacache
