#include "host/areas.h"

#include <algorithm>

#include "datacache/CacheReader.h"
#include "datacache/cim_words.h"

namespace host {

using namespace datacache;

namespace {

/** A value with its word: {"code": 2, "text": "OK"}. */
Json withWord(CimValue what, uint16_t value) {
    return {{"code", value}, {"text", cimWord(what, value)}};
}

Json operationalStatus(uint16_t value) {
    return withWord(CimValue::OperationalStatus, value);
}

/** A switch's list of such values. It ends with places for faults, in which 0 stands for none. */
Json switchStatus(const std::vector<uint16_t>& values) {
    Json list = Json::array();
    for (const uint16_t value : values) {
        const bool noFault = value == 0 && !list.empty();
        list.push_back(noFault ? Json{{"code", 0}, {"text", "no fault"}} : operationalStatus(value));
    }
    return list;
}

/** Units that the chassis numbers from 1. */
template <typename States>
Json unitsOf(const States& states, uint16_t count) {
    Json units = Json::array();
    for (uint16_t i = 0; i < std::min(count, kMaxChassisParts); ++i) {
        units.push_back({{"index", i + 1}, {"status", withWord(CimValue::HardwareStatus, states[i])}});
    }
    return units;
}

/** The faults that are present; a fault's place holds 0 while it is not. */
Json faultsOf(const std::vector<unsigned short>& values) {
    Json faults = Json::array();
    for (const unsigned short value : values) {
        if (value != 0) faults.push_back(operationalStatus(value));
    }
    return faults;
}

}  // namespace

Json switchArea() {
    const CacheReader cache;
    const SwitchState& state = cache.localSwitch();
    return {
        {"area", "switch"},
        {"upToDate", upToDate(CacheArea::Switch)},
        {"wwn", state.switchWwn.tostring()},
        {"domain", cache->getRootSwitchDomainID()},
        {"operationalStatus", switchStatus(state.operationalStatus)},
        {"transparent", state.transparent},
        {"fcoe", state.fcoe},
        {"ethernetPassthrough", state.ethernetPassthrough},
    };
}

Json chassisArea() {
    const CacheReader cache;
    const ChassisState& state = cache.chassis();
    return {
        {"area", "chassis"},
        {"upToDate", upToDate(CacheArea::Chassis)},
        {"faults", faultsOf(state.switchFaults)},
        {"powerSupplies", unitsOf(state.powerSupplyStatus, state.powerSupplyCount)},
        {"fans", unitsOf(state.fanStatus, state.fanCount)},
    };
}

Json bladesArea() {
    const CacheReader cache;
    const BladeState& state = cache.blades();
    Json slots = Json::array();
    for (uint16_t slot = 0; slot < std::min(state.slotCount, kMaxSlots); ++slot) {
        const uint16_t kind = state.kind[slot];
        slots.push_back({
            {"slot", slot},
            {"kind", kind == 0 ? "-" : cimWord(CimValue::ComponentKind, kind)},
            {"operationalStatus", kind == 0 ? Json() : operationalStatus(state.operStatus[slot])},
            {"temperatureSensors", state.tempSensors[slot]},
            {"voltageSensors", state.voltageSensors[slot]},
        });
    }
    return {
        {"area", "blades"},
        {"upToDate", upToDate(CacheArea::Blades)},
        {"slotCount", state.slotCount},
        {"slots", slots},
    };
}

Json portsArea() {
    const CacheReader cache;
    const PortState& state = cache.ports();
    const TransceiverState& media = cache.transceivers();
    const Wwn local = cache->getRootSwitchWorldWideName();
    Json ports = Json::array();
    for (uint16_t port = 0; port < kPortRows; ++port) {
        if (!state.localPortsPresent.test(port)) continue;
        const bool readable = media.mediaPresent[port];
        ports.push_back({
            {"index", port},
            {"wwn", cache->calcPortWorldWideName(local, port).tostring()},
            {"operationalStatus", operationalStatus(state.portStatus[port])},
            {"type", withWord(CimValue::PortType, state.portType[port])},
            {"hardwareType", withWord(CimValue::PortHardwareType, state.portHWType[port])},
            {"transceiver",
             readable ? withWord(CimValue::TransceiverFormat, media.mediaFormat[port]) : Json()},
            {"vendorOui", readable ? Json(media.mediaVendorOUI[port]) : Json()},
            {"serialNumber", readable ? Json(media.mediaVendorSN[port]) : Json()},
        });
    }
    return {
        {"area", "ports"},
        {"upToDate", upToDate(CacheArea::Ports)},
        {"portCount", state.portCount},
        {"ports", ports},
    };
}

Json switchesOf(const FabricCache& fabric, const std::function<void(Json&, const SwitchCache&)>& add) {
    const Wwn principal = fabric.getFabricWorldWideName();
    Json switches = Json::array();
    for (const SwitchCache* one = fabric.getFirstSwitch(); one; one = fabric.getNextSwitch(one)) {
        Json fields{
            {"domain", one->getDomainID()},
            {"wwn", one->getWwn()},
            {"local", one->isLocal()},
            {"principal", !principal.isNull() && one->getWorldWideName() == principal},
        };
        add(fields, *one);
        switches.push_back(fields);
    }
    return switches;
}

Json fabricArea() {
    const CacheReader cache;
    const FabricCache& fabric = cache.fabric();
    return {
        {"area", "fabric"},
        {"upToDate", upToDate(CacheArea::Fabric)},
        {"complete", !DataCache::health().capacity().domainListFull},
        {"name", fabric.getFabricWwn()},
        {"localSwitch", cache->getRootSwitchWwn()},
        {"switches", switchesOf(fabric,
                                [](Json& fields, const SwitchCache& one) {
                                    fields["ports"] = one.getPortCount();
                                    fields["managementServerErrors"] = one.getManagementServerErrors();
                                    fields["managementServerGivenUp"] = one.isManagementServerGivenUp();
                                })},
    };
}

}  // namespace host
