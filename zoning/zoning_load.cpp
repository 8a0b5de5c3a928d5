#include "common/bounded_text.h"
#include "common/cim_log.h"
#include "common/number_text.h"
#include "switchlib/ReadTrace.h"
#include "switchlib/SmlBatch.h"
#include "switchlib/uptime_seconds.h"
#include "zoning/ZoningCache.h"
#include "zoning/ZoningReport.h"

using namespace datacache;

namespace {

/** Whole seconds since it was made. */
class Stopwatch {
  public:
    long seconds() const { return uptimeSeconds() - _start; }

  private:
    long _start = uptimeSeconds();
};

/** Reads a zoneset with the library's call of that name, for `about`; null where it fails or gives none. */
template <typename Call>
void* readZoneset(const char* name, const char* about, Call call) {
    void* zoneset = nullptr;
    if (ReadTrace::follow(name, about, [&] { return call(&zoneset); }) != 0) return nullptr;
    if (zoneset == nullptr) ReadTrace::failed(ReadFault::BadValue, name, about, 0, 0);
    return zoneset;
}

/** What is not here though the switch has it. */
ZoningReport missing(const std::string& name, const char* call, int64_t result = 0) {
    return {ZoningStatus::NotRead, 0, failureOfRead(call, name, result)};
}

}  // namespace

bool ZoningCache::_readKeys(uint32_t handle, SmlBatch& batch) {
    batch.add("Oper.Switch.WhoIsPrincipal");
    const size_t activeKey = batch.add("Oper.Zoning.ActiveChecksum");
    const size_t inactiveKey = batch.add("Oper.Zoning.InactiveChecksum");
    const size_t nameKey = batch.add("Oper.Zoning.ActiveZoneSet");
    if (!batch.read(handle)) return false;
    _activeChecksum = strtoul32(std::string(batch.text(activeKey)), 16);
    _inactiveChecksum = strtoul32(std::string(batch.text(inactiveKey)), 16);
    _activeZonesetName = batch.text(nameKey);
    return true;
}

bool ZoningCache::_activeDiffers() const {
    return _activeDue || _activeZonesetName != _prevActiveZonesetName ||
           _activeChecksum != _prevActiveChecksum;
}

bool ZoningCache::_configuredDiffers() const {
    return _configuredDue || _inactiveChecksum != _prevInactiveChecksum;
}

ZoningReport ZoningCache::_loadActive(uint32_t handle) {
    _activeDue = true;
    _activeWanted = false;
    _activeGap = {};
    ++_version;
    clearActive();
    _dropEntry(ZONESET_ACTIVE);
    const Stopwatch watch;
    if (_activeZonesetName.empty()) return {};
    void* zoneset = readZoneset("vex_fzsGetActiveZoneset", _activeZonesetName.c_str(),
                                [handle](void** read) { return vex_fzsGetActiveZoneset(handle, read); });
    if (zoneset == nullptr) {
        cim_log(CIM_LOG_TRACE, "DCACHE: no active zoneset\n");
        _activeGap = ReadTrace::latest();
        return missing(_activeZonesetName, "vex_fzsGetActiveZoneset");
    }
    cim_log(CIM_LOG_TRACE, "DCACHE: Active zoneset added, %lds\n", watch.seconds());
    if (_addOrDestroy(zoneset, ZONESET_ACTIVE)) return {};
    return missing(_activeZonesetName, "vex_ZonesetGetName");
}

bool ZoningCache::_wantMissingActive() {
    if (_activeGap.fault != ReadFault::None) _activeWanted = true;
    return _activeWanted;
}

void ZoningCache::_activeTold() {
    _prevActiveZonesetName = _activeZonesetName;
    _prevActiveChecksum = _activeChecksum;
    _activeDue = false;
}

void ZoningCache::_markForReload() {
    ++_version;
    // The checksum alone would not force it: the switch may come to report this very number.
    _prevInactiveChecksum = _inactiveChecksum + 1;
    _configuredDue = true;
}

ZoningReport ZoningCache::_loadConfigured(uint32_t handle) {
    ++_version;
    _configuredDue = true;  // until all of it is here
    clearInactive();
    clearUber();
    _dropEntry(ZONESET_UBER);
    int32_t count = 0;
    char(*names)[VEX_ZONING_NAME_SIZE] = nullptr;
    if (ReadTrace::follow("vex_fzsGetZonesetList", "",
                          [&] { return vex_fzsGetZonesetList(handle, &count, &names); }) != 0) {
        cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetZonesetList failed\n");
        return missing("", "vex_fzsGetZonesetList");
    }
    ZoningReport report;
    if (count < 0 || (count > 0 && names == nullptr)) report = missing("", "vex_fzsGetZonesetList", count);
    for (int32_t i = 0; names != nullptr && i < count; ++i) {
        const std::string name(boundedText(names[i]));
        const Stopwatch watch;
        void* zoneset = readZoneset("vex_fzsGetZoneset", name.c_str(), [&](void** read) {
            return vex_fzsGetZoneset(handle, name.c_str(), read);
        });
        if (zoneset == nullptr) {
            cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetZoneset failed\n");
            return missing(name, "vex_fzsGetZoneset");
        }
        const bool taken = _addOrDestroy(zoneset, ZONESET_INACTIVE);
        const auto entry = _zonesets.find(name);
        if (!taken || entry == _zonesets.end() || entry->second.handle != zoneset)
            report = missing(name, "vex_ZonesetGetName");
        cim_log(CIM_LOG_TRACE, "DCACHE: Inactive zoneset '%s' added, %lds\n", name.c_str(), watch.seconds());
    }
    const Stopwatch watch;
    void* uber = readZoneset("vex_fzsGetAllZonesAndAliases", "", [handle](void** read) {
        return vex_fzsGetAllZonesAndAliases(handle, "__UberZoneset__", read);
    });
    if (uber == nullptr) {
        cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetAllZonesAndAliases failed\n");
        return missing("", "vex_fzsGetAllZonesAndAliases");
    }
    _dropEntry(ZONESET_UBER);  // where a zoneset of that very name took its place
    _addOrDestroy(uber, ZONESET_UBER);
    cim_log(CIM_LOG_TRACE, "DCACHE: Uber zoneset added, %lds\n", watch.seconds());
    _configuredDue = false;
    return report;
}

void ZoningCache::_configuredTold() {
    _prevInactiveChecksum = _inactiveChecksum;
    // Required: a reloadZoning() inside the callback is lost here.
    _configuredDue = false;
}
