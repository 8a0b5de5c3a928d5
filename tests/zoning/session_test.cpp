#include <functional>
#include <memory>

#include "tests/zoning/ZoningTest.h"

namespace {

using datacache::ZoningDatabase;
using datacache::ZoningOutcome;
using datacache::ZoningSession;
using datacache::ZoningStatus;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

const char* const kDatabaseChange = "DCEventZoningDBChange wwn=1000001122AABBCC";

class ZoningSessions : public ZoningTest {
  protected:
    ZoningSessions() { start(); }
    void fault(const std::string& fields) { sim.run("do = 'fault'\n" + fields); }
    /** Whether the cache is the switch's own state again after the passes that were asked for. */
    void expectBackToTheSwitch() {
        settle();
        EXPECT_THAT(events(), ElementsAre(kDatabaseChange));
        Zonesets now = cached();
        now.erase(kActive);
        EXPECT_EQ(now, onSwitch());
        EXPECT_TRUE(zoning().database().loaded);
        expectNoLeak();
    }

    const std::string client = "client";
    bool expired = false;
};

TEST_F(ZoningSessions, ThatGetNoLockSayWhichCommandWasRefused) {
    const struct {
        const char* fault;
        const char* outcome;
    } cases[] = {
        {"function = 'vex_smlSetBatch'\nkey = 'Cmd.Switch.ReqAdmin'\nstatus = 4",
         "lock: the switch refused Cmd.Switch.ReqAdmin with status 4"},
        {"function = 'vex_smlSetBatch'\nkey = 'Cmd.Zoning.FabricLock.77'\nstatus = 4294967295",
         "lock: the switch refused Cmd.Zoning.FabricLock.77 with status 4294967295"},
        {"function = 'vex_smlSetBatch'\nresult = -3",
         "lock: the switch refused vex_smlSetBatch with status -3"},
    };
    for (const auto& test : cases) {
        fault(test.fault);
        ZoningSession session(zoning(), client);
        EXPECT_EQ(session.lockOutcome().text(), test.outcome);
        EXPECT_FALSE(session.isOpen());
        EXPECT_EQ(session.secondsLeft(), 0);
        for (const ZoningOutcome& outcome :
             {session.createZone("z9", VEX_ZT_SOFT), session.commit(), session.abandon()})
            EXPECT_EQ(outcome.status, ZoningStatus::Closed);
        calls();
    }
    EXPECT_THAT(calls(), IsEmpty()) << "there is nothing to give back";
    EXPECT_TRUE(ZoningSession(zoning(), client).lockOutcome().done());
}

TEST_F(ZoningSessions, TellHowTheCommitWent) {
    const struct {
        const char* fault;
        const char* outcome;
        bool open;
    } cases[] = {
        {"function = 'vex_smlSetBatch'\nresult = 3",
         "commit: the switch refused vex_smlSetBatch with status 3", false},
        {"function = 'vex_smlSetBatch'\nkey = 'Cmd.Zoning.*.z2.*'\nstatus = 9",
         "commit: the switch refused Cmd.Zoning.Zone.z2.Create with status 9", false},
        {"function = 'vex_smlSetBatch'\nkey = 'Cmd.Zoning.FabricUnlock.77'\nstatus = 5",
         "commit: the switch refused Cmd.Zoning.FabricUnlock.77 with status 5", false},
        {"function = 'vex_ZoneGetName'\nresult = 1",
         "commit: nothing was sent: the database cannot be read whole, vex_ZoneGetName failed", true},
        {"function = 'vex_ZonesetListAliases'\nnull = true",
         "commit: nothing was sent: the database cannot be read whole, vex_ZonesetListAliases failed", true},
        {"function = 'vex_smlGet'\nresult = 1", "commit: done", false},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.outcome);
        ZoningSession session(zoning(), client);
        EXPECT_TRUE(session.createZone("z9", VEX_ZT_SOFT).done());
        fault(test.fault);
        EXPECT_EQ(session.commit().text(), test.outcome);
        EXPECT_EQ(session.isOpen(), test.open);
        sim.run("do = 'clear_faults'");
        if (test.open) {
            EXPECT_TRUE(session.commit().done()) << "the next one goes through";
        }
        expectBackToTheSwitch();
        EXPECT_EQ(zoning().ZoningLock(Arg{client}), 1) << "the lock and the rights are free";
        zoning().removeZone(Arg{"z9"});
        zoning().replaceZoningDB();
        settle();
        allEvents();
    }
}

TEST_F(ZoningSessions, DropTheirEditsWhenTheyAreNotCommitted) {
    const std::function<void(ZoningSession&)> ends[] = {
        [](ZoningSession&) {},
        [](ZoningSession& session) { EXPECT_EQ(session.abandon().text(), "abandon: done"); },
        [this](ZoningSession& session) {
            fault("function = 'vex_smlSetBatch'\nstatus = 6\nkey = 'Cmd.Switch.RelAdmin'");
            EXPECT_EQ(session.abandon().text(),
                      "abandon: the switch refused Cmd.Switch.RelAdmin with status 6");
            sim.run("do = 'clear_faults'");
            zoning().ZoningUnlock();
        },
    };
    for (const auto& end : ends) {
        {
            ZoningSession session(zoning(), client);
            EXPECT_EQ(session.removeMember(VEX_ZMT_FCID, "010203").text(), "remove 010203 everywhere: done");
            end(session);
        }
        EXPECT_FALSE(zoning().LockIdOK(Arg{client}, expired));
        ZoningSession next(zoning(), client);
        EXPECT_EQ(next.commit().status, ZoningStatus::NotLoaded) << "what was abandoned is still there";
        EXPECT_EQ(next.removeZone("z3").status, ZoningStatus::NotLoaded);
        expectBackToTheSwitch();
        EXPECT_TRUE(next.removeZone("z3").done()) << "a load before the first edit does no harm";
        EXPECT_TRUE(next.abandon().done());
        expectBackToTheSwitch();
    }
    { const ZoningSession session(zoning(), client); }
    settle();
    EXPECT_THAT(events(), IsEmpty()) << "without an edit there is nothing to drop";
}

TEST_F(ZoningSessions, AreRefusedWhereACommitWouldDoHarm) {
    const struct {
        std::function<void()> happens;
        ZoningStatus status;
        const char* text;
    } cases[] = {
        {[this] { sim.advanceClock(91); }, ZoningStatus::Expired, "commit: the lock has expired"},
        {[this] {
             sim.run("do = 'zone_remove'\nname = 'z3'");
             settle();
         },
         ZoningStatus::Reloaded, "commit: the zoning was loaded anew"},
        {[this] { zoning().clearUber(); }, ZoningStatus::Reloaded, "commit: the zoning was loaded anew"},
        {[this] { cache().reloadZoning(); }, ZoningStatus::NotLoaded,
         "commit: the configured zoning is not loaded"},
        {[this] { zoning().ZoningLock(Arg{client}); }, ZoningStatus::Taken, "commit: the lock was taken"},
        {[this] { zoning().ZoningUnlock(); }, ZoningStatus::Taken, "commit: the lock was taken"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        start();
        const Zonesets before = onSwitch();
        const auto session = std::make_unique<ZoningSession>(zoning(), client);
        EXPECT_GE(session->secondsLeft(), 89);
        EXPECT_TRUE(session->createZone("z9", VEX_ZT_SOFT).done());
        test.happens();
        const std::string config = sim.get("Oper.Zoning.InactiveChecksum").value();
        const ZoningOutcome outcome = session->commit();
        EXPECT_EQ(outcome.status, test.status);
        EXPECT_THAT(outcome.text(), StartsWith(test.text));
        EXPECT_EQ(session->createZone("z8", VEX_ZT_SOFT).status, test.status);
        EXPECT_EQ(session->secondsLeft() == 0,
                  test.status == ZoningStatus::Expired || test.status == ZoningStatus::Taken);
        EXPECT_EQ(sim.get("Oper.Zoning.InactiveChecksum"), config);
    }
}

TEST_F(ZoningSessions, ThatAreTakenOverLeaveNothingToTheNext) {
    sim.run("do = 'admin'\nshared = true");
    auto first = std::make_unique<ZoningSession>(zoning(), client);
    EXPECT_TRUE(first->createZone("first", VEX_ZT_SOFT).done());
    ZoningSession second(zoning(), client);
    EXPECT_EQ(first->commit().status, ZoningStatus::Taken) << "though its id is the same";
    EXPECT_EQ(second.createZone("second", VEX_ZT_SOFT).status, ZoningStatus::NotLoaded);
    settle();
    EXPECT_TRUE(second.createZone("second", VEX_ZT_SOFT).done());
    calls();
    first.reset();
    EXPECT_THAT(calls(), IsEmpty()) << "the lock is not its own to give back";
    EXPECT_TRUE(second.commit().done());
    allEvents();
    expectBackToTheSwitch();
    const ZoningDatabase database = zoning().database();
    EXPECT_EQ(database.zones.back().name, "second");
    EXPECT_EQ(database.zones.size(), 4U);
}

/** Runs once at the next change of the database, inside the callback. */
std::function<void()> insideTheCallback;

TEST_F(ZoningSessions, ThatEndInsideTheCallbackAreFollowedByALoad) {
    {
        const AccessGuard guard;
        peer().callback = [](DataCacheEvent* event) {
            if (event->type != DCEventZoningDBChange::TYPE || !insideTheCallback) return;
            std::exchange(insideTheCallback, nullptr)();
        };
    }
    insideTheCallback = [this] {
        ZoningSession session(zoning(), client);
        EXPECT_TRUE(session.createZone("z9", VEX_ZT_SOFT).done());
    };
    cache().reloadZoning();
    EXPECT_GE(settle(), 2);
    EXPECT_EQ(insideTheCallback, nullptr);
    Zonesets now = cached();
    now.erase(kActive);
    EXPECT_EQ(now, onSwitch()) << "the edits are gone";
    EXPECT_TRUE(ZoningSession(zoning(), client).createZone("z9", VEX_ZT_SOFT).done());
    settle();

    insideTheCallback = [this] { cache().reloadZoning(); };
    cache().reloadZoning();
    settle();
    EXPECT_TRUE(zoning().database().loaded) << "a request in there is lost, and locks nobody out";
    EXPECT_EQ(settle(), 0);
}

TEST_F(ZoningSessions, DatabaseIsACopyOfValues) {
    const auto text = [](const ZoningDatabase& database) {
        std::string all;
        const auto members = [&](const std::vector<datacache::ZoningMember>& list) {
            for (const auto& member : list) all += ' ' + std::to_string(member.type) + '=' + member.text;
            all += '\n';
        };
        const auto contents = [&](const auto& owner) {
            for (const auto& zone : owner.zones) {
                all += "  zone " + zone.name + ' ' + ZoningCache::vex_smlCnvFromVEXZoneType(zone.type);
                members(zone.members);
            }
            for (const auto& alias : owner.aliases) {
                all += "  alias " + alias.name;
                members(alias.members);
            }
        };
        for (const auto& zoneset : database.zonesets) {
            all += zoneset.name + (zoneset.active ? " active\n" : "\n");
            contents(zoneset);
        }
        all += "all\n";
        contents(database);
        return all;
    };
    const std::string z1 = "  zone z1 Soft 1=2000001122000003 5=a1\n";
    const std::string z2 = "  zone z2 HardACL 2=01:02 3=010203\n";
    const std::string a1 = "  alias a1 1=2000001122000001 1=2000001122000002\n";
    const ZoningDatabase database = zoning().database();
    EXPECT_EQ(text(database), "alpha active\n" + z1 + z2 + a1 + "alpha\n" + z1 + z2 + a1 + "beta\n" + z1 +
                                  a1 + "all\n" + z1 + z2 + "  zone z3 Soft\n" + a1 + "  alias a2\n");
    EXPECT_TRUE(database.loaded && database.complete && database.limitsRead);
    EXPECT_EQ(database.activeZoneset, "alpha");
    EXPECT_EQ(database.size.zonesets, 2);
    EXPECT_EQ(database.size.members, 8);
    EXPECT_EQ(database.limits.max_members, 400);

    for (const char* hostile :
         {"function = 'vex_ZonesetListZones'\nnull = true",
          "function = 'vex_ZoneGetMemberCount'\nresult = 2147483647",
          "function = 'vex_ZonesetGetAliasCount'\nresult = -1", "function = 'vex_ZoneGetName'\nresult = 1",
          "function = 'vex_MemberGetAttr'\nresult = 1"}) {
        SCOPED_TRACE(hostile);
        fault(hostile);
        EXPECT_FALSE(zoning().database().complete);
        EXPECT_TRUE(zoning().database().complete);
    }
    EXPECT_EQ(sim.live().misuse, 0U);
    zoning().clearZoningCache();
    EXPECT_EQ(text(zoning().database()), "all\n");
    EXPECT_FALSE(zoning().database().loaded);
}

}  // namespace
