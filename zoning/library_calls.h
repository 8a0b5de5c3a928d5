#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "vexlib/vexlib.h"
#include "zoning/ZoningOutcome.h"

namespace datacache {

/**
 * How zoning speaks with the switch library: names read with a bound, and one table each for the calls that
 * zones and aliases have alike, so that what is done to both is written once.
 */

/**
 * Walks that go on after an entry that is missing ask for so many at most, whatever the count says: far more
 * than any fabric has, and few enough that a wild count does not keep the access lock for hours. A commit
 * refuses such a container.
 */
constexpr int32_t kMostEntries = 65536;

inline int32_t entriesOf(int32_t count) {
    return std::min(count, kMostEntries);
}

/** Room for a name: more than any takes, for a library that forgets the terminator. */
constexpr size_t kNameRoom = 256;

/** The keys of the two zonesets that are not found by their names. */
inline constexpr const char* kActiveZonesetKey = "[ActiveZoneSetKey]";
inline constexpr const char* kUberZonesetKey = "[UberZoneSetKey]";

/** A host's name; none counts as an empty one. */
inline const char* given(const char* name) {
    return name == nullptr ? "" : name;
}

/** Reads an object's name with the library's call for it; false without an object, or when the library fails.
 */
inline bool readName(int32_t (*getName)(void*, char*), void* object, std::string& name) {
    if (object == nullptr) return false;
    char field[kNameRoom] = {};
    if (getName(object, field) != 0) return false;
    name.assign(field, strnlen(field, sizeof field));
    return true;
}

/** A call of the switch library with its name, for whoever has to tell that it failed. */
template <typename Result, typename... Arguments>
struct LibraryCall {
    Result (*function)(Arguments...);
    const char* name;

    Result operator()(Arguments... arguments) const { return function(arguments...); }
};

/** The calls for one kind of container: zones or aliases. */
struct ContainerCalls {
    ZoningObject kind;
    ZoningLimit memberLimit;
    LibraryCall<int32_t, void*> count;
    LibraryCall<void*, void*, int32_t> list;
    LibraryCall<void*, void*, const char*> find;
    LibraryCall<int32_t, void*, void*> add;
    LibraryCall<int32_t, void*, void*> remove;
    LibraryCall<int32_t, void**> destroy;
    LibraryCall<int32_t, void*, char*> getName;
    LibraryCall<int32_t, void*> memberCount;
    LibraryCall<void*, void*, int32_t> listMembers;
    LibraryCall<void*, void*, vex_fzs_zonemember_type_e, const vex_memberid_u*> findMember;
    LibraryCall<int32_t, void*, void*> addMember;
    LibraryCall<int32_t, void*, void*> deleteMember;

    // Before the first load there is no uber zoneset, and vexlib does not define what it does with a null
    // handle.
    int32_t countIn(void* zoneset) const { return zoneset == nullptr ? 0 : count(zoneset); }
    void* findIn(void* zoneset, const char* name) const {
        return zoneset == nullptr ? nullptr : find(zoneset, name);
    }
};

#define DC_NAMED(call) \
    { call, #call }

inline constexpr ContainerCalls kZoneCalls = {
    ZoningObject::Zone,
    ZoningLimit::MembersPerZone,
    DC_NAMED(vex_ZonesetGetZoneCount),
    DC_NAMED(vex_ZonesetListZones),
    DC_NAMED(vex_ZonesetFindZone),
    DC_NAMED(vex_ZonesetAddZone),
    DC_NAMED(vex_ZonesetRemoveZone),
    DC_NAMED(vex_ZoneDestroy),
    DC_NAMED(vex_ZoneGetName),
    DC_NAMED(vex_ZoneGetMemberCount),
    DC_NAMED(vex_ZoneListMembers),
    DC_NAMED(vex_ZoneFindMember),
    DC_NAMED(vex_ZoneAddMember),
    DC_NAMED(vex_ZoneDeleteMember),
};

inline constexpr ContainerCalls kAliasCalls = {
    ZoningObject::Alias,
    ZoningLimit::MembersPerAlias,
    DC_NAMED(vex_ZonesetGetAliasCount),
    DC_NAMED(vex_ZonesetListAliases),
    DC_NAMED(vex_ZonesetFindAlias),
    DC_NAMED(vex_ZonesetAddAlias),
    DC_NAMED(vex_ZonesetRemoveAlias),
    DC_NAMED(vex_ZoneAliasDestroy),
    DC_NAMED(vex_ZoneAliasGetName),
    DC_NAMED(vex_ZoneAliasGetMemberCount),
    DC_NAMED(vex_ZoneAliasListMembers),
    DC_NAMED(vex_ZoneAliasFindMember),
    DC_NAMED(vex_ZoneAliasAddMember),
    DC_NAMED(vex_ZoneAliasDeleteMember),
};

#undef DC_NAMED

}  // namespace datacache
