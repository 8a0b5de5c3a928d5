#include <map>
#include <string>

#include "common/cim_log.h"
#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

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
    const std::map<std::string, ZoneSet>& zonesets;
};

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

// ---- Creation ----

/** Adds a new zone or alias to the uber zoneset, which then owns it; destroys it where that fails. */
bool addOrDestroy(const ContainerCalls& calls, void* uber, void* container) {
    if (calls.addTo(uber, container)) return true;
    calls.destroy(&container);
    return false;
}

// ---- Removal ----

uint32_t remove(const ContainerCalls& calls, void* zoneset, void* container) {
    return calls.remove(zoneset, container) == 0 ? ZONING_DONE : ZONING_FAILED;
}

uint32_t removeEverywhere(const Database& database, const ContainerCalls& calls, const EditRule& rule,
                          const char* name) {
    void* container = calls.findIn(database.uber, name);
    if (container == nullptr) return ZONING_NOT_FOUND;
    const uint32_t result = remove(calls, database.uber, container);
    if (result != ZONING_DONE) return result;
    return repeatInContainers(database, calls, rule, name,
                              [&](void* zoneset, void* copy) { return remove(calls, zoneset, copy); });
}

// ---- Members ----

/** A member as an edit names it. */
struct MemberId {
    vex_fzs_zonemember_type_e type;
    vex_memberid_u id = {};

    explicit MemberId(vex_fzs_zonemember_type_e memberType) : type(memberType) {}
    bool parse(const char* text) { return vex_strToMemberIdentifier(given(text), type, &id) == 0; }
};

/** Adds a member of its own to a zone or alias. */
uint32_t addTo(const ContainerCalls& calls, void* container, const MemberId& wanted) {
    void* member = vex_MemberCreate(wanted.type, &wanted.id);
    if (member == nullptr) return ZONING_FAILED;
    if (calls.addMember(container, member) == 0) return ZONING_DONE;
    vex_MemberDestroy(&member);
    return ZONING_FAILED;
}

uint32_t deleteFrom(const ContainerCalls& calls, void* container, const MemberId& wanted) {
    void* member = calls.findMember(container, wanted.type, &wanted.id);
    if (member == nullptr) return ZONING_NOT_FOUND;
    return calls.deleteMember(container, member) == 0 ? ZONING_DONE : ZONING_FAILED;
}

/** `atMax` asks whether the zone or alias is full. */
uint32_t addMember(const Database& database, const ContainerCalls& calls, const EditRule& rule,
                   const char* name, vex_fzs_zonemember_type_e type, const char* text,
                   bool (ZoningCache::*atMax)(void*)) {
    void* container = calls.findIn(database.uber, name);
    if (container == nullptr) return ZONING_NOT_FOUND;
    if ((database.cache.*atMax)(container)) return ZONING_FAILED;
    MemberId wanted(type);
    if (!wanted.parse(text)) return ZONING_INVALID;
    if (calls.findMember(container, wanted.type, &wanted.id) != nullptr) return ZONING_EXISTS;
    const uint32_t result = addTo(calls, container, wanted);
    if (result != ZONING_DONE) return result;
    return repeatInContainers(database, calls, rule, name,
                              [&](void*, void* copy) { return addTo(calls, copy, wanted); });
}

uint32_t removeMemberFrom(const Database& database, const ContainerCalls& calls, const EditRule& rule,
                          const char* name, vex_fzs_zonemember_type_e type, const char* text) {
    void* container = calls.findIn(database.uber, name);
    if (container == nullptr) return ZONING_NOT_FOUND;
    MemberId wanted(type);
    if (!wanted.parse(text)) return ZONING_INVALID;
    const uint32_t result = deleteFrom(calls, container, wanted);
    if (result != ZONING_DONE) return result;
    // Required: a copy without the member stops the edit with ZONING_NOT_FOUND; the uber zoneset stays
    // changed.
    return repeatInContainers(database, calls, rule, name,
                              [&](void*, void* copy) { return deleteFrom(calls, copy, wanted); });
}

/** Deletes the member from each zone, or each alias, of a zoneset; a deletion that fails is only logged. */
uint32_t purge(const ContainerCalls& calls, void* zoneset, const MemberId& wanted, const char* failure) {
    const int32_t count = calls.count(zoneset);
    for (int32_t i = 0; i < count; ++i) {
        void* container = calls.list(zoneset, i);
        if (container == nullptr) return ZONING_FAILED;
        void* member = calls.findMember(container, wanted.type, &wanted.id);
        if (member == nullptr) continue;
        const int32_t result = calls.deleteMember(container, member);
        if (result != 0) cim_log(CIM_LOG_TRACE, "DCACHE: %s, result = %d\n", failure, result);
    }
    return ZONING_DONE;
}

// ---- The zones of a zoneset ----

/** The name of a copy until it gets the zone's own: no zone of a user has it, as names begin with a letter.
 */
constexpr const char* kTemporaryName = "^_-_-_-_TMPZONE_-_-_-_^";

}  // namespace

uint32_t ZoningCache::createZoneAlias(char* name) {
    const AccessGuard guard;
    if (aliasLimitAtMax()) return ZONING_FAILED;
    if (aliasCalls.findIn(_uberZoneset, given(name)) != nullptr) return ZONING_EXISTS;
    void* alias = vex_ZoneAliasCreate(given(name));
    if (alias == nullptr)
        return ZONING_FAILED;  // Required: a bad name is no ZONING_INVALID here, as for a zone.
    if (!addOrDestroy(aliasCalls, _uberZoneset, alias)) return ZONING_FAILED;
    updateZoningCounts();
    return ZONING_DONE;
}

uint32_t ZoningCache::createZone(char* name, vex_fzs_zone_type_e type) {
    const AccessGuard guard;
    if (zoneLimitAtMax()) return ZONING_FAILED;
    if (zoneCalls.findIn(_uberZoneset, given(name)) != nullptr) return ZONING_EXISTS;
    void* zone = vex_ZoneCreate(given(name));
    if (zone == nullptr) return ZONING_INVALID;
    if (vex_ZoneSetType(zone, type) != 0) {
        vex_ZoneDestroy(&zone);
        return ZONING_FAILED;
    }
    if (!addOrDestroy(zoneCalls, _uberZoneset, zone)) return ZONING_FAILED;
    updateZoningCounts();
    return ZONING_DONE;
}

uint32_t ZoningCache::createZoneset(char* name) {
    const AccessGuard guard;
    if (zonesetLimitAtMax()) return ZONING_FAILED;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    if (getZoneset(name, type) != nullptr) return ZONING_EXISTS;
    if (vex_ZonesetTestName(given(name)) != 0) return ZONING_INVALID;
    void* zoneset = vex_ZonesetCreate(given(name));
    if (zoneset == nullptr) return ZONING_FAILED;
    if (addZoneset(zoneset, ZONESET_INACTIVE) != 0) {
        vex_ZonesetDestroy(&zoneset);
        return ZONING_FAILED;
    }
    return ZONING_DONE;
}

uint32_t ZoningCache::removeZone(char* name) {
    const AccessGuard guard;
    return removeEverywhere({*this, _uberZoneset, _zonesets}, zoneCalls, kRemoveZone, given(name));
}

uint32_t ZoningCache::removeZoneAlias(char* name) {
    const AccessGuard guard;
    return removeEverywhere({*this, _uberZoneset, _zonesets}, aliasCalls, kRemoveZoneAlias, given(name));
}

uint32_t ZoningCache::removeZoneset(char* name) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* zoneset = getZoneset(name, type);
    if (zoneset == nullptr) return ZONING_NOT_FOUND;
    // With the type that it was found with: by its own name, a bracketed key would remove another zoneset.
    return delZoneset(zoneset, type) == 0 ? ZONING_DONE : ZONING_FAILED;
}

uint32_t ZoningCache::addMemberToZone(char* zone, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return addMember({*this, _uberZoneset, _zonesets}, zoneCalls, kAddMemberToZone, given(zone), type, member,
                     &ZoningCache::membersPerZoneAtMax);
}

uint32_t ZoningCache::addMemberToZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return addMember({*this, _uberZoneset, _zonesets}, aliasCalls, kAddMemberToZoneAlias, given(alias), type,
                     member, &ZoningCache::membersPerAliasAtMax);
}

uint32_t ZoningCache::removeMemberFromZone(char* zone, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return removeMemberFrom({*this, _uberZoneset, _zonesets}, zoneCalls, kRemoveMemberFromZone, given(zone),
                            type, member);
}

uint32_t ZoningCache::removeMemberFromZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return removeMemberFrom({*this, _uberZoneset, _zonesets}, aliasCalls, kRemoveMemberFromZoneAlias,
                            given(alias), type, member);
}

uint32_t ZoningCache::removeMember(vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    MemberId wanted(type);
    if (!wanted.parse(member)) return ZONING_INVALID;
    return repeat({*this, _uberZoneset, _zonesets}, kRemoveMember, [&](void* zoneset) -> uint32_t {
        const uint32_t result = purge(zoneCalls, zoneset, wanted, "Deletion failed");
        if (result != ZONING_DONE) return result;
        return purge(aliasCalls, zoneset, wanted, "Alias Deletion failed");
    });
}

uint32_t ZoningCache::addZoneToZoneset(char* zoneset, char* zone) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* target = getZoneset(zoneset, type);
    if (target == nullptr) return ZONING_NOT_FOUND;
    if (zonesPerZonesetAtMax(target)) return ZONING_FAILED;
    if (zoneCalls.findIn(target, given(zone)) != nullptr) return ZONING_EXISTS;
    void* original = zoneCalls.findIn(_uberZoneset, given(zone));
    if (original == nullptr) return ZONING_NOT_FOUND;
    void* copy = vex_ZoneCreateCopy(original, kTemporaryName);
    if (copy == nullptr) return ZONING_FAILED;
    if (vex_ZoneSetName(copy, given(zone)) != 0 || !zoneCalls.addTo(target, copy)) {
        vex_ZoneDestroy(&copy);
        return ZONING_FAILED;
    }
    return ZONING_DONE;  // without counting anew: the counts are of the uber zoneset, which did not change
}

uint32_t ZoningCache::removeZoneFromZoneset(char* zoneset, char* zone) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* target = getZoneset(zoneset, type);
    if (target == nullptr) return ZONING_NOT_FOUND;
    void* found = zoneCalls.findIn(target, given(zone));
    if (found == nullptr) return ZONING_NOT_FOUND;
    return remove(zoneCalls, target, found);
}
