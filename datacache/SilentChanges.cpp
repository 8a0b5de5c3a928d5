#include "datacache/SilentChanges.h"

#include <cstdio>
#include <cstring>
#include <utility>

namespace datacache {

namespace {

constexpr auto kPorts = static_cast<size_t>(CacheArea::Ports);

size_t first(const PortSet& ports) {
    size_t port = 0;
    while (port < ports.size() && !ports[port]) ++port;
    return port;
}

const char* wordOf(uint8_t differences) {
    if ((differences & PORT_STATUS) != 0) return "status";
    return (differences & PORT_TYPE) != 0 ? "type" : "transceiver";
}

}  // namespace

void SilentChanges::announced(const EventMarks& marks) {
    _announced |= marks.areas;
    const PortSet told = marks.ports();
    _portsAnnounced |= told;
    for (size_t area = 0; area < kCacheAreas; ++area) {
        for (Suspect& one : _suspects[area]) {
            if (area != kPorts && marks.areas[area]) one.any = false;
            if (area == kPorts && one.any) one.any = (one.ports &= ~told).any();
        }
    }
}

void SilentChanges::found(CacheArea area, const Difference& difference) {
    const auto index = static_cast<size_t>(area);
    if (area == CacheArea::Ports) {
        Difference unannounced = difference;
        unannounced.ports &= ~_portsAnnounced;
        _portsAnnounced &= ~difference.portsRead;
        if (unannounced.ports.any()) suspect(area, unannounced);
    } else if (difference.any && !_announced[index]) {
        suspect(area, difference);
    }
    _announced.reset(index);
}

void SilentChanges::suspect(CacheArea area, const Difference& difference) {
    auto& [older, newer] = _suspects[static_cast<size_t>(area)];
    Suspect& place = older.any && older.pass != _passes ? newer : older;
    if (!place.any) {
        place = {};
        place.any = true;
        place.pass = _passes;
        place.time = std::chrono::system_clock::now();
        std::memcpy(place.words, difference.words, sizeof place.words);
    }
    if (area != CacheArea::Ports) return;
    place.ports |= difference.ports;
    for (size_t port = 0; port < kPortRows; ++port) {
        if (difference.ports[port]) _ofPort[port] = difference.ofPort[port];
    }
}

void SilentChanges::endPass(std::array<AreaHealth, kCacheAreas>& areas) {
    for (size_t area = 0; area < kCacheAreas; ++area) {
        auto& [older, newer] = _suspects[area];
        if (!older.any && newer.any) older = std::exchange(newer, {});
        if (!older.any || older.pass == _passes) continue;
        AreaHealth& record = areas[area];
        ++record.silentChanges;
        record.lastSilentChange = older.time;
        if (area == kPorts) {
            const size_t port = first(older.ports);
            std::snprintf(record.silentChange, sizeof record.silentChange, "port %zu: %s", port,
                          wordOf(_ofPort[port]));
        } else {
            std::memcpy(record.silentChange, older.words, sizeof record.silentChange);
        }
        older = std::exchange(newer, {});
    }
}

}  // namespace datacache
