#include "host/areas.h"

#include <algorithm>

#include "datacache/ChassisState.h"
#include "host/cache_reader.h"

namespace {

struct Word {
    uint16_t code;
    const char* text;
};

constexpr Word operationalStatusWords[] = {
    {0, "Unknown"},
    {1, "Other"},
    {2, "OK"},
    {3, "Degraded"},
    {4, "Stressed"},
    {5, "Predictive Failure"},
    {6, "Error"},
    {7, "Non-Recoverable Error"},
    {8, "Starting"},
    {9, "Stopping"},
    {10, "Stopped"},
    {11, "In Service"},
    {12, "No Contact"},
    {13, "Lost Communication"},
    {14, "Aborted"},
    {15, "Dormant"},
    {16, "Supporting Entity in Error"},
    {17, "Completed"},
    {18, "Power Mode"},
    {32768, "Self test failed"},
    {32769, "Management processor fault"},
};

constexpr Word hardwareStatusWords[] = {
    {HARDWARE_UNKNOWN, "unknown"},
    {HARDWARE_GOOD, "good"},
    {HARDWARE_BAD, "bad"},
    {HARDWARE_NOT_INSTALLED, "not installed"},
};

constexpr Word portTypeWords[] = {
    {0, "unknown"},   {2, "G"},      {3, "GL"},     {4, "E"},      {5, "F"},      {6, "FL"},
    {16000, "Donor"}, {16001, "TH"}, {16002, "TF"}, {16003, "TR"}, {16004, "PT"},
};

constexpr Word portHardwareWords[] = {{0, "unknown"}, {1, "GL"}, {2, "EXG"}};

constexpr Word transceiverWords[] = {{0, "SFP"}, {1, "other"}, {2, "unknown"}};

template <size_t Size>
Json withWord(const Word (&words)[Size], uint16_t code) {
    const char* text = "?";
    for (const Word& word : words) {
        if (word.code == code) text = word.text;
    }
    return {{"code", code}, {"text", text}};
}

/** A CIM OperationalStatus value with its word (DMTF CIM schema, CIM_ManagedSystemElement; 32768 and 32769
 * are this system's own): {"code": 2, "text": "OK"}. */
Json operationalStatus(uint16_t value) {
    return withWord(operationalStatusWords, value);
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

Json hardwareStatus(uint16_t value) {
    return withWord(hardwareStatusWords, value);
}

Json portType(uint16_t value) {
    return withWord(portTypeWords, value);
}

Json portHardwareType(uint16_t value) {
    return withWord(portHardwareWords, value);
}

Json transceiverFormat(uint16_t value) {
    return withWord(transceiverWords, value);
}

/** Units that the chassis numbers from 1. */
template <typename States>
Json unitsOf(const States& states, uint16_t count) {
    Json units = Json::array();
    for (uint16_t i = 0; i < std::min(count, kMaxChassisParts); ++i) {
        units.push_back({{"index", i + 1}, {"status", hardwareStatus(states[i])}});
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
    const SwitchState& state = cache->_switchState;
    return {
        {"area", "switch"},
        {"upToDate", upToDate(*cache, "switch")},
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
    const ChassisState& state = cache->_chassisState;
    return {
        {"area", "chassis"},
        {"upToDate", upToDate(*cache, "chassis")},
        {"faults", faultsOf(state.switchFaults)},
        {"powerSupplies", unitsOf(state.powerSupplyStatus, state.powerSupplyCount)},
        {"fans", unitsOf(state.fanStatus, state.fanCount)},
    };
}

Json bladesArea() {
    const CacheReader cache;
    static constexpr const char* kinds[] = {"-", "fan", "power supply", "CPU blade", "I/O blade"};
    const BladeState& state = cache->_bladeState;
    Json slots = Json::array();
    for (uint16_t slot = 0; slot < std::min(state.slotCount, kMaxSlots); ++slot) {
        const uint16_t kind = state.kind[slot];
        slots.push_back({
            {"slot", slot},
            {"kind", kind < std::size(kinds) ? kinds[kind] : "?"},
            {"operationalStatus", kind == 0 ? Json() : operationalStatus(state.operStatus[slot])},
            {"temperatureSensors", state.tempSensors[slot]},
            {"voltageSensors", state.voltageSensors[slot]},
        });
    }
    return {
        {"area", "blades"},
        {"upToDate", upToDate(*cache, "blades")},
        {"slotCount", state.slotCount},
        {"slots", slots},
    };
}

Json portsArea() {
    const CacheReader cache;
    const PortState& state = cache->_portState;
    const TransceiverState& media = cache->_transceivers;
    const Wwn local = cache->getRootSwitchWorldWideName();
    Json ports = Json::array();
    for (uint16_t port = 0; port < kPortRows; ++port) {
        if (!state.localPortsPresent.test(port)) continue;
        const bool readable = media.mediaPresent[port];
        ports.push_back({
            {"index", port},
            {"wwn", cache->calcPortWorldWideName(local, port).tostring()},
            {"operationalStatus", operationalStatus(state.portStatus[port])},
            {"type", portType(state.portType[port])},
            {"hardwareType", portHardwareType(state.portHWType[port])},
            {"transceiver", readable ? transceiverFormat(media.mediaFormat[port]) : Json()},
            {"vendorOui", readable ? Json(media.mediaVendorOUI[port]) : Json()},
            {"serialNumber", readable ? Json(media.mediaVendorSN[port]) : Json()},
        });
    }
    return {
        {"area", "ports"},
        {"upToDate", upToDate(*cache, "ports")},
        {"portCount", state.portCount},
        {"ports", ports},
    };
}

Json fabricArea() {
    const CacheReader cache;
    const FabricCache& fabric = cache->_fabric;
    const Wwn principal = fabric.getFabricWorldWideName();
    Json switches = Json::array();
    for (const SwitchCache* one = fabric.getFirstSwitch(); one; one = fabric.getNextSwitch(one)) {
        switches.push_back({
            {"domain", one->getDomainID()},
            {"wwn", one->getWwn()},
            {"local", one->isLocal()},
            {"principal", !principal.isNull() && one->getWorldWideName() == principal},
            {"ports", one->_port_count},
            {"managementServerErrors", one->_mserver_errors},
            {"managementServerGivenUp", one->_mserver_timeout},
        });
    }
    return {
        {"area", "fabric"},
        {"upToDate", upToDate(*cache, "fabric")},
        {"complete", !domainListFilled()},
        {"name", principal.tostring()},
        {"localSwitch", fabric._local_switch_wwn.tostring()},
        {"switches", switches},
    };
}
