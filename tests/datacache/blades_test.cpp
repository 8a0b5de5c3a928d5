#include <stdexcept>
#include <thread>

#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kName = "wwn=1000001122AABBCC";

/** A chassis of `slots` slots, with blades as switch files describe them. */
std::string chassis(int slots, const std::string& blades = "") {
    return "[switch]\nwwn = \"1000001122AABBCC\"\n[chassis]\nslots = " + std::to_string(slots) + '\n' +
           blades;
}

std::string blade(int slot, const char* type, const std::string& more = "") {
    return "[[blade]]\nslot = " + std::to_string(slot) + "\ntype = \"" + type + "\"\n" + more;
}

class Blades : public CacheTest {
  protected:
    void start(const std::string& toml) {
        load(toml);
        {
            const AccessGuard guard;  // only the areas that matter here
            EXPECT_TRUE(peer().getSwitchInfo() && peer().getChassisInfo() && peer().getBladeInfo());
        }
        EXPECT_THAT(events(), IsEmpty()) << "the first load reports nothing";
        calls();
        log();
    }
    bool reload() {
        const AccessGuard guard;
        return peer().getBladeInfo();
    }
    BladeState state() {
        const AccessGuard guard;
        return peer().bladeState;
    }
    void fault(const std::string& fields) { sim.run("[[step]]\ndo = \"fault\"\n" + fields); }
    /** The text of the out-of-range error that `run` ends with; empty for none. */
    template <typename Run>
    std::string thrown(Run run) {
        try {
            run();
        } catch (const std::out_of_range& error) {
            return error.what();
        }
        return "";
    }
    static std::string slotRequest(int slot) {
        const std::string key = "Oper.Blade." + std::to_string(slot) + '.';
        return "vex_smlGetBatch " + key + "OperState," + key + "PlanarPartNum," + key + "BoardSerialNum," +
               key + "Type," + key + "AdminState," + key + "DiagStatus," + key + "TempSensors," + key +
               "VoltageSensors";
    }
};

TEST_F(Blades, TellsWhatASlotHolds) {
    const struct {
        const char* what;
        const char* key;  ///< behind "Oper.Blade.1."
        const char* value;
        uint16_t kind, temperature, status;
    } cases[] = {
        {"an I/O blade", "Type", "IO", 4, 7, 2},
        {"a CPU blade", "Type", "CPU", 3, 7, 2},
        {"a power supply", "Type", "PS", 2, 7, 2},
        {"a fan", "Type", "FAN", 1, 7, 2},
        {"something else", "Type", "io", 0, 7, 2},
        {"nothing", "OperState", "NotInstalled", 0, 0, 2},
        {"a blade without power", "OperState", "PoweredOff", 0, 0, 2},
        {"no state", "OperState", "", 0, 0, 2},
        {"no part number", "PlanarPartNum", "", 0, 0, 2},
        {"no serial number", "BoardSerialNum", "", 0, 0, 2},
        {"a blade whose test failed", "DiagStatus", "Failed", 4, 7, 6},
        {"sensors that are no number", "TempSensors", "many", 4, 0, 2},
        {"sensors beyond 16 bits", "TempSensors", "65543", 4, 7, 2},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.what);
        load(chassis(2, blade(1, "IO", "temp_sensors = 7\n")));
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

TEST_F(Blades, ReportsChangesOfTheLastSlot) {
    start(chassis(4, blade(0, "FAN") + blade(1, "PS") + blade(2, "PS")));
    const struct {
        const char* type;  ///< what slot 3 holds next
        std::vector<std::string> events;
    } changes[] = {
        {"FAN", {"DCEventFanAdd " + kName + " index=3"}},
        {"PS",
         {"DCEventPowerSupplyAdd " + kName + " index=3", "DCEventFanRemove " + kName + " index=3 count=1"}},
        {"CPU",
         {"DCEventCPUAdd " + kName + " index=3", "DCEventPowerSupplyRemove " + kName + " index=3 count=2"}},
        {"IO", {"DCEventBladeAdd " + kName + " index=3", "DCEventCPURemove " + kName + " index=3"}},
        {"", {"DCEventBladeRemove " + kName + " index=3"}},
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(change.type);
        sim.set("Oper.Blade.3.OperState", change.type[0] == '\0' ? "PoweredOff" : "Online");
        sim.set("Oper.Blade.3.PlanarPartNum", "P");
        sim.set("Oper.Blade.3.BoardSerialNum", "S");
        sim.set("Oper.Blade.3.Type", change.type);
        ASSERT_TRUE(reload());
        EXPECT_EQ(events(), change.events);
        ASSERT_TRUE(reload());
        EXPECT_THAT(events(), IsEmpty()) << "an unchanged slot reports nothing";
    }
    sim.set("Oper.Blade.0.OperState", "PoweredOff");
    ASSERT_TRUE(reload());
    EXPECT_THAT(events(), IsEmpty()) << "a slot before the last reads as empty, then and now";
}

TEST_F(Blades, SingleSlotHasSensorsOnly) {
    start(chassis(4, blade(3, "IO")));
    sim.set("Oper.Chassis.0.MaxSlots", "1");
    sim.set("Oper.Blade.0.TempSensors", "6");
    sim.set("Oper.Blade.0.VoltageSensors", "3");
    fault("function = \"vex_smlGetBatch\"\nkey = \"Oper.Blade.0.TempSensors\"\nstatus = 77\n");
    ASSERT_TRUE(reload());
    EXPECT_THAT(calls(), ElementsAre("vex_smlGetBatch Oper.Chassis.0.MaxSlots",
                                     "vex_smlGetBatch Oper.Switch.Nop,Oper.Blade.0.TempSensors,"
                                     "Oper.Blade.0.VoltageSensors"));
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: _getBladeInfo()")) << "a sensor that fails is not reported";
    EXPECT_THAT(events(), IsEmpty()) << "the blade that is gone is not reported either";
    BladeState now = state();
    EXPECT_EQ(now.slotCount, 1);
    EXPECT_TRUE(now.loaded) << "from before";
    EXPECT_EQ(now.kind[3], 0);
    EXPECT_TRUE(now.ioBlades.none());
    EXPECT_EQ(cache().getRootTemperatureSensorCount(0), 0);
    EXPECT_EQ(cache().getRootVoltageSensorCount(0), 3);

    ASSERT_TRUE(reload());
    EXPECT_EQ(cache().getRootTemperatureSensorCount(0), 6);
    log();
    fault("function = \"vex_smlGetBatch\"\nkey = \"Oper.Switch.Nop\"\nresult = 5\n");
    EXPECT_FALSE(reload());
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: _getBladeInfo()",
                                   "2 DCACHE: Cache update failed: DataCache:_getBladeInfo:1435"));
}

TEST_F(Blades, WalksHaveDifferentBounds) {
    start(chassis(4, blade(3, "IO")));
    EXPECT_EQ(cache().getFirstRootIOBladeIndex(), 3);
    EXPECT_EQ(cache().getNextRootIOBladeIndex(0), 3);
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: getNextRootIOBladeIndex( 0 ) returns 3"));
    EXPECT_EQ(cache().getNextRootIOBladeIndex(2), 3);
    log();
    EXPECT_EQ(cache().getNextRootIOBladeIndex(3), 65535);
    EXPECT_THAT(log(), IsEmpty());
    EXPECT_EQ(cache().getNextRootIOBladeIndex(65535), 3) << "the next after 65535 is 0: 16 bits";
    {
        const AccessGuard guard;
        peer().bladeSlotCount = 3;
    }
    EXPECT_EQ(cache().getFirstRootIOBladeIndex(), 3) << "not bounded by the slots of the chassis";
    EXPECT_EQ(cache().getNextRootIOBladeIndex(0), 65535) << "bounded by them";
}

TEST_F(Blades, BladesBeyondTheLastEntryThrow) {
    for (const char* type : {"IO", "CPU"}) {
        for (const int slot : {32, 200}) {
            SCOPED_TRACE(std::string(type) + ' ' + std::to_string(slot));
            load(chassis(slot + 1, blade(slot, type)));
            cache().updateAll();
            EXPECT_EQ(thrown([&] { pass(); }), "bitset::set");
            EXPECT_TRUE(lockIsFree());
            EXPECT_TRUE(cache().workToDo());
        }
        load(chassis(32, blade(31, type)));
        EXPECT_TRUE(reload()) << "the last entry";
    }
}

TEST_F(Blades, OtherPartsBeyondTheLastEntryOnlyCount) {
    start(chassis(202, blade(31, "IO") + blade(200, "FAN") + blade(201, "PS", "temp_sensors = 3\n")));
    const BladeState now = state();
    EXPECT_EQ(now.kind, decltype(now.kind){}) << "slot 201 is the last, and has no entry";
    EXPECT_EQ(now.operStatus, decltype(now.operStatus){});
    EXPECT_EQ(cache().getFirstRootIOBladeIndex(), 65535);
    {
        const AccessGuard guard;
        peer().bladeState.kind[5] = 1;
        peer().bladeState.kind[6] = 2;
    }
    ASSERT_TRUE(reload());
    EXPECT_THAT(events(), ElementsAre("DCEventFanRemove " + kName + " index=5 count=1",
                                      "DCEventPowerSupplyRemove " + kName + " index=6 count=1"));
}

}  // namespace
