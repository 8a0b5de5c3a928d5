#include "tests/support/CacheState.h"

#include <algorithm>
#include <sstream>

#include "datacache/CacheReader.h"

using namespace datacache;

namespace {

struct Lines {
    std::vector<std::string> all;
    template <typename... Parts>
    void add(const Parts&... parts) {
        std::ostringstream line;
        const char* blank = "";
        ((line << blank << parts, blank = " "), ...);
        all.push_back(line.str());
    }
};

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

void addChassisAndBlades(Lines& lines, const CacheReader& cache) {
    const ChassisState& chassis = cache.chassis();
    lines.add("chassis", chassis.loaded, text(chassis.switchFaults));
    for (unsigned i = 0; i < chassis.powerSupplyCount; ++i)
        lines.add("supply", i, chassis.powerSupplyStatus[i]);
    for (unsigned i = 0; i < chassis.fanCount; ++i) lines.add("fan", i, chassis.fanStatus[i]);
    const BladeState& blades = cache.blades();
    lines.add("blades", blades.loaded, blades.slotCount, cache->getRootSlotCount(),
              cache->getFirstRootIOBladeIndex());
    for (uint16_t slot = 0; slot < kMaxSlots; ++slot) {
        if (slot >= blades.slotCount && blades.kind[slot] == 0) continue;
        lines.add("blade", slot, blades.kind[slot], blades.operStatus[slot],
                  cache->getRootTemperatureSensorCount(slot), cache->getRootVoltageSensorCount(slot),
                  blades.ioBlades[slot], blades.cpuBlades[slot]);
    }
}

void addPorts(Lines& lines, const CacheReader& cache) {
    const PortState& ports = cache.ports();
    lines.add("ports", ports.portsLoaded, ports.portCount, ports.port0Wwn.tostring());
    for (unsigned port = 0; port < ports.portCount; ++port) {
        const std::string index = std::to_string(port);
        if (!ports.localPortsPresent[port]) {
            lines.add("port", port, "absent", ports.portStatus[port]);
            continue;
        }
        lines.add("port", port, ports.portStatus[port], cache->getPortType(index),
                  cache->getPortHWType(index), cache->calcPortWwn(cache->getRootSwitchWwn(), index));
        lines.add("transceiver", port, cache->getTransceiverDDMSupported(index),
                  int{cache->getTransceiverFormat(index)}, cache->getTransceiverVendorOUI(index),
                  cache->getTransceiverVendorSN(index));
    }
}

void addFabric(Lines& lines, const CacheReader& cache) {
    const FabricCache& fabric = cache.fabric();
    lines.add("fabric", fabric.getFabricWwn(), fabric._local_switch_wwn.tostring(),
              int{cache->getRootSwitchDomainID()}, fabric.getOperatingMode());

    for (const SwitchCache* s = fabric.getFirstSwitch(); s != nullptr; s = fabric.getNextSwitch(s)) {
        lines.add("member", s->getWwn(), int{s->getDomainID()}, s->isLocal() ? "local" : "remote",
                  s->getPortCount(), int{s->getManagementServerErrors()}, s->isManagementServerGivenUp());
        for (PortCache port = s->getFirstPort(); !port.isNull(); port = s->getNextPort(port)) {
            lines.add("memberport", s->getWwn(), port.getPortIndex(), port.getWwn(),
                      cache->calcPortIndex(s->getWwn(), port.getWwn()),
                      cache->calcPortWwn(s->getWwn(), std::to_string(port.getPortIndex())));
        }
    }
}

void addZoning(Lines& lines, const CacheReader& cache) {
    const datacache::ZoningDatabase zoning = cache.zoning().database();
    const auto addZones = [&](const std::string& owner, const auto& holder) {
        for (const auto& zone : holder.zones)
            lines.add("zone", owner, zone.name, zone.type, text(zone.members));
        for (const auto& alias : holder.aliases) lines.add("alias", owner, alias.name, text(alias.members));
    };
    lines.add("zoning", zoning.loaded, zoning.complete, '"' + zoning.activeZoneset + '"',
              zoning.size.zonesets, zoning.size.zones, zoning.size.aliases, zoning.size.members,
              zoning.limitsRead);
    for (const auto& zoneset : zoning.zonesets) {
        lines.add("zoneset", zoneset.name, zoneset.active ? "active" : "configured");
        addZones(zoneset.name, zoneset);
    }
    addZones("-", zoning);
}

}  // namespace

std::vector<std::string> cacheState() {
    const CacheReader cache;
    Lines lines;
    const SwitchState& local = cache.localSwitch();
    lines.add("switch", local.loaded, cache->getRootSwitchWwn(), text(local.operationalStatus),
              cache->isTransparentSwitch(), cache->isFCOESwitch(), local.ethernetPassthrough);
    addChassisAndBlades(lines, cache);
    addPorts(lines, cache);
    for (const std::string& account : cache.accounts()) lines.add("account", account);
    addFabric(lines, cache);
    addZoning(lines, cache);
    std::sort(lines.all.begin(), lines.all.end());  // not in the order in which the cache met them
    return lines.all;
}
