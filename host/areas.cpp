#include "host/areas.h"

#include "host/area_text.h"
#include "host/cache_reader.h"
#include "host/request.h"

namespace {

struct CacheArea {
    Json (*read)(DataCache& cache);                      ///< with the access lock held
    void (*print)(std::ostream& out, const Json& area);  ///< for a person
};

/** The areas, in the order of areaNames. */
constexpr CacheArea cacheAreas[] = {
    {switchArea, printArea},
    {chassisArea, printArea},
};
static_assert(std::size(cacheAreas) == std::size(areaNames), "each area has its name");

}  // namespace

void showArea(std::ostream& out, const std::string& name, bool json) {
    for (size_t i = 0; i < std::size(cacheAreas); ++i) {
        if (name != areaNames[i] && name != "all") continue;
        Json state;
        {
            const CacheReader cache;
            state = cacheAreas[i].read(*cache);
        }
        if (json) {
            out << jsonLine(state) << '\n';
        } else {
            cacheAreas[i].print(out, state);
        }
    }
}
