#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include "simulator/Simulator.h"
#include "simulator/zoning/Database.h"

namespace vexsim {

/** What a caller holds instead of an object: a number that no other object ever gets, never an address. */
using Handle = void*;

struct MemberObject {
    MemberId member;
    Handle owner = nullptr;
};

struct ZonesetObject {
    std::string name;
    NamedList<Handle> zones;
    NamedList<Handle> aliases;
};

/** A zone or an alias. */
struct ContainerObject {
    std::string name;
    vex_fzs_zone_type_e type = VEX_ZT_SOFT; /**< a zone's only */
    std::vector<Handle> members;
    Handle owner = nullptr;
};

struct ZoneObject : ContainerObject {
    static constexpr auto kList = &ZonesetObject::zones; /**< where a zoneset keeps its kind */
};

struct AliasObject : ContainerObject {
    static constexpr auto kList = &ZonesetObject::aliases;
};

/**
 * The zoning objects that callers of the library hold, and who holds what.
 *
 * A container owns what was added to it. Handles are checked at every use: one that is null, unknown,
 * destroyed or of another kind, an object that is added twice, and a contained one that is destroyed count as
 * misuse and change nothing. Every object counts as alive until it or what contains it is destroyed.
 */
class ZoningObjects {
  public:
    /** Misuse is counted in `misuse`. */
    explicit ZoningObjects(size_t& misuse) : _misuse(misuse) {}

    /** The object behind a handle; null, and a misuse, for a handle that is none of its kind. */
    template <class Object>
    Object* get(Handle handle) {
        const auto found = _objects.find(handle);
        Object* object = found == _objects.end() ? nullptr : std::get_if<Object>(&found->second.object);
        if (object == nullptr) ++_misuse;
        return object;
    }
    template <class Object>
    Handle make(Object object) {
        const Handle handle = nextHandle();
        _objects.emplace(handle, Entry{_generation, std::move(object)});
        return handle;
    }

    /** Makes a zoneset with all it holds. */
    Handle make(const ZonesetContent& content);
    /** Destroys an object that nobody contains, with all that it contains, and nulls the handle. */
    template <class Object>
    Status destroy(Handle& handle);

    /** A copy of a zone with members of its own. */
    Handle copy(Handle zone, const std::string& name);
    Status rename(Handle zone, const std::string& name);

    template <class Container>
    Status add(Handle zoneset, Handle container);
    template <class Container>
    Status remove(Handle zoneset, Handle container);
    template <class Container>
    Status addMember(Handle container, Handle member);
    template <class Container>
    Status deleteMember(Handle container, Handle member);
    template <class Container>
    Handle findMember(Handle container, const MemberId& wanted);

    /** Adds the objects that are alive. */
    void count(Live& live) const;
    /** Counts from 0 again; objects made before can still be used and destroyed. */
    void restartCounts();

  private:
    struct Entry {
        uint64_t generation;
        std::variant<MemberObject, ZoneObject, AliasObject, ZonesetObject> object;
    };

    Handle nextHandle();
    template <class Container>
    Handle makeContainer(const std::string& name, const ZoneContent& content, Handle owner);
    void drop(Handle handle);
    Status misuse() {
        ++_misuse;
        return BadArgument;
    }

    size_t& _misuse;
    std::unordered_map<Handle, Entry> _objects;
    uintptr_t _last = 0;
    uint64_t _generation = 0;
};

}  // namespace vexsim
