#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulator/Switch.h"
#include "simulator/status.h"
#include "simulator/zoning/MemberId.h"
#include "simulator/zoning/NamedList.h"

namespace vexsim {

/** What a zone and an alias are on the switch; the type is a zone's only. */
struct ZoneContent {
    vex_fzs_zone_type_e type = VEX_ZT_SOFT;
    std::vector<MemberId> members;

    bool has(const MemberId& member) const;
};

/** A zoning database, as the switch keeps it: zonesets name their zones. */
struct ZoningDatabase {
    NamedList<ZoneContent> aliases;
    NamedList<ZoneContent> zones;
    NamedList<std::vector<std::string>> zonesets;

    // Each checks what it is given against the database and changes nothing when it refuses.
    Status createAlias(const std::string& name);
    Status createZone(const std::string& name);
    /** A name that exists is no error: the active zoneset and its configured namesake are both sent. */
    Status createZoneset(const std::string& name);
    Status setZoneType(const std::string& zone, const std::string& type);
    Status addZoneMember(const std::string& zone, const std::string& text);
    /** An alias has no aliases as members. */
    Status addAliasMember(const std::string& alias, const std::string& text);
    /** A zone that the zoneset has already is no error, as above. */
    Status addZone(const std::string& zoneset, const std::string& zone);

    /** Removes a zone from the database and its zonesets; false where there is none. */
    bool removeZone(const std::string& name);

    Status check(const vex_fzs_limits_s& limits) const;
    /** A number that changes with the content. */
    uint32_t checksum() const;
};

/** A zoneset with zones and aliases of its own: what is active stays as it was when it was activated. */
struct ZonesetContent {
    std::string name;
    NamedList<ZoneContent> zones;
    NamedList<ZoneContent> aliases; /**< those that the zones name */

    uint32_t checksum() const;
};

/** The zoneset of that name with what belongs to it; nullopt where there is none. */
std::optional<ZonesetContent> collect(const ZoningDatabase& database, const std::string& zoneset);

/** The switch's zoning, beside its limits. */
struct Zoning {
    ZoningDatabase configured;
    std::optional<ZonesetContent> active;

    std::optional<uint32_t> lock;       /**< the connection that holds the fabric's lock */
    bool lockedElsewhere = false;       /**< another switch of the fabric holds it */
    std::optional<ZoningDatabase> edit; /**< the database that the lock's holder is building */
    bool editFailed = false;            /**< a command of the edit was refused, so it cannot be saved */
};

/** Brings the checksums and the active zoneset's name among the switch's keys up to date. */
void publishZoning(Switch& target);

}  // namespace vexsim
