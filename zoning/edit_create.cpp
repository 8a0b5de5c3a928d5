#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

namespace {

/** Adds a new zone or alias to the uber zoneset, which then owns it; destroys it where that fails. */
bool addOrDestroy(const ContainerCalls& calls, void* uber, void* container) {
    if (calls.addTo(uber, container)) return true;
    calls.destroy(&container);
    return false;
}

}  // namespace

uint32_t ZoningCache::createZoneAlias(char* name) {
    const AccessGuard guard;
    if (aliasLimitAtMax()) return ZONING_FAILED;
    if (aliasCalls.findIn(_uberZoneset, given(name)) != nullptr) return ZONING_EXISTS;
    void* alias = vex_ZoneAliasCreate(given(name));
    if (alias == nullptr) return ZONING_FAILED;  // not ZONING_INVALID, as for a zone: meant
    if (!addOrDestroy(aliasCalls, _uberZoneset, alias)) return ZONING_FAILED;
    updateZoningCounts();
    return ZONING_DONE;
}

uint32_t ZoningCache::createZone(char* name, vex_fzs_zone_type_e type) {
    const AccessGuard guard;
    if (zoneLimitAtMax()) return ZONING_FAILED;
    if (zoneCalls.findIn(_uberZoneset, given(name)) != nullptr) return ZONING_EXISTS;
    void* zone = vex_ZoneCreate(given(name));
    if (zone == nullptr) return ZONING_INVALID;
    if (vex_ZoneSetType(zone, type) != 0) {
        vex_ZoneDestroy(&zone);
        return ZONING_FAILED;
    }
    if (!addOrDestroy(zoneCalls, _uberZoneset, zone)) return ZONING_FAILED;
    updateZoningCounts();
    return ZONING_DONE;
}

uint32_t ZoningCache::createZoneset(char* name) {
    const AccessGuard guard;
    if (zonesetLimitAtMax()) return ZONING_FAILED;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    if (getZoneset(name, type) != nullptr) return ZONING_EXISTS;
    if (vex_ZonesetTestName(given(name)) != 0) return ZONING_INVALID;
    void* zoneset = vex_ZonesetCreate(given(name));
    if (zoneset == nullptr) return ZONING_FAILED;
    if (addZoneset(zoneset, ZONESET_INACTIVE) != 0) {
        vex_ZonesetDestroy(&zoneset);
        return ZONING_FAILED;
    }
    return ZONING_DONE;
}
