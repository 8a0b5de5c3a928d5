#include "host/areas.h"

#include <iostream>

#include "host/area_text.h"
#include "host/request.h"
#include "host/staleness.h"

namespace {

struct Area {
    Json (*read)();
    bool live = false;
};

/** The areas, in the order of areaNames. */
constexpr Area allAreas[] = {{switchArea}, {chassisArea},          {bladesArea},
                             {portsArea},  {fabricArea},           {accountsArea},
                             {zoningArea}, {propertiesArea, true}, {lsdbArea, true}};
static_assert(std::size(allAreas) == std::size(areaNames), "each area has its name");

}  // namespace

bool isLive(const std::string& area) {
    for (size_t i = 0; i < std::size(allAreas); ++i) {
        if (area == areaNames[i]) return allAreas[i].live;
    }
    return false;
}

std::vector<Json> readAreas(const std::string& names) {
    std::vector<Json> areas;
    for (size_t i = 0; i < std::size(allAreas); ++i) {
        const bool wanted =
            names == areaNames[i] || names == "all" || (names == "cached" && !allAreas[i].live);
        if (wanted) areas.push_back(allAreas[i].read());
    }
    return areas;
}

bool printAreas(std::ostream& out, const std::vector<Json>& areas, bool json) {
    bool good = true;
    for (const Json& area : areas) {
        const std::string name = area["area"];
        if (json) {
            out << jsonLine(area) << '\n';
        } else {
            (name == "zoning" ? printZoning : printArea)(out, area);
        }
        if (area.value("upToDate", true)) continue;
        good = false;
        reportStale(name);
    }
    out.flush();
    return good;
}

void reportStale(const std::string& area) {
    std::cerr << "datacache-host: " << staleReason(area) << std::endl;
}
