#include "common/number_text.h"
#include "common/wwn_text.h"
#include "datacache/DataCache.h"
#include "datacache/reports.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

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
    cache._activeChecksum = strtoul32(std::string(batch.text(activeKey)), 16);
    cache._inactiveChecksum = strtoul32(std::string(batch.text(inactiveKey)), 16);
    cache._activeZonesetName = batch.text(nameKey);

    if (cache._activeZonesetName != cache._prevActiveZonesetName ||
        cache._activeChecksum != cache._prevActiveChecksum) {
        cache._loadActive(_handle);
        cim_log(CIM_LOG_TRACE,
                "DCACHE: DCEventActiveZonesetChange: activeZoneset=%s previousActiveZoneset=%s\n",
                cache._activeZonesetName.c_str(), cache._prevActiveZonesetName.c_str());
        notify(_callback, DCEventActiveZonesetChange(parseWwn(batch.text(principalKey)),
                                                     cache._prevActiveZonesetName, cache._activeZonesetName));
        cache._prevActiveZonesetName = cache._activeZonesetName;
        cache._prevActiveChecksum = cache._activeChecksum;
    }

    if (cache._inactiveChecksum == cache._prevInactiveChecksum && !cache._configuredDue) return 1;
    if (!cache._loadConfigured(_handle)) return 0;
    cim_log(CIM_LOG_TRACE, "DCACHE: Zoning database update complete\n");
    cim_log(CIM_LOG_TRACE, "DCACHE: DCEventZoningDBChange\n");
    notify(_callback, DCEventZoningDBChange(getRootSwitchWorldWideName()));
    cache._prevInactiveChecksum = cache._inactiveChecksum;
    // Required: a reloadZoning() inside the callback is lost here. What a session there asked for is not.
    cache._configuredDue = cache._reloadWanted;
    return 1;
}
