#include "common/bounded_text.h"
#include "common/cim_log.h"
#include "switchlib/ReadTrace.h"
#include "switchlib/uptime_seconds.h"
#include "zoning/ZoningCache.h"

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

}  // namespace

void ZoningCache::_loadActive(uint32_t handle) {
    ++_version;
    clearActive();
    _dropEntry(ZONESET_ACTIVE);
    const Stopwatch watch;
    if (_activeZonesetName.empty()) return;
    void* zoneset = readZoneset("vex_fzsGetActiveZoneset", _activeZonesetName.c_str(),
                                [handle](void** read) { return vex_fzsGetActiveZoneset(handle, read); });
    if (zoneset == nullptr) {
        cim_log(CIM_LOG_TRACE, "DCACHE: no active zoneset\n");
        return;
    }
    cim_log(CIM_LOG_TRACE, "DCACHE: Active zoneset added, %lds\n", watch.seconds());
    _addOrDestroy(zoneset, ZONESET_ACTIVE);
}

void ZoningCache::_markForReload() {
    ++_version;
    // The checksum alone would not force it: the switch may come to report this very number.
    _prevInactiveChecksum = _inactiveChecksum + 1;
    _configuredDue = true;
}

void ZoningCache::_endEdits() {
    _edited = false;
    _reloadWanted = true;
    _markForReload();
    if (_requestReload) _requestReload();
}

bool ZoningCache::_loadConfigured(uint32_t handle) {
    ++_version;
    _configuredDue = true;  // until all of it is here
    _edited = false;
    _reloadWanted = false;
    clearInactive();
    clearUber();
    _dropEntry(ZONESET_UBER);
    int32_t count = 0;
    char(*names)[VEX_ZONING_NAME_SIZE] = nullptr;
    if (ReadTrace::follow("vex_fzsGetZonesetList", "",
                          [&] { return vex_fzsGetZonesetList(handle, &count, &names); }) != 0) {
        cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetZonesetList failed\n");
        return false;
    }
    for (int32_t i = 0; names != nullptr && i < count; ++i) {
        const std::string name(boundedText(names[i]));
        const Stopwatch watch;
        void* zoneset = readZoneset("vex_fzsGetZoneset", name.c_str(), [&](void** read) {
            return vex_fzsGetZoneset(handle, name.c_str(), read);
        });
        if (zoneset == nullptr) {
            cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetZoneset failed\n");
            return false;
        }
        _addOrDestroy(zoneset, ZONESET_INACTIVE);
        cim_log(CIM_LOG_TRACE, "DCACHE: Inactive zoneset '%s' added, %lds\n", name.c_str(), watch.seconds());
    }
    const Stopwatch watch;
    void* uber = readZoneset("vex_fzsGetAllZonesAndAliases", "", [handle](void** read) {
        return vex_fzsGetAllZonesAndAliases(handle, "__UberZoneset__", read);
    });
    if (uber == nullptr) {
        cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetAllZonesAndAliases failed\n");
        return false;
    }
    _dropEntry(ZONESET_UBER);  // where a zoneset of that very name took its place
    _addOrDestroy(uber, ZONESET_UBER);
    cim_log(CIM_LOG_TRACE, "DCACHE: Uber zoneset added, %lds\n", watch.seconds());
    _configuredDue = false;
    return true;
}
