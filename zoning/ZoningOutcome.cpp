#include "zoning/ZoningReport.h"

#include <iterator>
#include <new>

namespace datacache {
namespace {

/** "CALL", or "CALL with status N" where it returned one. */
std::string callOf(const ZoningFailure& failure) {
    if (failure.result == 0) return failure.call;
    return failure.call + " with status " + std::to_string(failure.result);
}

std::string reasonOf(ZoningStatus status, const ZoningFailure& failure) {
    switch (status) {
        case ZoningStatus::Done:
            return "done";
        case ZoningStatus::Invalid:
            return "invalid name or member, refused by " + callOf(failure);
        case ZoningStatus::NotFound:
            return "no such zone, alias, zoneset or member";
        case ZoningStatus::Exists:
            return "exists already";
        case ZoningStatus::LimitReached:
            return "the fabric's limit of " + std::to_string(failure.number) + ' ' +
                   namesOf(failure.limit).words + " is reached";
        case ZoningStatus::LimitsUnknown:
            return "the fabric's limits were never read; read them with initZoningLimits()";
        case ZoningStatus::LibraryFailed:
            return "the switch library failed in " + callOf(failure);
        case ZoningStatus::Refused:
            return "the switch refused " + callOf(failure);
        case ZoningStatus::Inconsistent:
            return "nothing was sent: the database cannot be read whole, " + callOf(failure) + " failed";
        case ZoningStatus::OutOfMemory:
            return "nothing was sent: out of memory";
        case ZoningStatus::NotLoaded:
            return "the configured zoning is not loaded; have it loaded by DataCache::reloadZoning()";
        case ZoningStatus::Reloaded:
            return "the zoning was loaded anew and the session's edits are lost; begin a new session";
        case ZoningStatus::Expired:
            return "the lock has expired; begin a new session";
        case ZoningStatus::Taken:
            return "the lock was taken or given back by somebody else; begin a new session";
        case ZoningStatus::Closed:
            return "the session is closed; begin a new one";
    }
    return "";
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
    const auto index = static_cast<size_t>(limit);
    return kNames[index < std::size(kNames) ? index : 0];  // a host may put any value into a failure
}

ZoningFailure failureOf(std::string_view call, int64_t result) noexcept {
    try {
        return {std::string(call), result};
    } catch (const std::bad_alloc&) {
        return {};
    }
}

std::string ZoningOutcome::text() const {
    return step + ": " + reason();
}

std::string ZoningOutcome::reason() const {
    return reasonOf(status, failure);
}

}  // namespace datacache
