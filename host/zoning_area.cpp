#include "host/areas.h"

#include "host/cache_reader.h"

namespace {

/** The bounded name that one of vexlib's GetName functions gives; null when it fails. */
template <typename Get>
Json nameOf(Get get, void* object) {
    char name[VEX_ZONING_NAME_SIZE] = "";
    if (object == nullptr || get(object, name) != 0) return Json();
    return std::string(name, strnlen(name, sizeof name));
}

Json memberOf(void* member) {
    static constexpr const char* types[] = {"unknown", "wwn", "port", "fcid", "node", "alias"};
    vex_fzs_zonemember_type_e type = VEX_ZMT_UNKNOWN;
    vex_memberid_u id{};
    if (member == nullptr || vex_MemberGetAttr(member, &type, &id) != 0) return Json();
    int number = type;
    char text[VEX_ZONING_NAME_SIZE] = "";
    formatMemberId(&number, id.bytes, text);
    const bool known = number >= 0 && static_cast<size_t>(number) < std::size(types);
    return {{"type", known ? types[number] : "unknown"}, {"member", text}};
}

/** What one of vexlib's List functions gives for 0 up to `count`, each through `read`; ends at the first
 * null. */
template <typename List, typename Read>
Json listOf(void* owner, int32_t count, List list, Read read) {
    Json all = Json::array();
    for (int32_t i = 0; i < count; ++i) {
        void* const item = list(owner, i);
        if (item == nullptr) break;
        all.push_back(read(item));
    }
    return all;
}

Json zoneOf(void* zone) {
    vex_fzs_zone_type_e type{};
    const bool typed = vex_ZoneGetType(zone, &type) == 0;
    return {
        {"name", nameOf(vex_ZoneGetName, zone)},
        {"type", typed ? Json(ZoningCache::vex_smlCnvFromVEXZoneType(type)) : Json()},
        {"members", listOf(zone, vex_ZoneGetMemberCount(zone), vex_ZoneListMembers, memberOf)},
    };
}

Json aliasOf(void* alias) {
    return {
        {"name", nameOf(vex_ZoneAliasGetName, alias)},
        {"members", listOf(alias, vex_ZoneAliasGetMemberCount(alias), vex_ZoneAliasListMembers, memberOf)},
    };
}

/** The zonesets in the cache's order, each with its zones and their members; the uber zoneset, which holds
 * every zone and every alias, with its aliases too. */
Json zonesetsOf(ZoningCache& zoning) DC_REQUIRES(access_lock) {
    static constexpr const char* types[] = {"active", "inactive", "uber"};
    Json zonesets = Json::array();
    for (const auto& [key, entry] : zoning._zonesets) {
        void* const zoneset = entry.handle;
        if (zoneset == nullptr) continue;
        Json one{
            {"name", nameOf(vex_ZonesetGetName, zoneset)},
            {"type", types[entry.type]},
            {"zones", listOf(zoneset, vex_ZonesetGetZoneCount(zoneset), vex_ZonesetListZones, zoneOf)},
        };
        if (entry.type == ZONESET_UBER) {
            one["aliases"] =
                listOf(zoneset, vex_ZonesetGetAliasCount(zoneset), vex_ZonesetListAliases, aliasOf);
        }
        zonesets.push_back(one);
    }
    return zonesets;
}

Json fullness(const char* what, int32_t count, int32_t limit) {
    return {{"of", what}, {"count", count}, {"limit", limit}};
}

void printMembers(std::ostream& out, const Json& owner) {
    for (const Json& member : owner["members"]) {
        if (member.is_null()) {
            out << "      (cannot be read)\n";
        } else {
            out << "      " << plainText(member["type"]) << ' ' << plainText(member["member"]) << '\n';
        }
    }
}

void printZoneset(std::ostream& out, const Json& zoneset) {
    if (zoneset["type"] == "uber") {
        out << "  all zones and aliases\n";
    } else {
        out << "  zoneset " << plainText(zoneset["name"]) << " (" << plainText(zoneset["type"]) << ")\n";
    }
    for (const Json& zone : zoneset["zones"]) {
        out << "    zone " << plainText(zone["name"]) << " (" << plainText(zone["type"]) << ")\n";
        printMembers(out, zone);
    }
    for (const Json& alias : zoneset.value("aliases", Json::array())) {
        out << "    alias " << plainText(alias["name"]) << '\n';
        printMembers(out, alias);
    }
}

}  // namespace

Json zoningArea() {
    const CacheReader cache;
    ZoningCache& zoning = cache->_zoningCache;
    const vex_fzs_limits_s& limits = zoning._limits;
    return {
        {"area", "zoning"},
        {"upToDate", upToDate(*cache, "zoning")},
        {"activeZoneset", zoning._activeZonesetName},
        {"size",
         {
             fullness("zonesets", zoning._zonesetCount, limits.max_zonesets),
             fullness("zones", zoning._zoneCount, limits.max_zones),
             fullness("aliases", zoning._aliasCount, limits.max_aliases),
             fullness("members", zoning._memberCount, limits.max_members),
         }},
        {"zonesets", zonesetsOf(zoning)},
    };
}

void printZoning(std::ostream& out, const Json& area) {
    Json head = area;
    head.erase("zonesets");
    printArea(out, head);
    for (const bool uber : {false, true}) {
        for (const Json& zoneset : area["zonesets"]) {
            if ((zoneset["type"] == "uber") == uber) printZoneset(out, zoneset);
        }
    }
}
