#pragma once

#include <map>
#include <string>

#include "zoning/ZoningCache.h"

/**
 * In which entries of the map an edit is repeated after the uber zoneset, and whether it counts the database
 * anew when it is done. That the edits differ in both is meant: this table is the one place that says how.
 */
struct EditRule {
    bool active;
    bool inactive;
    bool uber;
    bool recount;

    bool covers(_ZoneSetTypes type) const {
        return type == ZONESET_ACTIVE ? active : type == ZONESET_INACTIVE ? inactive : uber;
    }
};

namespace rules {
// clang-format off
//                                                    active inactive uber   recount
inline constexpr EditRule removeZone                = {false, true,   false, true};
inline constexpr EditRule removeZoneAlias           = {false, true,   true,  true};
inline constexpr EditRule addMemberToZone           = {false, true,   false, true};
inline constexpr EditRule removeMemberFromZone      = {false, true,   false, true};
inline constexpr EditRule addMemberToZoneAlias      = {false, true,   false, false};
inline constexpr EditRule removeMemberFromZoneAlias = {true,  false,  false, false};
inline constexpr EditRule removeMember              = {false, true,   true,  false};
// clang-format on
}  // namespace rules

/**
 * Repeats `edit`, a function of a zoneset handle that gives a ZoningResult, in the entries that the rule
 * covers, in the order of their keys, and stops at the first failure, which it returns.
 */
template <typename Edit>
uint32_t repeat(const std::map<std::string, ZoneSet>& zonesets, const EditRule& rule, Edit edit) {
    for (const auto& [key, entry] : zonesets) {
        if (!rule.covers(entry.type) || entry.handle == nullptr) continue;
        const uint32_t result = edit(entry.handle);
        if (result != ZONING_DONE) return result;
    }
    return ZONING_DONE;
}
