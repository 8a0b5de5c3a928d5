#include "host/area_text.h"
#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/staleness.h"
#include "host/zoning_view.h"

namespace {

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
