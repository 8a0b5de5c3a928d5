#include "zoning/ZoningCache.h"
#include "zoning/library_calls.h"

using namespace datacache;

namespace {

/** Copies objects of the switch library; notes when one cannot be read. */
class Reader {
  public:
    bool complete() const { return _complete; }

    std::string name(int32_t (*getName)(void*, char*), void* object) {
        std::string text;
        note(readName(getName, object, text));
        return text;
    }

    std::vector<ZoningZone> zones(void* zoneset) {
        return all<ZoningZone>(kZoneCalls.count, kZoneCalls.list, zoneset, [this](void* zone) {
            ZoningZone copy;
            copy.name = name(vex_ZoneGetName, zone);
            note(vex_ZoneGetType(zone, &copy.type) == 0);
            copy.members = members(kZoneCalls, zone);
            return copy;
        });
    }

    std::vector<ZoningAlias> aliases(void* zoneset) {
        return all<ZoningAlias>(kAliasCalls.count, kAliasCalls.list, zoneset, [this](void* alias) {
            return ZoningAlias{name(vex_ZoneAliasGetName, alias), members(kAliasCalls, alias)};
        });
    }

  private:
    void note(bool read) { _complete = _complete && read; }

    /** What the library lists for 0 up to the count, as far as it hands out objects. */
    template <typename Copy, typename Count, typename List, typename Read>
    std::vector<Copy> all(const Count& count, const List& list, void* owner, Read read) {
        std::vector<Copy> copies;
        const int32_t wanted = count(owner);
        note(wanted >= 0);
        for (int32_t i = 0; i < wanted; ++i) {
            void* object = list(owner, i);
            note(object != nullptr);
            if (object == nullptr) break;  // a count from outside may be anything
            copies.push_back(read(object));
        }
        return copies;
    }

    std::vector<ZoningMember> members(const ContainerCalls& calls, void* container) {
        return all<ZoningMember>(calls.memberCount, calls.listMembers, container, [this](void* member) {
            ZoningMember copy;
            vex_memberid_u id{};
            const bool read = vex_MemberGetAttr(member, &copy.type, &id) == 0;
            note(read);
            if (!read || copy.type == VEX_ZMT_UNKNOWN || copy.type == VEX_ZMT_NODENAME) return copy;
            int type = copy.type;
            char text[VEX_ZONING_NAME_SIZE] = "";
            formatMemberId(&type, id.bytes, text);
            copy.text = text;
            return copy;
        });
    }

    bool _complete = true;
};

}  // namespace

ZoningDatabase ZoningCache::database() const {
    const AccessGuard guard;
    Reader reader;
    ZoningDatabase copy;
    copy.loaded = _isLoaded();
    copy.activeZoneset = _activeZonesetName;
    for (const auto& [key, entry] : _zonesets) {
        if (entry.type == ZONESET_UBER || entry.handle == nullptr) continue;
        copy.zonesets.push_back({reader.name(vex_ZonesetGetName, entry.handle), entry.type == ZONESET_ACTIVE,
                                 reader.zones(entry.handle), reader.aliases(entry.handle)});
    }
    if (_uberZoneset != nullptr) {
        copy.zones = reader.zones(_uberZoneset);
        copy.aliases = reader.aliases(_uberZoneset);
    }
    copy.complete = reader.complete();
    copy.size = {_zonesetCount, _zoneCount, _aliasCount, _memberCount};
    copy.limits = _limits;
    copy.limitsRead = _limitsRead();
    return copy;
}
