#include <stdexcept>

#include "datacache/CacheReader.h"
#include "tests/support/CacheTest.h"

namespace {

using namespace testing;

const std::string kLocal = "switch = {wwn = '1000001122AABBCC'}\n";

/** A chassis with a blade as it stands in a switch file. */
std::string chassis(int slots, const std::string& blades) {
    return kLocal + "blade = [" + blades + "]\nchassis = {slots = " + std::to_string(slots) + "}\n";
}

class Hardware : public CacheTest {
  protected:
    bool reload() {
        const AccessGuard guard;
        return peer().getBladeInfo();
    }
    static BladeState state() { return CacheReader().blades(); }
    /** Scans the ports, all of them or those that are marked. */
    bool scan(bool all) {
        const AccessGuard guard;
        if (all) cache().localPortRefreshSet();
        return peer().getPortInfo();
    }
    static const std::bitset<kPortRows>& present() { return CacheReader().ports().localPortsPresent; }
};

using Blades = Hardware;
using Chassis = Hardware;
using Ports = Hardware;

TEST_F(Blades, TellsWhatASlotHolds) {
    const struct {
        const char *key, *value;  ///< behind "Oper.Blade.1."
        uint16_t kind, temperature;
    } cases[] = {
        {"Type", "io", 0, 7},         {"OperState", "", 0, 0},        {"PlanarPartNum", "", 0, 0},
        {"BoardSerialNum", "", 0, 0}, {"TempSensors", "65543", 4, 7},
    };
    for (const auto& row : cases) {
        load(chassis(2, "{slot = 1, type = 'IO', temp_sensors = 7}"));
        sim.set(std::string("Oper.Blade.1.") + row.key, row.value);
        ASSERT_TRUE(reload());
        EXPECT_EQ(state().kind[1], row.kind) << row.key;
        EXPECT_EQ(state().tempSensors[1], row.temperature) << row.key;
    }
}

TEST_F(Blades, SingleSlotHasSensorsOnly) {
    start(chassis(4, "{slot = 3, type = 'IO'}"));
    sim.set("Oper.Chassis.0.MaxSlots", "1");
    sim.erase("Oper.Blade.0.TempSensors");
    sim.set("Oper.Blade.0.VoltageSensors", "3");
    ASSERT_TRUE(reload());
    EXPECT_EQ(cache().getRootVoltageSensorCount(0), 3) << "each sensor fails alone";
    EXPECT_EQ(cache().getRootVoltageSensorCount(32), 0);
    sim.set("Oper.Blade.0.TempSensors", "6");
    ASSERT_TRUE(reload());
    EXPECT_EQ(cache().getRootTemperatureSensorCount(0), 6);
    EXPECT_EQ(cache().getRootTemperatureSensorCount(32), 0);
    EXPECT_THAT(events(), IsEmpty()) << "the blade that is gone is not reported";
    EXPECT_EQ(state().kind[3], 0);
}

TEST_F(Blades, WalksHaveDifferentBounds) {
    start(chassis(4, "{slot = 3, type = 'IO'}"));
    EXPECT_EQ(cache().getNextRootIOBladeIndex(0), 3);
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: getNextRootIOBladeIndex( 0 ) returns 3"));
    EXPECT_EQ(cache().getNextRootIOBladeIndex(3), 65535);
    EXPECT_EQ(cache().getNextRootIOBladeIndex(65535), 3) << "the next after 65535 is 0: 16 bits";
    sim.set("Oper.Chassis.0.MaxSlots", "3");
    cache().updateChassis();
    pass();
    EXPECT_EQ(cache().getFirstRootIOBladeIndex(), 3) << "not bounded by the slots of the chassis";
    EXPECT_EQ(cache().getNextRootIOBladeIndex(0), 65535) << "bounded by them";
}

TEST_F(Blades, BeyondTheLastEntryBladesThrowAndOtherPartsOnlyCount) {
    for (const std::string type : {"IO", "CPU"}) {
        load(chassis(201, "{slot = 32, type = '" + type + "'}"));
        cache().updateAll();
        EXPECT_THAT([&] { pass(); }, ThrowsMessage<std::out_of_range>("bitset::set")) << type;
        EXPECT_TRUE(lockIsFree());
        EXPECT_TRUE(cache().workToDo());
        load(chassis(32, "{slot = 31, type = '" + type + "'}"));
        EXPECT_TRUE(reload());
        EXPECT_NE(state().kind[31], 0) << "the last entry";
    }
    start(chassis(202, "{slot = 200, type = 'FAN'}, {slot = 201, type = 'PS', temp_sensors = 3}"));
    EXPECT_EQ(DataCache::health().capacity().slotsBeyond, 170U);
    EXPECT_EQ(state().kind, decltype(BladeState::kind){}) << "slot 201 is the last, and has no entry";
    peer().bladeState.kind[5] = 1;
    peer().bladeState.kind[6] = 2;
    ASSERT_TRUE(reload());
    EXPECT_THAT(events(), ElementsAre("DCEventFanRemove wwn=1000001122AABBCC index=5 count=1",
                                      "DCEventPowerSupplyRemove wwn=1000001122AABBCC index=6 count=1"));
}

TEST_F(Chassis, FindsFaultMarkersWhereTheyCount) {
    start(kLocal + "chassis = {slots = 4, enhanced_fault_monitoring = true}");
    const struct {
        const char *key, *value;
        std::vector<unsigned short> faults;
    } cases[] = {
        {"Oper.Switch.FaultList", "HW_MP_DATA_MISMATCH", {0, 32769}},
        {"Oper.Switch.FaultList", "HW_MP_ACCESS", {0, 0}},
        {"Oper.Blade.3.FaultList", "HW_MP_ACCESS", {0, 32769}},
        {"Oper.Blade.0.FaultList", "HW_MP_DATA_MISMATCH", {0, 0}},
    };
    for (const auto& c : cases) {
        sim.set(c.key, c.value);
        cache().updateChassis();
        pass();
        EXPECT_EQ(cache().getSwitchFaults(), c.faults) << c.key << ' ' << c.value;
        sim.set(c.key, "");
    }
}

TEST_F(Chassis, StaysInsideItsMemoryWhateverTheSwitchClaims) {
    const struct {
        const char *supplies, *fans, *slots;
        uint16_t suppliesKept, fansKept, slotsKept;
    } cases[] = {
        {"17", "65535", "65535", 16, 16, 65535},
        {"-1", "-65535", "-5", 0, 0, 0},
        {"4294967295", "99999999999999999999", "65537", 16, 16, 0},
    };
    load(kLocal + "chassis = {slots = 4, enhanced_fault_monitoring = true}");
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
        EXPECT_EQ(CacheReader().chassis().fanCount, c.fansKept) << c.fans;
        EXPECT_EQ(peer().bladeSlotCount, c.slotsKept) << c.slots;
    }
}

TEST_F(Ports, PortCountIsCappedAndMayShrink) {
    start(kLocal + "ports = {count = 200}");
    EXPECT_EQ(cache().getMaxRootPorts(), 128);
    EXPECT_EQ(DataCache::health().capacity().localPortsBeyond, 72U);
    sim.set("Oper.Switch.MaxPorts", "100");
    EXPECT_TRUE(scan(false));
    EXPECT_TRUE(DataCache::health().capacity().complete());
    EXPECT_EQ(calls().size(), 2U) << "no port is marked";
    EXPECT_EQ(present().count(), 100U);
    sim.set("Oper.Switch.MaxPorts", "99999999999");
    EXPECT_TRUE(scan(false));
    EXPECT_EQ(present().count(), 100U) << "ports beyond the old count are read when they are marked";
    EXPECT_TRUE(scan(true));
    EXPECT_EQ(present().count(), 128U);
    EXPECT_EQ(events().size(), 28U);
    for (const size_t gone : {size_t{0}, size_t{64}, size_t{127}})
        peer().portState.localPortsPresent[gone] = false;
    size_t walked = 0;
    std::string port = cache().getFirstRootPortIndex();
    for (; !port.empty() && walked < 300; port = cache().getNextRootPortIndex(port)) ++walked;
    EXPECT_EQ(walked, 125U) << "absent ports are passed over";
    peer().portState.port0Wwn = Wwn();
    EXPECT_EQ(cache().getFirstRootPortIndex(), "") << "without the name from which ports are named";
}

TEST_F(Ports, WithoutTheSwitchThereIsNoRecordAndNoEvent) {
    load(kLocal + "ports = {count = 4, state = 'Offline'}");
    sim.set("Oper.Switch.WWN", "none");
    pass();
    EXPECT_EQ(present().count(), 4U) << "the ports are read";
    EXPECT_THAT(log(), Each(Not(HasSubstr("_processPort0Wwn"))));
    EXPECT_EQ(cache().getFabric(1)->getSwitchByWwn("1000001122AABBCC"), nullptr);
}

TEST_F(Ports, IndexesOfTransceiversAreTexts) {
    start(kLocal + "ports = {count = 4, transceiver = {oui = 0x00AABB}}");
    EXPECT_EQ(media("1"), "0 yes 00AABB SIM0000000000001");
    EXPECT_EQ(media(" 01x"), media("1"));
    EXPECT_EQ(media("65537"), media("1")) << "cut to 16 bits";
    EXPECT_EQ(media("00"), "2 no  ") << "read as 0 and not \"0\"";
    EXPECT_EQ(cache().getRootPortIndexForTransceiver("00AABB", "SIM0000000000003"), "3");
    EXPECT_EQ(cache().getRootPortIndexForTransceiver("00AABC", "SIM0000000000003"), "");
    EXPECT_EQ(cache().getRootPortIndexForTransceiver("00AABB", ""), "") << "port 0 has no diagnostics";
    EXPECT_THAT([&] { media("256"); }, ThrowsMessage<std::out_of_range>("bitset::test"));
    EXPECT_EQ(cache().getPortType("256"), 0);
    EXPECT_EQ(cache().getPortHWType("256"), 0);
    EXPECT_TRUE(lockIsFree()) << "the lock is released as the exception leaves";
}

}  // namespace
