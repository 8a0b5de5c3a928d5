/*
 * The zoning functions of the library: the fabric's zoning as it is handed out (fzs), and zonesets, zones,
 * aliases and members as objects of the caller's.
 *
 * What the kinds have alike is written once, as a template over the kind.
 */
#include <algorithm>
#include <cstring>

#include "common/export.h"
#include "simulator/Core.h"
#include "simulator/zoning/Objects.h"
#include "simulator/zoning/names.h"

using namespace vexsim;

namespace {

constexpr size_t kNameSize = VEX_ZONING_NAME_SIZE;

/** Fills a name's field; faults on the name as a key change what the caller gets. */
void writeName(ApiCall& call, const std::string& name, char* field) {
    const Effect effect = call.faultless() ? Effect() : call.onKey(name);
    const std::string given = effect.value.value_or(name);
    std::memset(field, effect.unterminated ? '#' : '\0', kNameSize);
    std::copy_n(given.data(), std::min(given.size(), effect.unterminated ? kNameSize : kNameSize - 1), field);
}

int32_t giveName(ApiCall& call, const std::string& name, char* field) {
    writeName(call, name, field);
    return call.done(Ok);
}

int32_t giveZoneset(ApiCall& call, const std::optional<ZonesetContent>& content, Status otherwise,
                    void** zoneset) {
    if (!content) return call.done(otherwise);
    *zoneset = call.nulled() ? nullptr : call.zoning().make(*content);
    return call.done(Ok);
}

// ---- Objects of any kind ----

template <class Object>
void* create(const char* function, const char* name) {
    ApiCall call(function, {name});
    if (call.misused(name == nullptr) || call.nulled() || !isZoningName(name))
        return call.doneHandle(nullptr);
    Object object;
    object.name = name;
    return call.doneHandle(call.zoning().make(std::move(object)));
}

template <class Object>
int32_t destroy(const char* function, void** handle) {
    ApiCall call(function, {});
    if (call.misused(handle == nullptr)) return call.refusal();
    return call.done(call.zoning().destroy<Object>(*handle));
}

template <class Object>
int32_t readName(const char* function, void* handle, char* name) {
    ApiCall call(function, {});
    if (call.misused(name == nullptr)) return call.refusal();
    const Object* const object = call.zoning().get<Object>(handle);
    if (object == nullptr) return call.done(BadArgument);
    call.about(object->name);
    return giveName(call, object->name, name);
}

// ---- Zones and aliases of a zoneset ----

template <class Container>
int32_t countContainers(const char* function, void* zoneset) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    ZonesetObject* const object = call.zoning().get<ZonesetObject>(zoneset);
    if (object != nullptr) call.about(object->name);
    return call.done(object == nullptr ? 0 : static_cast<int32_t>((object->*Container::kList).size()));
}

template <class Container>
void* listContainers(const char* function, void* zoneset, int32_t index) {
    ApiCall call(function, {});
    if (call.refused() || call.nulled()) return call.doneHandle(nullptr);
    ZonesetObject* const object = call.zoning().get<ZonesetObject>(zoneset);
    const Handle* const found = object == nullptr ? nullptr : (object->*Container::kList).at(index);
    return call.doneHandle(found == nullptr ? nullptr : *found);
}

template <class Container>
void* findContainer(const char* function, void* zoneset, const char* name) {
    ApiCall call(function, {name});
    if (call.misused(name == nullptr) || call.nulled()) return call.doneHandle(nullptr);
    ZonesetObject* const object = call.zoning().get<ZonesetObject>(zoneset);
    const Handle* const found = object == nullptr ? nullptr : (object->*Container::kList).find(name);
    if (object != nullptr) call.about(object->name);
    return call.doneHandle(found == nullptr ? nullptr : *found);
}

template <class Container>
int32_t addContainer(const char* function, void* zoneset, void* container) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    return call.done(call.zoning().add<Container>(zoneset, container));
}

template <class Container>
int32_t removeContainer(const char* function, void* zoneset, void* container) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    return call.done(call.zoning().remove<Container>(zoneset, container));
}

// ---- Members of a zone or an alias ----

template <class Container>
int32_t countMembers(const char* function, void* container) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    const Container* const object = call.zoning().get<Container>(container);
    if (object != nullptr) call.about(object->name);
    return call.done(object == nullptr ? 0 : static_cast<int32_t>(object->members.size()));
}

template <class Container>
void* listMembers(const char* function, void* container, int32_t index) {
    ApiCall call(function, {});
    if (call.refused() || call.nulled()) return call.doneHandle(nullptr);
    const Container* const object = call.zoning().get<Container>(container);
    const auto place = static_cast<size_t>(index);
    if (object == nullptr || index < 0 || place >= object->members.size()) return call.doneHandle(nullptr);
    return call.doneHandle(object->members[place]);
}

template <class Container>
void* findMember(const char* function, void* container, vex_fzs_zonemember_type_e type,
                 const vex_memberid_u* id) {
    ApiCall call(function, {});
    if (call.misused(id == nullptr) || call.nulled()) return call.doneHandle(nullptr);
    const std::optional<MemberId> wanted = makeMember(type, *id);
    if (!wanted) return call.doneHandle(nullptr);
    call.about(memberText(*wanted));
    return call.doneHandle(call.zoning().findMember<Container>(container, *wanted));
}

template <class Container>
int32_t addMember(const char* function, void* container, void* member) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    return call.done(call.zoning().addMember<Container>(container, member));
}

template <class Container>
int32_t deleteMember(const char* function, void* container, void* member) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    return call.done(call.zoning().deleteMember<Container>(container, member));
}

}  // namespace

// ---- The fabric's zoning ----

DC_EXPORT int32_t vex_fzsGetZoningLimitations(uint32_t handle, vex_fzs_limits_s* limits) {
    ApiCall call("vex_fzsGetZoningLimitations", {}, handle);
    if (call.misused(limits == nullptr)) return call.refusal();
    const std::optional<vex_fzs_limits_s>& known = call.device().zoningLimits;
    if (!known) return call.done(UnknownKey);
    *limits = *known;
    return call.done(Ok);
}

DC_EXPORT int32_t vex_fzsGetActiveZonesetName(uint32_t handle, char* name) {
    ApiCall call("vex_fzsGetActiveZonesetName", {}, handle);
    if (call.misused(name == nullptr)) return call.refusal();
    const std::optional<ZonesetContent>& active = call.device().part<Zoning>().active;
    return active ? giveName(call, active->name, name) : call.done(Absent);
}

DC_EXPORT int32_t vex_fzsGetActiveZoneset(uint32_t handle, void** zoneset) {
    ApiCall call("vex_fzsGetActiveZoneset", {}, handle);
    if (call.misused(notEmpty(zoneset))) return call.refusal();
    return giveZoneset(call, call.device().part<Zoning>().active, Absent, zoneset);
}

DC_EXPORT int32_t vex_fzsGetZoneset(uint32_t handle, const char* name, void** zoneset) {
    ApiCall call("vex_fzsGetZoneset", {name}, handle);
    if (call.misused(name == nullptr || notEmpty(zoneset))) return call.refusal();
    return giveZoneset(call, collect(call.device().part<Zoning>().configured, name), NoSuchName, zoneset);
}

DC_EXPORT int32_t vex_fzsGetAllZonesAndAliases(uint32_t handle, const char* name, void** zoneset) {
    ApiCall call("vex_fzsGetAllZonesAndAliases", {name}, handle);
    if (call.misused(name == nullptr || notEmpty(zoneset))) return call.refusal();
    const ZoningDatabase& database = call.device().part<Zoning>().configured;
    return giveZoneset(call, ZonesetContent{name, database.zones, database.aliases}, Ok, zoneset);
}

DC_EXPORT int32_t vex_fzsGetZonesetList(uint32_t handle, int32_t* count,
                                        char (**names)[VEX_ZONING_NAME_SIZE]) {
    ApiCall call("vex_fzsGetZonesetList", {}, handle);
    if (call.misused(count == nullptr || names == nullptr)) return call.refusal();
    using Field = char[kNameSize];
    // The library's until the next call. Never freed at exit, when threads may still call.
    static auto& list = *new std::unique_ptr<Field[]>;
    const auto& zonesets = call.device().part<Zoning>().configured.zonesets;
    list = std::make_unique<Field[]>(zonesets.size());
    size_t next = 0;
    for (const auto& [name, zones] : zonesets) writeName(call, name, list[next++]);
    *count = static_cast<int32_t>(zonesets.size());
    *names = call.nulled() ? nullptr : list.get();
    return call.done(Ok);
}

// ---- Zonesets ----

DC_EXPORT void* vex_ZonesetCreate(const char* name) {
    return create<ZonesetObject>("vex_ZonesetCreate", name);
}

DC_EXPORT int32_t vex_ZonesetDestroy(void** zoneset) {
    return destroy<ZonesetObject>("vex_ZonesetDestroy", zoneset);
}

DC_EXPORT int32_t vex_ZonesetTestName(const char* name) {
    ApiCall call("vex_ZonesetTestName", {name});
    if (call.misused(name == nullptr)) return call.refusal();
    return call.done(isZoningName(name) ? Ok : BadName);
}

DC_EXPORT int32_t vex_ZonesetGetName(void* zoneset, char* name) {
    return readName<ZonesetObject>("vex_ZonesetGetName", zoneset, name);
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

// ---- Zones ----

DC_EXPORT void* vex_ZoneCreate(const char* name) {
    return create<ZoneObject>("vex_ZoneCreate", name);
}

DC_EXPORT void* vex_ZoneCreateCopy(void* zone, const char* name) {
    ApiCall call("vex_ZoneCreateCopy", {name});
    if (call.misused(name == nullptr) || call.nulled()) return call.doneHandle(nullptr);
    if (!isZoningName(name) && !isTemporaryName(name)) return call.doneHandle(nullptr);
    return call.doneHandle(call.zoning().copy(zone, name));
}

DC_EXPORT int32_t vex_ZoneDestroy(void** zone) {
    return destroy<ZoneObject>("vex_ZoneDestroy", zone);
}

DC_EXPORT int32_t vex_ZoneGetName(void* zone, char* name) {
    return readName<ZoneObject>("vex_ZoneGetName", zone, name);
}

DC_EXPORT int32_t vex_ZoneSetName(void* zone, const char* name) {
    ApiCall call("vex_ZoneSetName", {name});
    if (call.misused(name == nullptr)) return call.refusal();
    return call.done(isZoningName(name) ? call.zoning().rename(zone, name) : BadName);
}

DC_EXPORT int32_t vex_ZoneGetType(void* zone, vex_fzs_zone_type_e* type) {
    ApiCall call("vex_ZoneGetType", {});
    if (call.misused(type == nullptr)) return call.refusal();
    const ZoneObject* const object = call.zoning().get<ZoneObject>(zone);
    if (object == nullptr) return call.done(BadArgument);
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

// ---- Aliases ----

DC_EXPORT void* vex_ZoneAliasCreate(const char* name) {
    return create<AliasObject>("vex_ZoneAliasCreate", name);
}

DC_EXPORT int32_t vex_ZoneAliasDestroy(void** alias) {
    return destroy<AliasObject>("vex_ZoneAliasDestroy", alias);
}

DC_EXPORT int32_t vex_ZoneAliasGetName(void* alias, char* name) {
    return readName<AliasObject>("vex_ZoneAliasGetName", alias, name);
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

// ---- Members ----

DC_EXPORT void* vex_MemberCreate(vex_fzs_zonemember_type_e type, const vex_memberid_u* id) {
    ApiCall call("vex_MemberCreate", {});
    if (call.misused(id == nullptr) || call.nulled()) return call.doneHandle(nullptr);
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
    if (call.misused(type == nullptr || id == nullptr)) return call.refusal();
    const MemberObject* const object = call.zoning().get<MemberObject>(member);
    if (object == nullptr) return call.done(BadArgument);
    *type = object->member.type;
    *id = object->member.id;
    return call.done(Ok);
}

DC_EXPORT int32_t vex_strToMemberIdentifier(const char* text, vex_fzs_zonemember_type_e type,
                                            vex_memberid_u* id) {
    ApiCall call("vex_strToMemberIdentifier", {text});
    if (call.misused(text == nullptr || id == nullptr)) return call.refusal();
    const std::optional<MemberId> member = parseMember(text, type);
    if (!member) return call.done(BadMember);
    *id = member->id;
    return call.done(Ok);
}
