#include <stdexcept>

#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/** A chassis with a blade as it stands in a switch file. */
std::string chassis(int slots, const std::string& blades) {
    return "blade = [" + blades +
           "]\n[switch]\nwwn = '1000001122AABBCC'\n[chassis]\nslots = " + std::to_string(slots);
}

class Blades : public CacheTest {
  protected:
    bool reload() {
        const AccessGuard guard;
        return peer().getBladeInfo();
    }
    BladeState state() {
        const AccessGuard guard;
        return peer().bladeState;
    }
};

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
    EXPECT_EQ(cache().getRootTemperatureSensorCount(0), 0);
    EXPECT_EQ(cache().getRootVoltageSensorCount(0), 3);
    sim.set("Oper.Blade.0.TempSensors", "6");
    ASSERT_TRUE(reload());
    EXPECT_EQ(cache().getRootTemperatureSensorCount(0), 6);
    EXPECT_EQ(cache().getRootTemperatureSensorCount(32), 0);
    EXPECT_EQ(cache().getRootVoltageSensorCount(32), 0);
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
            try {
                pass();
                ADD_FAILURE();
            } catch (const std::out_of_range& error) {
                EXPECT_STREQ(error.what(), "bitset::set");
            }
            EXPECT_TRUE(lockIsFree());
            EXPECT_TRUE(cache().workToDo());
        }
        load(chassis(32, std::string("{slot = 31, type = '") + type + "'}"));
        EXPECT_TRUE(reload()) << "the last entry";
    }
    start(chassis(202, "{slot = 200, type = 'FAN'}, {slot = 201, type = 'PS', temp_sensors = 3}"));
    EXPECT_EQ(state().kind, decltype(BladeState::kind){}) << "slot 201 is the last, and has no entry";
    EXPECT_EQ(state().operStatus, decltype(BladeState::operStatus){});
    {
        const AccessGuard guard;
        peer().bladeState.kind[5] = 1;
        peer().bladeState.kind[6] = 2;
    }
    ASSERT_TRUE(reload());
    EXPECT_THAT(events(), ElementsAre("DCEventFanRemove wwn=1000001122AABBCC index=5 count=1",
                                      "DCEventPowerSupplyRemove wwn=1000001122AABBCC index=6 count=1"));
}

}  // namespace
