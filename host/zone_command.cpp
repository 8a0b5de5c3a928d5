#include "host/commands.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "datacache/DataCache.h"
#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/edits.h"

namespace {

constexpr long lockSeconds = 90;  ///< the cache's own

/** The library takes names and texts that it does not change as char*. */
class Text {
  public:
    Text(std::string text) : _text(std::move(text)) {}  // NOLINT(google-explicit-constructor)
    operator char*() { return _text.data(); }           // NOLINT(google-explicit-constructor)

  private:
    std::string _text;
};

constexpr char lockId[] = "datacache-host";
constexpr char held[] = "the fabric's zoning lock and admin rights";
constexpr char noLock[] = "there is no lock, or it has expired; take it with: lock";

/** Seconds until the lock expires. */
long secondsLeft(const ZoningCache& zoning) DC_REQUIRES(access_lock) {
    long now = 0;
    uptime(&now);
    return std::max(0L, lockSeconds - (now - zoning._lockTime));
}

Outcome refused(const char* why) {
    return {false, {{"result", std::string("refused: ") + why}}};
}

/** For calls that tell no more than whether they succeeded. */
Outcome simple(bool done) {
    return {done, {{"result", done ? "done" : "the switch refused (see /tmp/cim.out)"}}};
}

const char* wordsOf(uint32_t code) {
    switch (code) {
        case ZONING_DONE:
            return "done";
        case ZONING_INVALID:
            return "invalid name or member";
        case ZONING_NOT_FOUND:
            return "no such zone, alias, zoneset or member";
        case ZONING_EXISTS:
            return "exists already";
        default:
            return "a limit is reached, or the switch library failed";
    }
}

vex_fzs_zone_type_e zoneType(const std::string& word) {
    if (word == "vpf") return VEX_ZT_HARD_VPF;
    return word == "acl" ? VEX_ZT_HARD_ACL : VEX_ZT_SOFT;
}

vex_fzs_zonemember_type_e memberType(const std::string& word) {
    if (word == "wwn") return VEX_ZMT_WWN;
    if (word == "port") return VEX_ZMT_DOMAIN_PORT;
    return word == "fcid" ? VEX_ZMT_FCID : VEX_ZMT_ALIAS;
}

uint32_t create(ZoningCache& zoning, const std::string& kind, Text name) {
    if (kind == "alias") return zoning.createZoneAlias(name);
    return kind == "zone" ? zoning.createZone(name, VEX_ZT_SOFT) : zoning.createZoneset(name);
}

uint32_t remove(ZoningCache& zoning, const std::string& kind, Text name) {
    if (kind == "alias") return zoning.removeZoneAlias(name);
    return kind == "zone" ? zoning.removeZone(name) : zoning.removeZoneset(name);
}

/** Operands: type, member, kind of the container, its name. */
uint32_t addMember(ZoningCache& zoning, const std::vector<std::string>& operands) {
    const vex_fzs_zonemember_type_e type = memberType(operands[0]);
    Text member = operands[1];
    Text name = operands[3];
    return operands[2] == "zone" ? zoning.addMemberToZone(name, type, member)
                                 : zoning.addMemberToZoneAlias(name, type, member);
}

uint32_t removeMember(ZoningCache& zoning, const std::vector<std::string>& operands) {
    const vex_fzs_zonemember_type_e type = memberType(operands[0]);
    Text member = operands[1];
    Text name = operands[3];
    return operands[2] == "zone" ? zoning.removeMemberFromZone(name, type, member)
                                 : zoning.removeMemberFromZoneAlias(name, type, member);
}

uint32_t apply(ZoningCache& zoning, const Statement& statement) {
    const std::vector<std::string>& operands = statement.operands;
    switch (statement.code) {
        case ZONE_CREATE:
            return create(zoning, operands[0], operands[1]);
        case ZONE_CREATE_TYPED:
            return zoning.createZone(Text(operands[0]), zoneType(operands[1]));
        case ZONE_REMOVE:
            return remove(zoning, operands[0], operands[1]);
        case ZONE_ADD_ZONE:
            return zoning.addZoneToZoneset(Text(operands[1]), Text(operands[0]));
        case ZONE_REMOVE_ZONE:
            return zoning.removeZoneFromZoneset(Text(operands[1]), Text(operands[0]));
        case ZONE_ADD_MEMBER:
            return addMember(zoning, operands);
        case ZONE_REMOVE_MEMBER:
            return removeMember(zoning, operands);
        default:
            return zoning.removeMember(memberType(operands[0]), Text(operands[1]));
    }
}

/** A zoning editing session, as the provider of a switch runs one: lock, edits, commit or abandon. */
class ZoneSession {
  public:
    explicit ZoneSession(Session& session) : _session(session) {}

    Outcome carryOut(const Statement& statement);

    /** Whether the tool holds the lock; an expired one counts, because the switch may still hold it. */
    bool locked() const { return _locked; }

  private:
    void setLocked(bool locked);
    bool lockIsGood(ZoningCache& zoning);
    Outcome lock();
    Outcome unlock();
    Outcome commit();
    Outcome edit(const Statement& statement);
    Outcome wait(const std::string& seconds);

    Session& _session;
    bool _locked = false;
};

Outcome ZoneSession::carryOut(const Statement& statement) {
    switch (statement.code) {
        case ZONE_LOCK:
            return lock();
        case ZONE_UNLOCK:
            return unlock();
        case ZONE_COMMIT:
            return commit();
        case ZONE_WAIT:
            return wait(statement.operands[0]);
        default:
            return edit(statement);
    }
}

bool ZoneSession::lockIsGood(ZoningCache& zoning) {
    // A commit gives the lock back but leaves it marked as held, so the session keeps count as well.
    bool expired = false;
    return _locked && zoning.LockIdOK(Text(lockId), expired);
}

void ZoneSession::setLocked(bool locked) {
    _locked = locked;
    _session.setHeld(locked ? held : "");
}

Outcome ZoneSession::lock() {
    const CacheReader cache;
    _session.setHeld(held);
    Outcome outcome = simple(cache->_zoningCache.ZoningLock(Text(lockId)) == 1);
    setLocked(outcome.done);
    if (_locked) outcome.fields["lockSeconds"] = secondsLeft(cache->_zoningCache);
    return outcome;
}

Outcome ZoneSession::unlock() {
    if (!_locked) return refused("there is no lock to give back");
    const CacheReader cache;
    Outcome outcome = simple(cache->_zoningCache.ZoningUnlock() == 1);
    _locked = false;
    if (outcome.done) _session.setHeld("");
    return outcome;
}

Outcome ZoneSession::commit() {
    const CacheReader cache;
    ZoningCache& zoning = cache->_zoningCache;
    if (!lockIsGood(zoning)) return refused(noLock);
    if (zoning.replaceZoningDB() == 0) {
        return {false, {{"result", "nothing sent: the database is inconsistent (see /tmp/cim.crit.out)"}}};
    }
    setLocked(false);
    // A group that was sent and refused clears the lock, and that is all that tells of it.
    return simple(zoning._lockHeld);
}

Outcome ZoneSession::edit(const Statement& statement) {
    const CacheReader cache;
    ZoningCache& zoning = cache->_zoningCache;
    if (!lockIsGood(zoning)) return refused(noLock);
    const uint32_t code = apply(zoning, statement);
    return {code == ZONING_DONE,
            {{"result", wordsOf(code)}, {"code", code}, {"lockSeconds", secondsLeft(zoning)}}};
}

Outcome ZoneSession::wait(const std::string& seconds) {
    const Session::Clock::time_point begin = Session::Clock::now();
    const std::chrono::duration<double> pause(std::strtod(seconds.c_str(), nullptr));
    while (Session::Clock::now() - begin < pause) {
        if (_session.interrupted()) return {false, {{"result", "interrupted"}}};
        _session.wait();
    }
    return {true, {{"result", "done"}}};
}

bool zoningUpToDate() {
    const CacheReader cache;
    return upToDate(*cache, "zoning");
}

/** Carries the statements out; returns whether all were done. */
bool edit(Session& session, const HostRequest& request) {
    if (!zoningUpToDate()) {
        std::cerr << "datacache-host: no statement carried out: what the cache has is not the switch's zoning"
                  << std::endl;
        return false;
    }
    ZoneSession zoning(session);
    bool done =
        carryOut(session, request, [&](const Statement& statement) { return zoning.carryOut(statement); });
    if (zoning.locked()) {  // nobody is to wait for a lock that this process takes to its grave
        printOutcome("abandon", zoning.carryOut({ZONE_UNLOCK, {}, ""}), request.json);
        done = false;
    }
    if (session.interrupted()) return false;
    session.setUndone("showing the zoning");
    {
        const CacheReader cache;
        cache->reloadZoning();  // what the switch has now, not what was edited here
    }
    return session.waitRead(request.timeout) && done;
}

}  // namespace

int zoneCommand(Session& session, const HostRequest& request) {
    if (!session.waitRead(request.timeout)) return EXIT_NOT_DONE;
    const bool done = edit(session, request);
    if (session.interrupted()) return EXIT_NOT_DONE;
    session.setUndone("showing the zoning");
    const std::vector<Json> areas = readAreas("zoning");
    session.finish();
    const bool good = printAreas(std::cout, areas, request.json);
    session.setUndone("");
    return done && good ? EXIT_DONE : EXIT_NOT_DONE;
}
