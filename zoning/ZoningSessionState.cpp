#include "zoning/ZoningSessionState.h"

#include <algorithm>
#include <new>
#include <utility>

#include "common/LockUse.h"
#include "common/cim_log.h"
#include "switchlib/uptime_seconds.h"
#include "zoning/library_calls.h"

namespace datacache {
namespace {

/** Whether the switch library may be asked for it: what it would read otherwise than it is may not. */
bool isPossible(std::string_view operand) {
    return std::none_of(operand.begin(), operand.end(), isControl) && operand != kActiveZonesetKey &&
           operand != kUberZonesetKey;
}

/** A step's words in one, cut to what health shows of them. */
struct StepText {
    explicit StepText(std::initializer_list<std::string_view> words) {
        size_t length = 0;
        for (const std::string_view word : words) {
            const size_t taken = std::min(word.size(), sizeof text - 1 - length);
            std::replace_copy_if(word.begin(), word.begin() + static_cast<std::ptrdiff_t>(taken),
                                 text + length, isControl, '?');
            length += taken;
        }
    }
    char text[sizeof LockUse::Now::step] = {};
};

}  // namespace

ZoningSessionState::~ZoningSessionState() {
    const AccessGuard guard;
    const LockUse use(LockHolder::Session, "abandon");
    ZoningFailure untold;
    if (isOpen()) _close(Held::Yes, Held::Yes, untold);
}

ZoningOutcome ZoningSessionState::outcome(std::initializer_list<std::string_view> words, ZoningReport report,
                                          std::vector<ZoningBrought> brought) noexcept {
    std::shared_ptr<const ZoningOutcomeDetail> told;
    try {
        auto detail = std::make_shared<ZoningOutcomeDetail>();
        for (const std::string_view word : words) detail->step += shown(word);
        detail->failure = std::move(report.failure);
        detail->brought = std::move(brought);
        told = std::move(detail);
    } catch (const std::bad_alloc&) {
    }
    return {report.status, report.code, std::move(told)};
}

template <typename CarryOut>
ZoningOutcome ZoningSessionState::_step(std::initializer_list<std::string_view> words,
                                        std::vector<ZoningBrought>* brought, CarryOut carryOut) noexcept {
    const LockUse use(LockHolder::Session, StepText(words).text);
    ZoningReport report;
    try {
        report = carryOut();
    } catch (const std::bad_alloc&) {
        report = {ZoningStatus::OutOfMemory};
    }
    return outcome(words, std::move(report),
                   brought == nullptr ? std::vector<ZoningBrought>() : std::move(*brought));
}

ZoningOutcome ZoningSessionState::open() noexcept {
    return _step({"lock"}, nullptr, [this]() DC_REQUIRES(access_lock) { return _begin(); });
}

ZoningReport ZoningSessionState::_begin() {
    if (_shared->_session != nullptr) return {ZoningStatus::Busy};
    if (!_lockCommands.ok()) return {ZoningStatus::OutOfMemory};
    ZoningReport report = _shared->_takeLock(_lockCommands, _client.c_str(), this);
    if (!report.done()) return report;
    try {
        _draft.emplace();
        report = _draft->read();
        if (report.done()) _draft->takeLimits(*_shared);
        if (report.done()) report = _obstacle();  // the time may be over
    } catch (const std::bad_alloc&) {
        report = {ZoningStatus::OutOfMemory};
    }
    if (!report.done()) _close(Held::Yes, Held::Yes, report.failure);
    return report;
}

long ZoningSessionState::secondsLeft() const {
    if (!isOpen() || _shared->_session != this) return 0;
    return std::clamp(kZoningLockSeconds - (uptimeSeconds() - _shared->_lockTime), 0L, kZoningLockSeconds);
}

ZoningReport ZoningSessionState::_obstacle() {
    if (!isOpen()) return {ZoningStatus::Closed};
    if (_shared->_session != this) return {ZoningStatus::Taken};
    bool expired = false;
    if (!_shared->LockIdOK(const_cast<char*>(_client.c_str()), expired))
        return {expired ? ZoningStatus::Expired : ZoningStatus::Taken};
    return {_damaged ? ZoningStatus::Damaged : ZoningStatus::Done};
}

ZoningOutcome ZoningSessionState::edit(std::initializer_list<std::string_view> words, std::string_view first,
                                       std::string_view second, const Edit& edit) noexcept {
    return _step(words, nullptr, [&]() DC_REQUIRES(access_lock) {
        ZoningReport report = _obstacle();
        if (!report.done()) return report;
        for (const std::string_view operand : {first, second}) {
            if (!isPossible(operand))
                return ZoningReport{ZoningStatus::Invalid, ZONING_INVALID,
                                    failureAbout(ZoningObject::None, operand)};
        }
        report = edit(_draft->edits(), std::string(first).c_str(), std::string(second).c_str());
        _damaged = _damaged || report.status == ZoningStatus::Damaged;
        return report;
    });
}

ZoningOutcome ZoningSessionState::check() noexcept {
    std::vector<ZoningBrought> brought;
    return _step({"check"}, &brought, [&]() DC_REQUIRES(access_lock) {
        CommandGroup group(30);
        return _prepare(group, brought);
    });
}

ZoningOutcome ZoningSessionState::commit() noexcept {
    std::vector<ZoningBrought> brought;
    return _step({"commit"}, &brought, [&]() DC_REQUIRES(access_lock) {
        CommandGroup group(30, CommandGroup::kUnanswered);
        ZoningReport report = _prepare(group, brought);
        if (report.done()) report = _draft->checkUnchanged();
        if (report.done()) report = _obstacle();  // that may have taken long
        return report.done() ? _send(group) : report;
    });
}

ZoningReport ZoningSessionState::_prepare(CommandGroup& group, std::vector<ZoningBrought>& brought) {
    ZoningReport report = _obstacle();
    if (!report.done()) return report;
    brought = _draft->brought();
    report = _draft->checkActive();
    return report.done() ? _draft->addCommands(group) : report;
}

// From here on nothing may be thrown: the switch has acted, and that must be told.
ZoningReport ZoningSessionState::_send(CommandGroup& group) {
    ZoningReport report;
    const bool carriedOut = group.send();
    if (!carriedOut) cim_log(CIM_LOG_TRACE, "DCACHE: Zoning session failed\n");
    switch (_whatIsSaved(group)) {
        case Saved::Nothing:
            report.status = ZoningStatus::Refused;
            break;
        case Saved::Part:
            report.status = ZoningStatus::SavedInPart;
            break;
        case Saved::Unknown:
            report.status = ZoningStatus::Unknown;
            break;
        case Saved::All:
            break;
    }
    if (!report.done()) report.failure = carriedOut ? failureOf("Cmd.Zoning.SaveConfig") : group.failure();
    const auto held = [&group](int index) {
        if (group.answer(index) == CommandGroup::kUnanswered) return Held::Unknown;
        return group.answer(index) == 0 ? Held::No : Held::Yes;
    };
    const bool released = _close(held(group.size() - 2), held(group.size() - 1), report.failure);
    if (report.done() && !released) report.status = ZoningStatus::NotReleased;
    _shared->_refreshWanted = true;
    _refresh();
    return report;
}

ZoningSessionState::Saved ZoningSessionState::_whatIsSaved(const CommandGroup& group) {
    const int save = group.size() - 3;
    const uint32_t answer = group.answer(save);
    const bool locked = group.answer(save + 1) != 0;  // still, so nobody else can have changed anything
    const bool carriedOut = group.called() && group.allCarriedOut(save + 1);
    try {
        ZoningDraft now;
        // A switch that says that it has saved, and has the checksum of before, may have had it all already.
        if (carriedOut && !(now.readKeys().done() && now.hasChecksumOf(*_draft))) return Saved::All;
        if (now.read().done()) {
            if (!carriedOut && now.hasChecksumOf(*_draft)) return Saved::Nothing;
            const std::optional<bool> all = now.isWhatWasSent(*_draft);
            if (all == true) return Saved::All;
            // One that says so and shows the former zoning may only be late.
            if (all == false && carriedOut) return Saved::Unknown;
            if (all == false) return answer == 0 || locked ? Saved::Part : Saved::Unknown;
        }
    } catch (const std::bad_alloc&) {
    }
    // The switch does not tell what it has, so its answers are all that there is.
    if (carriedOut) return Saved::All;
    if (answer == CommandGroup::kUnanswered) return Saved::Unknown;
    if (answer != 0) return Saved::Nothing;
    return group.anyRefused(save) ? Saved::Part : Saved::Unknown;
}

bool ZoningSessionState::_close(Held lock, Held rights, ZoningFailure& failure) {
    bool released = true;
    if (_shared->_session == this) {  // else what there is to give back is somebody else's
        if (lock != Held::No || rights != Held::No) {
            _shared->_giveLockBack(_lockCommands, rights == Held::Yes, lock != Held::Unknown);
            released = _lockCommands.givenBack(lock != Held::No, true, failure);
        }
        _shared->_forgetLock();
    }
    _draft.reset();
    return released;
}

ZoningOutcome ZoningSessionState::abandon() noexcept {
    return _step({"abandon"}, nullptr, [this]() DC_REQUIRES(access_lock) {
        ZoningReport report;
        if (!isOpen()) {
            report.status = ZoningStatus::Closed;
        } else if (!_close(Held::Yes, Held::Yes, report.failure)) {
            report.status = ZoningStatus::NotReleased;
        }
        return report;
    });
}

}  // namespace datacache
