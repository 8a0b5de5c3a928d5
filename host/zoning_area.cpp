#include "datacache/CacheReader.h"
#include "datacache/cim_words.h"
#include "host/areas.h"

namespace host {

using namespace datacache;

namespace {

Json membersOf(const std::vector<ZoningMember>& members) {
    Json list = Json::array();
    for (const ZoningMember& member : members) {
        list.push_back({{"type", cimWord(CimValue::MemberType, static_cast<uint32_t>(member.type))},
                        {"member", member.text}});
    }
    return list;
}

Json zonesOf(const std::vector<ZoningZone>& zones) {
    Json list = Json::array();
    for (const ZoningZone& zone : zones) {
        list.push_back({{"name", zone.name},
                        {"type", cimWord(CimValue::ZoneType, static_cast<uint32_t>(zone.type))},
                        {"members", membersOf(zone.members)}});
    }
    return list;
}

Json aliasesOf(const std::vector<ZoningAlias>& aliases) {
    Json list = Json::array();
    for (const ZoningAlias& alias : aliases) {
        list.push_back({{"name", alias.name}, {"members", membersOf(alias.members)}});
    }
    return list;
}

/** The zonesets in the cache's order, each with its own zones. */
Json zonesetsOf(const std::vector<ZoningZoneset>& zonesets) {
    Json list = Json::array();
    for (const ZoningZoneset& zoneset : zonesets) {
        list.push_back({{"name", zoneset.name},
                        {"type", zoneset.active ? "active" : "inactive"},
                        {"zones", zonesOf(zoneset.zones)}});
    }
    return list;
}

Json fullness(const char* what, int32_t count, int32_t limit) {
    return {{"of", what}, {"count", count}, {"limit", limit}};
}

void printMembers(std::ostream& out, const Json& owner) {
    for (const Json& member : owner["members"]) {
        out << "      " << plainText(member["type"]) << ' ' << plainText(member["member"]) << '\n';
    }
}

void printZones(std::ostream& out, const Json& zones) {
    for (const Json& zone : zones) {
        out << "    zone " << plainText(zone["name"]) << " (" << plainText(zone["type"]) << ")\n";
        printMembers(out, zone);
    }
}

}  // namespace

Json zoningArea() {
    const ZoningDatabase zoning = CacheReader().zoning().database();
    const vex_fzs_limits_s& limits = zoning.limits;
    return {
        {"area", "zoning"},
        {"upToDate", upToDate(CacheArea::Zoning)},
        {"loaded", zoning.loaded},
        {"complete", zoning.complete},
        {"activeZoneset", zoning.activeZoneset},
        {"size",
         {
             fullness("zonesets", zoning.size.zonesets, limits.max_zonesets),
             fullness("zones", zoning.size.zones, limits.max_zones),
             fullness("aliases", zoning.size.aliases, limits.max_aliases),
             fullness("members", zoning.size.members, limits.max_members),
         }},
        {"zonesets", zonesetsOf(zoning.zonesets)},
        {"zones", zonesOf(zoning.zones)},
        {"aliases", aliasesOf(zoning.aliases)},
    };
}

void printZoning(std::ostream& out, const Json& area) {
    Json head = area;
    for (const char* tree : {"zonesets", "zones", "aliases"}) head.erase(tree);
    printArea(out, head);
    for (const Json& zoneset : area["zonesets"]) {
        out << "  zoneset " << plainText(zoneset["name"]) << " (" << plainText(zoneset["type"]) << ")\n";
        printZones(out, zoneset["zones"]);
    }
    if (!area["loaded"]) {
        out << "  the configured zoning is not loaded\n";
        return;
    }
    out << "  all zones and aliases\n";
    printZones(out, area["zones"]);
    for (const Json& alias : area["aliases"]) {
        out << "    alias " << plainText(alias["name"]) << '\n';
        printMembers(out, alias);
    }
}

}  // namespace host
