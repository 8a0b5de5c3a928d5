#include "zoning/ZoningCache.h"
#include "zoning/edit_rules.h"
#include "zoning/library_calls.h"

namespace {

/** Removes the zone or alias of that name from a zoneset: ZONING_NOT_FOUND where it holds none. */
uint32_t removeFrom(const ContainerCalls& calls, void* zoneset, const char* name) {
    void* container = calls.findIn(zoneset, name);
    if (container == nullptr) return ZONING_NOT_FOUND;
    return calls.remove(zoneset, container) == 0 ? ZONING_DONE : ZONING_FAILED;
}

uint32_t removeEverywhere(ZoningCache& cache, const ContainerCalls& calls, const EditRule& rule,
                          const char* name) DC_REQUIRES(access_lock) {
    uint32_t result = removeFrom(calls, cache._uberZoneset, name);
    if (result != ZONING_DONE) return result;
    result = repeat(cache._zonesets, rule, [&](void* zoneset) -> uint32_t {
        const uint32_t removed = removeFrom(calls, zoneset, name);
        return removed == ZONING_NOT_FOUND ? ZONING_DONE : removed;
    });
    if (result == ZONING_DONE && rule.recount) cache.updateZoningCounts();
    return result;
}

}  // namespace

uint32_t ZoningCache::removeZone(char* name) {
    const AccessGuard guard;
    return removeEverywhere(*this, zoneCalls, rules::removeZone, given(name));
}

uint32_t ZoningCache::removeZoneAlias(char* name) {
    const AccessGuard guard;
    return removeEverywhere(*this, aliasCalls, rules::removeZoneAlias, given(name));
}

uint32_t ZoningCache::removeZoneset(char* name) {
    const AccessGuard guard;
    _ZoneSetTypes type = ZONESET_INACTIVE;
    void* zoneset = getZoneset(name, type);
    if (zoneset == nullptr) return ZONING_NOT_FOUND;
    // With the type that it was found with: by its own name, a bracketed key would remove another zoneset.
    return delZoneset(zoneset, type) == 0 ? ZONING_DONE : ZONING_FAILED;
}
