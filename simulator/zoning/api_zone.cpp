#include "common/export.h"
#include "simulator/zoning/api.h"

using namespace vexsim;

DC_EXPORT void* vex_ZoneCreate(const char* name) {
    return create<ZoneObject>("vex_ZoneCreate", name);
}

DC_EXPORT void* vex_ZoneCreateCopy(void* zone, const char* name) {
    ApiCall call("vex_ZoneCreateCopy", {textOf(name)});
    const bool good = isZoningName(textOf(name)) || isTemporaryName(textOf(name));
    if (call.refused() || call.nulled() || !good) return call.doneHandle(nullptr);
    return call.doneHandle(call.zoning().copy(zone, textOf(name)));
}

DC_EXPORT int32_t vex_ZoneDestroy(void** zone) {
    return destroy<ZoneObject>("vex_ZoneDestroy", zone);
}

DC_EXPORT int32_t vex_ZoneGetName(void* zone, char* name) {
    return readObjectName<ZoneObject>("vex_ZoneGetName", zone, name);
}

DC_EXPORT int32_t vex_ZoneSetName(void* zone, const char* name) {
    ApiCall call("vex_ZoneSetName", {textOf(name)});
    if (call.refused()) return call.refusal();
    if (!isZoningName(textOf(name))) return call.done(BadName);
    return call.done(call.zoning().rename(zone, textOf(name)));
}

DC_EXPORT int32_t vex_ZoneGetType(void* zone, vex_fzs_zone_type_e* type) {
    ApiCall call("vex_ZoneGetType", {});
    if (call.refused()) return call.refusal();
    const ZoneObject* const object = call.zoning().get<ZoneObject>(zone);
    if (object == nullptr || type == nullptr) return call.done(BadArgument);
    call.about(object->name);
    *type = object->type;
    return call.done(Ok);
}

DC_EXPORT int32_t vex_ZoneSetType(void* zone, vex_fzs_zone_type_e type) {
    ApiCall call("vex_ZoneSetType", {});
    if (call.refused()) return call.refusal();
    ZoneObject* const object = call.zoning().get<ZoneObject>(zone);
    if (object == nullptr || type < VEX_ZT_SOFT || type > VEX_ZT_HARD_ACL) return call.done(BadArgument);
    call.about(object->name);
    object->type = type;
    return call.done(Ok);
}

DC_EXPORT int32_t vex_ZoneGetMemberCount(void* zone) {
    return countMembers<ZoneObject>("vex_ZoneGetMemberCount", zone);
}

DC_EXPORT void* vex_ZoneListMembers(void* zone, int32_t index) {
    return listMembers<ZoneObject>("vex_ZoneListMembers", zone, index);
}

DC_EXPORT void* vex_ZoneFindMember(void* zone, vex_fzs_zonemember_type_e type, const vex_memberid_u* id) {
    return findMember<ZoneObject>("vex_ZoneFindMember", zone, type, id);
}

DC_EXPORT int32_t vex_ZoneAddMember(void* zone, void* member) {
    return addMember<ZoneObject>("vex_ZoneAddMember", zone, member);
}

DC_EXPORT int32_t vex_ZoneDeleteMember(void* zone, void* member) {
    return deleteMember<ZoneObject>("vex_ZoneDeleteMember", zone, member);
}
