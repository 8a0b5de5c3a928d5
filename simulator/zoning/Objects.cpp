#include "simulator/zoning/Objects.h"

#include <algorithm>

namespace vexsim {
namespace {

Handle ownerOf(const MemberObject& object) {
    return object.owner;
}
Handle ownerOf(const ContainerObject& object) {
    return object.owner;
}
Handle ownerOf(const ZonesetObject&) {
    return nullptr;
}

}  // namespace

Handle ZoningObjects::nextHandle() {
    // Far from any address and never used again, so that a stale handle is always found out.
    _last += 8;
    return reinterpret_cast<Handle>(_last);  // NOLINT(performance-no-int-to-ptr): nobody follows it
}

template <class Container>
Handle ZoningObjects::makeContainer(const std::string& name, const ZoneContent& content, Handle owner) {
    Container object;
    object.name = name;
    object.type = content.type;
    object.owner = owner;
    const Handle handle = make(std::move(object));
    std::vector<Handle> members;
    for (const MemberId& member : content.members) members.push_back(make(MemberObject{member, handle}));
    get<Container>(handle)->members = std::move(members);
    return handle;
}

Handle ZoningObjects::make(const ZonesetContent& content) {
    ZonesetObject zoneset;
    zoneset.name = content.name;
    const Handle handle = make(ZonesetObject{});
    for (const auto& [name, zone] : content.zones)
        zoneset.zones.add(name, makeContainer<ZoneObject>(name, zone, handle));
    for (const auto& [name, alias] : content.aliases)
        zoneset.aliases.add(name, makeContainer<AliasObject>(name, alias, handle));
    *get<ZonesetObject>(handle) = std::move(zoneset);
    return handle;
}

void ZoningObjects::drop(Handle handle) {
    const auto found = _objects.find(handle);
    if (found == _objects.end()) return;
    const Entry entry = std::move(found->second);
    _objects.erase(found);
    if (const auto* zoneset = std::get_if<ZonesetObject>(&entry.object)) {
        for (const auto& [name, zone] : zoneset->zones) drop(zone);
        for (const auto& [name, alias] : zoneset->aliases) drop(alias);
    } else if (const auto* zone = std::get_if<ZoneObject>(&entry.object)) {
        for (const Handle member : zone->members) drop(member);
    } else if (const auto* alias = std::get_if<AliasObject>(&entry.object)) {
        for (const Handle member : alias->members) drop(member);
    }
}

template <class Object>
Status ZoningObjects::destroy(Handle& handle) {
    const Object* const object = get<Object>(handle);
    if (object == nullptr) return BadArgument;
    if (ownerOf(*object) != nullptr) return misuse();
    drop(handle);
    handle = nullptr;
    return Ok;
}

Handle ZoningObjects::copy(Handle zone, const std::string& name) {
    const ZoneObject* const original = get<ZoneObject>(zone);
    if (original == nullptr) return nullptr;
    ZoneContent content;
    content.type = original->type;
    for (const Handle member : original->members)
        content.members.push_back(get<MemberObject>(member)->member);
    return makeContainer<ZoneObject>(name, content, nullptr);
}

Status ZoningObjects::rename(Handle zone, const std::string& name) {
    ZoneObject* const object = get<ZoneObject>(zone);
    if (object == nullptr) return BadArgument;
    if (object->owner != nullptr && object->name != name &&
        !get<ZonesetObject>(object->owner)->zones.rename(object->name, name))
        return Exists;
    object->name = name;
    return Ok;
}

template <class Container>
Status ZoningObjects::add(Handle zoneset, Handle container) {
    ZonesetObject* const target = get<ZonesetObject>(zoneset);
    Container* const object = get<Container>(container);
    if (target == nullptr || object == nullptr) return BadArgument;
    if (object->owner != nullptr) return misuse();
    if (!(target->*Container::kList).add(object->name, container)) return Exists;
    object->owner = zoneset;
    return Ok;
}

template <class Container>
Status ZoningObjects::remove(Handle zoneset, Handle container) {
    ZonesetObject* const target = get<ZonesetObject>(zoneset);
    const Container* const object = get<Container>(container);
    if (target == nullptr || object == nullptr) return BadArgument;
    if (object->owner != zoneset) return misuse();
    (target->*Container::kList).remove(object->name);
    drop(container);
    return Ok;
}

template <class Container>
Status ZoningObjects::addMember(Handle container, Handle member) {
    Container* const target = get<Container>(container);
    MemberObject* const object = get<MemberObject>(member);
    if (target == nullptr || object == nullptr) return BadArgument;
    if (object->owner != nullptr) return misuse();
    if (findMember<Container>(container, object->member) != nullptr) return Exists;
    const bool nested = std::is_same_v<Container, AliasObject> && object->member.type == VEX_ZMT_ALIAS;
    if (nested) return BadMember;
    target->members.push_back(member);
    object->owner = container;
    return Ok;
}

template <class Container>
Status ZoningObjects::deleteMember(Handle container, Handle member) {
    Container* const target = get<Container>(container);
    const MemberObject* const object = get<MemberObject>(member);
    if (target == nullptr || object == nullptr) return BadArgument;
    if (object->owner != container) return misuse();
    target->members.erase(std::find(target->members.begin(), target->members.end(), member));
    drop(member);
    return Ok;
}

template <class Container>
Handle ZoningObjects::findMember(Handle container, const MemberId& wanted) {
    const Container* const target = get<Container>(container);
    if (target == nullptr) return nullptr;
    for (const Handle member : target->members) {
        if (get<MemberObject>(member)->member == wanted) return member;
    }
    return nullptr;
}

void ZoningObjects::count(Live& live) const {
    for (const auto& [handle, entry] : _objects) {
        if (entry.generation != _generation) continue;
        size_t* const counts[] = {&live.members, &live.zones, &live.aliases, &live.zonesets};
        ++*counts[entry.object.index()];
    }
}

void ZoningObjects::restartCounts() {
    ++_generation;
}

template Status ZoningObjects::destroy<ZonesetObject>(Handle&);
template Status ZoningObjects::destroy<ZoneObject>(Handle&);
template Status ZoningObjects::destroy<AliasObject>(Handle&);
template Status ZoningObjects::destroy<MemberObject>(Handle&);
template Status ZoningObjects::add<ZoneObject>(Handle, Handle);
template Status ZoningObjects::add<AliasObject>(Handle, Handle);
template Status ZoningObjects::remove<ZoneObject>(Handle, Handle);
template Status ZoningObjects::remove<AliasObject>(Handle, Handle);
template Status ZoningObjects::addMember<ZoneObject>(Handle, Handle);
template Status ZoningObjects::addMember<AliasObject>(Handle, Handle);
template Status ZoningObjects::deleteMember<ZoneObject>(Handle, Handle);
template Status ZoningObjects::deleteMember<AliasObject>(Handle, Handle);
template Handle ZoningObjects::findMember<ZoneObject>(Handle, const MemberId&);
template Handle ZoningObjects::findMember<AliasObject>(Handle, const MemberId&);

}  // namespace vexsim
