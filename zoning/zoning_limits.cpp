#include <algorithm>
#include <cstring>

#include "common/cim_log.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "switchlib/ReadTrace.h"
#include "zoning/ZoningCache.h"
#include "zoning/ZoningReport.h"
#include "zoning/library_calls.h"

using namespace datacache;

namespace {

/** Adds counts from outside, whose sum may pass 32 bits; it then wraps. */
int32_t plus(int32_t sum, int32_t count) {
    return static_cast<int32_t>(static_cast<uint32_t>(sum) + static_cast<uint32_t>(count));
}

/** Members of the aliases that a zone names as its members. */
int32_t membersThroughAliases(void* uber, void* zone, int32_t members) {
    int32_t sum = 0;
    for (int32_t i = 0; i < entriesOf(members); ++i) {
        void* member = vex_ZoneListMembers(zone, i);
        vex_fzs_zonemember_type_e type = VEX_ZMT_UNKNOWN;
        vex_memberid_u id{};
        if (member == nullptr || vex_MemberGetAttr(member, &type, &id) != 0 || type != VEX_ZMT_ALIAS)
            continue;
        char name[sizeof id.alias + 1] = {};  // terminated, and without memory that may be short
        std::memcpy(name, id.alias, sizeof id.alias);
        void* alias = vex_ZonesetFindAlias(uber, name);
        if (alias != nullptr) sum = plus(sum, vex_ZoneAliasGetMemberCount(alias));
    }
    return sum;
}

}  // namespace

int ZoningCache::updateZoningCounts() {
    const AccessGuard guard;
    _zonesetCount =
        static_cast<int32_t>(std::count_if(_zonesets.begin(), _zonesets.end(), [](const auto& entry) {
            return entry.second.type == ZONESET_INACTIVE;
        }));
    _memberCount = 0;
    _zoneCount = kZoneCalls.countIn(_uberZoneset);
    for (int32_t i = 0; i < entriesOf(_zoneCount); ++i) {
        void* zone = vex_ZonesetListZones(_uberZoneset, i);
        if (zone == nullptr) continue;
        const int32_t members = vex_ZoneGetMemberCount(zone);
        _memberCount = plus(_memberCount, members);
        _memberCount = plus(_memberCount, membersThroughAliases(_uberZoneset, zone, members));
    }
    // Required: the members of an alias count here once more, after each zone that names it; the member limit
    // is measured against this generous count.
    _aliasCount = kAliasCalls.countIn(_uberZoneset);
    for (int32_t i = 0; i < entriesOf(_aliasCount); ++i) {
        void* alias = vex_ZonesetListAliases(_uberZoneset, i);
        if (alias != nullptr) _memberCount = plus(_memberCount, vex_ZoneAliasGetMemberCount(alias));
    }
    cim_log(CIM_LOG_TRACE, "DCACHE: zsl = %d, zl = %d, al = %d, zml = %d\n", _zonesetCount, _zoneCount,
            _aliasCount, _memberCount);
    return 1;
}

bool ZoningCache::initZoningLimits() {
    const AccessGuard guard;
    ++_version;
    updateZoningCounts();
    return ReadTrace::follow("vex_fzsGetZoningLimitations", "",
                             [this] { return vex_fzsGetZoningLimitations(hSwitch, &_limits); }) == 0;
}

bool ZoningCache::_limitsRead() const {
    const vex_fzs_limits_s& l = _limits;
    return l.max_zonesets != 0 || l.max_zones != 0 || l.max_members != 0 || l.max_zones_per_zoneset != 0 ||
           l.max_members_per_zone != 0 || l.max_aliases != 0 || l.max_members_per_alias != 0;
}

bool ZoningCache::_reached(bool full, ZoningLimit limit, int32_t number) {
    if (!full) return false;
    cim_log(CIM_LOG_TRACE, "DCACHE: %s maximum of %d reached\n", namesOf(limit).log, number);
    _failure = {"", 0, limit, number};
    return true;
}

// Required: the four limits of the whole database are at their maximum only when they are met exactly, and
// log the count; the three of one container also when they are passed, and log the limit. A database that was
// loaded beyond a maximum can therefore still grow.

bool ZoningCache::zonesetLimitAtMax() {
    const AccessGuard guard;
    return _reached(_zonesetCount == _limits.max_zonesets, ZoningLimit::Zonesets, _zonesetCount);
}

bool ZoningCache::zoneLimitAtMax() {
    const AccessGuard guard;
    return _reached(_zoneCount == _limits.max_zones, ZoningLimit::Zones, _zoneCount);
}

bool ZoningCache::aliasLimitAtMax() {
    const AccessGuard guard;
    return _reached(_aliasCount == _limits.max_aliases, ZoningLimit::Aliases, _aliasCount);
}

bool ZoningCache::memberLimitAtMax() {
    const AccessGuard guard;
    return _reached(_memberCount == _limits.max_members, ZoningLimit::Members, _memberCount);
}

bool ZoningCache::zonesPerZonesetAtMax(void* zoneset) {
    const int32_t most = _limits.max_zones_per_zoneset;
    return _reached(vex_ZonesetGetZoneCount(zoneset) >= most, ZoningLimit::ZonesPerZoneset, most);
}

bool ZoningCache::membersPerZoneAtMax(void* zone) {
    const AccessGuard guard;
    const int32_t most = _limits.max_members_per_zone;
    return _reached(vex_ZoneGetMemberCount(zone) >= most, ZoningLimit::MembersPerZone, most);
}

bool ZoningCache::membersPerAliasAtMax(void* alias) {
    const int32_t most = _limits.max_members_per_alias;
    return _reached(vex_ZoneAliasGetMemberCount(alias) >= most, ZoningLimit::MembersPerAlias, most);
}
