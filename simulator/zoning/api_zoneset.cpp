#include "common/export.h"
#include "simulator/zoning/api.h"

using namespace vexsim;

DC_EXPORT void* vex_ZonesetCreate(const char* name) {
    return create<ZonesetObject>("vex_ZonesetCreate", name);
}

DC_EXPORT int32_t vex_ZonesetDestroy(void** zoneset) {
    return destroy<ZonesetObject>("vex_ZonesetDestroy", zoneset);
}

DC_EXPORT int32_t vex_ZonesetTestName(const char* name) {
    ApiCall call("vex_ZonesetTestName", {textOf(name)});
    if (call.refused()) return call.refusal();
    return call.done(isZoningName(textOf(name)) ? Ok : BadName);
}

DC_EXPORT int32_t vex_ZonesetGetName(void* zoneset, char* name) {
    return readObjectName<ZonesetObject>("vex_ZonesetGetName", zoneset, name);
}

DC_EXPORT int32_t vex_ZonesetGetZoneCount(void* zoneset) {
    return countContainers<ZoneObject>("vex_ZonesetGetZoneCount", zoneset);
}

DC_EXPORT void* vex_ZonesetListZones(void* zoneset, int32_t index) {
    return listContainers<ZoneObject>("vex_ZonesetListZones", zoneset, index);
}

DC_EXPORT void* vex_ZonesetFindZone(void* zoneset, const char* name) {
    return findContainer<ZoneObject>("vex_ZonesetFindZone", zoneset, name);
}

DC_EXPORT int32_t vex_ZonesetAddZone(void* zoneset, void* zone) {
    return addContainer<ZoneObject>("vex_ZonesetAddZone", zoneset, zone);
}

DC_EXPORT int32_t vex_ZonesetRemoveZone(void* zoneset, void* zone) {
    return removeContainer<ZoneObject>("vex_ZonesetRemoveZone", zoneset, zone);
}

DC_EXPORT int32_t vex_ZonesetGetAliasCount(void* zoneset) {
    return countContainers<AliasObject>("vex_ZonesetGetAliasCount", zoneset);
}

DC_EXPORT void* vex_ZonesetListAliases(void* zoneset, int32_t index) {
    return listContainers<AliasObject>("vex_ZonesetListAliases", zoneset, index);
}

DC_EXPORT void* vex_ZonesetFindAlias(void* zoneset, const char* name) {
    return findContainer<AliasObject>("vex_ZonesetFindAlias", zoneset, name);
}

DC_EXPORT int32_t vex_ZonesetAddAlias(void* zoneset, void* alias) {
    return addContainer<AliasObject>("vex_ZonesetAddAlias", zoneset, alias);
}

DC_EXPORT int32_t vex_ZonesetRemoveAlias(void* zoneset, void* alias) {
    return removeContainer<AliasObject>("vex_ZonesetRemoveAlias", zoneset, alias);
}
