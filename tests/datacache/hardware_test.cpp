#include <stdexcept>

#include "datacache/CacheReader.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

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
    /** The text of the out-of-range error that `run` ends with. */
    template <typename Run>
    static std::string thrownBy(Run run) {
        try {
            run();
        } catch (const std::out_of_range& error) {
            return error.what();
        }
        return "none";
    }
    /** Scans the ports, all of them or those that are marked. */
    bool scan(bool all) {
        const AccessGuard guard;
        if (all) cache().localPortRefreshSet();
        return peer().getPortInfo();
    }
    size_t walked() {
        size_t ports = 0;
        std::string port = cache().getFirstRootPortIndex();
        for (; !port.empty() && ports < 300; port = cache().getNextRootPortIndex(port)) ++ports;
        return ports;
    }
    static bool exists(unsigned port) { return CacheReader().ports().localPortsPresent[port]; }
    /** What the getters say of a port's transceiver: format, diagnostics, OUI, serial number. */
    std::string media(const std::string& index) {
        return std::to_string(cache().getTransceiverFormat(index)) +
               (cache().getTransceiverDDMSupported(index) ? " yes " : " no ") +
               cache().getTransceiverVendorOUI(index) + ' ' + cache().getTransceiverVendorSN(index);
    }
};

using Blades = Hardware;
using Chassis = Hardware;
using Ports = Hardware;

TEST_F(Blades, TellsWhatASlotHolds) {
    const struct {
        const char* key;  ///< behind "Oper.Blade.1."
        const char* value;
        uint16_t kind, temperature, status;
    } cases[] = {
        {"Type", "IO", 4, 7, 2},
        {"Type", "CPU", 3, 7, 2},
        {"Type", "PS", 2, 7, 2},
        {"Type", "FAN", 1, 7, 2},
        {"Type", "io", 0, 7, 2},
        {"OperState", "NotInstalled", 0, 0, 2},
        {"OperState", "PoweredOff", 0, 0, 2},
        {"OperState", "", 0, 0, 2},
        {"PlanarPartNum", "", 0, 0, 2},
        {"BoardSerialNum", "", 0, 0, 2},
        {"DiagStatus", "Failed", 4, 7, 6},
        {"TempSensors", "many", 4, 0, 2},
        {"TempSensors", "65543", 4, 7, 2},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(std::string(row.key) + " = " + row.value);
        load(chassis(2, "{slot = 1, type = 'IO', temp_sensors = 7}"));
        sim.set(std::string("Oper.Blade.1.") + row.key, row.value);
        ASSERT_TRUE(reload());
        const BladeState now = state();
        EXPECT_EQ(now.kind[1], row.kind);
        EXPECT_EQ(now.tempSensors[1], row.temperature);
        EXPECT_EQ(now.operStatus[1], row.status);
        EXPECT_EQ(now.ioBlades[1], row.kind == 4);
        EXPECT_EQ(now.cpuBlades[1], row.kind == 3);
    }
}

TEST_F(Blades, SingleSlotHasSensorsOnly) {
    start(chassis(4, "{slot = 3, type = 'IO'}"));
    sim.set("Oper.Chassis.0.MaxSlots", "1");
    sim.erase("Oper.Blade.0.TempSensors");
    sim.set("Oper.Blade.0.VoltageSensors", "3");
    ASSERT_TRUE(reload());
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: _getBladeInfo()")) << "a sensor that fails is not reported";
    EXPECT_THAT(events(), IsEmpty()) << "the blade that is gone is not reported either";
    EXPECT_TRUE(state().loaded) << "from before";
    EXPECT_EQ(state().kind[3], 0);
    const std::pair<uint16_t, uint16_t> sensors[] = {{0, 3}, {32, 0}};
    for (const auto& [slot, voltage] : sensors) {
        EXPECT_EQ(cache().getRootTemperatureSensorCount(slot), 0);
        EXPECT_EQ(cache().getRootVoltageSensorCount(slot), voltage);
    }
    sim.set("Oper.Blade.0.TempSensors", "6");
    ASSERT_TRUE(reload());
    EXPECT_EQ(cache().getRootTemperatureSensorCount(0), 6);
}

TEST_F(Blades, WalksHaveDifferentBounds) {
    start(chassis(4, "{slot = 3, type = 'IO'}"));
    EXPECT_EQ(cache().getFirstRootIOBladeIndex(), 3);
    EXPECT_EQ(cache().getNextRootIOBladeIndex(0), 3);
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: getNextRootIOBladeIndex( 0 ) returns 3"));
    EXPECT_EQ(cache().getNextRootIOBladeIndex(2), 3);
    EXPECT_EQ(cache().getNextRootIOBladeIndex(3), 65535);
    EXPECT_EQ(cache().getNextRootIOBladeIndex(65535), 3) << "the next after 65535 is 0: 16 bits";
    sim.set("Oper.Chassis.0.MaxSlots", "3");
    cache().updateChassis();
    pass();
    EXPECT_EQ(cache().getFirstRootIOBladeIndex(), 3) << "not bounded by the slots of the chassis";
    EXPECT_EQ(cache().getNextRootIOBladeIndex(0), 65535) << "bounded by them";
}

TEST_F(Blades, BeyondTheLastEntryBladesThrowAndOtherPartsOnlyCount) {
    for (const char* type : {"IO", "CPU"}) {
        for (const char* slot : {"32", "200"}) {
            SCOPED_TRACE(std::string(type) + ' ' + slot);
            load(chassis(201, std::string("{slot = ") + slot + ", type = '" + type + "'}"));
            cache().updateAll();
            EXPECT_EQ(thrownBy([&] { pass(); }), "bitset::set");
            EXPECT_TRUE(lockIsFree());
            EXPECT_TRUE(cache().workToDo());
        }
        load(chassis(32, std::string("{slot = 31, type = '") + type + "'}"));
        EXPECT_TRUE(reload()) << "the last entry";
    }
    start(chassis(202, "{slot = 200, type = 'FAN'}, {slot = 201, type = 'PS', temp_sensors = 3}"));
    EXPECT_EQ(DataCache::health().capacity.slotsBeyond, 170U);
    EXPECT_EQ(state().kind, decltype(BladeState::kind){}) << "slot 201 is the last, and has no entry";
    EXPECT_EQ(state().operStatus, decltype(BladeState::operStatus){});
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

TEST_F(Chassis, StaysInsideItsMemoryWhateverTheSwitchClaims) {
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

TEST_F(Ports, OfTheLocalSwitchAreNumberedByItsKindOfNames) {
    start(
        "switch = {wwn = '2000000DEC000001'}\nports = {count = 3, port = [{numbers = [1], type = 'Donor'}]}");
    SwitchCache* const record = cache().getFabric(1)->getSwitchByWwn("2000000DEC000001");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->_port_count, 2) << "without the donor";
    EXPECT_EQ(record->_wwn_portno[0], 1) << "Cisco counts port fields from one";
    EXPECT_EQ(record->_wwn_portno[1], 3);
    EXPECT_EQ(record->_lsdb_port_index[1], 2);
    EXPECT_EQ(cache().calcPortWorldWideName(record->_wwn, 2).tostring(), *sim.get("Oper.UserPort.0.2.WWN"));
}

TEST_F(Ports, PortCountIsCappedAndMayShrink) {
    start(kLocal + "ports = {count = 200}");
    EXPECT_EQ(cache().getMaxRootPorts(), 128);
    EXPECT_EQ(DataCache::health().capacity.localPortsBeyond, 72U);
    EXPECT_TRUE(exists(127));
    EXPECT_FALSE(exists(128));
    sim.set("Oper.Switch.MaxPorts", "100");
    EXPECT_TRUE(scan(false));
    EXPECT_TRUE(DataCache::health().capacity.complete());
    EXPECT_EQ(calls().size(), 2U) << "no port is marked";
    EXPECT_EQ(walked(), 100U);
    EXPECT_FALSE(exists(100));
    sim.set("Oper.Switch.MaxPorts", "99999999999");
    EXPECT_TRUE(scan(false));
    EXPECT_EQ(walked(), 100U) << "ports beyond the old count are read when they are marked";
    EXPECT_TRUE(scan(true));
    EXPECT_EQ(walked(), 128U);
    EXPECT_EQ(events().size(), 28U);
    EXPECT_EQ(cache().getMaxRootPorts(), 128);
}

TEST_F(Ports, WithoutTheSwitchThereIsNoRecordAndNoEvent) {
    load(kLocal + "ports = {count = 4, state = 'Offline'}");
    sim.set("Oper.Switch.WWN", "none");
    pass();
    EXPECT_TRUE(exists(1)) << "the ports are read";
    EXPECT_THAT(log(), Each(Not(HasSubstr("_processPort0Wwn"))));
    EXPECT_EQ(cache().getFabric(1)->getSwitchByWwn("1000001122AABBCC"), nullptr);
    sim.set("Oper.Switch.WWN", "1000001122AABBCC");
    sim.set("Oper.UserPort.0.3.OperState", "Online");
    cache().localPortRefreshSet(3);
    cache().updatePorts();
    pass();
    EXPECT_THAT(events(), Contains(HasSubstr("DCEventPortStatusChange"))) << "that was the first scan";
}

TEST_F(Ports, NoPortAtAllNamesPortZero) {
    start(kLocal + "ports = {count = 2, state = 'NotInstalled'}");
    EXPECT_EQ(walked(), 0U);
    EXPECT_TRUE(scan(false));
    EXPECT_THAT(calls(), Contains(HasSubstr("Oper.UserPort.0.0.WWN,")));
    for (const char* port : {"0", "1"}) sim.set(std::string("Oper.UserPort.0.") + port + ".WWN", "no name");
    sim.set("Oper.UserPort.0.1.OperState", "Online");
    EXPECT_TRUE(scan(true));
    EXPECT_TRUE(exists(1));
    EXPECT_EQ(walked(), 0U) << "without the name from which ports are named there is no walk";
}

TEST_F(Ports, IndexesOfTransceiversAreTexts) {
    start(kLocal + "ports = {count = 4, transceiver = {oui = 0x00AABB}}");
    EXPECT_EQ(media("1"), "0 yes 00AABB SIM0000000000001");
    EXPECT_EQ(media(" 01x"), media("1"));
    EXPECT_EQ(media("65537"), media("1")) << "cut to 16 bits";
    for (const char* text : {"", "x", "00", "-0", "65536"})
        EXPECT_EQ(media(text), "2 no  ") << '"' << text << "\" is read as 0 and is not \"0\"";
    EXPECT_EQ(media("255"), "2 no  ");
    for (const char* text : {"256", "65535"}) {
        EXPECT_EQ(thrownBy([&] { media(text); }), "bitset::test") << text;
        EXPECT_EQ(cache().getPortType(text), 0);
        EXPECT_EQ(cache().getPortHWType(text), 0);
    }
    EXPECT_TRUE(lockIsFree()) << "the lock is released as the exception leaves";
}

}  // namespace
