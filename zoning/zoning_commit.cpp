#include <new>
#include <utility>

#include "common/NORV_Except.h"
#include "common/cim_log.h"
#include "zoning/CommandGroup.h"
#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

using namespace datacache;

namespace {

/** What stops a commit, with the call of the switch library that failed and what it was about. */
struct Inconsistent : NORV_Except {
    Inconsistent(int atLine, const char* failedCall, ZoningObject object = ZoningObject::None,
                 std::string_view name = {})
        : NORV_Except("ZoningCache", "replaceZoningDB", atLine, EXCEPT_CRITICAL,
                      "Internal consistency error"),
          failure(failureAbout(object, name, failedCall)) {}

    ZoningFailure failure;
};

/** The commands for one database. What cannot be read stops them: to send less would erase the rest. */
class Commands {
  public:
    /** With `whole`, what would be sent otherwise than it is stops them too. */
    Commands(CommandGroup& group, bool whole) : _group(group), _whole(whole) {}

    void addAliases(void* uber) {
        const int32_t count = counted(kAliasCalls.count, uber, __LINE__);
        for (int32_t i = 0; i < count; ++i) {
            void* alias = listed(kAliasCalls.list, uber, i, __LINE__);
            const std::string prefix =
                named("Cmd.Zoning.Alias.", ZoningObject::Alias, kAliasCalls.getName, alias);
            add(prefix + ".Create");
            addMembers(kAliasCalls, alias, prefix);
        }
    }

    void addZones(void* uber) {
        const int32_t count = counted(kZoneCalls.count, uber, __LINE__);
        for (int32_t i = 0; i < count; ++i) {
            void* zone = listed(kZoneCalls.list, uber, i, __LINE__);
            const std::string prefix =
                named("Cmd.Zoning.Zone.", ZoningObject::Zone, kZoneCalls.getName, zone);
            vex_fzs_zone_type_e type{};
            if (vex_ZoneGetType(zone, &type) != 0) throw inconsistent(__LINE__, "vex_ZoneGetType");
            if (_whole && (type < VEX_ZT_SOFT || type > VEX_ZT_HARD_ACL))
                throw inconsistent(__LINE__, "vex_ZoneGetType");
            add(prefix + ".Create");
            add(prefix + ".ZoneType." + ZoningCache::vex_smlCnvFromVEXZoneType(type));
            addMembers(kZoneCalls, zone, prefix);
        }
    }

    void addZoneset(void* zoneset) {
        const std::string prefix = named("Cmd.Zoning.ZoneSet.", ZoningObject::Zoneset,
                                         {vex_ZonesetGetName, "vex_ZonesetGetName"}, zoneset);
        add(prefix + ".Create");
        const int32_t count = counted(kZoneCalls.count, zoneset, __LINE__);
        for (int32_t i = 0; i < count; ++i) {
            void* zone = listed(kZoneCalls.list, zoneset, i, __LINE__);
            add(prefix + ".AddZone." + nameOf(kZoneCalls.getName, zone, __LINE__));
        }
    }

    void add(const std::string& command) {
        if (_whole && command.size() >= VEX_SML_KEY_SIZE)
            throw inconsistent(__LINE__, "vex_smlSetBatch");  // it would be cut
        _group.add(command);
    }

  private:
    Inconsistent inconsistent(int line, const char* call) const { return {line, call, _object, _name}; }

    /** A count that fails, or a wild one, is inconsistent. */
    int32_t counted(const LibraryCall<int32_t, void*>& count, void* object, int line) const {
        const int32_t result = count(object);
        if (result < 0 || result > kMostEntries) throw inconsistent(line, count.name);
        return result;
    }

    void* listed(const LibraryCall<void*, void*, int32_t>& list, void* owner, int32_t index, int line) const {
        void* object = list(owner, index);
        if (object == nullptr) throw inconsistent(line, list.name);
        return object;
    }

    std::string nameOf(const LibraryCall<int32_t, void*, char*>& getName, void* object, int line) const {
        std::string name;
        if (!readName(getName.function, object, name)) throw inconsistent(line, getName.name);
        return name;
    }

    /** Begins with an object, which is then what an inconsistency is about; returns how its commands begin.
     */
    std::string named(const char* begin, ZoningObject kind, const LibraryCall<int32_t, void*, char*>& getName,
                      void* object) {
        _object = ZoningObject::None;
        _name.clear();
        _name = nameOf(getName, object, __LINE__);
        _object = kind;
        return begin + _name;
    }

    void addMembers(const ContainerCalls& calls, void* container, const std::string& prefix) {
        const int32_t count = counted(calls.memberCount, container, __LINE__);
        for (int32_t i = 0; i < count; ++i) {
            char text[256] = {};
            const bool known = ZoneMemberToString(text, calls.listMembers(container, i)) == 1;
            if (_whole && !known) throw inconsistent(__LINE__, "vex_MemberGetAttr");
            add(prefix + ".AddZoneMember." + text);
        }
    }

    CommandGroup& _group;
    const bool _whole;
    ZoningObject _object = ZoningObject::None;
    std::string _name;
};

void logException(const NORV_Except& error) {
    if (error.severity != EXCEPT_CRITICAL) {
        cim_log(CIM_LOG_TRACE, "Exception[INFO]:%s:%s[%d] %s\n", error.file, error.function, error.line,
                error.message);
    } else {
        cim_log(CIM_LOG_CRITICAL, "Exception[CRIT]:%s:%s[%d] %s\n", error.file, error.function, error.line,
                error.message);
    }
}

}  // namespace

ZoningReport ZoningCache::_addCommands(CommandGroup& group, bool whole) const {
    try {
        Commands commands(group, whole);
        // Without it nothing configured is loaded, and the commit would clear the switch's whole zoning.
        if (_uberZoneset == nullptr) throw Inconsistent(__LINE__, "vex_fzsGetAllZonesAndAliases");
        group.add("Cmd.Zoning.EditConfig");
        group.add("Cmd.Zoning.ClearConfig");
        commands.addAliases(_uberZoneset);
        commands.addZones(_uberZoneset);
        for (const auto& [key, entry] : _zonesets) {
            if (entry.type != ZONESET_UBER) commands.addZoneset(entry.handle);
        }
        group.add("Cmd.Zoning.SaveConfig");
        group.add("Cmd.Zoning.FabricUnlock.77");
        group.add("Cmd.Switch.RelAdmin");
    } catch (Inconsistent& error) {
        logException(error);
        return {ZoningStatus::Inconsistent, 0, std::move(error.failure)};
    } catch (const std::bad_alloc&) {
        return {ZoningStatus::OutOfMemory};
    }
    return {group.ok() ? ZoningStatus::Done : ZoningStatus::OutOfMemory};
}

int ZoningCache::replaceZoningDB() {
    const AccessGuard guard;
    CommandGroup group(30);
    if (!group.ok() || !_addCommands(group, false).done()) return 0;
    _session = nullptr;
    // Required: after a success the lock still counts as held, though the group released it.
    if (!group.send()) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Zoning session failed\n");
        _lockHeld = false;
    }
    return 1;
}
