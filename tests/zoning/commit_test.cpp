#include "tests/zoning/ZoningTest.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class ZoningCommit : public ZoningTest {
  protected:
    ZoningCommit() {
        start();
        EXPECT_EQ(zoning().ZoningLock(Arg{"client"}), 1);
        calls();
        log();
    }
    /** The commands sent since the last call, one group. */
    std::string sent() {
        std::string found;
        for (const std::string& call : calls()) {
            if (call.compare(0, 16, "vex_smlSetBatch ") == 0) found += call.substr(16);
        }
        return found;
    }
    bool held() {
        bool expired = false;
        return zoning().LockIdOK(Arg{"client"}, expired);
    }
};

TEST_F(ZoningCommit, ThatTheSwitchRefusesIsOnlyLogged) {
    const Zonesets before = onSwitch();
    EXPECT_EQ(zoning().removeZone(Arg{"z3"}), ZONING_DONE);
    const char* const faults[] = {
        "function = 'vex_smlSetBatch'\nresult = 3",
        "function = 'vex_smlSetBatch'\nkey = 'Cmd.Zoning.Zone.z2.Create'\nstatus = 4",
        "function = 'vex_smlSetBatch'\nkey = 'Cmd.Zoning.SaveConfig'\nstatus = 4",
    };
    for (const char* fault : faults) {
        SCOPED_TRACE(fault);
        sim.run(std::string("do = 'fault'\n") + fault);
        log();
        EXPECT_EQ(zoning().replaceZoningDB(), 1);
        EXPECT_THAT(log(), ElementsAre("2 DCACHE: Zoning session failed"));
        EXPECT_FALSE(held());
        EXPECT_EQ(onSwitch(), before) << "all or nothing";
        zoning().ZoningUnlock();
        EXPECT_EQ(zoning().ZoningLock(Arg{"client"}), 1);
    }
    zoning().ZoningUnlock();
    EXPECT_EQ(zoning().replaceZoningDB(), 1) << "without the lock it is refused as well";
    EXPECT_EQ(onSwitch(), before);
    expectNoLeak();
}

TEST_F(ZoningCommit, OfAnInconsistentDatabaseSendsNothing) {
    const struct {
        const char* function;
        const char* effect;
        int skip;
    } cases[] = {
        {"vex_ZonesetListAliases", "null = true", 1},  {"vex_ZoneAliasGetName", "result = 1", 1},
        {"vex_ZonesetListZones", "null = true", 2},    {"vex_ZoneGetName", "result = 1", 0},
        {"vex_ZoneGetType", "result = 1", 2},          {"vex_ZonesetGetName", "result = 1", 1},
        {"vex_ZonesetListZones", "null = true", 3},    {"vex_ZoneGetName", "result = 1", 6},
        {"vex_ZonesetGetZoneCount", "result = -1", 0}, {"vex_ZonesetGetAliasCount", "result = -1", 0},
        {"vex_ZoneGetMemberCount", "result = -1", 2},  {nullptr, "no uber zoneset", 0},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::string(test.effect) + ' ' + std::to_string(test.skip));
        if (test.function == nullptr) {
            zoning().clearUber();
        } else {
            sim.run(std::string("do = 'fault'\nfunction = '") + test.function + "'\n" + test.effect +
                    "\nskip = " + std::to_string(test.skip));
        }
        log();
        calls();
        EXPECT_EQ(zoning().replaceZoningDB(), 0);
        EXPECT_THAT(log(), ElementsAre(AllOf(StartsWith("4 Exception[CRIT]:ZoningCache:replaceZoningDB["),
                                             HasSubstr("] Internal consistency error"))));
        EXPECT_EQ(sent(), "");
        EXPECT_TRUE(held()) << "the lock is as it was";
        sim.run("do = 'clear_faults'");
    }
    cache().reloadZoning();
    EXPECT_TRUE(refresh());
    EXPECT_EQ(zoning().replaceZoningDB(), 1) << "once the database is loaded, it goes through";
    expectNoLeak();
}

}  // namespace
