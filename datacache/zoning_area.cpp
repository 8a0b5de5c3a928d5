#include "common/wwn_text.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/reports.h"
#include "datacache/wake_ups.h"
#include "switchlib/ReadTrace.h"
#include "switchlib/SmlBatch.h"
#include "zoning/ZoningReport.h"
#include "zoning/ZoningSession.h"

using namespace datacache;

int DataCache::_getZoningInfo() {
    ZoningCache& cache = _zoningCache;
    cache._refreshWanted = false;
    if (isTransparentSwitch()) return 1;  // has no zoning of its own
    SmlBatch batch;
    if (!cache._readKeys(_handle, batch)) {
        logUpdateFailed("_getZoningInfo", 2469);
        return 0;
    }
    if (cache._activeDiffers() || cache._activeWanted) {
        const bool differs = cache._activeDiffers();
        // A failure is only logged, and told by the health: the zoneset then counts as loaded.
        const bool loaded = cache._loadActive(_handle).done();
        if (differs || loaded) {
            cim_log(CIM_LOG_TRACE,
                    "DCACHE: DCEventActiveZonesetChange: activeZoneset=%s previousActiveZoneset=%s\n",
                    cache._activeZonesetName.c_str(), cache._prevActiveZonesetName.c_str());
            // The load stays due until the callback has returned. Where it throws, the next pass loads again,
            // even if the switch then reports the checksum that it had before this load.
            notify(_callback,
                   DCEventActiveZonesetChange(parseWwn(batch.text(0)), cache._prevActiveZonesetName,
                                              cache._activeZonesetName));
        }
        cache._activeTold();
    } else {
        ReadTrace::failedBefore(cache._activeGap);
    }

    if (!cache._configuredDiffers()) return 1;
    cache._loadConfigured(_handle);
    if (!cache._isLoaded()) return 0;
    cim_log(CIM_LOG_TRACE, "DCACHE: Zoning database update complete\n");
    cim_log(CIM_LOG_TRACE, "DCACHE: DCEventZoningDBChange\n");
    try {
        notify(_callback, DCEventZoningDBChange(getRootSwitchWorldWideName()));
    } catch (...) {
        cache._configuredDue = true;  // as above, but not before: the callback finds the database loaded
        throw;
    }
    cache._configuredTold();
    return 1;
}

ZoningSession DataCache::zoningSession(std::string_view client) {
    const AccessGuard guard;
    ZoningCache* const shared = instance == nullptr ? nullptr : &instance->_zoningCache;
    const bool transparent = instance != nullptr && instance->isTransparentSwitch();
    return ZoningSession::_open(shared, transparent, client, []() DC_NO_THREAD_SAFETY_ANALYSIS {
        instance->_markArea(CacheArea::Zoning, {MarkCause::Session});
        wakeEvaluation();
    });
}
