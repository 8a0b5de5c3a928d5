#include "common/export.h"
#include "simulator/zoning/api.h"

using namespace vexsim;

DC_EXPORT void* vex_ZoneAliasCreate(const char* name) {
    return create<AliasObject>("vex_ZoneAliasCreate", name);
}

DC_EXPORT int32_t vex_ZoneAliasDestroy(void** alias) {
    return destroy<AliasObject>("vex_ZoneAliasDestroy", alias);
}

DC_EXPORT int32_t vex_ZoneAliasGetName(void* alias, char* name) {
    return readObjectName<AliasObject>("vex_ZoneAliasGetName", alias, name);
}

DC_EXPORT int32_t vex_ZoneAliasGetMemberCount(void* alias) {
    return countMembers<AliasObject>("vex_ZoneAliasGetMemberCount", alias);
}

DC_EXPORT void* vex_ZoneAliasListMembers(void* alias, int32_t index) {
    return listMembers<AliasObject>("vex_ZoneAliasListMembers", alias, index);
}

DC_EXPORT void* vex_ZoneAliasFindMember(void* alias, vex_fzs_zonemember_type_e type,
                                        const vex_memberid_u* id) {
    return findMember<AliasObject>("vex_ZoneAliasFindMember", alias, type, id);
}

DC_EXPORT int32_t vex_ZoneAliasAddMember(void* alias, void* member) {
    return addMember<AliasObject>("vex_ZoneAliasAddMember", alias, member);
}

DC_EXPORT int32_t vex_ZoneAliasDeleteMember(void* alias, void* member) {
    return deleteMember<AliasObject>("vex_ZoneAliasDeleteMember", alias, member);
}
