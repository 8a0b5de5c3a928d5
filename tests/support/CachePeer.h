#pragma once

#include "datacache/DataCache.h"

using namespace datacache;  // for every test that includes this

/** The private rooms of the cache, for tests of what its face does not tell. The caller holds the access
 * lock. */
class CachePeer {
  public:
    explicit CachePeer(DataCache& cache) DC_NO_THREAD_SAFETY_ANALYSIS
        : _cache(cache),
          callback(cache._callback),
          eventQueue(cache._eventQueue),
          switchUpdate(cache._switchUpdate),
          chassisUpdate(cache._chassisUpdate),
          bladesUpdate(cache._bladesUpdate),
          portsUpdate(cache._portsUpdate),
          fabricUpdate(cache._fabricUpdate),
          accountsUpdate(cache._accountsUpdate),
          zoningUpdate(cache._zoningUpdate),
          zoningOK(cache._zoningOK),
          bladeSlotCount(cache.bladeSlotCount),
          bladeState(cache._bladeState),
          localPortRefresh(cache._localPortRefresh),
          portState(cache._portState),
          prevAccounts(cache._prevAccounts) {}

    int getChassisInfo() DC_NO_THREAD_SAFETY_ANALYSIS { return _cache._getChassisInfo(); }
    bool getBladeInfo() DC_NO_THREAD_SAFETY_ANALYSIS { return _cache._getBladeInfo(); }
    bool getPortInfo() DC_NO_THREAD_SAFETY_ANALYSIS { return _cache._getPortInfo(); }
    bool getFabricInfo() DC_NO_THREAD_SAFETY_ANALYSIS { return _cache._getFabricInfo(); }
    bool prepareRetry() { return _cache._prepareRetry(); }
    void dispatch(vex_event_s* event) DC_NO_THREAD_SAFETY_ANALYSIS { _cache._vexlibNotificationCB(event); }

    static const char* tagToString(int code) { return DataCache::_tagToString(code); }
    static HardwareStatus hardwareStatus(char* state) { return DataCache::_smlConvToHardwareStatus(state); }
    static std::string sanitizedMediaVendorSN(const char* text) {
        return DataCache::_sanitizedMediaVendorSN(text);
    }

  private:
    DataCache& _cache;

  public:
    DataCacheCallback& callback;
    std::deque<vex_event_s*>& eventQueue;
    bool &switchUpdate, &chassisUpdate, &bladesUpdate, &portsUpdate, &fabricUpdate, &accountsUpdate,
        &zoningUpdate;
    bool& zoningOK;
    uint16_t& bladeSlotCount;
    BladeState& bladeState;
    std::bitset<kPortRows>& localPortRefresh;
    PortState& portState;
    std::vector<std::string>& prevAccounts;
};
