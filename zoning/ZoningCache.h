#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "common/AccessLock.h"
#include "common/export.h"
#include "common/thread_annotations.h"
#include "switchlib/ReadFailure.h"
#include "vexlib/vexlib.h"
#include "zoning/ZoningDatabase.h"
#include "zoning/ZoningOutcome.h"
#include "zoning/member_text.h"

namespace datacache {

/** How long the fabric's lock is good for, in seconds from ZoningCache::ZoningLock(). */
constexpr long kZoningLockSeconds = 90;

/** Results of the zoning edits. */
enum ZoningResult : uint32_t {
    ZONING_DONE = 0,
    ZONING_INVALID = 1,    ///< a name or member text that the switch library refuses to create or parse
    ZONING_NOT_FOUND = 2,  ///< the zone, alias, zoneset or member named does not exist
    ZONING_EXISTS = 3,
    ZONING_FAILED = 4,  ///< a limit is reached, or a call of the switch library failed
};

class CommandGroup;
class SmlBatch;
class SnapshotPublisher;
class ZoningDraft;
class ZoningEdits;
class ZoningSessionState;
struct ZoningReport;

}  // namespace datacache

/** What a zoneset is to the cache. */
enum _ZoneSetTypes : int32_t {
    ZONESET_ACTIVE = 0,   ///< in force in the fabric; at most one
    ZONESET_INACTIVE = 1, /**< configured on the switch */
    ZONESET_UBER = 2,     ///< the one container of every zone and every alias of the database
};

/** A held zoneset: an object of vexlib, which whoever removes the entry destroys. */
struct ZoneSet {
    void* handle = nullptr;
    _ZoneSetTypes type = ZONESET_INACTIVE;
};

namespace datacache {

/** Zonesets by key; looking for one takes no memory. */
using ZoneSetMap = std::map<std::string, ZoneSet, std::less<>>;

}  // namespace datacache

/**
 * The fabric's zoning database, as objects of the switch library, and its edits.
 *
 * It holds the active zoneset, the configured ("inactive") ones, and the "uber" zoneset, which holds every
 * zone and every alias. Zonesets hold zones and aliases of their own, so an edit of a zone is made in the
 * uber zoneset and then repeated in the zonesets that hold one of the same name; which ones is each edit's
 * own affair.
 *
 * A load takes a zoneset that the switch library hands out as a null handle, by a call that succeeded, for
 * one that cannot be read: without the active one there is no active zoneset, without another one the load
 * fails.
 *
 * To read it, take a copy with database(). To edit it, use a ZoningSession (zoning/ZoningSession.h): it
 * edits a copy of its own that it reads from the switch under the fabric's lock, so it loses nobody's work,
 * and it tells why something was refused. The calls below are the older way, on this very database:
 * ZoningLock() takes the fabric's lock; edits change the objects in memory alone; then replaceZoningDB()
 * sends the whole database to the switch, whatever the switch has by now, and gives the lock back in one go,
 * or ZoningUnlock() gives it up. Edits given up stay in the cache until the database is loaded anew. The
 * edits do not ask for the lock: ask LockIdOK() first. An edit that fails half-way is not undone.
 *
 * Every call takes the access lock itself. The map owns its zonesets. Handles that are handed out stay the
 * cache's and are good for as long as the caller holds the access lock. Names are texts of any length and
 * content; what the switch library does not accept gives a result code. A null name counts as an empty one.
 */
class DC_EXPORT ZoningCache {
  public:
    ZoningCache();
    /** Destroys every zoneset held. */
    ~ZoningCache() DC_TAKES(access_lock);
    ZoningCache(const ZoningCache&) = delete;
    ZoningCache& operator=(const ZoningCache&) = delete;

    // ---- Reading ----

    /** A copy of the database as values; one call of the switch library or more for every object of it. */
    datacache::ZoningDatabase database() const DC_TAKES(access_lock);

    // ---- The fabric's lock ----

    /** Takes admin rights and the fabric's zoning lock for a client: 1, or 0. A lock held is taken again; one
     * that a ZoningSession holds is taken from it. */
    int ZoningLock(char* lockId) DC_TAKES(access_lock);
    /** Gives both back: 1, or 0 when the switch refuses. The lock does not count as held after either. */
    int ZoningUnlock() DC_TAKES(access_lock);
    /** Whether this client took the lock no more than 90 seconds ago; `expired` when it was longer ago. */
    bool LockIdOK(char* lockId, bool& expired) DC_TAKES(access_lock);

    // ---- Edits; all give a ZoningResult ----

    uint32_t createZoneAlias(char* name) DC_TAKES(access_lock);
    uint32_t createZone(char* name, vex_fzs_zone_type_e type) DC_TAKES(access_lock);
    uint32_t createZoneset(char* name) DC_TAKES(access_lock);
    uint32_t removeZoneAlias(char* name) DC_TAKES(access_lock);
    uint32_t removeZone(char* name) DC_TAKES(access_lock);
    uint32_t removeZoneset(char* name) DC_TAKES(access_lock);
    uint32_t addZoneToZoneset(char* zoneset, char* zone) DC_TAKES(access_lock);
    uint32_t removeZoneFromZoneset(char* zoneset, char* zone) DC_TAKES(access_lock);
    uint32_t addMemberToZone(char* zone, vex_fzs_zonemember_type_e type, char* member) DC_TAKES(access_lock);
    uint32_t removeMemberFromZone(char* zone, vex_fzs_zonemember_type_e type, char* member)
        DC_TAKES(access_lock);
    uint32_t addMemberToZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member)
        DC_TAKES(access_lock);
    uint32_t removeMemberFromZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member)
        DC_TAKES(access_lock);
    /** Removes a member from every zone and alias of the database. */
    uint32_t removeMember(vex_fzs_zonemember_type_e type, char* member) DC_TAKES(access_lock);

    // ---- Commit ----

    /**
     * Replaces the switch's zoning configuration by the cache's, saves it, and gives the fabric's lock and
     * admin rights back, all in one command group. Returns 1 when the group was sent, even when the switch
     * refused it; 0 when nothing was sent, because the database is inconsistent or memory is short. Without
     * an uber zoneset (nothing was loaded yet, or the last load of the configured part failed) it is
     * inconsistent: an empty configuration is never sent by accident. So is one in which the switch library
     * counts fewer than 0 or more than 65,536 zones, aliases or members of anything.
     */
    int replaceZoningDB() DC_TAKES(access_lock);

    // ---- Counts and limits; until the limits are read a check answers "full" where its count is 0 ----

    /** Counts, then reads the fabric's limits; false when these cannot be read. */
    bool initZoningLimits() DC_TAKES(access_lock);
    /** Counts the database anew: one call of the switch library for every zone, alias and zone member.
     * Returns 1. */
    int updateZoningCounts() DC_TAKES(access_lock);
    /** Whether the database holds exactly its maximum: one loaded beyond the maximum is not full. */
    bool zonesetLimitAtMax() DC_TAKES(access_lock);
    bool zoneLimitAtMax() DC_TAKES(access_lock);
    bool aliasLimitAtMax() DC_TAKES(access_lock);
    bool memberLimitAtMax() DC_TAKES(access_lock);
    /** Whether one container holds its maximum or more. Of the three only the zone's takes the lock itself.
     */
    bool zonesPerZonesetAtMax(void* zoneset) DC_REQUIRES(access_lock);
    bool membersPerZoneAtMax(void* zone) DC_TAKES(access_lock);
    bool membersPerAliasAtMax(void* alias) DC_REQUIRES(access_lock);

    // ---- Conversions ----

    /** From CIM_ZoneMembershipSettingData.ConnectivityMemberType; VEX_ZMT_UNKNOWN for other values. */
    static vex_fzs_zonemember_type_e CIMMemberTypeToVexlib(int type) DC_TAKES(access_lock);
    /** "Soft", "HardVPF", "HardACL" or "Invalid". */
    static const char* vex_smlCnvFromVEXZoneType(vex_fzs_zone_type_e type) DC_TAKES(access_lock);
    /** From the provider's zone type, 1 hard and 2 soft; 0 for other values. */
    static vex_fzs_zone_type_e cnvCIMZoneTypeToVEX(int type) DC_TAKES(access_lock);

    // ---- The zonesets as objects of the switch library ----

    /**
     * Takes a zoneset over: 0, or -1 when its name cannot be read or its key is taken; it then stays the
     * caller's. An active or uber zoneset becomes the current one even then.
     */
    int addZoneset(void* handle, _ZoneSetTypes type) DC_TAKES(access_lock);
    /**
     * Removes and destroys the zoneset under the key that `handle` and `type` have, which need not be
     * `handle` itself: 0, also when there was none, or -1 when the name cannot be read.
     */
    int delZoneset(void* handle, _ZoneSetTypes type) DC_TAKES(access_lock);
    /**
     * The zoneset under a key: an inactive one's name, "[ActiveZoneSetKey]" or "[UberZoneSetKey]"; or null.
     * `type` is written when there is one; so in the next two. The two keys in brackets are reserved: a
     * configured zoneset of such a name is dropped where the active or the uber zoneset is loaded.
     */
    void* getZoneset(char* name, _ZoneSetTypes& type) DC_TAKES(access_lock);
    /** Walks the zonesets in the order of their keys; null at the end. */
    void* getFirstZoneset(_ZoneSetTypes& type) DC_TAKES(access_lock);
    void* getNextZoneset(void* handle, _ZoneSetTypes& type) DC_TAKES(access_lock);
    /** The current active and uber zoneset, or null. */
    void* getActiveZoneset() DC_TAKES(access_lock);
    void* getUberZoneset() DC_TAKES(access_lock);
    bool isActiveZoneset(void* handle) DC_TAKES(access_lock);
    bool isUberZoneset(void* handle) DC_TAKES(access_lock);
    /** These empty the cache, and change nothing on the switch. */
    void clearActive() DC_TAKES(access_lock);
    void clearInactive() DC_TAKES(access_lock);
    void clearUber() DC_TAKES(access_lock);
    void clearZoningCache() DC_TAKES(access_lock);
    /** Writes the whole database to the log. */
    void dump() DC_TAKES(access_lock);

  private:
    friend class DataCache;                     // orders the load, in _getZoningInfo()
    friend class datacache::SnapshotPublisher;  // copies the database when it was loaded
    friend class datacache::ZoningDraft;
    friend class datacache::ZoningEdits;
    friend class datacache::ZoningSessionState;

    // ---- Load; `handle` is the connection's ----

    /** Reads the checksums and the active zoneset's name into this cache; the principal switch is the batch's
     * first key. */
    DC_HIDDEN bool _readKeys(uint32_t handle, datacache::SmlBatch& batch) DC_REQUIRES(access_lock);
    DC_HIDDEN bool _activeDiffers() const DC_REQUIRES(access_lock);
    /** Has the next refresh ask again for an active zoneset that could not be read. False where none is
     * missing. */
    DC_HIDDEN bool _wantMissingActive() DC_REQUIRES(access_lock);
    /** Replaces the active zoneset by the switch's, which is none when `_activeZonesetName` is empty. The
     * load stays due until _activeTold(). Returns the reason where the zoneset is not here. */
    DC_HIDDEN datacache::ZoningReport _loadActive(uint32_t handle) DC_REQUIRES(access_lock);
    DC_HIDDEN void _activeTold() DC_REQUIRES(access_lock);
    DC_HIDDEN bool _configuredDiffers() const DC_REQUIRES(access_lock);
    /**
     * Replaces the inactive zonesets and the uber zoneset by the switch's. When a call fails, what was read
     * until then stays, there is no uber zoneset, and the load stays due: _isLoaded() says so. Returns the
     * reason for that; or, of a load that is not whole, what of it has no place here.
     */
    DC_HIDDEN datacache::ZoningReport _loadConfigured(uint32_t handle) DC_REQUIRES(access_lock);
    DC_HIDDEN void _configuredTold() DC_REQUIRES(access_lock);
    /**
     * Removes the entry under the key of the active or the uber zoneset, current or not: it stays behind when
     * somebody added another one of its type, or null, in its place.
     */
    DC_HIDDEN void _dropEntry(_ZoneSetTypes type) DC_REQUIRES(access_lock);
    /** Takes a zoneset over, or destroys it where the cache has no place for it (a name that is taken) or no
     * memory. Returns whether it was taken. */
    DC_HIDDEN bool _addOrDestroy(void* zoneset, _ZoneSetTypes type) DC_REQUIRES(access_lock);
    /** Has the next refresh load the configured part, whatever its checksum. */
    DC_HIDDEN void _markForReload() DC_REQUIRES(access_lock);

    // ---- Lock, limits, commit; the groups have room for the commands, so no memory is needed ----

    /** Takes the lock for a client, and for a session (which may be null). */
    DC_HIDDEN datacache::ZoningReport _takeLock(datacache::CommandGroup& group, const char* lockId,
                                                const void* session) DC_REQUIRES(access_lock);
    /** Gives the lock and admin rights back; false when the switch refused a part. What is perhaps not held
     * any more is taken again first, as a switch refuses to take back what it does not miss. */
    DC_HIDDEN bool _giveLockBack(datacache::CommandGroup& group, bool hasRights = true, bool hasLock = true)
        DC_REQUIRES(access_lock);
    DC_HIDDEN void _forgetLock() DC_REQUIRES(access_lock);
    /**
     * Adds the commands that replace the switch's zoning by this one and give the lock back. With `whole` it
     * adds nothing that is not known: no member or zone type without a name, no command that is cut.
     */
    DC_HIDDEN datacache::ZoningReport _addCommands(datacache::CommandGroup& group, bool whole) const
        DC_REQUIRES(access_lock);
    DC_HIDDEN bool _isLoaded() const DC_REQUIRES(access_lock) {
        return _uberZoneset != nullptr && !_configuredDue;
    }
    DC_HIDDEN bool _limitsRead() const DC_REQUIRES(access_lock);
    /** Whether a limit is reached, of the whole database or of `container`; logs it if so. */
    DC_HIDDEN datacache::ZoningReport _checkLimit(datacache::ZoningLimit limit,
                                                  void* container = nullptr) const DC_REQUIRES(access_lock);

    bool _lockHeld DC_GUARDED_BY(access_lock) = false;
    uint32_t _activeChecksum DC_GUARDED_BY(access_lock) = 0;  ///< as last read; so are the next two
    std::string _activeZonesetName DC_GUARDED_BY(access_lock);
    uint32_t _inactiveChecksum DC_GUARDED_BY(access_lock) = 0;
    uint32_t _prevActiveChecksum DC_GUARDED_BY(access_lock) = 1;  ///< of what is loaded; differs, so that the
    std::string _prevActiveZonesetName DC_GUARDED_BY(access_lock);  ///< first refresh loads
    uint32_t _prevInactiveChecksum DC_GUARDED_BY(access_lock) = 1;
    std::string _lockId DC_GUARDED_BY(access_lock);              ///< the client that holds the lock
    datacache::ZoneSetMap _zonesets DC_GUARDED_BY(access_lock);  ///< owns the handles
    int32_t _zonesetCount DC_GUARDED_BY(access_lock) = 0;        ///< inactive zonesets
    int32_t _zoneCount DC_GUARDED_BY(access_lock) = 0;
    int32_t _aliasCount DC_GUARDED_BY(access_lock) = 0;
    int32_t _memberCount DC_GUARDED_BY(access_lock) = 0;
    vex_fzs_limits_s _limits DC_GUARDED_BY(access_lock) = {};
    int32_t _lockTime DC_GUARDED_BY(access_lock) = 0;  ///< uptime in seconds when the lock was taken
    void* _activeZoneset DC_GUARDED_BY(access_lock) = nullptr;
    void* _uberZoneset DC_GUARDED_BY(access_lock) = nullptr;

    /** A part must be loaded whatever its checksum: a load of it failed or was asked for, or the host was not
     * told of it. */
    bool _activeDue DC_GUARDED_BY(access_lock) = false;
    /** Why the active zoneset is missing, and that somebody asked to read it once more. */
    datacache::ReadFailure _activeGap DC_GUARDED_BY(access_lock);
    bool _activeWanted DC_GUARDED_BY(access_lock) = false;
    bool _configuredDue DC_GUARDED_BY(access_lock) = false;
    /** How often the database, or a part of it, was loaded or asked for anew. */
    uint32_t _version DC_GUARDED_BY(access_lock) = 0;
    /** A session sent something after the keys were read last. */
    bool _refreshWanted DC_GUARDED_BY(access_lock) = false;
    /** The open session that holds the lock; null when it has none or lost it. */
    const void* _session DC_GUARDED_BY(access_lock) = nullptr;
};
