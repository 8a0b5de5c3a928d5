#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/export.h"
#include "vexlib/vexlib.h"

namespace datacache {

/*
 * The zoning database as plain values, as ZoningCache::database() copies it. The copy is the caller's: it
 * needs no lock and does not change.
 */

/** A member of a zone or of an alias. */
struct ZoningMember {
    vex_fzs_zonemember_type_e type = VEX_ZMT_UNKNOWN;
    /**
     * As formatMemberId() writes it for people: a world wide name as 16 upper-case digits, domain and port as
     * decimal numbers of two digits or more with a colon, an FC address as 6 lower-case digits, or an alias's
     * name. Empty for any other type.
     */
    std::string text;
};

struct ZoningAlias {
    std::string name;
    std::vector<ZoningMember> members;
};

struct ZoningZone {
    std::string name;
    vex_fzs_zone_type_e type{};  ///< 0 where the switch library does not tell
    std::vector<ZoningMember> members;
};

/**
 * A zoneset with the zones and aliases that it holds itself. They are copies: those of the active zoneset are
 * what is in force in the fabric, and differ from the configured ones of the same name until the zoneset is
 * activated anew.
 */
struct ZoningZoneset {
    std::string name;
    bool active = false;  ///< in force in the fabric, else configured on the switch ("inactive")
    std::vector<ZoningZone> zones;
    std::vector<ZoningAlias> aliases;
};

/** How large the database is, as the cache counted it last, or how large it may be; all 0 when never read. */
struct ZoningSize {
    int32_t zonesets = 0;  ///< configured ones
    int32_t zones = 0;
    int32_t aliases = 0;
    /** Members of zones, plus those of each alias once for every zone that names it and once more. */
    int32_t members = 0;
};

struct ZoningDatabase {
    /**
     * Whether the configured part is here and current: false before its first load, after a load of it that
     * failed, and from a request to load it anew until that is done. The zones and aliases are then missing
     * or out of date, and no edit can be committed.
     */
    bool loaded = false;
    /** False when the switch library failed to read an object; that one has empty fields, or is
     * missing with those behind it. */
    bool complete = true;
    /** What the switch called the active zoneset at the last refresh; empty for none. Its contents may be
     * missing all the same, when the switch did not hand them out. */
    std::string activeZoneset;
    std::vector<ZoningZoneset> zonesets;  ///< in the order of the cache's keys
    std::vector<ZoningZone> zones;        ///< every configured zone
    std::vector<ZoningAlias> aliases;     ///< every configured alias
    ZoningSize size;
    /** The fabric's limits; all 0 when they were never read. */
    vex_fzs_limits_s limits{};
    bool limitsRead = false;
};

}  // namespace datacache
