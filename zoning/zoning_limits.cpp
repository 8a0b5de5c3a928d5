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

// Required: the four limits of the whole database are at their maximum only when they are met exactly, and
// log the count; the three of one container also when they are passed, and log the limit. A database that was
// loaded beyond a maximum can therefore still grow.
ZoningReport ZoningCache::_checkLimit(ZoningLimit limit, void* container) const {
    bool full = false;
    int32_t number = 0;
    const auto whole = [&](int32_t count, int32_t most) {
        full = count == most;
        number = count;
    };
    const auto within = [&](int32_t count, int32_t most) {
        full = count >= most;
        number = most;
    };
    switch (limit) {
        case ZoningLimit::None:
            break;
        case ZoningLimit::Zonesets:
            whole(_zonesetCount, _limits.max_zonesets);
            break;
        case ZoningLimit::Zones:
            whole(_zoneCount, _limits.max_zones);
            break;
        case ZoningLimit::Aliases:
            whole(_aliasCount, _limits.max_aliases);
            break;
        case ZoningLimit::Members:
            whole(_memberCount, _limits.max_members);
            break;
        case ZoningLimit::ZonesPerZoneset:
            within(vex_ZonesetGetZoneCount(container), _limits.max_zones_per_zoneset);
            break;
        case ZoningLimit::MembersPerZone:
            within(vex_ZoneGetMemberCount(container), _limits.max_members_per_zone);
            break;
        case ZoningLimit::MembersPerAlias:
            within(vex_ZoneAliasGetMemberCount(container), _limits.max_members_per_alias);
            break;
    }
    if (!full) return {};
    cim_log(CIM_LOG_TRACE, "DCACHE: %s maximum of %d reached\n", namesOf(limit).log, number);
    ZoningReport report{_limitsRead() ? ZoningStatus::LimitReached : ZoningStatus::LimitsUnknown,
                        ZONING_FAILED};
    report.failure.limit = limit;
    report.failure.number = number;
    return report;
}

bool ZoningCache::zonesetLimitAtMax() {
    const AccessGuard guard;
    return !_checkLimit(ZoningLimit::Zonesets).done();
}

bool ZoningCache::zoneLimitAtMax() {
    const AccessGuard guard;
    return !_checkLimit(ZoningLimit::Zones).done();
}

bool ZoningCache::aliasLimitAtMax() {
    const AccessGuard guard;
    return !_checkLimit(ZoningLimit::Aliases).done();
}

bool ZoningCache::memberLimitAtMax() {
    const AccessGuard guard;
    return !_checkLimit(ZoningLimit::Members).done();
}

bool ZoningCache::zonesPerZonesetAtMax(void* zoneset) {
    return !_checkLimit(ZoningLimit::ZonesPerZoneset, zoneset).done();
}

bool ZoningCache::membersPerZoneAtMax(void* zone) {
    const AccessGuard guard;
    return !_checkLimit(ZoningLimit::MembersPerZone, zone).done();
}

bool ZoningCache::membersPerAliasAtMax(void* alias) {
    return !_checkLimit(ZoningLimit::MembersPerAlias, alias).done();
}
