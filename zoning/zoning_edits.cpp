#include <string>

#include "common/cim_log.h"
#include "zoning/ZoningCache.h"
#include "zoning/ZoningReport.h"
#include "zoning/library_calls.h"

using namespace datacache;

namespace {

/**
 * In which entries of the map an edit is repeated after the uber zoneset, and whether it counts the database
 * anew when it is done. Required: the edits differ in both; this table is the one place that says how.
 */
struct EditRule {
    bool active;
    bool inactive;
    bool uber;
    bool recount;

    bool covers(_ZoneSetTypes type) const {
        return type == ZONESET_ACTIVE ? active : type == ZONESET_INACTIVE ? inactive : uber;
    }
};

// clang-format off
//                                              active inactive uber   recount
constexpr EditRule kRemoveZone                = {false, true,   false, true};
constexpr EditRule kRemoveZoneAlias           = {false, true,   true,  true};
constexpr EditRule kAddMemberToZone           = {false, true,   false, true};
constexpr EditRule kRemoveMemberFromZone      = {false, true,   false, true};
constexpr EditRule kAddMemberToZoneAlias      = {false, true,   false, false};
constexpr EditRule kRemoveMemberFromZoneAlias = {true,  false,  false, false};
constexpr EditRule kRemoveMember              = {false, true,   true,  false};
// clang-format on

/** The database as an edit sees it. */
struct Database {
    ZoningCache& cache;
    void* uber;
    const datacache::ZoneSetMap& zonesets;
    ZoningFailure& failure;
};

/** Notes which call stopped an edit. */
uint32_t failed(ZoningFailure& failure, const char* call, int32_t returned = 0,
                uint32_t code = ZONING_FAILED) {
    failure = failureOf(call, returned);
    return code;
}

/** Makes a call that returns a status. */
template <typename... Arguments>
uint32_t attempt(ZoningFailure& failure, const LibraryCall<int32_t, Arguments...>& call,
                 Arguments... arguments) {
    const int32_t status = call(arguments...);
    return status == 0 ? ZONING_DONE : failed(failure, call.name, status);
}

/**
 * Repeats `edit`, a function of a zoneset handle that gives a ZoningResult, in the entries that the rule
 * covers, in the order of their keys, and stops at the first failure, which it returns. After a success it
 * counts where the rule says so.
 */
template <typename Edit>
uint32_t repeat(const Database& database, const EditRule& rule, Edit edit) {
    for (const auto& [key, entry] : database.zonesets) {
        if (!rule.covers(entry.type) || entry.handle == nullptr) continue;
        const uint32_t result = edit(entry.handle);
        if (result != ZONING_DONE) return result;
    }
    if (rule.recount) database.cache.updateZoningCounts();
    return ZONING_DONE;
}

/** As repeat(), for the zones or aliases of that name in the zonesets that hold one. */
template <typename Edit>
uint32_t repeatInContainers(const Database& database, const ContainerCalls& calls, const EditRule& rule,
                            const char* name, Edit edit) {
    return repeat(database, rule, [&](void* zoneset) -> uint32_t {
        void* container = calls.findIn(zoneset, name);
        return container == nullptr ? ZONING_DONE : edit(zoneset, container);
    });
}

/** Adds a new zone or alias to a zoneset, which then owns it; destroys it where that fails. */
uint32_t addOrDestroy(ZoningFailure& failure, const ContainerCalls& calls, void* zoneset, void* container) {
    const uint32_t result =
        zoneset == nullptr ? ZONING_FAILED : attempt(failure, calls.add, zoneset, container);
    if (result != ZONING_DONE) calls.destroy(&container);
    return result;
}

uint32_t removeEverywhere(const Database& database, const ContainerCalls& calls, const EditRule& rule,
                          const char* name) {
    void* container = calls.findIn(database.uber, name);
    if (container == nullptr) return ZONING_NOT_FOUND;
    const uint32_t result = attempt(database.failure, calls.remove, database.uber, container);
    if (result != ZONING_DONE) return result;
    return repeatInContainers(database, calls, rule, name, [&](void* zoneset, void* copy) {
        return attempt(database.failure, calls.remove, zoneset, copy);
    });
}

/** A member as an edit names it. */
struct MemberId {
    vex_fzs_zonemember_type_e type;
    vex_memberid_u id = {};

    explicit MemberId(vex_fzs_zonemember_type_e memberType) : type(memberType) {}
    uint32_t parse(ZoningFailure& failure, const char* text) {
        const int32_t status = vex_strToMemberIdentifier(given(text), type, &id);
        if (status == 0) return ZONING_DONE;
        return failed(failure, "vex_strToMemberIdentifier", status, ZONING_INVALID);
    }
};

/** Adds a member of its own to a zone or alias. */
uint32_t addTo(ZoningFailure& failure, const ContainerCalls& calls, void* container, const MemberId& wanted) {
    void* member = vex_MemberCreate(wanted.type, &wanted.id);
    if (member == nullptr) return failed(failure, "vex_MemberCreate");
    const uint32_t result = attempt(failure, calls.addMember, container, member);
    if (result != ZONING_DONE) vex_MemberDestroy(&member);
    return result;
}

uint32_t deleteFrom(ZoningFailure& failure, const ContainerCalls& calls, void* container,
                    const MemberId& wanted) {
    void* member = calls.findMember(container, wanted.type, &wanted.id);
    return member == nullptr ? ZONING_NOT_FOUND : attempt(failure, calls.deleteMember, container, member);
}

/** `atMax` asks whether the zone or alias is full. */
uint32_t addMember(const Database& database, const ContainerCalls& calls, const EditRule& rule,
                   const char* name, vex_fzs_zonemember_type_e type, const char* text,
                   bool (ZoningCache::*atMax)(void*)) {
    void* container = calls.findIn(database.uber, name);
    if (container == nullptr) return ZONING_NOT_FOUND;
    if ((database.cache.*atMax)(container)) return ZONING_FAILED;
    MemberId wanted(type);
    uint32_t result = wanted.parse(database.failure, text);
    if (result != ZONING_DONE) return result;
    if (calls.findMember(container, wanted.type, &wanted.id) != nullptr) return ZONING_EXISTS;
    result = addTo(database.failure, calls, container, wanted);
    if (result != ZONING_DONE) return result;
    return repeatInContainers(database, calls, rule, name, [&](void*, void* copy) {
        return addTo(database.failure, calls, copy, wanted);
    });
}

uint32_t removeMemberFrom(const Database& database, const ContainerCalls& calls, const EditRule& rule,
                          const char* name, vex_fzs_zonemember_type_e type, const char* text) {
    void* container = calls.findIn(database.uber, name);
    if (container == nullptr) return ZONING_NOT_FOUND;
    MemberId wanted(type);
    uint32_t result = wanted.parse(database.failure, text);
    if (result != ZONING_DONE) return result;
    result = deleteFrom(database.failure, calls, container, wanted);
    if (result != ZONING_DONE) return result;
    // Required: a copy without the member stops the edit with ZONING_NOT_FOUND; the uber zoneset stays
    // changed.
    return repeatInContainers(database, calls, rule, name, [&](void*, void* copy) {
        return deleteFrom(database.failure, calls, copy, wanted);
    });
}

/** Deletes the member from each zone, or each alias, of a zoneset; a deletion that fails is only logged. */
uint32_t purge(ZoningFailure& failure, const ContainerCalls& calls, void* zoneset, const MemberId& wanted,
               const char* complaint) {
    const int32_t count = calls.count(zoneset);
    for (int32_t i = 0; i < count; ++i) {
        void* container = calls.list(zoneset, i);
        if (container == nullptr) return failed(failure, calls.list.name);
        void* member = calls.findMember(container, wanted.type, &wanted.id);
        if (member == nullptr) continue;
        const int32_t result = calls.deleteMember(container, member);
        if (result != 0) cim_log(CIM_LOG_TRACE, "DCACHE: %s, result = %d\n", complaint, result);
    }
    return ZONING_DONE;
}

/** The name of a copy until it gets the zone's own: no zone of a user has it, as names begin with a letter.
 */
constexpr const char* kTemporaryName = "^_-_-_-_TMPZONE_-_-_-_^";

}  // namespace

uint32_t ZoningCache::createZoneAlias(char* name) {
    const AccessGuard guard;
    if (aliasLimitAtMax()) return ZONING_FAILED;
    if (kAliasCalls.findIn(_uberZoneset, given(name)) != nullptr) return ZONING_EXISTS;
    void* alias = vex_ZoneAliasCreate(given(name));
    // Required: a bad name is ZONING_FAILED here, where a zone's is ZONING_INVALID.
    if (alias == nullptr) return failed(_failure, "vex_ZoneAliasCreate");
    const uint32_t result = addOrDestroy(_failure, kAliasCalls, _uberZoneset, alias);
    if (result == ZONING_DONE) updateZoningCounts();
    return result;
}

uint32_t ZoningCache::createZone(char* name, vex_fzs_zone_type_e type) {
    const AccessGuard guard;
    if (zoneLimitAtMax()) return ZONING_FAILED;
    if (kZoneCalls.findIn(_uberZoneset, given(name)) != nullptr) return ZONING_EXISTS;
    void* zone = vex_ZoneCreate(given(name));
    if (zone == nullptr) return failed(_failure, "vex_ZoneCreate", 0, ZONING_INVALID);
    const int32_t typed = vex_ZoneSetType(zone, type);
    if (typed != 0) {
        vex_ZoneDestroy(&zone);
        return failed(_failure, "vex_ZoneSetType", typed);
    }
    const uint32_t result = addOrDestroy(_failure, kZoneCalls, _uberZoneset, zone);
    if (result == ZONING_DONE) updateZoningCounts();
    return result;
}

uint32_t ZoningCache::createZoneset(char* name) {
    const AccessGuard guard;
    if (zonesetLimitAtMax()) return ZONING_FAILED;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    if (getZoneset(name, type) != nullptr) return ZONING_EXISTS;
    const int32_t tested = vex_ZonesetTestName(given(name));
    if (tested != 0) return failed(_failure, "vex_ZonesetTestName", tested, ZONING_INVALID);
    void* zoneset = vex_ZonesetCreate(given(name));
    if (zoneset == nullptr) return failed(_failure, "vex_ZonesetCreate");
    if (_addOrDestroy(zoneset, ZONESET_INACTIVE)) return ZONING_DONE;
    return failed(_failure, "vex_ZonesetGetName");
}

uint32_t ZoningCache::removeZone(char* name) {
    const AccessGuard guard;
    return removeEverywhere({*this, _uberZoneset, _zonesets, _failure}, kZoneCalls, kRemoveZone, given(name));
}

uint32_t ZoningCache::removeZoneAlias(char* name) {
    const AccessGuard guard;
    return removeEverywhere({*this, _uberZoneset, _zonesets, _failure}, kAliasCalls, kRemoveZoneAlias,
                            given(name));
}

uint32_t ZoningCache::removeZoneset(char* name) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* zoneset = getZoneset(name, type);
    if (zoneset == nullptr) return ZONING_NOT_FOUND;
    // With the type that it was found with: by its own name, a bracketed key would remove another zoneset.
    return delZoneset(zoneset, type) == 0 ? ZONING_DONE : failed(_failure, "vex_ZonesetGetName");
}

uint32_t ZoningCache::addMemberToZone(char* zone, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return addMember({*this, _uberZoneset, _zonesets, _failure}, kZoneCalls, kAddMemberToZone, given(zone),
                     type, member, &ZoningCache::membersPerZoneAtMax);
}

uint32_t ZoningCache::addMemberToZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return addMember({*this, _uberZoneset, _zonesets, _failure}, kAliasCalls, kAddMemberToZoneAlias,
                     given(alias), type, member, &ZoningCache::membersPerAliasAtMax);
}

uint32_t ZoningCache::removeMemberFromZone(char* zone, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return removeMemberFrom({*this, _uberZoneset, _zonesets, _failure}, kZoneCalls, kRemoveMemberFromZone,
                            given(zone), type, member);
}

uint32_t ZoningCache::removeMemberFromZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return removeMemberFrom({*this, _uberZoneset, _zonesets, _failure}, kAliasCalls,
                            kRemoveMemberFromZoneAlias, given(alias), type, member);
}

uint32_t ZoningCache::removeMember(vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    const Database database{*this, _uberZoneset, _zonesets, _failure};
    MemberId wanted(type);
    const uint32_t parsed = wanted.parse(database.failure, member);
    if (parsed != ZONING_DONE) return parsed;
    return repeat(database, kRemoveMember, [&](void* zoneset) {
        const uint32_t result = purge(database.failure, kZoneCalls, zoneset, wanted, "Deletion failed");
        if (result != ZONING_DONE) return result;
        return purge(database.failure, kAliasCalls, zoneset, wanted, "Alias Deletion failed");
    });
}

uint32_t ZoningCache::addZoneToZoneset(char* zoneset, char* zone) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* target = getZoneset(zoneset, type);
    if (target == nullptr) return ZONING_NOT_FOUND;
    if (zonesPerZonesetAtMax(target)) return ZONING_FAILED;
    if (kZoneCalls.findIn(target, given(zone)) != nullptr) return ZONING_EXISTS;
    void* original = kZoneCalls.findIn(_uberZoneset, given(zone));
    if (original == nullptr) return ZONING_NOT_FOUND;
    void* copy = vex_ZoneCreateCopy(original, kTemporaryName);
    if (copy == nullptr) return failed(_failure, "vex_ZoneCreateCopy");
    const int32_t named = vex_ZoneSetName(copy, given(zone));
    if (named != 0) {
        vex_ZoneDestroy(&copy);
        return failed(_failure, "vex_ZoneSetName", named);
    }
    // Without counting anew: the counts are of the uber zoneset, which does not change.
    return addOrDestroy(_failure, kZoneCalls, target, copy);
}

uint32_t ZoningCache::removeZoneFromZoneset(char* zoneset, char* zone) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* target = getZoneset(zoneset, type);
    if (target == nullptr) return ZONING_NOT_FOUND;
    void* found = kZoneCalls.findIn(target, given(zone));
    if (found == nullptr) return ZONING_NOT_FOUND;
    return attempt(_failure, kZoneCalls.remove, target, found);
}
