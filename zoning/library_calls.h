#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "vexlib/vexlib.h"

/**
 * How zoning speaks with the switch library: names read with a bound, and one table each for the calls that
 * zones and aliases have alike, so that what is done to both is written once.
 */

/** A host's name; none counts as an empty one. */
inline const char* given(const char* name) {
    return name == nullptr ? "" : name;
}

/** Reads an object's name with the library's call for it; false without an object, or when the library fails.
 */
inline bool readName(int32_t (*getName)(void*, char*), void* object, std::string& name) {
    if (object == nullptr) return false;
    char field[256] = {};  // longer than any name, for a library that forgets the terminator
    if (getName(object, field) != 0) return false;
    name.assign(field, strnlen(field, sizeof field));
    return true;
}

/** The calls for one kind of container: zones or aliases. */
struct ContainerCalls {
    int32_t (*count)(void* zoneset);
    void* (*list)(void* zoneset, int32_t index);
    void* (*find)(void* zoneset, const char* name);
    int32_t (*add)(void* zoneset, void* container);
    int32_t (*remove)(void* zoneset, void* container);
    int32_t (*destroy)(void** container);
    int32_t (*getName)(void* container, char* name);
    int32_t (*memberCount)(void* container);
    void* (*listMembers)(void* container, int32_t index);
    void* (*findMember)(void* container, vex_fzs_zonemember_type_e type, const vex_memberid_u* id);
    int32_t (*addMember)(void* container, void* member);
    int32_t (*deleteMember)(void* container, void* member);

    // Before the first load there is no uber zoneset; what a null handle does to the library nobody says.
    int32_t countIn(void* zoneset) const { return zoneset == nullptr ? 0 : count(zoneset); }
    void* findIn(void* zoneset, const char* name) const {
        return zoneset == nullptr ? nullptr : find(zoneset, name);
    }
    bool addTo(void* zoneset, void* container) const {
        return zoneset != nullptr && add(zoneset, container) == 0;
    }
};

inline constexpr ContainerCalls zoneCalls = {
    vex_ZonesetGetZoneCount, vex_ZonesetListZones, vex_ZonesetFindZone, vex_ZonesetAddZone,
    vex_ZonesetRemoveZone,   vex_ZoneDestroy,      vex_ZoneGetName,     vex_ZoneGetMemberCount,
    vex_ZoneListMembers,     vex_ZoneFindMember,   vex_ZoneAddMember,   vex_ZoneDeleteMember,
};

inline constexpr ContainerCalls aliasCalls = {
    vex_ZonesetGetAliasCount, vex_ZonesetListAliases,  vex_ZonesetFindAlias,   vex_ZonesetAddAlias,
    vex_ZonesetRemoveAlias,   vex_ZoneAliasDestroy,    vex_ZoneAliasGetName,   vex_ZoneAliasGetMemberCount,
    vex_ZoneAliasListMembers, vex_ZoneAliasFindMember, vex_ZoneAliasAddMember, vex_ZoneAliasDeleteMember,
};
