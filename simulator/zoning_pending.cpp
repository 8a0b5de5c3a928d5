// Zoning is not simulated yet: every function fails as it does on a switch that refuses.
#include "common/export.h"
#include "simulator/Core.h"

using namespace vexsim;

DC_EXPORT int32_t vex_fzsGetActiveZonesetName(uint32_t, char*) {
    return ApiCall("vex_fzsGetActiveZonesetName", {}).done(Refused);
}
DC_EXPORT int32_t vex_fzsGetActiveZoneset(uint32_t, void**) {
    return ApiCall("vex_fzsGetActiveZoneset", {}).done(Refused);
}
DC_EXPORT int32_t vex_fzsGetZoneset(uint32_t, const char*, void**) {
    return ApiCall("vex_fzsGetZoneset", {}).done(Refused);
}
DC_EXPORT int32_t vex_fzsGetAllZonesAndAliases(uint32_t, const char*, void**) {
    return ApiCall("vex_fzsGetAllZonesAndAliases", {}).done(Refused);
}
DC_EXPORT int32_t vex_fzsGetZonesetList(uint32_t, int32_t*, char (**)[VEX_ZONING_NAME_SIZE]) {
    return ApiCall("vex_fzsGetZonesetList", {}).done(Refused);
}
DC_EXPORT void* vex_ZonesetCreate(const char*) {
    return ApiCall("vex_ZonesetCreate", {}).doneHandle(nullptr);
}
DC_EXPORT int32_t vex_ZonesetDestroy(void**) {
    return ApiCall("vex_ZonesetDestroy", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZonesetTestName(const char*) {
    return ApiCall("vex_ZonesetTestName", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZonesetGetName(void*, char*) {
    return ApiCall("vex_ZonesetGetName", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZonesetGetZoneCount(void*) {
    return ApiCall("vex_ZonesetGetZoneCount", {}).done(Ok);
}
DC_EXPORT void* vex_ZonesetListZones(void*, int32_t) {
    return ApiCall("vex_ZonesetListZones", {}).doneHandle(nullptr);
}
DC_EXPORT void* vex_ZonesetFindZone(void*, const char*) {
    return ApiCall("vex_ZonesetFindZone", {}).doneHandle(nullptr);
}
DC_EXPORT int32_t vex_ZonesetAddZone(void*, void*) {
    return ApiCall("vex_ZonesetAddZone", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZonesetRemoveZone(void*, void*) {
    return ApiCall("vex_ZonesetRemoveZone", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZonesetGetAliasCount(void*) {
    return ApiCall("vex_ZonesetGetAliasCount", {}).done(Ok);
}
DC_EXPORT void* vex_ZonesetListAliases(void*, int32_t) {
    return ApiCall("vex_ZonesetListAliases", {}).doneHandle(nullptr);
}
DC_EXPORT void* vex_ZonesetFindAlias(void*, const char*) {
    return ApiCall("vex_ZonesetFindAlias", {}).doneHandle(nullptr);
}
DC_EXPORT int32_t vex_ZonesetAddAlias(void*, void*) {
    return ApiCall("vex_ZonesetAddAlias", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZonesetRemoveAlias(void*, void*) {
    return ApiCall("vex_ZonesetRemoveAlias", {}).done(Refused);
}
DC_EXPORT void* vex_ZoneCreate(const char*) {
    return ApiCall("vex_ZoneCreate", {}).doneHandle(nullptr);
}
DC_EXPORT void* vex_ZoneCreateCopy(void*, const char*) {
    return ApiCall("vex_ZoneCreateCopy", {}).doneHandle(nullptr);
}
DC_EXPORT int32_t vex_ZoneDestroy(void**) {
    return ApiCall("vex_ZoneDestroy", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneGetName(void*, char*) {
    return ApiCall("vex_ZoneGetName", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneSetName(void*, const char*) {
    return ApiCall("vex_ZoneSetName", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneGetType(void*, vex_fzs_zone_type_e*) {
    return ApiCall("vex_ZoneGetType", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneSetType(void*, vex_fzs_zone_type_e) {
    return ApiCall("vex_ZoneSetType", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneGetMemberCount(void*) {
    return ApiCall("vex_ZoneGetMemberCount", {}).done(Ok);
}
DC_EXPORT void* vex_ZoneListMembers(void*, int32_t) {
    return ApiCall("vex_ZoneListMembers", {}).doneHandle(nullptr);
}
DC_EXPORT void* vex_ZoneFindMember(void*, vex_fzs_zonemember_type_e, const vex_memberid_u*) {
    return ApiCall("vex_ZoneFindMember", {}).doneHandle(nullptr);
}
DC_EXPORT int32_t vex_ZoneAddMember(void*, void*) {
    return ApiCall("vex_ZoneAddMember", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneDeleteMember(void*, void*) {
    return ApiCall("vex_ZoneDeleteMember", {}).done(Refused);
}
DC_EXPORT void* vex_ZoneAliasCreate(const char*) {
    return ApiCall("vex_ZoneAliasCreate", {}).doneHandle(nullptr);
}
DC_EXPORT int32_t vex_ZoneAliasDestroy(void**) {
    return ApiCall("vex_ZoneAliasDestroy", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneAliasGetName(void*, char*) {
    return ApiCall("vex_ZoneAliasGetName", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneAliasGetMemberCount(void*) {
    return ApiCall("vex_ZoneAliasGetMemberCount", {}).done(Ok);
}
DC_EXPORT void* vex_ZoneAliasListMembers(void*, int32_t) {
    return ApiCall("vex_ZoneAliasListMembers", {}).doneHandle(nullptr);
}
DC_EXPORT void* vex_ZoneAliasFindMember(void*, vex_fzs_zonemember_type_e, const vex_memberid_u*) {
    return ApiCall("vex_ZoneAliasFindMember", {}).doneHandle(nullptr);
}
DC_EXPORT int32_t vex_ZoneAliasAddMember(void*, void*) {
    return ApiCall("vex_ZoneAliasAddMember", {}).done(Refused);
}
DC_EXPORT int32_t vex_ZoneAliasDeleteMember(void*, void*) {
    return ApiCall("vex_ZoneAliasDeleteMember", {}).done(Refused);
}
DC_EXPORT void* vex_MemberCreate(vex_fzs_zonemember_type_e, const vex_memberid_u*) {
    return ApiCall("vex_MemberCreate", {}).doneHandle(nullptr);
}
DC_EXPORT int32_t vex_MemberDestroy(void**) {
    return ApiCall("vex_MemberDestroy", {}).done(Refused);
}
DC_EXPORT int32_t vex_MemberGetAttr(void*, vex_fzs_zonemember_type_e*, vex_memberid_u*) {
    return ApiCall("vex_MemberGetAttr", {}).done(Refused);
}
DC_EXPORT int32_t vex_strToMemberIdentifier(const char*, vex_fzs_zonemember_type_e, vex_memberid_u*) {
    return ApiCall("vex_strToMemberIdentifier", {}).done(Refused);
}
