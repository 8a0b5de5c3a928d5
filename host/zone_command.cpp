#include "host/commands.h"

#include <cstdlib>
#include <iostream>
#include <optional>

#include "datacache/CacheReader.h"
#include "host/areas.h"
#include "host/edits.h"
#include "zoning/ZoningSession.h"

namespace host {

using namespace datacache;

namespace {

constexpr char kClient[] = "datacache-host";
constexpr char kHeld[] = "the fabric's zoning lock and admin rights";

Outcome refused(const char* why) {
    return {false, {{"result", std::string("refused: ") + why}}};
}

Outcome outcomeOf(const ZoningOutcome& zoning) {
    Outcome outcome{zoning.done(), {{"result", zoning.reason()}}};
    if (zoning.code() != 0) outcome.fields["code"] = zoning.code();
    return outcome;
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

ZoningOutcome create(ZoningSession& zoning, const std::string& kind, const std::string& name) {
    if (kind == "alias") return zoning.createZoneAlias(name);
    return kind == "zone" ? zoning.createZone(name, VEX_ZT_SOFT) : zoning.createZoneset(name);
}

ZoningOutcome remove(ZoningSession& zoning, const std::string& kind, const std::string& name) {
    if (kind == "alias") return zoning.removeZoneAlias(name);
    return kind == "zone" ? zoning.removeZone(name) : zoning.removeZoneset(name);
}

/** Operands: type, member, kind of the container, its name. */
ZoningOutcome addMember(ZoningSession& zoning, const std::vector<std::string>& operands) {
    const vex_fzs_zonemember_type_e type = memberType(operands[0]);
    return operands[2] == "zone" ? zoning.addMemberToZone(operands[3], type, operands[1])
                                 : zoning.addMemberToZoneAlias(operands[3], type, operands[1]);
}

ZoningOutcome removeMember(ZoningSession& zoning, const std::vector<std::string>& operands) {
    const vex_fzs_zonemember_type_e type = memberType(operands[0]);
    return operands[2] == "zone" ? zoning.removeMemberFromZone(operands[3], type, operands[1])
                                 : zoning.removeMemberFromZoneAlias(operands[3], type, operands[1]);
}

ZoningOutcome apply(ZoningSession& zoning, const Statement& statement) {
    const std::vector<std::string>& operands = statement.operands;
    switch (statement.code) {
        case ZONE_CHECK:
            return zoning.check();
        case ZONE_COMMIT:
            return zoning.commit();
        case ZONE_CREATE:
            return create(zoning, operands[0], operands[1]);
        case ZONE_CREATE_TYPED:
            return zoning.createZone(operands[0], zoneType(operands[1]));
        case ZONE_REMOVE:
            return remove(zoning, operands[0], operands[1]);
        case ZONE_ADD_ZONE:
            return zoning.addZoneToZoneset(operands[1], operands[0]);
        case ZONE_REMOVE_ZONE:
            return zoning.removeZoneFromZoneset(operands[1], operands[0]);
        case ZONE_ADD_MEMBER:
            return addMember(zoning, operands);
        case ZONE_REMOVE_MEMBER:
            return removeMember(zoning, operands);
        default:
            return zoning.removeMember(memberType(operands[0]), operands[1]);
    }
}

/** The statements of one command: they may lock, edit and give up or commit more than once. */
class ZoneStatements {
  public:
    explicit ZoneStatements(Session& session) : _session(session) {}

    Outcome carryOut(const Statement& statement);

    /** Whether a lock is still kHeld; an expired one counts, because the switch may still hold it. */
    bool locked() const { return _zoning.has_value() && _zoning->isOpen(); }
    bool committed() const { return _committed; }

  private:
    Outcome lock();
    Outcome unlock();
    Outcome edit(const Statement& statement);
    Outcome wait(const std::string& seconds);

    Session& _session;
    std::optional<ZoningSession> _zoning;
    bool _committed = false;
};

Outcome ZoneStatements::carryOut(const Statement& statement) {
    switch (statement.code) {
        case ZONE_LOCK:
            return lock();
        case ZONE_UNLOCK:
            return unlock();
        case ZONE_WAIT:
            return wait(statement.operands[0]);
        default:
            return edit(statement);
    }
}

Outcome ZoneStatements::lock() {
    _session.setHeld(kHeld);
    _zoning.reset();
    _zoning.emplace(DataCache::zoningSession(kClient));
    Outcome outcome = outcomeOf(_zoning->lockOutcome());
    if (locked()) outcome.fields["lockSeconds"] = _zoning->secondsLeft();
    if (!locked()) _session.setHeld("");
    return outcome;
}

Outcome ZoneStatements::unlock() {
    if (!locked()) return refused("there is no lock to give back");
    Outcome outcome = outcomeOf(_zoning->abandon());
    if (outcome.done) _session.setHeld("");
    return outcome;
}

Outcome ZoneStatements::edit(const Statement& statement) {
    if (!locked()) return refused("there is no lock; take it with: lock");
    const ZoningOutcome zoning = apply(*_zoning, statement);
    Outcome outcome = outcomeOf(zoning);
    _committed = _committed || (zoning.done() && statement.code == ZONE_COMMIT);
    if (locked()) {
        outcome.fields["lockSeconds"] = _zoning->secondsLeft();
    } else if (zoning.failure().held.empty()) {
        _session.setHeld("");
    }
    return outcome;
}

Outcome ZoneStatements::wait(const std::string& seconds) {
    const Session::Clock::time_point begin = Session::Clock::now();
    const std::chrono::duration<double> pause(std::strtod(seconds.c_str(), nullptr));
    while (Session::Clock::now() - begin < pause) {
        if (_session.interrupted()) return {false, {{"result", "interrupted"}}};
        _session.wait();
    }
    return {true, {{"result", "done"}}};
}

/** Waits for the notification of a commit, so that a recording of this run has it. The wait has an end, as
 * the switch sends none for a commit that changed nothing. */
void awaitNotification(Session& session, uint32_t received) {
    constexpr std::chrono::seconds kMostWait(2);
    const Session::Clock::time_point begin = Session::Clock::now();
    while (DataCache::health().events().received == received && !session.interrupted() &&
           Session::Clock::now() - begin < kMostWait)
        session.wait();
}

/** Carries the statements out; returns whether all were done. */
bool edit(Session& session, const HostRequest& request) {
    const uint32_t received = DataCache::health().events().received;
    ZoneStatements zoning(session);
    bool done =
        carryOut(session, request, [&](const Statement& statement) { return zoning.carryOut(statement); });
    if (zoning.locked()) {  // nobody is to wait for a lock that this process takes to its grave
        printOutcome("abandon", zoning.carryOut({ZONE_UNLOCK, {}, ""}), request.json);
        done = false;
    }
    if (zoning.committed()) awaitNotification(session, received);
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

}  // namespace host
