#include <new>

#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

using namespace datacache;

namespace {

/** The key that a zoneset has in the map: null when it is a name that cannot be read, or for no known type.
 * Takes no memory for the two that are no names, as the last holder of a cache may have none. */
const char* keyOf(void* handle, _ZoneSetTypes type, std::string& name) {
    switch (type) {
        case ZONESET_ACTIVE:
            return kActiveZonesetKey;
        case ZONESET_INACTIVE:
            return readName(vex_ZonesetGetName, handle, name) ? name.c_str() : nullptr;
        case ZONESET_UBER:
            return kUberZonesetKey;
    }
    return nullptr;
}

void destroy(ZoneSet& entry) {
    if (entry.handle != nullptr) vex_ZonesetDestroy(&entry.handle);
}

/** Removes the entry of that key, if there is one. */
void drop(datacache::ZoneSetMap& zonesets, std::string_view key) {
    const auto entry = zonesets.find(key);
    if (entry == zonesets.end()) return;
    destroy(entry->second);
    zonesets.erase(entry);
}

}  // namespace

ZoningCache::ZoningCache() = default;

ZoningCache::~ZoningCache() {
    clearZoningCache();
}

int ZoningCache::addZoneset(void* handle, _ZoneSetTypes type) {
    const AccessGuard guard;
    std::string name;
    const char* const key = keyOf(handle, type, name);
    if (key == nullptr) return -1;
    const bool added =
        _zonesets.emplace(key, ZoneSet{handle, type}).second;  // nothing changes without memory
    // Required: even when it is refused, the last one added is the current one.
    if (type == ZONESET_UBER) _uberZoneset = handle;
    if (type == ZONESET_ACTIVE) _activeZoneset = handle;
    if (!added) return -1;
    updateZoningCounts();
    return 0;
}

bool ZoningCache::_addOrDestroy(void* zoneset, _ZoneSetTypes type) {
    try {
        if (addZoneset(zoneset, type) == 0) return true;
    } catch (const std::bad_alloc&) {
        vex_ZonesetDestroy(&zoneset);
        throw;
    }
    vex_ZonesetDestroy(&zoneset);
    return false;
}

int ZoningCache::delZoneset(void* handle, _ZoneSetTypes type) {
    const AccessGuard guard;
    std::string name;
    const char* const key = keyOf(handle, type, name);
    if (key == nullptr) return -1;
    if (type == ZONESET_UBER) _uberZoneset = nullptr;
    if (type == ZONESET_ACTIVE) _activeZoneset = nullptr;
    drop(_zonesets, key);
    updateZoningCounts();
    return 0;
}

void ZoningCache::_dropEntry(_ZoneSetTypes type) {
    drop(_zonesets, type == ZONESET_ACTIVE ? kActiveZonesetKey : kUberZonesetKey);
}

void* ZoningCache::getZoneset(char* name, _ZoneSetTypes& type) {
    const AccessGuard guard;
    const auto entry = _zonesets.find(given(name));
    if (entry == _zonesets.end()) return nullptr;
    type = entry->second.type;
    return entry->second.handle;
}

void* ZoningCache::getFirstZoneset(_ZoneSetTypes& type) {
    const AccessGuard guard;
    const auto entry = _zonesets.begin();
    if (entry == _zonesets.end()) return nullptr;
    type = entry->second.type;
    return entry->second.handle;
}

void* ZoningCache::getNextZoneset(void* handle, _ZoneSetTypes& type) {
    const AccessGuard guard;
    auto entry = _zonesets.begin();
    while (entry != _zonesets.end() && entry->second.handle != handle) ++entry;
    if (entry == _zonesets.end() || ++entry == _zonesets.end()) return nullptr;
    type = entry->second.type;
    return entry->second.handle;
}

void* ZoningCache::getActiveZoneset() {
    const AccessGuard guard;
    return _activeZoneset;
}

void* ZoningCache::getUberZoneset() {
    const AccessGuard guard;
    return _uberZoneset;
}

bool ZoningCache::isActiveZoneset(void* handle) {
    const AccessGuard guard;
    return handle == _activeZoneset;
}

bool ZoningCache::isUberZoneset(void* handle) {
    const AccessGuard guard;
    return handle == _uberZoneset;
}

void ZoningCache::clearActive() {
    const AccessGuard guard;
    if (_activeZoneset != nullptr) delZoneset(_activeZoneset, ZONESET_ACTIVE);
    _activeZoneset = nullptr;
}

void ZoningCache::clearInactive() {
    const AccessGuard guard;
    for (auto entry = _zonesets.begin(); entry != _zonesets.end();) {
        if (entry->second.type != ZONESET_INACTIVE) {
            ++entry;
            continue;
        }
        destroy(entry->second);
        entry = _zonesets.erase(entry);
    }
    updateZoningCounts();
}

void ZoningCache::clearUber() {
    const AccessGuard guard;
    if (_uberZoneset != nullptr) delZoneset(_uberZoneset, ZONESET_UBER);
    _uberZoneset = nullptr;
}

void ZoningCache::clearZoningCache() {
    const AccessGuard guard;
    clearActive();
    clearInactive();
    clearUber();
}
