#include "host/staleness.h"

namespace {

constexpr struct {
    const char* name;
    bool DataCache::*good;
    bool DataCache::*marked;
} areas[] = {
    {"switch", &DataCache::_switchOK, &DataCache::_switchUpdate},
    {"chassis", &DataCache::_chassisOK, &DataCache::_chassisUpdate},
    {"blades", &DataCache::_bladesOK, &DataCache::_bladesUpdate},
    {"ports", &DataCache::_portsOK, &DataCache::_portsUpdate},
    {"fabric", &DataCache::_fabricOK, &DataCache::_fabricUpdate},
    {"zoning", &DataCache::_zoningOK, &DataCache::_zoningUpdate},
};

}  // namespace

bool upToDate(const DataCache& cache, const std::string& area) {
    for (const auto& row : areas) {
        if (area == row.name) return cache.*row.good && !(cache.*row.marked);
    }
    return true;
}

std::vector<std::string> staleAreas(const DataCache& cache) {
    std::vector<std::string> names;
    for (const auto& row : areas) {
        if (!(cache.*row.good)) names.emplace_back(row.name);
    }
    return names;
}

std::string staleReason(const std::string& area) {
    return area + " is not up to date (see /tmp/cim.out)";
}

std::string listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}
