#include "host/zone_session.h"

#include <algorithm>
#include <cstdlib>

#include "host/cache_reader.h"

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

}  // namespace

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
