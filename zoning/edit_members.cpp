#include "common/cim_log.h"
#include "zoning/ZoningCache.h"
#include "zoning/edit_rules.h"
#include "zoning/library_calls.h"

namespace {

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

/** Applies `edit` to the container of that name in the zonesets of the rule that hold one, then counts. */
template <typename Edit>
uint32_t repeatInContainers(ZoningCache& cache, const ContainerCalls& calls, const EditRule& rule,
                            const char* name, Edit edit) DC_REQUIRES(access_lock) {
    const uint32_t result = repeat(cache._zonesets, rule, [&](void* zoneset) -> uint32_t {
        void* container = calls.findIn(zoneset, name);
        return container == nullptr ? ZONING_DONE : edit(container);
    });
    if (result == ZONING_DONE && rule.recount) cache.updateZoningCounts();
    return result;
}

uint32_t addMember(ZoningCache& cache, const ContainerCalls& calls, const EditRule& rule, const char* name,
                   void* container, const MemberId& wanted) DC_REQUIRES(access_lock) {
    if (calls.findMember(container, wanted.type, &wanted.id) != nullptr) return ZONING_EXISTS;
    const uint32_t result = addTo(calls, container, wanted);
    if (result != ZONING_DONE) return result;
    return repeatInContainers(cache, calls, rule, name,
                              [&](void* copy) { return addTo(calls, copy, wanted); });
}

uint32_t removeMemberFrom(ZoningCache& cache, const ContainerCalls& calls, const EditRule& rule,
                          const char* name, vex_fzs_zonemember_type_e type, const char* text)
    DC_REQUIRES(access_lock) {
    void* container = calls.findIn(cache._uberZoneset, name);
    if (container == nullptr) return ZONING_NOT_FOUND;
    MemberId wanted(type);
    if (!wanted.parse(text)) return ZONING_INVALID;
    const uint32_t result = deleteFrom(calls, container, wanted);
    if (result != ZONING_DONE) return result;
    // A copy without the member stops the edit with ZONING_NOT_FOUND, and the uber zoneset stays changed:
    // meant.
    return repeatInContainers(cache, calls, rule, name,
                              [&](void* copy) { return deleteFrom(calls, copy, wanted); });
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

}  // namespace

uint32_t ZoningCache::addMemberToZone(char* zone, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    void* container = zoneCalls.findIn(_uberZoneset, given(zone));
    if (container == nullptr) return ZONING_NOT_FOUND;
    if (membersPerZoneAtMax(container)) return ZONING_FAILED;
    MemberId wanted(type);
    if (!wanted.parse(member)) return ZONING_INVALID;
    return addMember(*this, zoneCalls, rules::addMemberToZone, given(zone), container, wanted);
}

uint32_t ZoningCache::addMemberToZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    void* container = aliasCalls.findIn(_uberZoneset, given(alias));
    if (container == nullptr) return ZONING_NOT_FOUND;
    if (membersPerAliasAtMax(container)) return ZONING_FAILED;
    MemberId wanted(type);
    if (!wanted.parse(member)) return ZONING_INVALID;
    return addMember(*this, aliasCalls, rules::addMemberToZoneAlias, given(alias), container, wanted);
}

uint32_t ZoningCache::removeMemberFromZone(char* zone, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return removeMemberFrom(*this, zoneCalls, rules::removeMemberFromZone, given(zone), type, member);
}

uint32_t ZoningCache::removeMemberFromZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return removeMemberFrom(*this, aliasCalls, rules::removeMemberFromZoneAlias, given(alias), type, member);
}

uint32_t ZoningCache::removeMember(vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    MemberId wanted(type);
    if (!wanted.parse(member)) return ZONING_INVALID;
    return repeat(_zonesets, rules::removeMember, [&](void* zoneset) -> uint32_t {
        const uint32_t result = purge(zoneCalls, zoneset, wanted, "Deletion failed");
        if (result != ZONING_DONE) return result;
        return purge(aliasCalls, zoneset, wanted, "Alias Deletion failed");
    });
}
