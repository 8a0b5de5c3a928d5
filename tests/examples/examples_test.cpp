// The example switches through the real library: what they show, and what a start-up asks of the switch.
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "tests/support/CacheTest.h"

namespace {

/** An example switch with a scenario for it. */
struct Example {
    const char* switchFile;
    const char* scenario;
};

constexpr Example kExamples[] = {
    {"blade-module.toml", "blade-module.scenario.toml"},
    {"modular-chassis.toml", "modular-chassis.scenario.toml"},
    {"modular-chassis.toml", "fabric.scenario.toml"},
};

std::string contents(const char* name) {
    std::ifstream file(std::string(EXAMPLES_DIR "/") + name);
    std::ostringstream text;
    text << file.rdbuf();
    EXPECT_TRUE(file.good()) << name;
    return text.str();
}

/** The scenario's steps, one text each. */
std::vector<std::string> stepsOf(const std::string& scenario) {
    static const std::string kHead = "[[step]]";
    std::vector<std::string> steps;
    for (size_t at = scenario.find(kHead); at != std::string::npos;) {
        const size_t next = scenario.find(kHead, at + kHead.size());
        steps.push_back(scenario.substr(at, next - at));
        at = next;
    }
    return steps;
}

class Examples : public CacheTest {
  protected:
    /** The accounts are read when the host asks; this host asks after every step. */
    void readAccounts() {
        const AccessGuard guard;
        cache()._getAcctInfo();
    }
};

TEST_F(Examples, ShowEveryClassOfEvent) {
    std::set<std::string> seen;
    for (const Example& example : kExamples) {
        delete std::exchange(DataCache::instance, nullptr);
        load(contents(example.switchFile));
        settle();
        readAccounts();
        for (const std::string& step : stepsOf(contents(example.scenario))) {
            sim.run(step, example.scenario);
            settle();
            readAccounts();
        }
        EXPECT_TRUE(cache().isCacheReady()) << example.scenario << " leaves something broken";
        for (const std::string& event : allEvents()) seen.insert(event.substr(0, event.find(' ')));
        delete std::exchange(DataCache::instance, nullptr);
        EXPECT_EQ(sim.live().texts + sim.live().zonesets + sim.live().members, 0U) << example.switchFile;
    }
    const std::set<std::string> all = {
        "DCEventFabricAdd",       "DCEventFabricRemove",     "DCEventFabricChange",
        "DCEventSwitchAdd",       "DCEventSwitchRemove",     "DCEventSwitchStatusChange",
        "DCEventBladeAdd",        "DCEventBladeRemove",      "DCEventPortAdd",
        "DCEventPortRemove",      "DCEventPortStatusChange", "DCEventFanAdd",
        "DCEventFanRemove",       "DCEventPowerSupplyAdd",   "DCEventPowerSupplyRemove",
        "DCEventPowerSupplyFail", "DCEventCPUAdd",           "DCEventCPURemove",
        "DCEventUserAcctAdd",     "DCEventUserAcctRemove",   "DCEventActiveZonesetChange",
        "DCEventZoningDBChange",  "DCEventUserPasswdChg",    "DCEventUserLoginFailure",
        "DCEventEnvEvent",        "DCEventCIMChange",        "DCEventDataCacheUpdateComplete",
    };
    EXPECT_EQ(seen, all);
}

/** Calls with their numbers as "#", and runs of the same call as one with its count in front. */
std::vector<std::string> condensed(const std::vector<std::string>& calls) {
    static const std::regex kNumber("\\.[0-9]+(?=[.,]|$)");
    std::vector<std::pair<std::string, int>> runs;
    for (const std::string& call : calls) {
        std::string shape = std::regex_replace(call, kNumber, ".#");
        if (shape.back() == ' ') shape.pop_back();  // a call without arguments
        if (runs.empty() || runs.back().first != shape) runs.emplace_back(std::move(shape), 0);
        ++runs.back().second;
    }
    std::vector<std::string> lines;
    for (const auto& [shape, count] : runs) lines.push_back(std::to_string(count) + " " + shape);
    return lines;
}

TEST_F(Examples, StartUpAsksTheSwitchInThisOrder) {
    load(contents("modular-chassis.toml"));
    settle();
    std::vector<std::string> requests;
    for (const std::string& call : calls()) {
        // What is asked of a zoneset's objects in memory is no request to the switch.
        if (call.find("vex_Zone") != 0 && call.find("vex_Member") != 0) requests.push_back(call);
    }
    const std::vector<std::string> expected = {
        "1 vex_IPConnect localhost,cim,",
        "1 vex_fzsGetZoningLimitations",
        "1 vex_enRegisterForEventList 32,52,57,28,39,29,82,50,14,15,72,73,33,40,74,75,76,77,"
        "78,16,68,69,79,80,3,1,7,70",
        "1 vex_smlGetBatch Oper.Switch.WhoIsPrincipal,Oper.Switch.WWN,Oper.Switch.OperState,"
        "Oper.Switch.TransparentModeFeature,Config.Switch.TransparentMode,"
        "Config.Mfg.ProductFeatureType,Oper.Switch.FCOEFeature,"
        "Oper.Switch.EthernetPassthroughFeature",
        "1 vex_smlGetBatch Oper.Chassis.#.PowerSupplies,Oper.Chassis.#.Fans,"
        "Oper.Chassis.#.MaxSlots,Oper.Switch.EnhFaultMonFeature",
        "1 vex_smlGetBatch Oper.Chassis.#.PowerSupply.#,Oper.Chassis.#.PowerSupply.#,"
        "Oper.Chassis.#.PowerSupply.#,Oper.Chassis.#.PowerSupply.#,Oper.Chassis.#.Fan.#,"
        "Oper.Chassis.#.Fan.#,Oper.Chassis.#.Fan.#,Oper.Switch.FaultList,"
        "Oper.Blade.#.FaultList,Oper.Blade.#.FaultList,Oper.Blade.#.FaultList,"
        "Oper.Blade.#.FaultList,Oper.Blade.#.FaultList,Oper.Blade.#.FaultList,"
        "Oper.Blade.#.FaultList,Oper.Blade.#.FaultList",
        "1 vex_smlGetBatch Oper.Chassis.#.MaxSlots",
        "8 vex_smlGetBatch Oper.Blade.#.OperState,Oper.Blade.#.PlanarPartNum,"
        "Oper.Blade.#.BoardSerialNum,Oper.Blade.#.Type,Oper.Blade.#.AdminState,"
        "Oper.Blade.#.DiagStatus,Oper.Blade.#.TempSensors,Oper.Blade.#.VoltageSensors",
        "1 vex_smlGetBatch Oper.Switch.MaxPorts",
        "128 vex_smlGetBatch Oper.UserPort.#.#.OperState,Oper.UserPort.#.#.AdminState,"
        "Config.UserPort.#.#.Type,Oper.UserPort.#.#.DDM.Supported,"
        "Oper.UserPort.#.#.SFPData0_31,Oper.UserPort.#.#.SFPData32_63,"
        "Oper.UserPort.#.#.SFPSerialNumber,Oper.UserPort.#.#.HWType",
        "1 vex_smlGetBatch Oper.UserPort.#.#.WWN,Oper.Switch.DomainID,"
        "Oper.Switch.WhoIsPrincipal",
        "1 vex_smlGetBatch Oper.Switch.WhoIsPrincipal,Oper.Switch.WWN,Oper.Switch.DomainID",
        "1 vex_smlGetBatch Oper.Eport.LsdbRecordList.#",
        "4 vex_smlGetBatch Oper.Eport.LsdbRecord.#.WWN,Oper.Eport.LsdbRecord.#.Hops",
        "1 vex_smlGetBatch Oper.TopologyAll.#.PortEntries",
        "32 vex_smlGetBatch Oper.TopologyAll.#.Entry.#.PortWwn",
        "1 vex_smlGetBatch Oper.TopologyAll.#.PortEntries",
        "16 vex_smlGetBatch Oper.TopologyAll.#.Entry.#.PortWwn",
        "1 vex_smlGetBatch Oper.TopologyAll.#.PortEntries",
        "24 vex_smlGetBatch Oper.TopologyAll.#.Entry.#.PortWwn",
        "1 vex_smlGetBatch Oper.Switch.WhoIsPrincipal,Oper.Zoning.ActiveChecksum,"
        "Oper.Zoning.InactiveChecksum,Oper.Zoning.ActiveZoneSet",
        "1 vex_fzsGetActiveZoneset",
        "1 vex_fzsGetZonesetList",
        "1 vex_fzsGetZoneset production",
        "1 vex_fzsGetZoneset night",
        "1 vex_fzsGetAllZonesAndAliases __UberZoneset__"};
    EXPECT_EQ(condensed(requests), expected);
}

}  // namespace
