#pragma once

#include "datacache/DataCache.h"

using namespace datacache;  // for every test that includes this

/** The private rooms of the cache, for tests of what its face does not tell. The caller holds the access
 * lock. */
class CachePeer {
  public:
    explicit CachePeer(DataCache& cache) : _cache(cache) {}

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
    DataCacheCallback& callback = _cache._callback;
    std::deque<vex_event_s*>& eventQueue = _cache._eventQueue;
    bool &switchUpdate = _cache._switchUpdate, &chassisUpdate = _cache._chassisUpdate,
         &bladesUpdate = _cache._bladesUpdate, &portsUpdate = _cache._portsUpdate,
         &fabricUpdate = _cache._fabricUpdate, &accountsUpdate = _cache._accountsUpdate,
         &zoningUpdate = _cache._zoningUpdate, &zoningOK = _cache._zoningOK;
    uint16_t& bladeSlotCount = _cache.bladeSlotCount;
    BladeState& bladeState = _cache._bladeState;
    std::bitset<kPortRows>& localPortRefresh = _cache._localPortRefresh;
    PortState& portState = _cache._portState;
    std::vector<std::string>& prevAccounts = _cache._prevAccounts;
};
