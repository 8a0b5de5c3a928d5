#include "tests/support/CacheState.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "datacache/CacheReader.h"
#include "tests/support/lines.h"

using namespace datacache;

namespace {

std::string text(const ZoningMember& member) {
    return member.text;
}

std::string text(unsigned short number) {
    return std::to_string(number);
}

template <typename Thing>
std::string text(const std::vector<Thing>& things) {
    std::string line;
    for (const Thing& thing : things) line += (line.empty() ? "" : ",") + text(thing);
    return line;
}

// A source is a CacheReader or a Snapshot, which show the same records.

template <class Source>
void addChassisAndBlades(Lines& lines, const Source& cache) {
    const ChassisState& chassis = cache.chassis();
    addLine(lines, "chassis", chassis.loaded, text(chassis.switchFaults));
    for (unsigned i = 0; i < chassis.powerSupplyCount; ++i)
        addLine(lines, "supply", i, chassis.powerSupplyStatus[i]);
    for (unsigned i = 0; i < chassis.fanCount; ++i) addLine(lines, "fan", i, chassis.fanStatus[i]);
    const BladeState& blades = cache.blades();
    addLine(lines, "blades", blades.loaded, blades.slotCount);
    for (uint16_t slot = 0; slot < kMaxSlots; ++slot) {
        if (slot >= blades.slotCount && blades.kind[slot] == 0) continue;
        addLine(lines, "blade", slot, blades.kind[slot], blades.operStatus[slot], blades.tempSensors[slot],
                blades.voltageSensors[slot], blades.ioBlades[slot], blades.cpuBlades[slot]);
    }
}

template <class Source, class PortName>
void addPorts(Lines& lines, const Source& cache, const PortName& portName) {
    const PortState& ports = cache.ports();
    const TransceiverState& media = cache.transceivers();
    addLine(lines, "ports", ports.portsLoaded, ports.portCount, ports.port0Wwn.tostring());
    for (uint16_t port = 0; port < ports.portCount; ++port) {
        if (!ports.localPortsPresent[port]) {
            addLine(lines, "port", port, "absent", ports.portStatus[port]);
            continue;
        }
        addLine(lines, "port", port, ports.portStatus[port], ports.portType[port], ports.portHWType[port],
                portName(port).tostring());
        addLine(lines, "transceiver", port, media.mediaPresent[port], int{media.mediaFormat[port]},
                media.mediaVendorOUI[port], media.mediaVendorSN[port]);
    }
}

template <class Source>
void addFabric(Lines& lines, const Source& cache) {
    const FabricCache& fabric = cache.fabric();
    addLine(lines, "fabric", fabric.getFabricWwn(), fabric._local_switch_wwn.tostring(),
            int{fabric._local_domain_id}, fabric.getOperatingMode());
    for (const SwitchCache* s = fabric.getFirstSwitch(); s != nullptr; s = fabric.getNextSwitch(s)) {
        addLine(lines, "member", s->getWwn(), int{s->getDomainID()}, s->isLocal() ? "local" : "remote",
                s->getPortCount(), int{s->getManagementServerErrors()}, s->isManagementServerGivenUp());
        for (PortCache port = s->getFirstPort(); !port.isNull(); port = s->getNextPort(port)) {
            addLine(lines, "memberport", s->getWwn(), port.getPortIndex(), port.getWwn());
        }
    }
}

void addZoning(Lines& lines, const ZoningDatabase& zoning) {
    const auto addZones = [&](const std::string& owner, const auto& holder) {
        for (const auto& zone : holder.zones)
            addLine(lines, "zone", owner, zone.name, zone.type, text(zone.members));
        for (const auto& alias : holder.aliases)
            addLine(lines, "alias", owner, alias.name, text(alias.members));
    };
    addLine(lines, "zoning", zoning.loaded, zoning.complete, '"' + zoning.activeZoneset + '"',
            zoning.size.zonesets, zoning.size.zones, zoning.size.aliases, zoning.size.members,
            zoning.limitsRead);
    for (const auto& zoneset : zoning.zonesets) {
        addLine(lines, "zoneset", zoneset.name, zoneset.active ? "active" : "configured");
        addZones(zoneset.name, zoneset);
    }
    addZones("-", zoning);
}

template <class Source, class PortName>
Lines linesOf(const Source& cache, const ZoningDatabase& zoning, const PortName& portName) {
    Lines lines;
    const SwitchState& local = cache.localSwitch();
    addLine(lines, "switch", local.loaded, local.switchWwn.tostring(), text(local.operationalStatus),
            local.transparent, local.fcoe, local.ethernetPassthrough);
    addChassisAndBlades(lines, cache);
    addPorts(lines, cache, portName);
    for (const std::string& account : cache.accounts()) addLine(lines, "account", account);
    addFabric(lines, cache);
    addZoning(lines, zoning);
    std::sort(lines.begin(), lines.end());  // not in the order in which the cache met them
    return lines;
}

}  // namespace

std::vector<std::string> cacheState() {
    const CacheReader cache;
    const Wwn name = cache->getRootSwitchWorldWideName();
    return linesOf(cache, cache.zoning().database(),
                   [&](uint16_t port) { return cache->calcPortWorldWideName(name, port); });
}

std::vector<std::string> stateOf(const Snapshot& snapshot) {
    return linesOf(snapshot, snapshot.zoning(), [&](uint16_t port) { return snapshot.localPortName(port); });
}

void expectLookups() {
    const CacheReader cache;
    EXPECT_EQ(cache->getRootSwitchWorldWideName(), cache.localSwitch().switchWwn);
    EXPECT_EQ(cache->isTransparentSwitch(), cache.localSwitch().transparent);
    EXPECT_EQ(cache->isFCOESwitch(), cache.localSwitch().fcoe);
    EXPECT_EQ(cache->getRootSwitchDomainID(), cache.fabric()._local_domain_id);
    EXPECT_EQ(cache->getRootSlotCount(), cache.blades().slotCount);
    for (uint16_t slot = 0; slot < kMaxSlots; ++slot) {
        EXPECT_EQ(cache.blades().ioBlades[slot], slot == cache->getFirstRootIOBladeIndex());
        EXPECT_EQ(cache->getRootTemperatureSensorCount(slot), cache.blades().tempSensors[slot]);
        EXPECT_EQ(cache->getRootVoltageSensorCount(slot), cache.blades().voltageSensors[slot]);
    }
    for (unsigned port = 0; port < cache.ports().portCount; ++port) {
        if (!cache.ports().localPortsPresent[port]) continue;
        const TransceiverState& media = cache.transceivers();
        const std::string index = std::to_string(port);
        const bool there = media.mediaPresent[port];
        EXPECT_EQ(cache->getPortType(index), cache.ports().portType[port]);
        EXPECT_EQ(cache->getPortHWType(index), cache.ports().portHWType[port]);
        EXPECT_EQ(cache->getTransceiverDDMSupported(index), there);
        EXPECT_EQ(cache->getTransceiverFormat(index),
                  there ? media.mediaFormat[port] : uint8_t{MEDIA_UNKNOWN});
        EXPECT_EQ(cache->getTransceiverVendorOUI(index), there ? media.mediaVendorOUI[port] : "");
        EXPECT_EQ(cache->getTransceiverVendorSN(index), there ? media.mediaVendorSN[port] : "");
    }
    const FabricCache& fabric = cache.fabric();
    for (const SwitchCache* s = fabric.getFirstSwitch(); s != nullptr; s = fabric.getNextSwitch(s)) {
        for (PortCache port = s->getFirstPort(); !port.isNull(); port = s->getNextPort(port)) {
            const std::string index = std::to_string(port.getPortIndex());
            EXPECT_EQ(cache->calcPortIndex(s->getWwn(), port.getWwn()), index);
            EXPECT_EQ(cache->calcPortWwn(s->getWwn(), index), port.getWwn());
        }
    }
}
