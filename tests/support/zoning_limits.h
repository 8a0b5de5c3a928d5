#pragma once

#include <array>
#include <string>

/** A fabric's limits, as the last line of the section [zoning]: of zonesets, zones, members, zones in a
 * zoneset, members in a zone, aliases, members in an alias. */
inline std::string limitsText(const std::array<int, 7>& most = {20, 20, 400, 20, 20, 20, 20}) {
    static const char* const kNames[] = {
        "zonesets",         "zones",   "members",          "zones_per_zoneset",
        "members_per_zone", "aliases", "members_per_alias"};
    std::string text;
    for (size_t i = 0; i < most.size(); ++i)
        text += std::string(i == 0 ? "limits = {" : ", ") + kNames[i] + " = " + std::to_string(most[i]);
    return text + "}\n";
}
