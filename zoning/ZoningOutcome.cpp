#include "zoning/ZoningOutcome.h"

#include <iterator>
#include <new>
#include <utility>

#include "zoning/ZoningReport.h"

namespace datacache {
namespace {

const ZoningOutcomeDetail kNoDetail;

std::string statusText(int64_t result) {
    return result == 0 ? std::string() : " with status " + std::to_string(result);
}

/** "CALL of KEY with status N", as far as these are known. */
std::string callOf(const ZoningFailure& failure) {
    return (failure.call.empty() ? "a call" : failure.call) +
           (failure.key.empty() ? "" : " of " + failure.key) + statusText(failure.result);
}

const char* wordOf(ZoningObject object) {
    static constexpr const char* kWords[] = {"", "zone ", "alias ", "zoneset ", "member "};
    const auto index = static_cast<size_t>(object);
    return kWords[index < std::size(kWords) ? index : 0];
}

std::string nameOf(const ZoningFailure& failure) {
    return wordOf(failure.object) + shown(failure.name);
}

/** What follows "done" or the reason: the reason is known, the words may be missing for want of memory. */
std::string reasonOf(ZoningStatus status, const ZoningFailure& failure) {
    switch (status) {
        case ZoningStatus::Done:
        case ZoningStatus::NotReleased:
            return "done";
        case ZoningStatus::Invalid:
            return "invalid " + (failure.name.empty() ? "name or member" : nameOf(failure)) +
                   (failure.call.empty() ? "" : ", refused by " + callOf(failure));
        case ZoningStatus::NotFound:
            return "there is no " + (failure.name.empty() ? "such name" : nameOf(failure));
        case ZoningStatus::Exists:
            return "exists already";
        case ZoningStatus::LimitReached:
            return "the fabric's limit of " + std::to_string(failure.number) + ' ' +
                   namesOf(failure.limit).words + " is reached";
        case ZoningStatus::LimitsUnknown:
            return "the fabric's limits cannot be read";
        case ZoningStatus::LibraryFailed:
            return "the switch library failed in " + callOf(failure);
        case ZoningStatus::Refused:
            return "the switch refused " + callOf(failure);
        case ZoningStatus::Inconsistent:
            return "nothing was sent: " + (failure.name.empty() ? "the zoning" : nameOf(failure)) +
                   " cannot be read whole, " + callOf(failure) + " failed";
        case ZoningStatus::OutOfMemory:
            return "nothing was sent: out of memory";
        case ZoningStatus::Expired:
            return "the lock has expired; begin a new session";
        case ZoningStatus::Taken:
            return "the lock was taken or given back by somebody else; begin a new session";
        case ZoningStatus::Closed:
            return "the session is closed; begin a new one";
        case ZoningStatus::NotRead:
            return "the switch's zoning cannot be read: " + callOf(failure) + " failed";
        case ZoningStatus::Busy:
            return "another zoning session of this process is open";
        case ZoningStatus::NoCache:
            return "DataCache::init() was not called";
        case ZoningStatus::Transparent:
            return "the switch is in transparent mode and has no zoning";
        case ZoningStatus::Damaged:
            return "an edit was carried out in part" +
                   (failure.call.empty() ? "" : ", as " + callOf(failure) + " failed") +
                   "; nothing can be sent, begin a new session";
        case ZoningStatus::StillActive:
            return "nothing was sent: the active zoneset still needs " + nameOf(failure) +
                   ", which is not configured";
        case ZoningStatus::Changed:
            return "nothing was sent: the switch's zoning changed though it was locked; begin a new session";
        case ZoningStatus::SavedInPart:
            return "a part was saved: the switch refused " + callOf(failure);
        case ZoningStatus::Unknown:
            return "what the switch saved is not known, after " + callOf(failure);
    }
    return "";
}

std::string heldOf(const ZoningFailure& failure) {
    return failure.held.empty() ? ""
                                : "; the lock or the admin rights were not given back: the switch refused " +
                                      failure.held + statusText(failure.heldResult);
}

/** "; the active zoneset brings zoneset alpha, zone z1 (removed in this session)" */
std::string broughtOf(const std::vector<ZoningBrought>& brought) {
    std::string text;
    for (const ZoningBrought& one : brought) {
        text += text.empty() ? "; the active zoneset brings into zoneset " + one.zoneset + ": " : ", ";
        text += one.zone.empty() ? "the zoneset itself" : "zone " + one.zone;
        text += one.removedHere ? " (removed in this session)" : " (gone before this session)";
    }
    return text;
}

}  // namespace

const ZoningLimitNames& namesOf(ZoningLimit limit) {
    static constexpr ZoningLimitNames kNames[] = {
        {"", "objects"},
        {"Zoneset", "zonesets"},
        {"Zone", "zones"},
        {"Zone alias", "aliases"},
        {"Member", "members"},
        {"Zones per zoneset", "zones in a zoneset"},
        {"Members per zone", "members in a zone"},
        // Required: spelt so in the log; tools look for this line.
        {"Members per alisa", "members in an alias"},
    };
    return kNames[static_cast<size_t>(limit)];
}

std::string shown(std::string_view text) {
    std::string clean(text);
    for (char& c : clean) {
        if (isControl(c)) c = '?';
    }
    return clean;
}

ZoningFailure failureAbout(ZoningObject object, std::string_view name, std::string_view call,
                           int64_t result) noexcept {
    ZoningFailure failure;
    failure.object = object;
    failure.result = result;
    try {
        failure.call = call;
        failure.name = name;
    } catch (const std::bad_alloc&) {
    }
    return failure;
}

ZoningFailure failureOf(std::string_view call, int64_t result) noexcept {
    return failureAbout(ZoningObject::None, {}, call, result);
}

ZoningFailure failureOfRead(std::string_view call, std::string_view key, int64_t result) noexcept {
    ZoningFailure failure = failureOf(call, result);
    try {
        failure.key = key;
    } catch (const std::bad_alloc&) {
    }
    return failure;
}

void noteHeld(ZoningFailure& failure, std::string_view command, int64_t result) noexcept {
    failure.heldResult = result;
    try {
        failure.held = command;
    } catch (const std::bad_alloc&) {
    }
}

ZoningOutcome::ZoningOutcome(ZoningStatus status, uint32_t code,
                             std::shared_ptr<const ZoningOutcomeDetail> detail) noexcept
    : _status(status), _code(code), _detail(std::move(detail)) {}

ZoningStatus ZoningOutcome::status() const noexcept {
    return _status;
}

uint32_t ZoningOutcome::code() const noexcept {
    return _code;
}

const std::string& ZoningOutcome::step() const noexcept {
    return (_detail ? *_detail : kNoDetail).step;
}

const ZoningFailure& ZoningOutcome::failure() const noexcept {
    return (_detail ? *_detail : kNoDetail).failure;
}

uint32_t ZoningOutcome::broughtCount() const noexcept {
    return _detail ? static_cast<uint32_t>(_detail->brought.size()) : 0;
}

const ZoningBrought& ZoningOutcome::brought(uint32_t index) const noexcept {
    return _detail->brought[index];
}

std::string ZoningOutcome::text() const {
    return step() + ": " + reason();
}

std::string ZoningOutcome::reason() const {
    std::string text = reasonOf(_status, failure()) + heldOf(failure());
    if (_detail) text += broughtOf(_detail->brought);
    return text;
}

}  // namespace datacache
