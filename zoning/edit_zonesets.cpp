#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

namespace {

/** The name of a copy until it gets the zone's own: no zone of a user has it, as names begin with a letter.
 */
constexpr const char* kTemporaryName = "^_-_-_-_TMPZONE_-_-_-_^";

}  // namespace

uint32_t ZoningCache::addZoneToZoneset(char* zoneset, char* zone) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* target = getZoneset(zoneset, type);
    if (target == nullptr) return ZONING_NOT_FOUND;
    if (zonesPerZonesetAtMax(target)) return ZONING_FAILED;
    if (zoneCalls.findIn(target, given(zone)) != nullptr) return ZONING_EXISTS;
    void* original = zoneCalls.findIn(_uberZoneset, given(zone));
    if (original == nullptr) return ZONING_NOT_FOUND;
    void* copy = vex_ZoneCreateCopy(original, kTemporaryName);
    if (copy == nullptr) return ZONING_FAILED;
    if (vex_ZoneSetName(copy, given(zone)) != 0 || !zoneCalls.addTo(target, copy)) {
        vex_ZoneDestroy(&copy);
        return ZONING_FAILED;
    }
    return ZONING_DONE;  // without counting anew: the counts are of the uber zoneset, which did not change
}

uint32_t ZoningCache::removeZoneFromZoneset(char* zoneset, char* zone) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* target = getZoneset(zoneset, type);
    if (target == nullptr) return ZONING_NOT_FOUND;
    void* found = zoneCalls.findIn(target, given(zone));
    if (found == nullptr) return ZONING_NOT_FOUND;
    return vex_ZonesetRemoveZone(target, found) == 0 ? ZONING_DONE : ZONING_FAILED;
}
