#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>

#include "datacache/CacheReader.h"
#include "tests/support/CacheState.h"
#include "tests/support/CacheTest.h"
#include "tests/support/ZoningModel.h"
#include "tests/support/zoning_limits.h"
#include "zoning/ZoningSession.h"

/*
 * Two administrators edit one fabric: another switch, whose notifications come, wait or get lost, and a
 * session of ours, that is run in any place, over a switch library in which a call may fail. After each
 * session the switch has what its outcome says: the other's zoning, with our edits and what the active
 * zoneset brings when it was committed, and without them otherwise. The lock is given back unless the outcome
 * says that it is not, and what the cache shows changes with no session, only with a pass.
 *
 * ADMINISTRATORS_SEEDS=N runs that many seeds.
 */
namespace {

using datacache::ZoningOutcome;
using datacache::ZoningSession;
using datacache::ZoningStatus;

bool erase(Lines& all, const std::string& one) {
    const auto found = std::find(all.begin(), all.end(), one);
    if (found == all.end()) return false;
    all.erase(found);
    return true;
}

bool add(Lines& all, const std::string& one) {
    if (std::count(all.begin(), all.end(), one) != 0) return false;
    all.push_back(one);
    return true;
}

/** One edit, as a session and as the model carry it out. */
struct Edit {
    unsigned kind;
    std::string zone, alias, zoneset, wwn;
    bool byAlias;

    ZoningOutcome carryOut(ZoningSession& session) const {
        const vex_fzs_zonemember_type_e type = byAlias ? VEX_ZMT_ALIAS : VEX_ZMT_WWN;
        const std::string& member = byAlias ? alias : wwn;
        if (kind == 0) return session.createZone(zone, VEX_ZT_HARD_ACL);
        if (kind == 1) return session.createZoneAlias(alias);
        if (kind == 2) return session.createZoneset(zoneset);
        if (kind == 3) return session.removeZone(zone);
        if (kind == 4) return session.removeZoneAlias(alias);
        if (kind == 5) return session.removeZoneset(zoneset);
        if (kind == 6) return session.addZoneToZoneset(zoneset, zone);
        if (kind == 7) return session.removeZoneFromZoneset(zoneset, zone);
        if (kind == 8) return session.addMemberToZone(zone, type, member);
        if (kind == 9) return session.removeMemberFromZone(zone, type, member);
        if (kind == 10) return session.addMemberToZoneAlias(alias, VEX_ZMT_WWN, wwn);
        if (kind == 11) return session.removeMemberFromZoneAlias(alias, VEX_ZMT_WWN, wwn);
        return session.removeMember(VEX_ZMT_WWN, wwn);
    }

    /** Whether it can be done. */
    bool carryOut(Zones& all) const {
        const std::string& member = byAlias ? alias : wwn;
        const bool hasZone = all.zones.count(zone) != 0, hasAlias = all.aliases.count(alias) != 0;
        const bool hasZoneset = all.zonesets.count(zoneset) != 0;
        if (kind == 0) return all.zones.emplace(zone, Zones::Zone{3, {}}).second;
        if (kind == 1) return all.aliases.emplace(alias, Lines()).second;
        if (kind == 2) return all.zonesets.emplace(zoneset, Lines()).second;
        if (kind == 3 && hasZone)
            for (auto& [name, zones] : all.zonesets) erase(zones, zone);
        if (kind == 3) return all.zones.erase(zone) != 0;
        if (kind == 4) return all.aliases.erase(alias) != 0;
        if (kind == 5) return all.zonesets.erase(zoneset) != 0;
        if (kind == 6) return hasZoneset && hasZone && add(all.zonesets[zoneset], zone);
        if (kind == 7) return hasZoneset && erase(all.zonesets[zoneset], zone);
        if (kind == 8) return hasZone && add(all.zones[zone].members, member);
        if (kind == 9) return hasZone && erase(all.zones[zone].members, member);
        if (kind == 10) return hasAlias && add(all.aliases[alias], wwn);
        if (kind == 11) return hasAlias && erase(all.aliases[alias], wwn);
        for (auto& [name, is] : all.zones) erase(is.members, wwn);
        for (auto& [name, members] : all.aliases) erase(members, wwn);
        return true;
    }
};

class TwoAdministrators : public CacheTest {
  protected:
    unsigned below(size_t bound) {
        return std::uniform_int_distribution<unsigned>(0, static_cast<unsigned>(bound) - 1)(_random);
    }
    std::string any(const Lines& all) { return all[below(all.size())]; }
    std::string name(const char* kind) { return kind + text(below(3)); }
    void run(const std::string& fields) { sim.run("[[step]]\n" + fields); }

    Edit randomEdit() {
        const std::string alias = name("a");
        return {below(13),
                name("z"),
                alias,
                name("s"),
                "200000112200000" + text(below(3)),
                below(2) == 0 && _configured.aliases.count(alias) != 0};
    }

    /** The zoning alone: of the cache, or of the switch as a cache that knows nothing reads it. */
    static Lines zoningOf(Lines lines) {
        const auto other = [](const std::string& one) {
            return one[0] != 'z' && one.compare(0, 5, "alias") != 0;
        };
        lines.erase(std::remove_if(lines.begin(), lines.end(), other), lines.end());
        return lines;
    }
    Lines modelHas(const Zones& configured) {
        Lines lines{line("zoning 1 1", '"' + (_active ? _active->zonesets.begin()->first : "") + '"',
                         configured.zonesets.size(), configured.zones.size(), configured.aliases.size(),
                         configured.size(), 1)};
        configured.tellAll(_active, lines);
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    /** Zones that name an alias that is not there, which the switch refuses. */
    static bool dangles(Zones& all, bool mend) {
        bool dangling = false;
        for (auto& [name, zone] : all.zones) {
            const auto lost = [&all](const std::string& member) {
                return member[0] == 'a' && all.aliases.count(member) == 0;
            };
            const auto first = std::remove_if(zone.members.begin(), zone.members.end(), lost);
            dangling = dangling || first != zone.members.end();
            if (mend) zone.members.erase(first, zone.members.end());
        }
        return dangling;
    }

    void theOtherEdits() {
        const std::string zoneset = name("s");
        const unsigned kind = below(5);
        if (kind == 0 && below(3) == 0) {
            run("do = 'zoneset_deactivate'");
            _active.reset();
        } else if (kind < 2 && _configured.zonesets.count(zoneset) != 0) {
            run("do = 'zoneset_activate'\nname = '" + zoneset + '\'');
            _active = _configured.part(zoneset);
        } else {
            for (unsigned edits = 1 + below(8); edits > 0; --edits) randomEdit().carryOut(_configured);
            dangles(_configured, true);
            run(_configured.replaceStep());
        }
        const unsigned way = below(4);
        if (way == 0) return;  // the notification waits
        sim.deliverPending();
        if (way == 1) return;  // its event is queued
        if (way == 2) {        // its event is lost
            const AccessGuard guard;
            for (vex_event_s* event : std::exchange(peer().eventQueue, {})) delete event;
            takeEvaluationRequests();
        }
        settle();
    }

    /** Faults count calls, so that one for commands hits all of a group that match. */
    void aCallWillFail() {
        static const Lines kReads = {"vex_smlGetBatch",         "vex_fzsGetZonesetList",
                                     "vex_fzsGetZoneset",       "vex_fzsGetAllZonesAndAliases",
                                     "vex_fzsGetActiveZoneset", "vex_ZoneGetName",
                                     "vex_MemberGetAttr",       "vex_ZoneGetType"};
        static const Lines kEdits = {"vex_ZoneAddMember", "vex_ZonesetAddZone", "vex_ZonesetRemoveZone",
                                     "vex_ZoneDeleteMember", "vex_ZoneAliasDeleteMember"};
        static const Lines kCommands = {
            "*", "*.Create", "*.AddZoneMember.*", "*.SaveConfig", "*.FabricUnlock.77", "Cmd.Switch.RelAdmin"};
        const std::string effect = below(12) == 0 ? "uptime_s = 91" : "result = 6";
        const auto fault = [this](const std::string& call, size_t most, const std::string& fields) {
            run("do = 'fault'\nfunction = '" + call + "'\nskip = " + text(below(most)) + '\n' + fields);
        };
        const unsigned kind = below(7);
        if (kind == 0) fault(any(kReads), 12, effect);
        if (kind == 1 || kind == 2) fault(any(kEdits), 3, effect + "\ntimes = 0");
        if (kind == 3) fault("vex_smlSetBatch", 4, effect);
        if (kind == 4) fault("vex_smlSetBatch", 4, "result = 6\ncarried_out = true");
        if (kind == 5) fault("vex_smlSetBatch", 2, "status = 0\nkey = '*.SaveConfig'");
        if (kind == 6) fault("vex_smlSetBatch", 2, "times = 2\nstatus = 9\nkey = '" + any(kCommands) + '\'');
        _faulty = true;
    }

    /** What a commit of `edited` leaves on the switch. */
    Zones saved(Zones edited) const {
        if (!_active) return edited;
        const auto& [name, zones] = *_active->zonesets.begin();
        for (const std::string& zone : zones) add(edited.zonesets[name], zone);
        edited.zonesets[name];
        return edited;
    }
    static Lines broughtBy(const ZoningOutcome& outcome) {
        Lines lines;
        for (uint32_t i = 0; i < outcome.broughtCount(); ++i)
            lines.push_back(outcome.brought(i).zone + (outcome.brought(i).removedHere ? " here" : " before"));
        return lines;
    }
    Lines broughtTo(const Zones& edited) const {
        Lines lines;
        if (!_active) return lines;
        const auto& [zoneset, zones] = *_active->zonesets.begin();
        const auto missing = [&, &name = zoneset](const Zones& in, const std::string& zone) {
            const auto found = in.zonesets.find(name);
            if (found == in.zonesets.end()) return true;
            return !zone.empty() && std::count(found->second.begin(), found->second.end(), zone) == 0;
        };
        Lines all{""};
        all.insert(all.end(), zones.begin(), zones.end());
        for (const std::string& zone : all)
            if (missing(edited, zone))
                lines.push_back(zone + (missing(_configured, zone) ? " before" : " here"));
        return lines;
    }
    ZoningStatus expectedEnd(Zones& edited) {
        if (_active) {
            for (const auto& [zone, is] : _active->zones)
                if (edited.zones.count(zone) == 0) return ZoningStatus::StillActive;
        }
        return dangles(edited, false) ? ZoningStatus::Refused : ZoningStatus::Done;
    }

    /** One session of ours; returns what the switch must have after it, or nothing where nobody knows. */
    std::optional<Zones> session() {
        Zones edited = _configured;
        ZoningSession session = DataCache::zoningSession("ours");
        const ZoningOutcome lock = session.lockOutcome();
        _held = _held || !lock.failure().held.empty();
        EXPECT_EQ(lock.done(), session.isOpen());
        EXPECT_TRUE(lock.done() || _faulty) << lock.text();
        for (unsigned edits = below(8); edits > 0 && lock.done(); --edits) {
            const Edit edit = randomEdit();
            Zones next = edited;
            const bool possible = edit.carryOut(next);
            const ZoningOutcome outcome = edit.carryOut(session);
            EXPECT_TRUE(outcome.done() == possible || _faulty) << outcome.text();
            if (outcome.done()) edited = next;
            if (outcome.status() == ZoningStatus::Damaged) _damaged = true;
        }
        const bool meddled = below(12) == 0;  // a fabric whose lock keeps nobody out
        const std::string checksum = sim.get("Oper.Zoning.InactiveChecksum").value();
        const ZoningStatus expected = expectedEnd(edited);
        const Lines brought = broughtTo(edited);
        if (meddled) {
            Edit{0, "theirs", "", "", "", false}.carryOut(_configured);
            run(_configured.replaceStep());
        }
        const bool changed = checksum != sim.get("Oper.Zoning.InactiveChecksum").value();
        if (below(5) == 0) {
            const ZoningOutcome end = session.abandon();
            _held = _held || !end.failure().held.empty();
            return _configured;
        }
        const ZoningOutcome check = session.check();
        EXPECT_TRUE(_faulty || expected != ZoningStatus::StillActive || check.status() == expected);
        const ZoningOutcome end = session.commit();
        SCOPED_TRACE(end.text());
        _ends[end.status()]++;
        if (lock.done() && !_faulty) {
            EXPECT_EQ(end.status(),
                      expected == ZoningStatus::StillActive || !changed ? expected : ZoningStatus::Changed);
            EXPECT_THAT(broughtBy(end), ::testing::UnorderedElementsAreArray(brought));
        }
        EXPECT_TRUE(!_damaged || !end.done()) << "what was edited in part was sent";
        _held = _held || !end.failure().held.empty();
        if (session.isOpen()) {
            const ZoningOutcome given = session.abandon();
            _held = _held || !given.failure().held.empty();
        }
        if (end.done() || end.status() == ZoningStatus::NotReleased) return saved(edited);
        if (end.status() == ZoningStatus::SavedInPart || end.status() == ZoningStatus::Unknown)
            return std::nullopt;
        return _configured;
    }

    void round() {
        for (unsigned changes = below(3); changes > 0; --changes) theOtherEdits();
        if (below(4) == 0) {  // the cache's own read fails
            run("do = 'fault'\nfunction = '" +
                std::string(below(2) == 0 ? "vex_fzsGetZonesetList" : "vex_smlGetBatch") + "'\nresult = 3");
            cache().reloadZoning();
            pass();
            run("do = 'clear_faults'");
        }
        _faulty = _damaged = false;
        const Lines shown = zoningOf(cacheState());
        if (below(2) == 0) aCallWillFail();
        std::optional<Zones> left;
        const unsigned place = below(3);
        if (place == 0) {
            inCallback = [&] {
                run("do = 'clear_faults'");
                _faulty = false;
                if (below(2) == 0) aCallWillFail();
                left = session();
                run("do = 'clear_faults'");
            };
            cache().reloadZoning();
            while (inCallback) {
                pass();  // a fault may hit its reads first
                run("do = 'clear_faults'");
                cache().reloadZoning();
            }
        } else {
            std::optional<CacheReader> reader;
            if (place == 1) reader.emplace();
            left = session();
            run("do = 'clear_faults'");
            EXPECT_EQ(zoningOf(cacheState()), shown) << "only a pass changes what the cache shows";
        }
        const bool free = fabricLockIsFree();
        EXPECT_TRUE(_held || free);
        _held = !free;  // until a later session gives it back
        if (left) {
            _configured = *left;
            EXPECT_EQ(zoningOf(freshState()), modelHas(_configured));
        } else {  // in part: the other puts it in order
            run(_configured.replaceStep());
        }
        if (below(3) == 0) {
            DataCache::refreshNow();
            settle();
            EXPECT_EQ(zoningOf(cacheState()), modelHas(_configured));
        }
    }

    static std::function<void()> inCallback;

    std::mt19937 _random;
    Zones _configured;
    std::optional<Zones> _active;
    bool _faulty = false, _held = false, _damaged = false;
    std::map<ZoningStatus, unsigned> _ends;
};

std::function<void()> TwoAdministrators::inCallback;

TEST_F(TwoAdministrators, NeitherLosesWhatTheOtherDid) {
    const char* const wanted = std::getenv("ADMINISTRATORS_SEEDS");
    const unsigned seeds = wanted == nullptr ? 40 : static_cast<unsigned>(std::atoi(wanted));
    for (unsigned seed = 1; seed <= seeds && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + text(seed));
        _random.seed(seed);
        _configured = {};
        _active.reset();
        _held = false;
        restart();
        sim.keepTranscript(false);
        start("switch = {wwn = '1000001122AABBCC'}\n[zoning]\n" + limitsText());
        {
            const AccessGuard guard;
            peer().callback = [](DataCacheEvent* event) {
                if (event->type == DCEventZoningDBChange::TYPE && inCallback)
                    std::exchange(inCallback, nullptr)();
            };
        }
        _configured.aliases = {{"a0", {"2000001122000000"}}, {"a1", {}}};
        _configured.zones = {{"z0", {3, {"a0"}}}, {"z1", {1, {"2000001122000001"}}}};
        _configured.zonesets = {{"s0", {"z0", "z1"}}, {"s1", {"z1"}}};
        run(_configured.replaceStep());
        for (int rounds = 0; rounds < 15 && !HasFailure(); ++rounds) round();
    }
    for (const ZoningStatus end :
         {ZoningStatus::Done, ZoningStatus::Refused, ZoningStatus::StillActive, ZoningStatus::Changed,
          ZoningStatus::Damaged, ZoningStatus::NotReleased, ZoningStatus::SavedInPart, ZoningStatus::Unknown})
        EXPECT_GE(_ends[end], 1U) << static_cast<int>(end);
}

}  // namespace
