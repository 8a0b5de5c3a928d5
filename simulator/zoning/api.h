#pragma once

#include <string>

#include "simulator/Core.h"
#include "simulator/zoning/Objects.h"
#include "simulator/zoning/names.h"

/** What the zoning functions of the library have in common. */
namespace vexsim {

/** Fills a name's field, VEX_ZONING_NAME_SIZE bytes; without its terminator where a fault wants that. */
void writeName(const std::string& name, bool unterminated, char* field);

/** Answers a call that reads a name; faults on the name as a key change what the caller gets. */
int32_t giveName(ApiCall& call, const std::string& name, char* field);

/** Calls that zones and aliases have alike, written once. */
template <class Object>
int32_t readObjectName(const char* function, void* handle, char* name) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    const Object* const object = call.zoning().get<Object>(handle);
    if (object == nullptr) return call.done(BadArgument);
    call.about(object->name);
    return giveName(call, object->name, name);
}

template <class Object>
void* create(const char* function, const char* name) {
    ApiCall call(function, {textOf(name)});
    if (call.refused() || call.nulled() || !isZoningName(textOf(name))) return call.doneHandle(nullptr);
    Object object;
    object.name = textOf(name);
    return call.doneHandle(call.zoning().make(std::move(object)));
}

template <class Object>
int32_t destroy(const char* function, void** handle) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    return call.done(call.zoning().destroy<Object>(handle));
}

template <class Container>
int32_t countContainers(const char* function, void* zoneset) {
    ApiCall call(function, {});
    if (call.refused()) return call.refusal();
    ZonesetObject* const object = call.zoning().get<ZonesetObject>(zoneset);
    if (object != nullptr) call.about(object->name);
    return call.done(object == nullptr ? 0 : static_cast<int32_t>((object->*Container::list).size()));
}

template <class Container>
void* listContainers(const char* function, void* zoneset, int32_t index) {
    ApiCall call(function, {});
    if (call.refused() || call.nulled()) return call.doneHandle(nullptr);
    ZonesetObject* const object = call.zoning().get<ZonesetObject>(zoneset);
    const Handle* const found = object == nullptr ? nullptr : (object->*Container::list).at(index);
    return call.doneHandle(found == nullptr ? nullptr : *found);
}

template <class Container>
void* findContainer(const char* function, void* zoneset, const char* name) {
    ApiCall call(function, {textOf(name)});
    if (call.refused() || call.nulled()) return call.doneHandle(nullptr);
    ZonesetObject* const object = call.zoning().get<ZonesetObject>(zoneset);
    const Handle* const found = object == nullptr ? nullptr : (object->*Container::list).find(call.keys()[0]);
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
    if (call.refused() || call.nulled() || id == nullptr) return call.doneHandle(nullptr);
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

}  // namespace vexsim
