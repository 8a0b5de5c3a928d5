#include <chrono>
#include <functional>
#include <future>
#include <optional>

#include "tests/support/Allocations.h"
#include "tests/zoning/ZoningTest.h"

namespace {

using datacache::ZoningObject;
using datacache::ZoningOutcome;
using datacache::ZoningSession;
using datacache::ZoningStatus;
using namespace testing;

class ZoningSessions : public ZoningTest {
  protected:
    ZoningSessions() { start(); }
    ZoningSession session() { return DataCache::zoningSession(client); }
    std::string checksum() { return sim.get("Oper.Zoning.InactiveChecksum").value(); }
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

TEST_F(ZoningSessions, SayWhyTheyAreNotOpened) {
    const struct {
        std::function<void()> before;
        ZoningStatus status;
        const char* text;
    } cases[] = {
        {[this] { restart(); }, ZoningStatus::NoCache, "lock: DataCache::init() was not called"},
        {[this] {
             restart();
             CacheTest::start(
                 "switch = {wwn = '1000001122AABBCC', transparent = true}\n"
                 "features = {transparent = true}");
         },
         ZoningStatus::Transparent, "lock: the switch is in transparent mode and has no zoning"},
        {[this] { fault("function = 'vex_fzsGetZonesetList'\nnull = true"); }, ZoningStatus::NotRead,
         "lock: the switch's zoning cannot be read: vex_fzsGetZonesetList with status 2 failed"},
        {[this] { fault("function = 'vex_ZonesetGetName'\nskip = 1\nvalue = '[UberZoneSetKey]'"); },
         ZoningStatus::NotRead,
         "lock: the switch's zoning cannot be read: vex_ZonesetGetName of beta failed"},
        {[this] { fault("function = 'vex_fzsGetZoneset'\nuptime_s = 91"); }, ZoningStatus::Expired,
         "lock: the lock has expired; begin a new session"},
    };
    for (const auto& [before, status, text] : cases) {
        start();
        before();
        {
            ZoningSession session = this->session();
            EXPECT_EQ(session.lockOutcome().status(), status);
            EXPECT_EQ(session.lockOutcome().text(), text);
            EXPECT_FALSE(session.isOpen());
            EXPECT_EQ(session.secondsLeft(), 0);
            EXPECT_EQ(session.createZone("z9", VEX_ZT_SOFT).status(), ZoningStatus::Closed);
            EXPECT_EQ(session.check().status(), ZoningStatus::Closed);
            EXPECT_EQ(session.commit().status(), ZoningStatus::Closed);
            EXPECT_EQ(session.abandon().status(), ZoningStatus::Closed);
        }
        EXPECT_TRUE(fabricLockIsFree()) << text;
    }
}

TEST_F(ZoningSessions, OfOneProcessExcludeEachOther) {
    fault("function = 'vex_smlSetBatch'\nstatus = 0xFFFFFFFF");
    EXPECT_EQ(zoning().ZoningLock(Arg{client}), 0) << "any status but 0 refuses it";
    ASSERT_EQ(zoning().ZoningLock(Arg{client}), 1);
    EXPECT_EQ(zoning().replaceZoningDB(), 1);
    bool expired = false;
    EXPECT_TRUE(zoning().LockIdOK(Arg{client}, expired)) << "the flag that a direct commit leaves";
    settle();
    std::optional<ZoningSession> first = session();
    EXPECT_TRUE(first->isOpen()) << "and that makes nobody busy";
    EXPECT_TRUE(zoning().LockIdOK(Arg{client}, expired));
    calls();
    {
        ZoningSession second = session();
        EXPECT_EQ(second.lockOutcome().status(), ZoningStatus::Busy);
    }
    EXPECT_THAT(calls(), IsEmpty()) << "the lock is not its own to give back";
    ZoningSession moved = std::move(*first);
    first.reset();
    EXPECT_TRUE(moved.createZone("z9", VEX_ZT_SOFT).done());
    EXPECT_TRUE(moved.commit().done());
    EXPECT_FALSE(zoning().LockIdOK(Arg{client}, expired));
    EXPECT_EQ(moved.commit().status(), ZoningStatus::Closed);
    moved = session();
    EXPECT_TRUE(moved.isOpen());
    EXPECT_GE(moved.secondsLeft(), 89);
    moved = session();
    EXPECT_EQ(moved.lockOutcome().status(), ZoningStatus::Busy) << "the right side is made first";
    EXPECT_TRUE(fabricLockIsFree());
}

TEST_F(ZoningSessions, AreRefusedOnceTheyLostTheLock) {
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[this] { sim.advanceClock(91); }, "the lock has expired; begin a new session"},
        {[this] { zoning().ZoningUnlock(), zoning().ZoningLock(Arg{client}); },
         "the lock was taken or given back by somebody else; begin a new session"},
        {[this] { zoning().replaceZoningDB(); },
         "the lock was taken or given back by somebody else; begin a new session"},
    };
    for (const auto& [happens, text] : cases) {
        start();
        ZoningSession session = this->session();
        EXPECT_TRUE(session.createZone("z9", VEX_ZT_SOFT).done());
        happens();
        const std::string config = checksum();
        EXPECT_EQ(session.commit().reason(), text);
        EXPECT_EQ(session.createZone("z8", VEX_ZT_SOFT).reason(), text);
        EXPECT_EQ(session.secondsLeft(), 0);
        EXPECT_EQ(checksum(), config);
        zoning().ZoningUnlock();
    }
}

TEST_F(ZoningSessions, TakeNoNameThatCannotBeOne) {
    using namespace std::string_literals;
    ZoningSession session = this->session();
    const std::string before = session.check().text();
    calls();
    for (const std::string& name : {"z\n9"s, "z1\0x"s, "\x7f"s, "[UberZoneSetKey]"s, "[ActiveZoneSetKey]"s}) {
        for (const ZoningOutcome& outcome :
             {session.createZone(name, VEX_ZT_SOFT), session.removeZoneset(name), session.createZoneset(name),
              session.addZoneToZoneset(name, "z1"), session.addMemberToZone("z3", VEX_ZMT_ALIAS, name)}) {
            EXPECT_EQ(outcome.status(), ZoningStatus::Invalid);
            EXPECT_EQ(outcome.failure().name, name);
            EXPECT_EQ(outcome.text().find('\n'), std::string::npos);
        }
    }
    EXPECT_THAT(calls(), IsEmpty());
    const std::string longest(65, 'n');
    for (const ZoningOutcome& outcome : {session.createZone(longest, VEX_ZT_SOFT),
                                         session.createZoneAlias(longest), session.createZoneset(longest)})
        EXPECT_EQ(outcome.status(), ZoningStatus::Invalid) << outcome.text();
    const std::pair<ZoningOutcome, const char*> missing[] = {
        {session.addZoneToZoneset("gamma", "z1"), "there is no zoneset gamma"},
        {session.addZoneToZoneset("beta", "z9"), "there is no zone z9"},
        {session.removeZoneAlias("a9"), "there is no alias a9"},
        {session.removeMemberFromZone("z1", VEX_ZMT_FCID, "010203"), "there is no member 010203"},
    };
    for (const auto& [outcome, reason] : missing) EXPECT_EQ(outcome.reason(), reason);
    EXPECT_EQ(session.check().text(), before);
}

TEST_F(ZoningSessions, TellWhatTheActiveZonesetBrings) {
    {
        ZoningSession session = this->session();
        EXPECT_TRUE(session.removeZoneFromZoneset("alpha", "z1").done());
        EXPECT_TRUE(session.removeZone("z2").done());
        const ZoningOutcome refused = session.commit();
        EXPECT_THAT(refused.text(), HasSubstr("commit: nothing was sent: the active zoneset still needs zone "
                                              "z2, which is not configured; the active zoneset brings"));
        EXPECT_EQ(refused.failure().object, ZoningObject::Zone);
        EXPECT_TRUE(session.createZone("z2", VEX_ZT_SOFT).done());
        EXPECT_TRUE(session.removeZoneset("alpha").done());
        EXPECT_EQ(session.commit().reason(),
                  "done; the active zoneset brings into zoneset alpha: the zoneset itself (removed in this "
                  "session), zone z1 (removed in this session), zone z2 (removed in this session)");
    }
    step("do = 'zoning_replace'\nzone = [{name = 'z1'}, {name = 'z2'}]");
    EXPECT_THAT(session().check().reason(), HasSubstr("zone z2 (gone before this session)"));
}

TEST_F(ZoningSessions, SendNoMemberWithoutAKnownType) {
    ZoningSession session = this->session();
    EXPECT_TRUE(session.createZone("z9", VEX_ZT_SOFT).done());
    EXPECT_EQ(session.addMemberToZone("z9", VEX_ZMT_NODENAME, "2000001122000001").status(),
              ZoningStatus::Invalid);
    const std::string config = checksum();
    fault("function = 'vex_MemberGetAttr'\nresult = 6");
    const ZoningOutcome outcome = session.commit();
    EXPECT_EQ(outcome.status(), ZoningStatus::Inconsistent);
    EXPECT_EQ(outcome.failure().object, ZoningObject::Alias);
    EXPECT_EQ(outcome.failure().name, "a1");
    EXPECT_EQ(checksum(), config);
    EXPECT_TRUE(session.commit().done()) << "it stays open";
}

TEST_F(ZoningSessions, SayWhatTheSwitchHasAfterACommit) {
    const auto refuse = [](const std::string& key, unsigned status = 206) {
        return "function = 'vex_smlSetBatch'\nkey = 'Cmd." + key + "'\nstatus = " + std::to_string(status);
    };
    const std::string noRead = "function = 'vex_smlGetBatch'\nskip = 1\nresult = 8";
    const std::string saveRefused = "the switch refused Cmd.Zoning.SaveConfig with status 4",
                      inPart =
                          "a part was saved: the switch refused "
                          "Cmd.Zoning.Zone.z1.AddZoneMember.2000001122000003 with status 206",
                      unknown = "what the switch saved is not known, after ",
                      kept = "done; the lock or the admin rights were not given back: the switch refused ";
    const std::string failed = "function = 'vex_smlSetBatch'\nresult = 9",
                      carriedOut = "\ncarried_out = true";
    using S = ZoningStatus;
    const struct {
        S status;
        std::string text, fault, secondFault;
    } cases[] = {
        {S::Done, "done", refuse("Switch.RelAdmin"), ""},
        {S::NotReleased, kept + "Cmd.Switch.RelAdmin with status 206",
         refuse("Switch.RelAdmin") + "\ntimes = 2", ""},
        {S::Refused, saveRefused, refuse("Zoning.SaveConfig", 4), ""},
        {S::Refused, saveRefused, refuse("Zoning.SaveConfig", 4), noRead},
        {S::Refused, "the switch refused Cmd.Zoning.SaveConfig with status 4294967295",
         refuse("Zoning.SaveConfig", 0xFFFFFFFF), ""},
        {S::Unknown, unknown + "Cmd.Zoning.SaveConfig", refuse("Zoning.SaveConfig", 0), ""},
        {S::Done, "done", refuse("Zoning.SaveConfig", 5) + carriedOut, ""},
        {S::Refused, "the switch refused Cmd.Zoning.Zone.z9.Create with status 206",
         refuse("Zoning.Zone.z9.Create"), ""},
        {S::SavedInPart, inPart, refuse("Zoning.Zone.z1.AddZoneMember.*"), ""},
        {S::SavedInPart, inPart, refuse("Zoning.Zone.z1.AddZoneMember.*"), noRead},
        {S::Done, "done", refuse("Zoning.Zone.z9.ZoneType.Soft"), ""},
        {S::Refused, "the switch refused vex_smlSetBatch with status 9", failed, ""},
        {S::Done, "done", failed + carriedOut, ""},
        {S::Unknown, unknown + "vex_smlSetBatch with status 9", failed, noRead},
    };
    for (const auto& [status, text, first, second] : cases) {
        start();
        ZoningSession session = this->session();
        EXPECT_TRUE(session.createZone("z9", VEX_ZT_SOFT).done());
        fault(first);
        if (!second.empty()) fault(second);
        const std::string config = checksum();
        const ZoningOutcome outcome = session.commit();
        EXPECT_EQ(outcome.status(), status) << outcome.text();
        EXPECT_EQ(outcome.reason(), text);
        EXPECT_FALSE(session.isOpen());
        EXPECT_EQ(fabricLockIsFree(), status != ZoningStatus::NotReleased);
        const bool same = status == ZoningStatus::Refused || status == ZoningStatus::Unknown;
        EXPECT_EQ(checksum() == config, same) << text;
        EXPECT_EQ(settle() > 0, true) << "the cache is asked to look";
        EXPECT_EQ(shown().find("zone z9 (") == std::string::npos, same) << text;
    }
}

TEST_F(ZoningSessions, LeaveNothingToReadOnASwitchThatTurnedTransparent) {
    {
        ZoningSession session = this->session();
        EXPECT_TRUE(session.commit().done());
    }
    fault("function = 'vex_smlGetBatch'\nkey = '*.Switch.TransparentMode*'\nvalue = 'True'\ntimes = 0");
    DataCache::refreshNow();
    settle();
    EXPECT_TRUE(cache().isTransparentSwitch());
    EXPECT_TRUE(DataCache::health()[CacheArea::Zoning].upToDate);
}

TEST_F(ZoningSessions, EditAnAliasOfWhichTheActiveZonesetHasAnotherCopy) {
    // The active copy lacks the member, so that removing it there fails.
    ZoningSession session = this->session();
    EXPECT_TRUE(session.addMemberToZoneAlias("a1", VEX_ZMT_FCID, "010203").done());
    EXPECT_TRUE(session.removeMemberFromZoneAlias("a1", VEX_ZMT_FCID, "010203").done());
}

TEST_F(ZoningSessions, LoseNothingButTheReasonWithoutMemory) {
    const std::string longName = "a_name_of_more_than_a_few_characters";
    enum { Commit, RefusedCommit, Abandon };
    for (const int way : {Commit, RefusedCommit, Abandon}) {
        bool ran = false;
        for (size_t next = 0; !ran && !HasFailure(); ++next) {
            SCOPED_TRACE(std::to_string(way) + ' ' + std::to_string(next));
            if (way == RefusedCommit) fault("function = 'vex_smlSetBatch'\nkey = '*.SaveConfig'\nstatus = 4");
            const std::string config = checksum();
            bool zone = false, zoneset = false, saved = false;
            {
                Allocations memory;
                memory.failAfter(next);
                ZoningSession session = DataCache::zoningSession(longName);
                zone = session.createZone(longName, VEX_ZT_SOFT).done();
                zoneset = session.createZoneset(longName).done();
                (void)session.removeMember(VEX_ZMT_WWN, "2000001122000001");
                saved = (way == Abandon ? session.abandon() : session.commit()).done() && way != Abandon;
                ran = memory.count() <= next;
            }
            EXPECT_TRUE(!saved || way == Commit) << "it was refused";
            EXPECT_TRUE(!ran || (zone && zoneset && saved == (way == Commit)));
            sim.run("do = 'clear_faults'");
            EXPECT_TRUE(fabricLockIsFree());
            EXPECT_EQ(checksum() != config, saved);
            if (!saved) continue;
            settle();
            EXPECT_EQ(shown().find("zone " + longName) != std::string::npos, zone);
            EXPECT_EQ(shown().find("zoneset " + longName) != std::string::npos, zoneset);
            start();
        }
    }
}

TEST_F(ZoningSessions, OfTheOlderInterfaceNeedNoMemoryToBeTold) {
    for (size_t next = 0;; ++next) {
        SCOPED_TRACE(next);
        bool expired = false;
        Allocations memory;
        memory.failAfter(next);
        std::string id = client;
        const int locked = zoning().ZoningLock(id.data());
        EXPECT_EQ(zoning().LockIdOK(id.data(), expired), locked == 1);
        const int sent = zoning().replaceZoningDB();
        const bool ran = memory.count() <= next;
        EXPECT_TRUE(!ran || (locked == 1 && sent == 1));
        memory.failAfter(1000000);
        zoning().ZoningUnlock();
        EXPECT_TRUE(fabricLockIsFree());
        if (ran || HasFailure()) break;
    }
}

}  // namespace
