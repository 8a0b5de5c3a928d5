#pragma once

#include <map>
#include <optional>

#include "tests/support/lines.h"

inline std::string text(unsigned long long value) {
    return std::to_string(value);
}

inline std::string listed(const char* field, const Lines& all) {
    return std::string(field) + (all.empty() ? " = []\n" : " = ['" + joined(all, "', '") + "']\n");
}

/** A switch's configured zoning, or its active zoneset, as steps and edits made it. */
struct Zones {
    struct Zone {
        unsigned type = 1;
        Lines members;
    };
    std::map<std::string, Lines> aliases, zonesets;
    std::map<std::string, Zone> zones;

    /** What a zoneset holds: its zones, and the aliases that they name. */
    Zones part(const std::string& zoneset) const {
        Zones some;
        some.zonesets[zoneset] = zonesets.at(zoneset);
        for (const std::string& name : zonesets.at(zoneset)) some.zones[name] = zones.at(name);
        for (const auto& [name, zone] : some.zones) {
            for (const std::string& member : zone.members)
                if (aliases.count(member) != 0) some.aliases[member] = aliases.at(member);
        }
        return some;
    }
    void tell(const std::string& owner, Lines& lines) const {
        for (const auto& [name, zone] : zones)
            lines.push_back(line("zone", owner, name, zone.type, joined(zone.members, ",")));
        for (const auto& [name, members] : aliases)
            lines.push_back(line("alias", owner, name, joined(members, ",")));
    }
    /** Of what is configured, with all zonesets and the active one. */
    void tellAll(const std::optional<Zones>& active, Lines& lines) const {
        tell("-", lines);
        for (const auto& [zoneset, ignored] : zonesets) {
            lines.push_back("zoneset " + zoneset + " configured");
            part(zoneset).tell(zoneset, lines);
        }
        if (!active) return;
        const std::string name = active->zonesets.begin()->first;
        lines.push_back("zoneset " + name + " active");
        active->tell(name, lines);
    }
    /** The step by which another switch commits it. */
    std::string replaceStep() const {
        std::string steps = "do = 'zoning_replace'\n";
        const auto types = Lines{"", "Soft", "HardVPF", "HardACL"};
        for (const auto& [alias, members] : aliases)
            steps += "[[step.alias]]\nname = '" + alias + "'\n" + listed("members", members);
        for (const auto& [zone, is] : zones)
            steps += "[[step.zone]]\nname = '" + zone + "'\ntype = '" + types[is.type] + "'\n" +
                     listed("members", is.members);
        for (const auto& [set, names] : zonesets)
            steps += "[[step.zoneset]]\nname = '" + set + "'\n" + listed("zones", names);
        return steps;
    }
    size_t size() const {
        size_t members = 0;
        for (const auto& [name, zone] : zones) {
            members += zone.members.size();
            for (const std::string& member : zone.members)
                if (aliases.count(member) != 0) members += aliases.at(member).size();
        }
        for (const auto& [name, all] : aliases) members += all.size();
        return members;
    }
};
