#include "common/NORV_Except.h"
#include "common/cim_log.h"
#include "zoning/CommandGroup.h"
#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

namespace {

[[noreturn]] void inconsistent(int line) {
    throw NORV_Except("ZoningCache", "replaceZoningDB", line, EXCEPT_CRITICAL, "Internal consistency error");
}

/** A count that the library gave; throws NORV_Except where it failed: sending less would erase the rest. */
int32_t counted(int32_t count, int line) {
    if (count < 0) inconsistent(line);
    return count;
}

/** An object's name; throws NORV_Except for a null object and for one that does not tell its name. */
std::string nameOf(int32_t (*getName)(void*, char*), void* object, int line) {
    std::string name;
    if (!readName(getName, object, name)) inconsistent(line);
    return name;
}

void addMemberCommands(CommandGroup& group, const ContainerCalls& calls, void* container,
                       const std::string& prefix) {
    const int32_t count = counted(calls.memberCount(container), __LINE__);
    for (int32_t i = 0; i < count; ++i) {
        char text[256] = {};
        ZoneMemberToString(text, calls.listMembers(container, i));
        group.add(prefix + ".AddZoneMember." + text);
    }
}

void addAliasCommands(CommandGroup& group, void* uber) {
    const int32_t count = counted(vex_ZonesetGetAliasCount(uber), __LINE__);
    for (int32_t i = 0; i < count; ++i) {
        void* alias = vex_ZonesetListAliases(uber, i);
        const std::string prefix = "Cmd.Zoning.Alias." + nameOf(vex_ZoneAliasGetName, alias, __LINE__);
        group.add(prefix + ".Create");
        addMemberCommands(group, aliasCalls, alias, prefix);
    }
}

void addZoneCommands(CommandGroup& group, void* uber) {
    const int32_t count = counted(vex_ZonesetGetZoneCount(uber), __LINE__);
    for (int32_t i = 0; i < count; ++i) {
        void* zone = vex_ZonesetListZones(uber, i);
        const std::string prefix = "Cmd.Zoning.Zone." + nameOf(vex_ZoneGetName, zone, __LINE__);
        vex_fzs_zone_type_e type{};
        if (vex_ZoneGetType(zone, &type) != 0) inconsistent(__LINE__);
        group.add(prefix + ".Create");
        group.add(prefix + ".ZoneType." + ZoningCache::vex_smlCnvFromVEXZoneType(type));
        addMemberCommands(group, zoneCalls, zone, prefix);
    }
}

void addZonesetCommands(CommandGroup& group, void* zoneset) {
    const std::string prefix = "Cmd.Zoning.ZoneSet." + nameOf(vex_ZonesetGetName, zoneset, __LINE__);
    group.add(prefix + ".Create");
    const int32_t count = counted(vex_ZonesetGetZoneCount(zoneset), __LINE__);
    for (int32_t i = 0; i < count; ++i) {
        void* zone = vex_ZonesetListZones(zoneset, i);
        group.add(prefix + ".AddZone." + nameOf(vex_ZoneGetName, zone, __LINE__));
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
        // Without the uber zoneset nothing configured is loaded, and the commit would clear the switch's
        // zoning.
        if (_uberZoneset == nullptr) inconsistent(__LINE__);
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
    } catch (const NORV_Except& error) {
        logException(error);
        return 0;
    }
    if (!group.ok()) return 0;
    // Required: after a success the lock still counts as held, though the group released it.
    if (!group.send()) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Zoning session failed\n");
        _lockHeld = false;
    }
    return 1;
}
