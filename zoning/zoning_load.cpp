#include "common/bounded_text.h"
#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/update_failed.h"
#include "switchlib/SmlBatch.h"
#include "switchlib/uptime_seconds.h"

namespace {

/** Whole seconds since it was made. */
class Stopwatch {
  public:
    long seconds() const { return uptimeSeconds() - _start; }

  private:
    long _start = uptimeSeconds();
};

/** Hands a zoneset to the cache, or destroys it where the cache has no place for it (a name that is taken).
 */
void give(ZoningCache& cache, void* zoneset, _ZoneSetTypes type) DC_REQUIRES(access_lock) {
    if (cache.addZoneset(zoneset, type) != 0) vex_ZonesetDestroy(&zoneset);
}

void loadActive(ZoningCache& cache, uint32_t handle) DC_REQUIRES(access_lock) {
    cache.clearActive();
    cache._dropEntry(ZONESET_ACTIVE);
    const Stopwatch watch;
    if (cache._activeZonesetName.empty()) return;
    void* zoneset = nullptr;
    if (vex_fzsGetActiveZoneset(handle, &zoneset) != 0 || zoneset == nullptr) {
        cim_log(CIM_LOG_TRACE, "DCACHE: no active zoneset\n");
        return;
    }
    cim_log(CIM_LOG_TRACE, "DCACHE: Active zoneset added, %lds\n", watch.seconds());
    give(cache, zoneset, ZONESET_ACTIVE);
}

bool loadConfigured(ZoningCache& cache, uint32_t handle) DC_REQUIRES(access_lock) {
    cache._configuredDue = true;  // until all of it is here
    cache.clearInactive();
    cache.clearUber();
    cache._dropEntry(ZONESET_UBER);
    int32_t count = 0;
    char(*names)[VEX_ZONING_NAME_SIZE] = nullptr;
    if (vex_fzsGetZonesetList(handle, &count, &names) != 0) {
        cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetZonesetList failed\n");
        return false;
    }
    for (int32_t i = 0; names != nullptr && i < count; ++i) {
        const std::string name = boundedText(names[i]);
        const Stopwatch watch;
        void* zoneset = nullptr;
        if (vex_fzsGetZoneset(handle, name.c_str(), &zoneset) != 0 || zoneset == nullptr) {
            cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetZoneset failed\n");
            return false;
        }
        give(cache, zoneset, ZONESET_INACTIVE);
        cim_log(CIM_LOG_TRACE, "DCACHE: Inactive zoneset '%s' added, %lds\n", name.c_str(), watch.seconds());
    }
    const Stopwatch watch;
    void* uber = nullptr;
    if (vex_fzsGetAllZonesAndAliases(handle, "__UberZoneset__", &uber) != 0 || uber == nullptr) {
        cim_log(CIM_LOG_TRACE, "DCACHE: vex_fzsGetAllZonesAndAliases failed\n");
        return false;
    }
    cache._dropEntry(ZONESET_UBER);  // where a zoneset of that very name took its place
    give(cache, uber, ZONESET_UBER);
    cim_log(CIM_LOG_TRACE, "DCACHE: Uber zoneset added, %lds\n", watch.seconds());
    cache._configuredDue = false;
    return true;
}

}  // namespace

int DataCache::_getZoningInfo() {
    if (isTransparentSwitch()) return 1;  // has no zoning of its own
    SmlBatch batch;
    const size_t principalKey = batch.add("Oper.Switch.WhoIsPrincipal");
    const size_t activeKey = batch.add("Oper.Zoning.ActiveChecksum");
    const size_t inactiveKey = batch.add("Oper.Zoning.InactiveChecksum");
    const size_t nameKey = batch.add("Oper.Zoning.ActiveZoneSet");
    if (!batch.read(_handle)) {
        logUpdateFailed("_getZoningInfo", 2469);
        return 0;
    }
    ZoningCache& cache = _zoningCache;
    cache._activeChecksum = strtoul32(batch.text(activeKey), 16);
    cache._inactiveChecksum = strtoul32(batch.text(inactiveKey), 16);
    cache._activeZonesetName = batch.text(nameKey);

    if (cache._activeZonesetName != cache._prevActiveZonesetName ||
        cache._activeChecksum != cache._prevActiveChecksum) {
        loadActive(cache, _handle);
        cim_log(CIM_LOG_TRACE,
                "DCACHE: DCEventActiveZonesetChange: activeZoneset=%s previousActiveZoneset=%s\n",
                cache._activeZonesetName.c_str(), cache._prevActiveZonesetName.c_str());
        DCEventActiveZonesetChange event(Wwn(batch.text(principalKey)), cache._prevActiveZonesetName,
                                         cache._activeZonesetName);
        _notifyHost(event);
        cache._prevActiveZonesetName = cache._activeZonesetName;
        cache._prevActiveChecksum = cache._activeChecksum;
    }

    if (cache._inactiveChecksum == cache._prevInactiveChecksum && !cache._configuredDue) return 1;
    if (!loadConfigured(cache, _handle)) return 0;
    cim_log(CIM_LOG_TRACE, "DCACHE: Zoning database update complete\n");
    cim_log(CIM_LOG_TRACE, "DCACHE: DCEventZoningDBChange\n");
    DCEventZoningDBChange event(getRootSwitchWorldWideName());
    _notifyHost(event);
    cache._prevInactiveChecksum = cache._inactiveChecksum;
    return 1;
}
