#include <utility>

#include "common/cim_log.h"
#include "zoning/ZoningEdits.h"
#include "zoning/library_calls.h"

namespace datacache {

/**
 * In which entries of the map an edit is repeated after the uber zoneset, and whether it counts the database
 * anew when it is done. Required: the edits differ in both; this table is the one place that says how.
 */
struct EditRule {
    bool active;
    bool inactive;
    bool uber;
    bool recount;
    bool ofNames = false;  ///< it changes the names that a zoneset holds, so a draft repeats it too

    bool covers(_ZoneSetTypes type) const {
        return type == ZONESET_ACTIVE ? active : type == ZONESET_INACTIVE ? inactive : uber;
    }
};

/** A member as an edit names it. */
struct MemberId {
    vex_fzs_zonemember_type_e type;
    const char* text;
    vex_memberid_u id = {};
};

namespace {

// clang-format off
//                                              active inactive uber   recount names
constexpr EditRule kRemoveZone                = {false, true,   false, true,   true};
constexpr EditRule kRemoveZoneAlias           = {false, true,   true,  true};
constexpr EditRule kAddMemberToZone           = {false, true,   false, true};
constexpr EditRule kRemoveMemberFromZone      = {false, true,   false, true};
constexpr EditRule kAddMemberToZoneAlias      = {false, true,   false, false};
constexpr EditRule kRemoveMemberFromZoneAlias = {true,  false,  false, false};
constexpr EditRule kRemoveMember              = {false, true,   true,  false};
// clang-format on

/** A call that stopped an edit. */
ZoningReport failedIn(const char* call, int32_t returned = 0) {
    return {ZoningStatus::LibraryFailed, ZONING_FAILED, failureOf(call, returned)};
}

ZoningReport notFound(ZoningObject object, const char* name) {
    return {ZoningStatus::NotFound, ZONING_NOT_FOUND, failureAbout(object, name)};
}

ZoningReport exists(ZoningObject object, const char* name) {
    return {ZoningStatus::Exists, ZONING_EXISTS, failureAbout(object, name)};
}

ZoningReport invalid(ZoningObject object, const char* name, const char* call, int32_t returned = 0) {
    return {ZoningStatus::Invalid, ZONING_INVALID, failureAbout(object, name, call, returned)};
}

/** The failure of an edit that has changed something already. */
ZoningReport inPart(ZoningReport report) {
    if (!report.done()) report.status = ZoningStatus::Damaged;
    return report;
}

/** Makes a call that returns a status. */
template <typename... Arguments>
ZoningReport attempt(const LibraryCall<int32_t, Arguments...>& call, Arguments... arguments) {
    const int32_t status = call(arguments...);
    if (status == 0) return {};
    return failedIn(call.name, status);
}

/** Adds a new zone or alias to a zoneset, which then owns it; destroys it where that fails. */
ZoningReport addOrDestroy(const ContainerCalls& calls, void* zoneset, void* container) {
    ZoningReport report =
        zoneset == nullptr ? failedIn(calls.add.name) : attempt(calls.add, zoneset, container);
    if (!report.done()) calls.destroy(&container);
    return report;
}

ZoningReport parse(MemberId& wanted) {
    const int32_t status = vex_strToMemberIdentifier(wanted.text, wanted.type, &wanted.id);
    if (status == 0) return {};
    return invalid(ZoningObject::Member, wanted.text, "vex_strToMemberIdentifier", status);
}

/** Adds a member of its own to a zone or alias. */
ZoningReport addTo(const ContainerCalls& calls, void* container, const MemberId& wanted) {
    void* member = vex_MemberCreate(wanted.type, &wanted.id);
    if (member == nullptr) return failedIn("vex_MemberCreate");
    ZoningReport report = attempt(calls.addMember, container, member);
    if (!report.done()) vex_MemberDestroy(&member);
    return report;
}

ZoningReport deleteFrom(const ContainerCalls& calls, void* container, const MemberId& wanted) {
    void* member = calls.findMember(container, wanted.type, &wanted.id);
    if (member == nullptr) return notFound(ZoningObject::Member, wanted.text);
    return attempt(calls.deleteMember, container, member);
}

/** Deletes a member from zonesets, and keeps the first failure that does not stop it. */
class Purge {
  public:
    explicit Purge(const MemberId& wanted) : _wanted(wanted) {}

    ZoningReport from(const ContainerCalls& calls, void* zoneset, const char* complaint) {
        const int32_t count = calls.count(zoneset);
        if (count < 0) note(failedIn(calls.count.name, count));
        for (int32_t i = 0; i < count; ++i) {
            void* container = calls.list(zoneset, i);
            if (container == nullptr) return markPartial(failedIn(calls.list.name));
            void* member = calls.findMember(container, _wanted.type, &_wanted.id);
            if (member == nullptr) continue;
            const int32_t result = calls.deleteMember(container, member);
            if (result == 0) {
                _deleted = true;
                continue;
            }
            cim_log(CIM_LOG_TRACE, "DCACHE: %s, result = %d\n", complaint, result);
            note(failedIn(calls.deleteMember.name, result));
        }
        return {};
    }
    /** How the whole ended. Required: a deletion that fails leaves the code at "done". */
    ZoningReport end() {
        _failed.code = ZONING_DONE;
        return markPartial(std::move(_failed));
    }

  private:
    void note(ZoningReport failed) {
        if (_failed.done()) _failed = std::move(failed);
    }
    /** Marks a failure as one after which the edit stays carried out in part. */
    ZoningReport markPartial(ZoningReport report) const {
        return _deleted ? inPart(std::move(report)) : report;
    }

    const MemberId& _wanted;
    bool _deleted = false;
    ZoningReport _failed;
};

/** The name of a copy until it gets the zone's own: no zone of a user has it, as names begin with a letter.
 */
constexpr const char* kTemporaryName = "^_-_-_-_TMPZONE_-_-_-_^";

}  // namespace

/**
 * Repeats `edit`, a function of a zoneset handle, in the entries that the rule covers, in the order of their
 * keys, and stops at the first failure. After a success it counts where the rule says so.
 */
template <typename Edit>
ZoningReport ZoningEdits::_repeat(const EditRule& rule, Edit edit) {
    for (const auto& [key, entry] : _cache._zonesets) {
        if (!rule.covers(entry.type) || entry.handle == nullptr) continue;
        if (_ofDraft && !rule.ofNames && entry.type != ZONESET_UBER) continue;
        ZoningReport report = edit(entry.handle);
        if (!report.done()) return report;
    }
    if (rule.recount) _cache.updateZoningCounts();
    return {};
}

/** As _repeat(), after a change of the uber zoneset, for the zones or aliases of that name. */
template <typename Edit>
ZoningReport ZoningEdits::_repeatInContainers(const ContainerCalls& calls, const EditRule& rule,
                                              const char* name, Edit edit) {
    return inPart(_repeat(rule, [&](void* zoneset) -> ZoningReport {
        void* container = calls.findIn(zoneset, name);
        if (container == nullptr) return {};
        return edit(zoneset, container);
    }));
}

ZoningReport ZoningEdits::_addToUber(const ContainerCalls& calls, void* container) {
    ZoningReport report = addOrDestroy(calls, _cache._uberZoneset, container);
    if (report.done()) _cache.updateZoningCounts();
    return report;
}

ZoningReport ZoningEdits::_removeEverywhere(const ContainerCalls& calls, const EditRule& rule,
                                            const char* name) {
    void* container = calls.findIn(_cache._uberZoneset, name);
    if (container == nullptr) return notFound(calls.kind, name);
    ZoningReport report = attempt(calls.remove, _cache._uberZoneset, container);
    if (!report.done()) return report;
    return _repeatInContainers(
        calls, rule, name, [&](void* zoneset, void* copy) { return attempt(calls.remove, zoneset, copy); });
}

ZoningReport ZoningEdits::_addMember(const ContainerCalls& calls, const EditRule& rule, const char* name,
                                     vex_fzs_zonemember_type_e type, const char* text) {
    void* container = calls.findIn(_cache._uberZoneset, name);
    if (container == nullptr) return notFound(calls.kind, name);
    ZoningReport report = _cache._checkLimit(calls.memberLimit, container);
    if (!report.done()) return report;
    MemberId wanted{type, text};
    report = parse(wanted);
    if (!report.done()) return report;
    // There is no command for any other type, so nothing of the draft could be sent.
    const bool known =
        type == VEX_ZMT_WWN || type == VEX_ZMT_DOMAIN_PORT || type == VEX_ZMT_FCID || type == VEX_ZMT_ALIAS;
    if (_ofDraft && !known) return invalid(ZoningObject::Member, text, "");
    if (calls.findMember(container, wanted.type, &wanted.id) != nullptr)
        return exists(ZoningObject::Member, text);
    report = addTo(calls, container, wanted);
    if (!report.done()) return report;
    return _repeatInContainers(calls, rule, name,
                               [&](void*, void* copy) { return addTo(calls, copy, wanted); });
}

ZoningReport ZoningEdits::_removeMemberFrom(const ContainerCalls& calls, const EditRule& rule,
                                            const char* name, vex_fzs_zonemember_type_e type,
                                            const char* text) {
    void* container = calls.findIn(_cache._uberZoneset, name);
    if (container == nullptr) return notFound(calls.kind, name);
    MemberId wanted{type, text};
    ZoningReport report = parse(wanted);
    if (!report.done()) return report;
    report = deleteFrom(calls, container, wanted);
    if (!report.done()) return report;
    // Required: a copy without the member stops the edit with ZONING_NOT_FOUND; the uber zoneset stays
    // changed.
    return _repeatInContainers(calls, rule, name,
                               [&](void*, void* copy) { return deleteFrom(calls, copy, wanted); });
}

ZoningReport ZoningEdits::createZoneAlias(const char* name) {
    ZoningReport report = _cache._checkLimit(ZoningLimit::Aliases);
    if (!report.done()) return report;
    if (kAliasCalls.findIn(_cache._uberZoneset, name) != nullptr) return exists(ZoningObject::Alias, name);
    void* alias = vex_ZoneAliasCreate(name);
    if (alias != nullptr) return _addToUber(kAliasCalls, alias);
    report = invalid(ZoningObject::Alias, name, "vex_ZoneAliasCreate");
    report.code = ZONING_FAILED;  // Required: a zone's bad name is ZONING_INVALID, an alias's is not.
    return report;
}

ZoningReport ZoningEdits::createZone(const char* name, vex_fzs_zone_type_e type) {
    ZoningReport full = _cache._checkLimit(ZoningLimit::Zones);
    if (!full.done()) return full;
    if (kZoneCalls.findIn(_cache._uberZoneset, name) != nullptr) return exists(ZoningObject::Zone, name);
    void* zone = vex_ZoneCreate(name);
    if (zone == nullptr) return invalid(ZoningObject::Zone, name, "vex_ZoneCreate");
    const int32_t typed = vex_ZoneSetType(zone, type);
    if (typed == 0) return _addToUber(kZoneCalls, zone);
    vex_ZoneDestroy(&zone);
    return failedIn("vex_ZoneSetType", typed);
}

ZoningReport ZoningEdits::createZoneset(const char* name) {
    ZoningReport full = _cache._checkLimit(ZoningLimit::Zonesets);
    if (!full.done()) return full;
    const auto entry = _cache._zonesets.find(name);
    if (entry != _cache._zonesets.end() && entry->second.handle != nullptr)
        return exists(ZoningObject::Zoneset, name);
    const int32_t tested = vex_ZonesetTestName(name);
    if (tested != 0) return invalid(ZoningObject::Zoneset, name, "vex_ZonesetTestName", tested);
    void* zoneset = vex_ZonesetCreate(name);
    if (zoneset == nullptr) return failedIn("vex_ZonesetCreate");
    if (_cache._addOrDestroy(zoneset, ZONESET_INACTIVE)) return {};
    return failedIn("vex_ZonesetGetName");
}

ZoningReport ZoningEdits::removeZone(const char* name) {
    return _removeEverywhere(kZoneCalls, kRemoveZone, name);
}

ZoningReport ZoningEdits::removeZoneAlias(const char* name) {
    return _removeEverywhere(kAliasCalls, kRemoveZoneAlias, name);
}

ZoningReport ZoningEdits::removeZoneset(const char* name) {
    const auto entry = _cache._zonesets.find(name);
    if (entry == _cache._zonesets.end() || entry->second.handle == nullptr)
        return notFound(ZoningObject::Zoneset, name);
    // With the type that it was found with: by its own name, a bracketed key would remove another zoneset.
    if (_cache.delZoneset(entry->second.handle, entry->second.type) == 0) return {};
    return failedIn("vex_ZonesetGetName");
}

ZoningReport ZoningEdits::addMemberToZone(const char* zone, vex_fzs_zonemember_type_e type,
                                          const char* member) {
    return _addMember(kZoneCalls, kAddMemberToZone, zone, type, member);
}

ZoningReport ZoningEdits::addMemberToZoneAlias(const char* alias, vex_fzs_zonemember_type_e type,
                                               const char* member) {
    return _addMember(kAliasCalls, kAddMemberToZoneAlias, alias, type, member);
}

ZoningReport ZoningEdits::removeMemberFromZone(const char* zone, vex_fzs_zonemember_type_e type,
                                               const char* member) {
    return _removeMemberFrom(kZoneCalls, kRemoveMemberFromZone, zone, type, member);
}

ZoningReport ZoningEdits::removeMemberFromZoneAlias(const char* alias, vex_fzs_zonemember_type_e type,
                                                    const char* member) {
    return _removeMemberFrom(kAliasCalls, kRemoveMemberFromZoneAlias, alias, type, member);
}

ZoningReport ZoningEdits::removeMember(vex_fzs_zonemember_type_e type, const char* member) {
    MemberId wanted{type, member};
    ZoningReport parsed = parse(wanted);
    if (!parsed.done()) return parsed;
    Purge purge(wanted);
    const ZoningReport stopped = _repeat(kRemoveMember, [&](void* zoneset) {
        ZoningReport report = purge.from(kZoneCalls, zoneset, "Deletion failed");
        if (!report.done()) return report;
        return purge.from(kAliasCalls, zoneset, "Alias Deletion failed");
    });
    return stopped.done() ? purge.end() : stopped;
}

ZoningReport ZoningEdits::addZoneToZoneset(const char* zoneset, const char* zone) {
    const auto target = _cache._zonesets.find(zoneset);
    if (target == _cache._zonesets.end() || target->second.handle == nullptr)
        return notFound(ZoningObject::Zoneset, zoneset);
    void* const handle = target->second.handle;
    ZoningReport full = _cache._checkLimit(ZoningLimit::ZonesPerZoneset, handle);
    if (!full.done()) return full;
    if (kZoneCalls.findIn(handle, zone) != nullptr) return exists(ZoningObject::Zone, zone);
    void* original = kZoneCalls.findIn(_cache._uberZoneset, zone);
    if (original == nullptr) return notFound(ZoningObject::Zone, zone);
    void* copy = vex_ZoneCreateCopy(original, kTemporaryName);
    if (copy == nullptr) return failedIn("vex_ZoneCreateCopy");
    const int32_t named = vex_ZoneSetName(copy, zone);
    if (named != 0) {
        vex_ZoneDestroy(&copy);
        return failedIn("vex_ZoneSetName", named);
    }
    // Without counting anew: the counts are of the uber zoneset, which does not change.
    return addOrDestroy(kZoneCalls, handle, copy);
}

ZoningReport ZoningEdits::removeZoneFromZoneset(const char* zoneset, const char* zone) {
    const auto target = _cache._zonesets.find(zoneset);
    if (target == _cache._zonesets.end() || target->second.handle == nullptr)
        return notFound(ZoningObject::Zoneset, zoneset);
    void* found = kZoneCalls.findIn(target->second.handle, zone);
    if (found == nullptr) return notFound(ZoningObject::Zone, zone);
    return attempt(kZoneCalls.remove, target->second.handle, found);
}

}  // namespace datacache

using namespace datacache;

uint32_t ZoningCache::createZoneAlias(char* name) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).createZoneAlias(given(name)).code;
}

uint32_t ZoningCache::createZone(char* name, vex_fzs_zone_type_e type) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).createZone(given(name), type).code;
}

uint32_t ZoningCache::createZoneset(char* name) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).createZoneset(given(name)).code;
}

uint32_t ZoningCache::removeZoneAlias(char* name) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).removeZoneAlias(given(name)).code;
}

uint32_t ZoningCache::removeZone(char* name) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).removeZone(given(name)).code;
}

uint32_t ZoningCache::removeZoneset(char* name) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).removeZoneset(given(name)).code;
}

uint32_t ZoningCache::addZoneToZoneset(char* zoneset, char* zone) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).addZoneToZoneset(given(zoneset), given(zone)).code;
}

uint32_t ZoningCache::removeZoneFromZoneset(char* zoneset, char* zone) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).removeZoneFromZoneset(given(zoneset), given(zone)).code;
}

uint32_t ZoningCache::addMemberToZone(char* zone, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).addMemberToZone(given(zone), type, given(member)).code;
}

uint32_t ZoningCache::removeMemberFromZone(char* zone, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).removeMemberFromZone(given(zone), type, given(member)).code;
}

uint32_t ZoningCache::addMemberToZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).addMemberToZoneAlias(given(alias), type, given(member)).code;
}

uint32_t ZoningCache::removeMemberFromZoneAlias(char* alias, vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).removeMemberFromZoneAlias(given(alias), type, given(member)).code;
}

uint32_t ZoningCache::removeMember(vex_fzs_zonemember_type_e type, char* member) {
    const AccessGuard guard;
    return ZoningEdits(*this, false).removeMember(type, given(member)).code;
}
