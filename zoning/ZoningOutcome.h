#pragma once

#include <cstdint>
#include <string>

#include "common/export.h"

namespace datacache {

/** The limits that a fabric sets to its zoning database. */
enum class ZoningLimit : uint8_t {
    None,
    Zonesets,
    Zones,
    Aliases,
    Members,
    ZonesPerZoneset,
    MembersPerZone,
    MembersPerAlias,
};

/** What stopped an operation on the zoning: a command to the switch, a call of the switch library, or a
 * limit. */
struct ZoningFailure {
    /** The first command that the switch refused ("Cmd.Zoning.SaveConfig"), or the call of the switch library
     * that failed ("vex_ZoneCreate"); empty for neither. */
    std::string call;
    /** The command's status or what the library returned; 0 where it returned no object. */
    int64_t result = 0;
    ZoningLimit limit = ZoningLimit::None;  ///< the limit that is reached
    int32_t number = 0;                     ///< the number at which it is
};

/** How a step of a ZoningSession ended. */
enum class ZoningStatus : uint8_t {
    Done,
    Invalid,        ///< the switch library does not accept the name or the member's text
    NotFound,       ///< the zone, alias, zoneset or member named does not exist
    Exists,         ///< it exists already
    LimitReached,   ///< see ZoningFailure::limit; nothing was changed
    LimitsUnknown,  ///< the fabric's limits were never read, so the database counts as full
    LibraryFailed,  ///< a call of the switch library failed; what the edit changed before it stays changed
    Refused,        ///< the switch refused a command
    Inconsistent,   ///< the database in the cache cannot be read whole; nothing was sent
    OutOfMemory,    ///< nothing was sent
    NotLoaded,      ///< the configured zoning is not loaded, or is about to be loaded anew
    Reloaded,       ///< the zoning was loaded anew after the first edit: the session's edits are lost
    Expired,        ///< the lock was taken more than 90 seconds ago
    Taken,          ///< somebody else in this process took or gave back the lock
    Closed,         ///< the session got no lock, was committed or was abandoned
};

/** What a step of a ZoningSession came to, with the reason where it was not done. */
struct DC_EXPORT ZoningOutcome {
    ZoningStatus status = ZoningStatus::Done;
    /** The ZoningResult of an edit; 0 for other steps, and for an edit that never reached the database. */
    uint32_t code = 0;
    std::string step;  ///< in words, with its operands: "create zone z9", "lock", "commit"
    ZoningFailure failure;

    bool done() const { return status == ZoningStatus::Done; }
    /** The step and the reason in one line for people: "commit: the switch refused Cmd.Zoning.SaveConfig with
     * status 4". */
    std::string text() const;
    /** The reason alone: "the switch refused Cmd.Zoning.SaveConfig with status 4", or "done". */
    std::string reason() const;
};

}  // namespace datacache
