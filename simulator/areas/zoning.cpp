#include "simulator/areas/Area.h"

namespace vexsim {
namespace {

/** The fabric's limits, all seven or none. */
void loadLimits(TableReader& table, Switch& target) {
    constexpr int64_t most = INT32_MAX;
    const auto read = [&](const char* field) { return static_cast<int32_t>(table.integer(field, 0, most)); };
    vex_fzs_limits_s limits{};
    limits.max_zonesets = read("zonesets");
    limits.max_zones = read("zones");
    limits.max_members = read("members");
    limits.max_zones_per_zoneset = read("zones_per_zoneset");
    limits.max_members_per_zone = read("members_per_zone");
    limits.max_aliases = read("aliases");
    limits.max_members_per_alias = read("members_per_alias");
    target.zoning_limits = limits;
}

void loadZoning(TableReader& table, Switch& target) {
    if (std::optional<TableReader> limits = table.table("limits")) {
        loadLimits(*limits, target);
        limits->finish();
    }
}

}  // namespace

const Area& zoningArea() {
    static const Area area = [] {
        Area made;
        made.name = "zoning";
        made.sections = {{"zoning", false, loadZoning}};
        return made;
    }();
    return area;
}

}  // namespace vexsim
