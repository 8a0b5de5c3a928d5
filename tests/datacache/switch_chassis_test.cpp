#include "tests/support/CacheTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
principal = "1000001122000001"
state = "Online"
[chassis]
power_supplies = ["Good", "Good", "NotInstalled"]
fans = ["Good", "Bad"]
slots = 4
enhanced_fault_monitoring = true
)";

const std::string kName = "wwn=1000001122AABBCC";

class SwitchChassis : public CacheTest {
  protected:
    /** The first load of switch and chassis reports nothing, however the values look. */
    void start() {
        load(kSwitch);
        settle();
        for (const std::string& event : events()) EXPECT_THAT(event, ::testing::HasSubstr("Zon")) << event;
        calls();
        log();
    }
    void powerSupply(int index, const char* state) {
        step("[[step]]\ndo = \"power_supply\"\nindex = " + std::to_string(index) + "\nstate = \"" + state +
             "\"\n");
    }
    /** Has the switch's status and the chassis read again. */
    void reload() {
        const AccessGuard guard;
        cache().updateSwitch();
        cache().updateChassis();
        cache().evaluateCaches();
    }
    std::vector<unsigned short> status() {
        const AccessGuard guard;
        return peer().switchState.operationalStatus;
    }
};

TEST_F(SwitchChassis, FillsTheCache) {
    start();
    EXPECT_EQ(cache().getRootSwitchWwn(), "1000001122AABBCC");
    EXPECT_EQ(cache().getRootSwitchWorldWideName(), Wwn(std::string("1000001122AABBCC")));
    EXPECT_EQ(cache().getRootPowerSupplyCount(), 3);
    EXPECT_FALSE(cache().isTransparentSwitch());
    EXPECT_FALSE(cache().isFCOESwitch());
    EXPECT_EQ(cache().getSwitchFaults(), (std::vector<unsigned short>{0, 0}));
    EXPECT_EQ(status(), std::vector<unsigned short>{2})
        << "the switch is read before the chassis: no faults yet";
    EXPECT_TRUE(cache().isCacheReady());
    const AccessGuard guard;
    EXPECT_EQ(peer().chassisState.fanCount, 2);
    EXPECT_EQ(peer().chassisState.fanStatus[1], HARDWARE_BAD);
    EXPECT_EQ(peer().chassisState.powerSupplyStatus[2], HARDWARE_NOT_INSTALLED);
    EXPECT_EQ(peer().bladeSlotCount, 4);
}

TEST_F(SwitchChassis, ReadsWhatItNeedsInItsOrder) {
    start();
    reload();
    EXPECT_THAT(
        calls(),
        ElementsAre("vex_smlGetBatch Oper.Switch.WhoIsPrincipal,Oper.Switch.WWN,Oper.Switch.OperState,"
                    "Oper.Switch.TransparentModeFeature,Config.Switch.TransparentMode,"
                    "Config.Mfg.ProductFeatureType,Oper.Switch.FCOEFeature,"
                    "Oper.Switch.EthernetPassthroughFeature",
                    "vex_smlGetBatch Oper.Chassis.0.PowerSupplies,Oper.Chassis.0.Fans,"
                    "Oper.Chassis.0.MaxSlots,Oper.Switch.EnhFaultMonFeature",
                    "vex_smlGetBatch Oper.Chassis.0.PowerSupply.0,Oper.Chassis.0.PowerSupply.1,"
                    "Oper.Chassis.0.PowerSupply.2,Oper.Chassis.0.Fan.0,Oper.Chassis.0.Fan.1,"
                    "Oper.Switch.FaultList,Oper.Blade.0.FaultList,Oper.Blade.1.FaultList,"
                    "Oper.Blade.2.FaultList,Oper.Blade.3.FaultList"));
    sim.set("Oper.Switch.EnhFaultMonFeature", "true");  // not exactly "True": off
    reload();
    EXPECT_EQ(calls().back(),
              "vex_smlGetBatch Oper.Chassis.0.PowerSupply.0,Oper.Chassis.0.PowerSupply.1,"
              "Oper.Chassis.0.PowerSupply.2,Oper.Chassis.0.Fan.0,Oper.Chassis.0.Fan.1,Oper.Switch.Nop,"
              "Oper.Switch.Nop,Oper.Switch.Nop,Oper.Switch.Nop,Oper.Switch.Nop");
}

TEST_F(SwitchChassis, ReportsPowerSuppliesByTheirLabel) {
    start();
    const struct {
        int index;
        const char* state;
        std::vector<std::string> events;
    } steps[] = {
        {2, "NotInstalled", {"DCEventPowerSupplyRemove " + kName + " index=2 count=1"}},
        {2, "Bad", {"DCEventPowerSupplyAdd " + kName + " index=2"}},
        {2, "Good", {}},
        {1, "Bad", {"DCEventPowerSupplyFail " + kName + " index=1 count=1"}},
        {1, "Unknown", {}},
        {1, "Bad", {"DCEventPowerSupplyFail " + kName + " index=1 count=1"}},
        {1, "Bad", {}},
        {3, "Good", {"DCEventPowerSupplyAdd " + kName + " index=3"}},
    };
    for (const auto& s : steps) {
        powerSupply(s.index, s.state);
        EXPECT_EQ(events(), s.events) << s.index << ' ' << s.state;
    }
    sim.set("Oper.Chassis.0.PowerSupply.0", "NotInstalled");
    sim.set("Oper.Chassis.0.PowerSupply.1", "Bad");
    cache().updateChassis();
    pass();
    EXPECT_THAT(events(), ElementsAre("DCEventPowerSupplyRemove " + kName + " index=1 count=1",
                                      "DCEventPowerSupplyFail " + kName + " index=2 count=1"));
}

TEST_F(SwitchChassis, FindsFaultMarkersWhereTheyCount) {
    start();
    const struct {
        const char* key;
        const char* value;
        std::vector<unsigned short> faults;
    } cases[] = {
        {"Oper.Switch.FaultList", "x HW_MP_ACCESS_CPU0", {0, 32769}},
        {"Oper.Switch.FaultList", "HW_MP_ACCESS_CPU1", {0, 32769}},
        {"Oper.Switch.FaultList", "HW_MP_DATA_MISMATCH", {0, 32769}},
        {"Oper.Switch.FaultList", "HW_MP_ACCESS", {0, 0}},
        {"Oper.Switch.FaultList", "a,FW_POST_FAIL,b", {32768, 0}},
        {"Oper.Blade.3.FaultList", "HW_MP_ACCESS", {0, 32769}},
        {"Oper.Blade.0.FaultList", "HW_MP_DATA_MISMATCH", {0, 0}},
        {"Oper.Blade.2.FaultList", "FW_POST_FAIL HW_MP_ACCESS_X", {32768, 32769}},
    };
    for (const auto& c : cases) {
        sim.set(c.key, c.value);
        reload();
        EXPECT_EQ(cache().getSwitchFaults(), c.faults) << c.key << ' ' << c.value;
        sim.set(c.key, "");
    }
}

TEST_F(SwitchChassis, ReportsTheSwitchsStatusWhenItsListChanges) {
    start();
    reload();  // only now the chassis' two zeros are part of the list
    const std::string event = "DCEventSwitchStatusChange " + kName + " principalWwn=1000001122000001 ";
    EXPECT_THAT(events(), ElementsAre(event + "previousStatus=[2] currentStatus=[2,0,0]"));
    step("[[step]]\ndo = \"switch_state\"\nstate = \"Offline\"\n");
    EXPECT_THAT(events(), ElementsAre(event + "previousStatus=[2,0,0] currentStatus=[10,0,0]"));
    sim.set("Config.Switch.TransparentMode", "True");
    sim.set("Oper.Switch.FCOEFeature", "True");
    reload();
    EXPECT_THAT(events(), IsEmpty()) << "features alone are no change of status";
    EXPECT_FALSE(cache().isTransparentSwitch()) << "the mode counts only with the feature";
    EXPECT_TRUE(cache().isFCOESwitch());
    sim.set("Oper.Switch.FaultList", "FW_POST_FAIL");
    reload();
    EXPECT_THAT(events(), IsEmpty()) << "the fault is seen after the switch was read";
    reload();
    EXPECT_THAT(events(), ElementsAre(event + "previousStatus=[10,0,0] currentStatus=[6,32768,0]"));
}

TEST_F(SwitchChassis, KeepsTheOldStateThroughFailedReads) {
    start();
    const auto failOnce = [this](const char* key, const char* effect) {
        sim.run(std::string("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\ntimes = 1\nkey = \"") +
                key + "\"\n" + effect + "\n");
    };
    failOnce("Oper.Switch.WWN", "status = 24");
    sim.set("Oper.Chassis.0.PowerSupply.0", "NotInstalled");
    reload();
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: evaluateCaches", "2 DCACHE: Updating switch cache",
                                   "2 DCACHE: _getSwitchInfo()",
                                   "2 DCACHE: Cache update failed: DataCache:_getSwitchInfo:1351",
                                   "2 DCACHE: Updating chassis cache", "2 DCACHE: _getChassisInfo()",
                                   "2 DCACHE: _switchOK = false"));
    EXPECT_THAT(allEvents(), ElementsAre("DCEventPowerSupplyRemove " + kName + " index=1 count=1"))
        << "other areas go on, but the cache is not complete";
    EXPECT_FALSE(cache().isCacheReady());

    sim.set("Oper.Switch.WWN", "0000000000000000");
    pass();
    EXPECT_THAT(log(), Contains("2 DCACHE: Cache update failed: DataCache:_getSwitchInfo:1364"));
    EXPECT_EQ(cache().getRootSwitchWwn(), "1000001122AABBCC");
    sim.set("Oper.Switch.WWN", "1000001122AABBCC");
    EXPECT_TRUE(pass());

    // The counts' read fails: nothing changes. The parts' read fails: the counts are new, the statuses old.
    sim.set("Oper.Chassis.0.PowerSupplies", "2");
    failOnce("Oper.Chassis.0.Fans", "result = 9");
    events();
    log();
    reload();
    EXPECT_EQ(cache().getRootPowerSupplyCount(), 3);
    EXPECT_THAT(log(), Not(Contains(::testing::HasSubstr("Cache update failed"))));
    sim.set("Oper.Chassis.0.PowerSupply.1", "Bad");
    failOnce("Oper.Chassis.0.Fan.1", "status = 5");
    pass();
    EXPECT_EQ(cache().getRootPowerSupplyCount(), 2);
    EXPECT_FALSE(cache().isCacheReady());
    {
        const AccessGuard guard;
        EXPECT_EQ(peer().chassisState.powerSupplyStatus[1], HARDWARE_GOOD);
    }
    events();
    EXPECT_TRUE(pass()) << "a failed area is read again by the next pass";
    EXPECT_THAT(events(), ElementsAre("DCEventPowerSupplyFail " + kName + " index=2 count=0"));
}

TEST_F(SwitchChassis, StaysInsideItsMemoryWhateverTheSwitchClaims) {
    const struct {
        const char* supplies;
        const char* fans;
        const char* slots;
        uint16_t suppliesKept, fansKept, slotsKept;
    } cases[] = {
        {"10000", "65535", "65535", 16, 16, 65535},
        {"17", "16", "257", 16, 16, 257},
        {"-1", "-65535", "-5", 0, 0, 0},
        {"none", "", "1", 0, 0, 0},
        {"4294967295", "99999999999999999999", "65537", 16, 16, 0},
        {"2x", " 3", "0", 2, 3, 0},
    };
    for (const auto& c : cases) {
        load(kSwitch);
        for (int i = 0; i < 16; ++i) {
            sim.set("Oper.Chassis.0.PowerSupply." + std::to_string(i), "Good");
            sim.set("Oper.Chassis.0.Fan." + std::to_string(i), "Good");
        }
        for (int i = 0; i < 256; ++i) sim.set("Oper.Blade." + std::to_string(i) + ".FaultList", "");
        sim.set("Oper.Chassis.0.PowerSupplies", c.supplies);
        sim.set("Oper.Chassis.0.Fans", c.fans);
        sim.set("Oper.Chassis.0.MaxSlots", c.slots);
        const AccessGuard guard;
        EXPECT_EQ(peer().getChassisInfo(), 1) << c.supplies;
        EXPECT_EQ(cache().getRootPowerSupplyCount(), c.suppliesKept) << c.supplies;
        EXPECT_EQ(peer().chassisState.fanCount, c.fansKept) << c.fans;
        EXPECT_EQ(peer().bladeSlotCount, c.slotsKept) << c.slots;
    }
}

TEST_F(SwitchChassis, ReadsUnterminatedValuesWithTheirBound) {
    start();
    sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\ntimes = 0\nunterminated = true\n");
    {
        const AccessGuard guard;
        EXPECT_EQ(peer().getChassisInfo(), 1);
        EXPECT_EQ(peer().getSwitchInfo(), 0) << "a name of 256 characters is no name";
    }
    EXPECT_EQ(cache().getRootSwitchWwn(), "1000001122AABBCC");
}

}  // namespace
