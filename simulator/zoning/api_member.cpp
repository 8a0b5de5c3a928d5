#include "common/export.h"
#include "simulator/zoning/api.h"

using namespace vexsim;

DC_EXPORT void* vex_MemberCreate(vex_fzs_zonemember_type_e type, const vex_memberid_u* id) {
    ApiCall call("vex_MemberCreate", {});
    if (call.refused() || call.nulled() || id == nullptr) return call.doneHandle(nullptr);
    const std::optional<MemberId> member = makeMember(type, *id);
    if (!member) return call.doneHandle(nullptr);
    call.about(memberText(*member));
    return call.doneHandle(call.zoning().make(MemberObject{*member}));
}

DC_EXPORT int32_t vex_MemberDestroy(void** member) {
    return destroy<MemberObject>("vex_MemberDestroy", member);
}

DC_EXPORT int32_t vex_MemberGetAttr(void* member, vex_fzs_zonemember_type_e* type, vex_memberid_u* id) {
    ApiCall call("vex_MemberGetAttr", {});
    if (call.refused()) return call.refusal();
    const MemberObject* const object = call.zoning().get<MemberObject>(member);
    if (object == nullptr || type == nullptr || id == nullptr) return call.done(BadArgument);
    *type = object->member.type;
    *id = object->member.id;
    return call.done(Ok);
}

DC_EXPORT int32_t vex_strToMemberIdentifier(const char* text, vex_fzs_zonemember_type_e type,
                                            vex_memberid_u* id) {
    ApiCall call("vex_strToMemberIdentifier", {textOf(text)});
    if (call.refused()) return call.refusal();
    if (id == nullptr) return call.done(BadArgument);
    const std::optional<MemberId> member = parseMember(textOf(text), type);
    if (!member) return call.done(BadMember);
    *id = member->id;
    return call.done(Ok);
}
