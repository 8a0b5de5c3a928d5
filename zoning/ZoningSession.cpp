#include "zoning/ZoningSession.h"

#include <new>
#include <utility>

#include "zoning/ZoningSessionState.h"

namespace datacache {

using State = ZoningSessionState;
using Words = std::initializer_list<std::string_view>;

ZoningSession::ZoningSession(std::unique_ptr<State> state) noexcept : _state(std::move(state)) {}

ZoningSession ZoningSession::_open(ZoningCache* shared, bool transparent, std::string_view client,
                                   void (*refresh)()) noexcept {
    const AccessGuard guard;
    try {
        auto state = std::make_unique<State>(shared, client, refresh);
        if (shared == nullptr) {
            state->lockOutcome = State::outcome({"lock"}, {ZoningStatus::NoCache});
        } else if (transparent) {
            state->lockOutcome = State::outcome({"lock"}, {ZoningStatus::Transparent});
        } else {
            state->lockOutcome = state->open();
        }
        return ZoningSession(std::move(state));
    } catch (const std::bad_alloc&) {
        return ZoningSession(nullptr);
    }
}

ZoningSession::~ZoningSession() = default;

ZoningSession::ZoningSession(ZoningSession&& other) noexcept = default;

ZoningSession& ZoningSession::operator=(ZoningSession&& other) noexcept = default;

ZoningOutcome ZoningSession::lockOutcome() const {
    const AccessGuard guard;
    return _state ? _state->lockOutcome : State::outcome({"lock"}, {ZoningStatus::OutOfMemory});
}

bool ZoningSession::isOpen() const {
    const AccessGuard guard;
    return _state && _state->isOpen();
}

long ZoningSession::secondsLeft() const {
    const AccessGuard guard;
    return _state ? _state->secondsLeft() : 0;
}

namespace {

ZoningOutcome closed(Words words) {
    return State::outcome(words, {ZoningStatus::Closed});
}

/** `edit` is given the draft's edits and the operands; it holds so little that it takes no memory. */
ZoningOutcome carryOut(const std::unique_ptr<State>& state, Words words, std::string_view first,
                       std::string_view second, const State::Edit& edit) {
    const AccessGuard guard;
    return state ? state->edit(words, first, second, edit) : closed(words);
}

/** The same for an edit that is a function of one name. */
ZoningOutcome carryOut(const std::unique_ptr<State>& state, std::string_view words, std::string_view name,
                       ZoningReport (ZoningEdits::*edit)(const char*)) {
    return carryOut(state, {words, name}, name, {},
                    [edit](ZoningEdits edits, const char* text, const char*)
                        DC_REQUIRES(access_lock) { return (edits.*edit)(text); });
}

/** The same for an edit of the members of a zone or alias. Captures by reference, as copies would take
 * memory.
 */
ZoningOutcome carryOut(const std::unique_ptr<State>& state, Words words, std::string_view container,
                       vex_fzs_zonemember_type_e type, std::string_view member,
                       ZoningReport (ZoningEdits::*edit)(const char*, vex_fzs_zonemember_type_e,
                                                         const char*)) {
    return carryOut(state, words, container, member,
                    [&](ZoningEdits edits, const char* name, const char* text)
                        DC_REQUIRES(access_lock) { return (edits.*edit)(name, type, text); });
}

}  // namespace

ZoningOutcome ZoningSession::createZoneAlias(std::string_view name) {
    return carryOut(_state, "create alias ", name, &ZoningEdits::createZoneAlias);
}

ZoningOutcome ZoningSession::createZone(std::string_view name, vex_fzs_zone_type_e type) {
    return carryOut(_state, {"create zone ", name}, name, {},
                    [type](ZoningEdits edits, const char* text, const char*)
                        DC_REQUIRES(access_lock) { return edits.createZone(text, type); });
}

ZoningOutcome ZoningSession::createZoneset(std::string_view name) {
    return carryOut(_state, "create zoneset ", name, &ZoningEdits::createZoneset);
}

ZoningOutcome ZoningSession::removeZoneAlias(std::string_view name) {
    return carryOut(_state, "remove alias ", name, &ZoningEdits::removeZoneAlias);
}

ZoningOutcome ZoningSession::removeZone(std::string_view name) {
    return carryOut(_state, "remove zone ", name, &ZoningEdits::removeZone);
}

ZoningOutcome ZoningSession::removeZoneset(std::string_view name) {
    return carryOut(_state, "remove zoneset ", name, &ZoningEdits::removeZoneset);
}

ZoningOutcome ZoningSession::addZoneToZoneset(std::string_view zoneset, std::string_view zone) {
    return carryOut(_state, {"add zone ", zone, " to zoneset ", zoneset}, zoneset, zone,
                    [](ZoningEdits edits, const char* into, const char* what)
                        DC_REQUIRES(access_lock) { return edits.addZoneToZoneset(into, what); });
}

ZoningOutcome ZoningSession::removeZoneFromZoneset(std::string_view zoneset, std::string_view zone) {
    return carryOut(_state, {"remove zone ", zone, " from zoneset ", zoneset}, zoneset, zone,
                    [](ZoningEdits edits, const char* from, const char* what)
                        DC_REQUIRES(access_lock) { return edits.removeZoneFromZoneset(from, what); });
}

ZoningOutcome ZoningSession::addMemberToZone(std::string_view zone, vex_fzs_zonemember_type_e type,
                                             std::string_view member) {
    return carryOut(_state, {"add ", member, " to zone ", zone}, zone, type, member,
                    &ZoningEdits::addMemberToZone);
}

ZoningOutcome ZoningSession::removeMemberFromZone(std::string_view zone, vex_fzs_zonemember_type_e type,
                                                  std::string_view member) {
    return carryOut(_state, {"remove ", member, " from zone ", zone}, zone, type, member,
                    &ZoningEdits::removeMemberFromZone);
}

ZoningOutcome ZoningSession::addMemberToZoneAlias(std::string_view alias, vex_fzs_zonemember_type_e type,
                                                  std::string_view member) {
    return carryOut(_state, {"add ", member, " to alias ", alias}, alias, type, member,
                    &ZoningEdits::addMemberToZoneAlias);
}

ZoningOutcome ZoningSession::removeMemberFromZoneAlias(std::string_view alias, vex_fzs_zonemember_type_e type,
                                                       std::string_view member) {
    return carryOut(_state, {"remove ", member, " from alias ", alias}, alias, type, member,
                    &ZoningEdits::removeMemberFromZoneAlias);
}

ZoningOutcome ZoningSession::removeMember(vex_fzs_zonemember_type_e type, std::string_view member) {
    return carryOut(_state, {"remove ", member, " everywhere"}, member, {},
                    [type](ZoningEdits edits, const char* what, const char*)
                        DC_REQUIRES(access_lock) { return edits.removeMember(type, what); });
}

ZoningOutcome ZoningSession::check() {
    const AccessGuard guard;
    return _state ? _state->check() : closed({"check"});
}

ZoningOutcome ZoningSession::commit() {
    const AccessGuard guard;
    return _state ? _state->commit() : closed({"commit"});
}

ZoningOutcome ZoningSession::abandon() {
    const AccessGuard guard;
    return _state ? _state->abandon() : closed({"abandon"});
}

}  // namespace datacache
