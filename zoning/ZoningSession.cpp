#include "zoning/ZoningSession.h"

#include <algorithm>
#include <new>
#include <utility>

#include "switchlib/uptime_seconds.h"

namespace datacache {
namespace {

/** The cache takes names that it does not change as char*. */
class Text {
  public:
    explicit Text(std::string text) : _text(std::move(text)) {}
    operator char*() { return _text.data(); }  // NOLINT(google-explicit-constructor)

  private:
    std::string _text;
};

ZoningStatus statusOf(uint32_t code, const ZoningFailure& failure, bool limitsRead) {
    switch (code) {
        case ZONING_DONE:
            return ZoningStatus::Done;
        case ZONING_INVALID:
            return ZoningStatus::Invalid;
        case ZONING_NOT_FOUND:
            return ZoningStatus::NotFound;
        case ZONING_EXISTS:
            return ZoningStatus::Exists;
        default:
            break;
    }
    if (failure.limit == ZoningLimit::None) return ZoningStatus::LibraryFailed;
    return limitsRead ? ZoningStatus::LimitReached : ZoningStatus::LimitsUnknown;
}

/** For what the switch refuses as a whole: a group without a command that failed was never sent. */
ZoningStatus refusal(const ZoningFailure& failure) {
    return failure.call.empty() ? ZoningStatus::OutOfMemory : ZoningStatus::Refused;
}

}  // namespace

ZoningSession::ZoningSession(ZoningCache& zoning, std::string client)
    : _zoning(zoning), _client(std::move(client)) {
    const AccessGuard guard;
    _lockOutcome.step = "lock";
    _zoning._failure = {};
    _open = _zoning.ZoningLock(Text(_client)) == 1;
    _lockChanges = _zoning._lockChanges;
    if (_open) {
        // What a session left behind that lost its lock to this one must not be committed by this one.
        if (_zoning._edited) _zoning._endEdits();
        return;
    }
    _lockOutcome.failure = _zoning._failure;
    _lockOutcome.status = refusal(_zoning._failure);
}

ZoningSession::~ZoningSession() {
    const AccessGuard guard;
    try {
        if (_open) _close();
    } catch (const std::bad_alloc&) {  // the lock then expires on its own
    }
}

ZoningOutcome ZoningSession::lockOutcome() const {
    const AccessGuard guard;
    return _lockOutcome;
}

bool ZoningSession::isOpen() const {
    const AccessGuard guard;
    return _open;
}

long ZoningSession::secondsLeft() const {
    const AccessGuard guard;
    if (!_open || _lockChanges != _zoning._lockChanges) return 0;
    const long elapsed = uptimeSeconds() - _zoning._lockTime;
    return std::clamp(kZoningLockSeconds - elapsed, 0L, kZoningLockSeconds);
}

ZoningStatus ZoningSession::_obstacle() {
    if (!_open) return ZoningStatus::Closed;
    if (_lockChanges != _zoning._lockChanges) return ZoningStatus::Taken;
    bool expired = false;
    if (!_zoning.LockIdOK(Text(_client), expired))
        return expired ? ZoningStatus::Expired : ZoningStatus::Taken;
    if (_edited && _generation != _zoning._generation) return ZoningStatus::Reloaded;
    return _zoning._isLoaded() ? ZoningStatus::Done : ZoningStatus::NotLoaded;
}

template <typename Edit>
ZoningOutcome ZoningSession::_edit(std::string step, Edit edit) {
    ZoningOutcome outcome;
    outcome.step = std::move(step);
    outcome.status = _obstacle();
    if (!outcome.done()) return outcome;
    if (!_edited) _generation = _zoning._generation;
    _edited = true;
    _zoning._edited = true;
    _zoning._failure = {};
    outcome.code = edit();
    outcome.failure = _zoning._failure;
    outcome.status = statusOf(outcome.code, outcome.failure, _zoning._limitsRead());
    return outcome;
}

bool ZoningSession::_close() {
    _open = false;
    // A lock that is somebody else's by now is not this session's to give back.
    const bool own = _lockChanges == _zoning._lockChanges;
    const bool released = !own || _zoning.ZoningUnlock() == 1;
    // Nor are edits that a later session began after it had this one's dropped.
    if (_edited && _zoning._edited && _generation == _zoning._generation) _zoning._endEdits();
    return released;
}

ZoningOutcome ZoningSession::commit() {
    const AccessGuard guard;
    ZoningOutcome outcome;
    outcome.step = "commit";
    outcome.status = _obstacle();
    if (!outcome.done()) return outcome;
    _zoning._failure = {};
    const bool sent = _zoning.replaceZoningDB() == 1;
    outcome.failure = _zoning._failure;
    if (!sent) {
        outcome.status =
            outcome.failure.call.empty() ? ZoningStatus::OutOfMemory : ZoningStatus::Inconsistent;
        return outcome;
    }
    if (outcome.failure.call.empty()) {
        _open = false;
        _zoning._endEdits();  // a next session then waits for what the switch made of it
        return outcome;
    }
    outcome.status = ZoningStatus::Refused;
    // The group may have stopped before it gave the lock and admin rights back.
    _lockChanges = _zoning._lockChanges;
    _close();
    _zoning._endEdits();  // also those that were made without a session
    return outcome;
}

ZoningOutcome ZoningSession::abandon() {
    const AccessGuard guard;
    ZoningOutcome outcome;
    outcome.step = "abandon";
    if (!_open) {
        outcome.status = ZoningStatus::Closed;
        return outcome;
    }
    _zoning._failure = {};
    if (_close()) return outcome;
    outcome.failure = _zoning._failure;
    outcome.status = refusal(outcome.failure);
    return outcome;
}

ZoningOutcome ZoningSession::createZoneAlias(const std::string& name) {
    const AccessGuard guard;
    return _edit("create alias " + name, [&] { return _zoning.createZoneAlias(Text(name)); });
}

ZoningOutcome ZoningSession::createZone(const std::string& name, vex_fzs_zone_type_e type) {
    const AccessGuard guard;
    return _edit("create zone " + name, [&] { return _zoning.createZone(Text(name), type); });
}

ZoningOutcome ZoningSession::createZoneset(const std::string& name) {
    const AccessGuard guard;
    return _edit("create zoneset " + name, [&] { return _zoning.createZoneset(Text(name)); });
}

ZoningOutcome ZoningSession::removeZoneAlias(const std::string& name) {
    const AccessGuard guard;
    return _edit("remove alias " + name, [&] { return _zoning.removeZoneAlias(Text(name)); });
}

ZoningOutcome ZoningSession::removeZone(const std::string& name) {
    const AccessGuard guard;
    return _edit("remove zone " + name, [&] { return _zoning.removeZone(Text(name)); });
}

ZoningOutcome ZoningSession::removeZoneset(const std::string& name) {
    const AccessGuard guard;
    return _edit("remove zoneset " + name, [&] { return _zoning.removeZoneset(Text(name)); });
}

ZoningOutcome ZoningSession::addZoneToZoneset(const std::string& zoneset, const std::string& zone) {
    const AccessGuard guard;
    return _edit("add zone " + zone + " to zoneset " + zoneset,
                 [&] { return _zoning.addZoneToZoneset(Text(zoneset), Text(zone)); });
}

ZoningOutcome ZoningSession::removeZoneFromZoneset(const std::string& zoneset, const std::string& zone) {
    const AccessGuard guard;
    return _edit("remove zone " + zone + " from zoneset " + zoneset,
                 [&] { return _zoning.removeZoneFromZoneset(Text(zoneset), Text(zone)); });
}

ZoningOutcome ZoningSession::addMemberToZone(const std::string& zone, vex_fzs_zonemember_type_e type,
                                             const std::string& member) {
    const AccessGuard guard;
    return _edit("add " + member + " to zone " + zone,
                 [&] { return _zoning.addMemberToZone(Text(zone), type, Text(member)); });
}

ZoningOutcome ZoningSession::removeMemberFromZone(const std::string& zone, vex_fzs_zonemember_type_e type,
                                                  const std::string& member) {
    const AccessGuard guard;
    return _edit("remove " + member + " from zone " + zone,
                 [&] { return _zoning.removeMemberFromZone(Text(zone), type, Text(member)); });
}

ZoningOutcome ZoningSession::addMemberToZoneAlias(const std::string& alias, vex_fzs_zonemember_type_e type,
                                                  const std::string& member) {
    const AccessGuard guard;
    return _edit("add " + member + " to alias " + alias,
                 [&] { return _zoning.addMemberToZoneAlias(Text(alias), type, Text(member)); });
}

ZoningOutcome ZoningSession::removeMemberFromZoneAlias(const std::string& alias,
                                                       vex_fzs_zonemember_type_e type,
                                                       const std::string& member) {
    const AccessGuard guard;
    return _edit("remove " + member + " from alias " + alias,
                 [&] { return _zoning.removeMemberFromZoneAlias(Text(alias), type, Text(member)); });
}

ZoningOutcome ZoningSession::removeMember(vex_fzs_zonemember_type_e type, const std::string& member) {
    const AccessGuard guard;
    return _edit("remove " + member + " everywhere",
                 [&] { return _zoning.removeMember(type, Text(member)); });
}

}  // namespace datacache
