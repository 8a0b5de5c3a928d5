#include "host/areas.h"

#include "host/area_text.h"
#include "host/cache_reader.h"
#include "host/request.h"

namespace {

struct CacheArea {
    Json (*read)(DataCache& cache);                      ///< with the access lock held
    void (*print)(std::ostream& out, const Json& area);  ///< for a person
    bool cached = true;
};

/** The areas, in the order of areaNames. */
constexpr CacheArea cacheAreas[] = {
    {switchArea, printArea},      {chassisArea, printArea},
    {bladesArea, printArea},      {portsArea, printArea},
    {fabricArea, printArea},      {accountsArea, printArea},
    {zoningArea, printZoning},    {propertiesArea, printArea, false},
    {lsdbArea, printArea, false},
};
static_assert(std::size(cacheAreas) == std::size(areaNames), "each area has its name");

void show(std::ostream& out, const CacheArea& area, bool json) {
    Json state;
    {
        const CacheReader cache;
        state = area.read(*cache);
    }
    if (json) {
        out << jsonLine(state) << '\n';
    } else {
        area.print(out, state);
    }
}

}  // namespace

void showArea(std::ostream& out, const std::string& name, bool json) {
    for (size_t i = 0; i < std::size(cacheAreas); ++i) {
        if (name == areaNames[i] || name == "all") show(out, cacheAreas[i], json);
    }
}

void showCachedState(std::ostream& out, bool json) {
    for (const CacheArea& area : cacheAreas) {
        if (area.cached) show(out, area, json);
    }
}
