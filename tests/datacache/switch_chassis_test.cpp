#include "tests/support/CacheTest.h"

namespace {

class SwitchChassis : public CacheTest {
  protected:
    const std::string kSwitch =
        "switch = {wwn = '1000001122AABBCC'}\nchassis = {slots = 4, enhanced_fault_monitoring = true}";
};

TEST_F(SwitchChassis, FindsFaultMarkersWhereTheyCount) {
    start(kSwitch);
    const struct {
        const char *key, *value;
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
        cache().updateChassis();
        pass();
        EXPECT_EQ(cache().getSwitchFaults(), c.faults) << c.key << ' ' << c.value;
        sim.set(c.key, "");
    }
}

TEST_F(SwitchChassis, StaysInsideItsMemoryWhateverTheSwitchClaims) {
    const struct {
        const char *supplies, *fans, *slots;
        uint16_t suppliesKept, fansKept, slotsKept;
    } cases[] = {
        {"10000", "65535", "65535", 16, 16, 65535},
        {"17", "16", "257", 16, 16, 257},
        {"-1", "-65535", "-5", 0, 0, 0},
        {"none", "", "1", 0, 0, 0},
        {"4294967295", "99999999999999999999", "65537", 16, 16, 0},
        {"2x", " 3", "0", 2, 3, 0},
    };
    load(kSwitch);
    for (int i = 0; i < 256; ++i) {
        const std::string number = std::to_string(i);
        if (i < 16) sim.set("Oper.Chassis.0.PowerSupply." + number, "Good");
        if (i < 16) sim.set("Oper.Chassis.0.Fan." + number, "Good");
        sim.set("Oper.Blade." + number + ".FaultList", "");
    }
    for (const auto& c : cases) {
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

}  // namespace
