#include "common/cim_log.h"
#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

using namespace datacache;

namespace {

void dumpMembers(const ContainerCalls& calls, void* container) {
    const int32_t count = entriesOf(calls.memberCount(container));
    for (int32_t i = 0; i < count; ++i) {
        char text[VEX_ZONING_NAME_SIZE] = {};
        ZoneMemberToString(text, calls.listMembers(container, i));
        cim_log(CIM_LOG_TRACE, "INFO:%s:%s:[%d]     Member: %s\n", "ZoningCache", "dump", __LINE__, text);
    }
}

void dumpZones(void* zoneset) {
    const int32_t count = entriesOf(vex_ZonesetGetZoneCount(zoneset));
    for (int32_t i = 0; i < count; ++i) {
        void* zone = vex_ZonesetListZones(zoneset, i);
        std::string name;
        if (zone == nullptr) {
            cim_log(CIM_LOG_TRACE, "INFO:%s:%s:[%d] Zone : Bad entry\n", "ZoningCache", "dump", __LINE__);
        } else if (!readName(vex_ZoneGetName, zone, name)) {
            cim_log(CIM_LOG_TRACE, "INFO:%s:%s:[%d] Zone : Can't get name\n", "ZoningCache", "dump",
                    __LINE__);
        } else {
            cim_log(CIM_LOG_TRACE, "INFO:%s:%s:[%d]   Zone: %s\n", "ZoningCache", "dump", __LINE__,
                    name.c_str());
            dumpMembers(kZoneCalls, zone);
        }
    }
}

/** Required: prints the members of all aliases and not the names of the aliases. */
void dumpAliases(void* uber) {
    const int32_t count = entriesOf(kAliasCalls.countIn(uber));
    for (int32_t i = 0; i < count; ++i) {
        void* alias = vex_ZonesetListAliases(uber, i);
        std::string name;
        if (alias == nullptr) {
            cim_log(CIM_LOG_TRACE, "INFO:%s:%s:[%d]    Alias : Bad entry\n", "ZoningCache", "dump", __LINE__);
        } else if (!readName(vex_ZoneAliasGetName, alias, name)) {
            cim_log(CIM_LOG_TRACE, "INFO:%s:%s:[%d]    Alias : Can't get name\n", "ZoningCache", "dump",
                    __LINE__);
        } else {
            dumpMembers(kAliasCalls, alias);
        }
    }
}

const char* word(_ZoneSetTypes type) {
    if (type == ZONESET_ACTIVE) return "active";
    return type == ZONESET_UBER ? "uber" : "inactive";
}

}  // namespace

void ZoningCache::dump() {
    const AccessGuard guard;
    for (const auto& [key, entry] : _zonesets) {
        std::string name;
        if (!readName(vex_ZonesetGetName, entry.handle, name)) {
            cim_log(CIM_LOG_TRACE, "INFO:%s:%s:[%d] Zoneset: Bad entry\n", "ZoningCache", "dump", __LINE__);
            continue;
        }
        cim_log(CIM_LOG_TRACE, "INFO:%s:%s:[%d] Zoneset: %s (%s)\n", "ZoningCache", "dump", __LINE__,
                name.c_str(), word(entry.type));
        dumpZones(entry.handle);
        dumpAliases(_uberZoneset);  // Required: the same list again under every zoneset.
    }
}
