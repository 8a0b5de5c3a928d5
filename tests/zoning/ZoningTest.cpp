#include "tests/zoning/ZoningTest.h"

#include <algorithm>
#include <numeric>

const char* const ZoningTest::kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
principal = "1000001122000001"
[zoning]
active = "alpha"
[[zoning.alias]]
name = "a1"
members = ["20:00:00:11:22:00:00:01", "20:00:00:11:22:00:00:02"]
[[zoning.alias]]
name = "a2"
[[zoning.zone]]
name = "z1"
members = ["2000001122000003", "a1"]
[[zoning.zone]]
name = "z2"
type = "HardACL"
members = ["1,2", "010203"]
[[zoning.zone]]
name = "z3"
[[zoning.zoneset]]
name = "alpha"
zones = ["z1", "z2"]
[[zoning.zoneset]]
name = "beta"
zones = ["z1"]
)";

std::string limitsText(const vex_fzs_limits_s& limits) {
    std::string text = "[zoning.limits]\n";
    const auto add = [&](const char* name, int32_t limit) {
        text += name + (" = " + std::to_string(limit)) + '\n';
    };
    add("zonesets", limits.max_zonesets);
    add("zones", limits.max_zones);
    add("members", limits.max_members);
    add("zones_per_zoneset", limits.max_zones_per_zoneset);
    add("members_per_zone", limits.max_members_per_zone);
    add("aliases", limits.max_aliases);
    add("members_per_alias", limits.max_members_per_alias);
    return text;
}

namespace {

std::string nameOf(int32_t (*get)(void*, char*), void* object) {
    char name[VEX_ZONING_NAME_SIZE] = {};
    EXPECT_EQ(get(object, name), 0);
    return name;
}

template <typename Count, typename List>
std::string members(void* container, Count count, List list) {
    std::string line;
    for (int32_t i = 0; i < count(container); ++i) {
        char text[VEX_ZONING_NAME_SIZE];
        ZoneMemberToString(text, list(container, i));
        line += (i == 0 ? " " : ",") + std::string(text);
    }
    return line;
}

Contents contentsOf(void* zoneset) {
    Contents lines;
    for (int32_t i = 0; i < vex_ZonesetGetZoneCount(zoneset); ++i) {
        void* zone = vex_ZonesetListZones(zoneset, i);
        vex_fzs_zone_type_e type{};
        vex_ZoneGetType(zone, &type);
        lines.push_back("zone " + nameOf(vex_ZoneGetName, zone) + ' ' +
                        ZoningCache::vex_smlCnvFromVEXZoneType(type) +
                        members(zone, vex_ZoneGetMemberCount, vex_ZoneListMembers));
    }
    for (int32_t i = 0; i < vex_ZonesetGetAliasCount(zoneset); ++i) {
        void* alias = vex_ZonesetListAliases(zoneset, i);
        lines.push_back("alias " + nameOf(vex_ZoneAliasGetName, alias) +
                        members(alias, vex_ZoneAliasGetMemberCount, vex_ZoneAliasListMembers));
    }
    return lines;
}

}  // namespace

void ZoningTest::start(const std::string& toml) {
    restart();
    CacheTest::start(toml);
}

bool ZoningTest::refresh() {
    cache().updateZoning();
    pass();
    const AccessGuard guard;
    return peer().zoningOK;
}

Zonesets ZoningTest::cached() {
    const AccessGuard guard;
    Zonesets all;
    _ZoneSetTypes type{};
    for (void* zoneset = zoning().getFirstZoneset(type); zoneset != nullptr;
         zoneset = zoning().getNextZoneset(zoneset, type)) {
        const std::string name = nameOf(vex_ZonesetGetName, zoneset);
        all[type == ZONESET_ACTIVE ? kActive : type == ZONESET_UBER ? kUber : name] = contentsOf(zoneset);
    }
    return all;
}

Zonesets ZoningTest::onSwitch() {
    Zonesets all;
    int32_t count = 0;
    char(*names)[VEX_ZONING_NAME_SIZE] = nullptr;
    EXPECT_EQ(vex_fzsGetZonesetList(hSwitch, &count, &names), 0);
    void* zoneset = nullptr;
    for (int32_t i = 0; i < count; ++i) {
        EXPECT_EQ(vex_fzsGetZoneset(hSwitch, names[i], &zoneset), 0);
        all[names[i]] = contentsOf(zoneset);
        vex_ZonesetDestroy(&zoneset);
    }
    EXPECT_EQ(vex_fzsGetAllZonesAndAliases(hSwitch, "all", &zoneset), 0);
    all[kUber] = contentsOf(zoneset);
    vex_ZonesetDestroy(&zoneset);
    return all;
}

vexsim::Live ZoningTest::reachable() {
    vexsim::Live live;
    for (const auto& [key, contents] : cached()) {
        ++live.zonesets;
        for (const std::string& line : contents) {
            const bool zone = line.compare(0, 5, "zone ") == 0;
            ++(zone ? live.zones : live.aliases);
            const auto blanks = static_cast<size_t>(std::count(line.begin(), line.end(), ' '));
            const auto commas = static_cast<size_t>(std::count(line.begin(), line.end(), ','));
            if (blanks == (zone ? 3U : 2U)) live.members += commas + 1;
        }
    }
    return live;
}

void ZoningTest::expectNoLeak() {
    const vexsim::Live want = reachable();
    const vexsim::Live have = sim.live();
    EXPECT_EQ(have.zonesets, want.zonesets);
    EXPECT_EQ(have.zones, want.zones);
    EXPECT_EQ(have.aliases, want.aliases);
    EXPECT_EQ(have.members, want.members);
}

std::vector<std::string> ZoningTest::logWith(const std::string& part) {
    std::vector<std::string> lines = log();
    lines.erase(std::remove_if(lines.begin(), lines.end(),
                               [&](const std::string& line) { return line.find(part) == std::string::npos; }),
                lines.end());
    return lines;
}
