#include "common/NORV_Except.h"
#include "common/cim_log.h"
#include "zoning/CommandGroup.h"
#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

using namespace datacache;

namespace {

/** What stops a commit, with the call of the switch library that failed. */
struct Inconsistent : NORV_Except {
    Inconsistent(int atLine, const char* failedCall)
        : NORV_Except("ZoningCache", "replaceZoningDB", atLine, EXCEPT_CRITICAL,
                      "Internal consistency error"),
          call(failedCall) {}

    const char* call;
};

/** Counts what an object holds. A count that fails, or a wild one, is inconsistent: to send less would erase
 * the rest. */
int32_t counted(const LibraryCall<int32_t, void*>& count, void* object, int line) {
    const int32_t result = count(object);
    if (result < 0 || result > kMostEntries) throw Inconsistent(line, count.name);
    return result;
}

void* listed(const LibraryCall<void*, void*, int32_t>& list, void* owner, int32_t index, int line) {
    void* object = list(owner, index);
    if (object == nullptr) throw Inconsistent(line, list.name);
    return object;
}

std::string nameOf(const LibraryCall<int32_t, void*, char*>& getName, void* object, int line) {
    std::string name;
    if (!readName(getName.function, object, name)) throw Inconsistent(line, getName.name);
    return name;
}

void addMemberCommands(CommandGroup& group, const ContainerCalls& calls, void* container,
                       const std::string& prefix) {
    const int32_t count = counted(calls.memberCount, container, __LINE__);
    for (int32_t i = 0; i < count; ++i) {
        char text[256] = {};
        ZoneMemberToString(text, calls.listMembers(container, i));
        group.add(prefix + ".AddZoneMember." + text);
    }
}

void addAliasCommands(CommandGroup& group, void* uber) {
    const int32_t count = counted(kAliasCalls.count, uber, __LINE__);
    for (int32_t i = 0; i < count; ++i) {
        void* alias = listed(kAliasCalls.list, uber, i, __LINE__);
        const std::string prefix = "Cmd.Zoning.Alias." + nameOf(kAliasCalls.getName, alias, __LINE__);
        group.add(prefix + ".Create");
        addMemberCommands(group, kAliasCalls, alias, prefix);
    }
}

void addZoneCommands(CommandGroup& group, void* uber) {
    const int32_t count = counted(kZoneCalls.count, uber, __LINE__);
    for (int32_t i = 0; i < count; ++i) {
        void* zone = listed(kZoneCalls.list, uber, i, __LINE__);
        const std::string prefix = "Cmd.Zoning.Zone." + nameOf(kZoneCalls.getName, zone, __LINE__);
        vex_fzs_zone_type_e type{};
        if (vex_ZoneGetType(zone, &type) != 0) throw Inconsistent(__LINE__, "vex_ZoneGetType");
        group.add(prefix + ".Create");
        group.add(prefix + ".ZoneType." + ZoningCache::vex_smlCnvFromVEXZoneType(type));
        addMemberCommands(group, kZoneCalls, zone, prefix);
    }
}

void addZonesetCommands(CommandGroup& group, void* zoneset) {
    const std::string prefix =
        "Cmd.Zoning.ZoneSet." + nameOf({vex_ZonesetGetName, "vex_ZonesetGetName"}, zoneset, __LINE__);
    group.add(prefix + ".Create");
    const int32_t count = counted(kZoneCalls.count, zoneset, __LINE__);
    for (int32_t i = 0; i < count; ++i) {
        void* zone = listed(kZoneCalls.list, zoneset, i, __LINE__);
        group.add(prefix + ".AddZone." + nameOf(kZoneCalls.getName, zone, __LINE__));
    }
}

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

int ZoningCache::replaceZoningDB() {
    const AccessGuard guard;
    CommandGroup group(30);
    if (!group.ok()) return 0;
    try {
        // Without it nothing configured is loaded, and the commit would clear the switch's whole zoning.
        if (_uberZoneset == nullptr) throw Inconsistent(__LINE__, "vex_fzsGetAllZonesAndAliases");
        group.add("Cmd.Zoning.EditConfig");
        group.add("Cmd.Zoning.ClearConfig");
        addAliasCommands(group, _uberZoneset);
        addZoneCommands(group, _uberZoneset);
        for (const auto& [key, entry] : _zonesets) {
            if (entry.type != ZONESET_UBER) addZonesetCommands(group, entry.handle);
        }
        group.add("Cmd.Zoning.SaveConfig");
        group.add("Cmd.Zoning.FabricUnlock.77");
        group.add("Cmd.Switch.RelAdmin");
    } catch (const Inconsistent& error) {
        logException(error);
        _failure = failureOf(error.call);
        return 0;
    }
    if (!group.ok()) return 0;
    ++_lockChanges;
    // Required: after a success the lock still counts as held, though the group released it.
    if (!group.send()) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Zoning session failed\n");
        _failure = group.failure();
        _lockHeld = false;
    }
    return 1;
}
