#include <functional>
#include <memory>
#include <tuple>

#include "tests/zoning/ZoningTest.h"

namespace {

using datacache::ZoningOutcome;
using datacache::ZoningSession;
using datacache::ZoningStatus;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

const char* const kDatabaseChange = "DCEventZoningDBChange wwn=1000001122AABBCC";

class ZoningSessions : public ZoningTest {
  protected:
    ZoningSessions() { start(); }
    /** Whether the cache is the switch's own state again after the passes that were asked for. */
    void expectBackToTheSwitch() {
        settle();
        EXPECT_THAT(events(), ElementsAre(kDatabaseChange));
        const std::string now = shown();
        cache().reloadZoning();
        settle();
        events();
        EXPECT_EQ(shown(), now);
    }

    const std::string client = "client";
};

TEST_F(ZoningSessions, ThatGetNoLockAreClosed) {
    {
        fault("function = 'vex_smlSetBatch'\nkey = 'Cmd.Zoning.FabricLock.77'\nstatus = 4294967295");
        ZoningSession session(zoning(), client);
        EXPECT_EQ(session.lockOutcome().text(),
                  "lock: the switch refused Cmd.Zoning.FabricLock.77 with status 4294967295");
        EXPECT_FALSE(session.isOpen());
        EXPECT_EQ(session.secondsLeft(), 0);
        for (const ZoningOutcome& outcome :
             {session.createZone("z9", VEX_ZT_SOFT), session.commit(), session.abandon()})
            EXPECT_EQ(outcome.status, ZoningStatus::Closed);
        calls();
    }
    EXPECT_THAT(calls(), IsEmpty()) << "there is nothing to give back";
}

TEST_F(ZoningSessions, StayOpenWhereTheCommitSentNothing) {
    const std::tuple<const char*, ZoningStatus, bool> cases[] = {
        {"function = 'vex_smlSetBatch'\nresult = 3", ZoningStatus::Refused, false},
        {"function = 'vex_ZoneGetName'\nresult = 1", ZoningStatus::Inconsistent, true},
        {"function = 'vex_smlGet'\nresult = 1", ZoningStatus::Done, false},
    };
    for (const auto& [effect, status, open] : cases) {
        SCOPED_TRACE(effect);
        ZoningSession session(zoning(), client);
        EXPECT_TRUE(session.removeMember(VEX_ZMT_FCID, "010203").done());
        fault(effect);
        EXPECT_EQ(session.commit().status, status);
        EXPECT_EQ(session.isOpen(), open);
        sim.run("do = 'clear_faults'");
        EXPECT_EQ(session.commit().status, open ? ZoningStatus::Done : ZoningStatus::Closed);
        expectBackToTheSwitch();
    }
}

TEST_F(ZoningSessions, DropTheirEditsWhenTheyAreNotCommitted) {
    for (const bool abandoned : {false, true}) {
        {
            ZoningSession session(zoning(), client);
            EXPECT_EQ(session.removeMember(VEX_ZMT_FCID, "010203").text(), "remove 010203 everywhere: done");
            if (abandoned) {
                EXPECT_EQ(session.abandon().text(), "abandon: done");
            }
        }
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
        {[this] { step("do = 'zone_remove'\nname = 'z3'"); }, ZoningStatus::Reloaded,
         "commit: the zoning was loaded anew"},
        {[this] { zoning().clearUber(); }, ZoningStatus::Reloaded, "commit: the zoning was loaded anew"},
        {[this] { cache().reloadZoning(); }, ZoningStatus::NotLoaded,
         "commit: the configured zoning is not loaded"},
        {[this] { zoning().ZoningLock(Arg{client}); }, ZoningStatus::Taken, "commit: the lock was taken"},
        {[this] { zoning().ZoningUnlock(); }, ZoningStatus::Taken, "commit: the lock was taken"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        start();
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
    EXPECT_THAT(shown(), AllOf(HasSubstr("zone second ("), Not(HasSubstr("zone first ("))));
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
    const std::string before = shown();
    insideTheCallback = [this] {
        ZoningSession session(zoning(), client);
        EXPECT_TRUE(session.createZone("z9", VEX_ZT_SOFT).done());
    };
    cache().reloadZoning();
    EXPECT_GE(settle(), 2);
    EXPECT_EQ(insideTheCallback, nullptr);
    EXPECT_EQ(shown(), before) << "the edits are gone";
    EXPECT_TRUE(ZoningSession(zoning(), client).createZone("z9", VEX_ZT_SOFT).done());
    settle();

    insideTheCallback = [this] { cache().reloadZoning(); };
    cache().reloadZoning();
    settle();
    EXPECT_TRUE(zoning().database().loaded) << "a request in there is lost, and locks nobody out";
    EXPECT_EQ(settle(), 0);
}

}  // namespace
