#include "zoning/ZoningDraft.h"

#include <algorithm>

#include "switchlib/ReadTrace.h"
#include "switchlib/SmlBatch.h"
#include "zoning/library_calls.h"

namespace datacache {
namespace {

ZoningReport notRead(const ReadTrace& trace) {
    const ReadFailure& failure = trace.first();
    return {ZoningStatus::NotRead, 0, failureOfRead(failure.call, failure.key, failure.status)};
}

/** The members in an order that depends on nothing but them. */
std::string memberLine(std::string line, const std::vector<ZoningMember>& members) {
    std::vector<std::string> texts;
    texts.reserve(members.size());
    for (const ZoningMember& member : members) texts.push_back(std::to_string(member.type) + member.text);
    std::sort(texts.begin(), texts.end());
    for (const std::string& text : texts) line += ' ' + text;
    return line;
}

/** What a commit of the database leaves on the switch, a line each. Names have no blanks. */
std::vector<std::string> configuredBy(const ZoningDatabase& database) {
    std::vector<std::string> lines;
    for (const ZoningAlias& alias : database.aliases)
        lines.push_back(memberLine("alias " + alias.name, alias.members));
    for (const ZoningZone& zone : database.zones)
        lines.push_back(memberLine("zone " + zone.name + ' ' + std::to_string(zone.type), zone.members));
    for (const ZoningZoneset& zoneset : database.zonesets) {
        lines.push_back("zoneset " + zoneset.name);
        for (const ZoningZone& zone : zoneset.zones)
            lines.push_back("zoneset " + zoneset.name + ' ' + zone.name);
    }
    std::sort(lines.begin(), lines.end());
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
    return lines;
}

}  // namespace

ZoningReport ZoningDraft::read() {
    const ReadTrace trace;
    SmlBatch batch;
    if (!_zoning._readKeys(hSwitch, batch)) return notRead(trace);
    ZoningReport report = _zoning._loadActive(hSwitch);
    if (trace.failures() != 0) return notRead(trace);
    if (!report.done()) return report;
    report = _zoning._loadConfigured(hSwitch);
    if (trace.failures() != 0) return notRead(trace);
    return report.done() ? _noteActive() : report;
}

ZoningReport ZoningDraft::readKeys() {
    const ReadTrace trace;
    SmlBatch batch;
    if (!_zoning._readKeys(hSwitch, batch)) return notRead(trace);
    return {};
}

void ZoningDraft::takeLimits(const ZoningCache& shared) {
    _zoning._limits = shared._limits;
    if (shared._limitsRead()) return;
    const int32_t result = ReadTrace::follow("vex_fzsGetZoningLimitations", "", [this] {
        return vex_fzsGetZoningLimitations(hSwitch, &_zoning._limits);
    });
    if (result != 0) _zoning._limits = {};
}

ZoningReport ZoningDraft::checkUnchanged() const {
    ZoningDraft now;
    ZoningReport report = now.readKeys();
    if (!report.done()) return report;
    const bool same = now.hasChecksumOf(*this) && now._zoning._activeChecksum == _zoning._activeChecksum &&
                      now._zoning._activeZonesetName == _zoning._activeZonesetName;
    return {same ? ZoningStatus::Done : ZoningStatus::Changed};
}

void* ZoningDraft::_configuredNamesake() const {
    const auto entry = _zoning._zonesets.find(_zoning._activeZonesetName);
    if (entry == _zoning._zonesets.end() || entry->second.type != ZONESET_INACTIVE) return nullptr;
    return entry->second.handle;
}

ZoningReport ZoningDraft::_noteActive() {
    void* const active = _zoning._activeZoneset;
    if (active == nullptr) return {};
    const auto unreadable = [](const char* call, const std::string& key, int64_t result = 0) {
        return ZoningReport{ZoningStatus::NotRead, 0, failureOfRead(call, key, result)};
    };
    // Under another name than the switch tells, the group would have another zoneset keep its zones.
    std::string name;
    if (!readName(vex_ZonesetGetName, active, name) || name != _zoning._activeZonesetName)
        return unreadable("vex_ZonesetGetName", _zoning._activeZonesetName);
    void* const namesake = _configuredNamesake();
    _namesakeWasConfigured = namesake != nullptr;
    const int32_t count = kZoneCalls.count(active);
    if (count < 0 || count > kMostEntries) return unreadable(kZoneCalls.count.name, name, count);
    for (int32_t i = 0; i < count; ++i) {
        void* const listed = kZoneCalls.list(active, i);
        std::string zone;
        if (listed == nullptr) return unreadable(kZoneCalls.list.name, name);
        if (!readName(kZoneCalls.getName.function, listed, zone))
            return unreadable(kZoneCalls.getName.name, name);
        const bool configured = kZoneCalls.findIn(namesake, zone.c_str()) != nullptr;
        _active.push_back({std::move(zone), configured});
    }
    return {};
}

std::vector<ZoningBrought> ZoningDraft::brought() const {
    std::vector<ZoningBrought> all;
    if (_zoning._activeZoneset == nullptr) return all;
    void* const namesake = _configuredNamesake();
    const auto add = [&](const std::string& zone, bool removedHere) DC_REQUIRES(access_lock) {
        ZoningBrought& one = all.emplace_back();
        one.zoneset = _zoning._activeZonesetName;
        one.zone = zone;
        one.removedHere = removedHere;
    };
    if (namesake == nullptr) add("", _namesakeWasConfigured);
    for (const ActiveZone& zone : _active) {
        if (kZoneCalls.findIn(namesake, zone.name.c_str()) == nullptr) add(zone.name, zone.configured);
    }
    return all;
}

ZoningReport ZoningDraft::checkActive() const {
    for (const ActiveZone& zone : _active) {
        if (kZoneCalls.findIn(_zoning._uberZoneset, zone.name.c_str()) == nullptr)
            return {ZoningStatus::StillActive, 0, failureAbout(ZoningObject::Zone, zone.name)};
    }
    return {};
}

std::optional<bool> ZoningDraft::isWhatWasSent(const ZoningDraft& sent) const {
    ZoningDatabase wanted = sent._zoning.database();
    ZoningDatabase found = _zoning.database();
    const auto isActive = [](const ZoningZoneset& zoneset) { return zoneset.active; };
    found.zonesets.erase(std::remove_if(found.zonesets.begin(), found.zonesets.end(), isActive),
                         found.zonesets.end());
    if (!wanted.complete || !found.complete) return std::nullopt;
    return configuredBy(wanted) == configuredBy(found);
}

}  // namespace datacache
