#include <chrono>
#include <functional>
#include <future>
#include <memory>

#include "tests/support/Allocations.h"
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

class ZoningSessions : public ZoningTest {
  protected:
    ZoningSessions() { start(); }
    /** Whether the cache is the switch's own state again after the passes that were asked for. */
    void expectBackToTheSwitch() {
        settle();
        EXPECT_THAT(events(), ElementsAre("DCEventZoningDBChange wwn=1000001122AABBCC"));
        const std::string now = shown();
        cache().reloadZoning();
        settle();
        events();
        EXPECT_EQ(shown(), now);
    }

    const std::string client = "client";
};

TEST_F(ZoningSessions, AndEveryOtherCallWaitForTheAccessLock) {
    bool expired = false;
    const std::function<void()> operations[] = {
        [] { ZoningCache::CIMMemberTypeToVexlib(2); }, [this] { zoning().getUberZoneset(); },
        [this] { zoning().zoneLimitAtMax(); },         [&] { zoning().LockIdOK(nullptr, expired); },
        [this] { zoning().removeZone(nullptr); },
    };
    std::vector<std::future<void>> running;
    const AccessGuard guard;
    for (const auto& operation : operations) running.push_back(std::async(std::launch::async, operation));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    for (const auto& one : running) EXPECT_EQ(one.wait_until(deadline), std::future_status::timeout);
    // The guard is released first, then the threads are waited for.
}

TEST_F(ZoningSessions, KeepTheLockForNinetySeconds) {
    // The switch's clock runs on while the test does, so a try in which it ticked does not count.
    for (long locked = 0, asked = 0; asked - locked != 90;) {
        uptime(&locked);
        zoning().ZoningUnlock();
        ASSERT_EQ(zoning().ZoningLock(Arg{client}), 1);
        sim.advanceClock(90);
        bool expired = false;
        const bool held = zoning().LockIdOK(Arg{client}, expired);
        uptime(&asked);
        EXPECT_TRUE(asked - locked != 90 || (held && !expired));
    }
}

TEST_F(ZoningSessions, ThatGetNoLockAreClosed) {
    fault("function = 'vex_smlSetBatch'\nkey = 'Cmd.Zoning.FabricLock.77'\nstatus = 1");
    {
        ZoningSession session(zoning(), client);
        EXPECT_EQ(session.secondsLeft(), 0);
        for (const ZoningOutcome& outcome :
             {session.createZone("z9", VEX_ZT_SOFT), session.commit(), session.abandon()})
            EXPECT_EQ(outcome.status, ZoningStatus::Closed);
        calls();
    }
    EXPECT_THAT(calls(), IsEmpty()) << "there is nothing to give back";
    Allocations memory;
    memory.failAfter(0);
    const ZoningOutcome outcome = ZoningSession(zoning(), client).lockOutcome();
    EXPECT_TRUE(memory.count() == 0 || outcome.status == ZoningStatus::OutOfMemory) << outcome.text();
}

TEST_F(ZoningSessions, DropTheirEditsWhenTheyAreNotCommitted) {
    for (const bool abandoned : {false, true}) {
        {
            ZoningSession session(zoning(), client);
            EXPECT_TRUE(session.removeMember(VEX_ZMT_FCID, "010203").done());
            if (abandoned) session.abandon();
        }
        ZoningSession next(zoning(), client);
        EXPECT_EQ(next.commit().status, ZoningStatus::NotLoaded) << "what was abandoned is still there";
        EXPECT_EQ(next.removeZone("z3").status, ZoningStatus::NotLoaded);
        expectBackToTheSwitch();
        EXPECT_TRUE(next.removeZone("z3").done()) << "a load before the first edit does no harm";
        EXPECT_TRUE(next.abandon().done());
        expectBackToTheSwitch();
    }
}

TEST_F(ZoningSessions, AreRefusedWhereACommitWouldDoHarm) {
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[this] { sim.advanceClock(91); }, "commit: the lock has expired"},
        {[this] { step("do = 'zone_remove'\nname = 'z3'"); }, "commit: the zoning was loaded anew"},
        {[this] { zoning().clearUber(); },
         "commit: the zoning was loaded anew and the session's edits are lost"},
        {[this] { cache().reloadZoning(); }, "commit: the configured zoning is not loaded"},
        {[this] { zoning().ZoningUnlock(), zoning().ZoningLock(Arg{client}); }, "commit: the lock was taken"},
        {[this] { zoning().ZoningUnlock(); }, "commit: the lock was taken"},
    };
    for (const auto& [happens, text] : cases) {
        start();
        const auto session = std::make_unique<ZoningSession>(zoning(), client);
        EXPECT_GE(session->secondsLeft(), 89);
        EXPECT_TRUE(session->createZone("z9", VEX_ZT_SOFT).done());
        happens();
        const std::string config = sim.get("Oper.Zoning.InactiveChecksum").value();
        const ZoningOutcome outcome = session->commit();
        EXPECT_THAT(outcome.text(), StartsWith(text));
        EXPECT_EQ(session->createZone("z8", VEX_ZT_SOFT).status, outcome.status);
        EXPECT_EQ(session->secondsLeft() == 0,
                  outcome.status == ZoningStatus::Expired || outcome.status == ZoningStatus::Taken);
        EXPECT_EQ(sim.get("Oper.Zoning.InactiveChecksum"), config) << text;
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
    EXPECT_EQ(second.commit().status, ZoningStatus::Closed);
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
