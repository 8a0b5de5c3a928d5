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

}  // namespace
