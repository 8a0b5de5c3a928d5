#pragma once

#include <cstdint>
#include <memory>
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

/** The kinds of things in a zoning database. */
enum class ZoningObject : uint8_t { None, Zone, Alias, Zoneset, Member };

/** How a step of a ZoningSession ended. Later versions may add words at the end. */
enum class ZoningStatus : uint8_t {
    Done,
    Invalid,       ///< a name or a member's text that cannot be one; the switch library was perhaps not asked
    NotFound,      ///< what ZoningFailure::object and ::name say does not exist
    Exists,        ///< it exists already
    LimitReached,  ///< see ZoningFailure::limit
    LimitsUnknown,  ///< the fabric's limits cannot be read, so the database counts as full
    LibraryFailed,  ///< a call of the switch library failed; nothing was changed
    Refused,        ///< the switch refused a command; of a commit: nothing was saved
    Inconsistent,   ///< a zone, alias or zoneset cannot be read or written as a command; nothing was sent
    OutOfMemory,    ///< nothing was changed, nothing was sent
    Expired,        ///< the lock was taken more than 90 seconds ago
    Taken,          ///< somebody took or gave back the lock through ZoningCache itself
    Closed,         ///< the session got no lock, was committed or was abandoned
    NotRead,        ///< the switch's zoning could not be read whole
    Busy,           ///< another session of this process is open
    NoCache,        ///< DataCache::init() was not called
    Transparent,    ///< the switch is in transparent mode, in which it has no zoning
    Damaged,        ///< an edit was carried out in part; nothing but abandon() is left
    StillActive,    ///< the active zoneset needs a zone that is not configured; nothing was sent
    Changed,        ///< the switch's zoning changed under the lock; nothing was sent
    NotReleased,    ///< done, but the switch refused to take back the lock or the admin rights
    SavedInPart,    ///< the switch saved a part of what was sent
    Unknown,        ///< the switch does not tell what it saved
};

/**
 * What stopped a step. Hosts get it by reference, from ZoningOutcome::failure(), and make none of their own:
 * later versions of the library have more fields. Texts are empty, and may be so for want of memory, where
 * there is nothing to say.
 */
struct ZoningFailure {
    /** The first command that the switch refused ("Cmd.Zoning.SaveConfig"), or the call of the switch library
     * that failed ("vex_ZoneCreate"). */
    std::string call;
    /** The command's status or what the library returned; 0 where it returned no object. */
    int64_t result = 0;
    ZoningLimit limit = ZoningLimit::None;  ///< the limit that is reached
    int32_t number = 0;                     ///< the number at which it is
    std::string key;                        ///< of a read: the key or the name that it asked for
    /** What was not found, is invalid, cannot be read or is still active. */
    ZoningObject object = ZoningObject::None;
    std::string name;
    /** The command by which the lock or the admin rights were to be given back, and which failed. Whoever
     * waits for them waits until the switch drops them. */
    std::string held;
    int64_t heldResult = 0;
    // New fields are added here, at the end.
};

/**
 * A zone that the active zoneset brings into the configured zoneset of its name, or that zoneset itself: a
 * commit sends the active zoneset as well. Handed out by reference, as ZoningFailure is.
 */
struct ZoningBrought {
    std::string zoneset;
    std::string zone;  ///< empty for the zoneset itself
    /** The session took it away; else it was gone from the configured zoning before the session began. */
    bool removedHere = false;
    // New fields are added here, at the end.
};

struct ZoningOutcomeDetail;

/** What a step of a ZoningSession came to, with the reason where it was not done. Copies share their texts.
 */
class [[nodiscard, gnu::visibility("default")]] ZoningOutcome {
  public:
    /** Of a step that needs no words: done. */
    ZoningOutcome() noexcept = default;

    bool done() const noexcept {
        return _status == ZoningStatus::Done;
    }
    ZoningStatus status() const noexcept;
    /** The ZoningResult of an edit; 0 for other steps, and for an edit that the session did not try. */
    uint32_t code() const noexcept;
    /** The step in words, with its operands: "create zone z9", "lock", "commit". Empty where memory was
     * short; control characters are shown as "?". Good for as long as this outcome or a copy of it; so are
     * the next three. */
    const std::string& step() const noexcept;
    const ZoningFailure& failure() const noexcept;
    /** What the active zoneset brings with it; of the steps "check" and "commit". */
    uint32_t broughtCount() const noexcept;
    /** `index` is below broughtCount(). */
    const ZoningBrought& brought(uint32_t index) const noexcept;

    /** The step and the reason in one line for people: "commit: the switch refused Cmd.Zoning.SaveConfig with
     * status 4". Throws std::bad_alloc, as reason() does. */
    std::string text() const;
    /** The reason alone, or "done"; and what the active zoneset brings with it. */
    std::string reason() const;

  private:
    friend class ZoningSession;
    friend class ZoningSessionState;
    DC_HIDDEN ZoningOutcome(ZoningStatus status, uint32_t code,
                            std::shared_ptr<const ZoningOutcomeDetail> detail) noexcept;

    ZoningStatus _status = ZoningStatus::Done;
    uint32_t _code = 0;
    std::shared_ptr<const ZoningOutcomeDetail> _detail;  ///< null where memory was short
};

}  // namespace datacache
