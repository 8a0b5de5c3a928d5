#include "datacache/CacheReader.h"

namespace datacache {

// The analysis does not follow an object that holds a lock through its members, so it is told nothing here:
// the constructor took the lock, and the destructor gives it back.

CacheReader::CacheReader() DC_NO_THREAD_SAFETY_ANALYSIS : _cache(DataCache::getInstance()) {}

CacheReader::~CacheReader() DC_NO_THREAD_SAFETY_ANALYSIS {
    DataCache::releaseInstance();
}

const SwitchState& CacheReader::localSwitch() const DC_NO_THREAD_SAFETY_ANALYSIS {
    return _cache->_switchState;
}

const ChassisState& CacheReader::chassis() const DC_NO_THREAD_SAFETY_ANALYSIS {
    return _cache->_chassisState;
}

const BladeState& CacheReader::blades() const DC_NO_THREAD_SAFETY_ANALYSIS {
    return _cache->_bladeState;
}

const PortState& CacheReader::ports() const DC_NO_THREAD_SAFETY_ANALYSIS {
    return _cache->_portState;
}

const TransceiverState& CacheReader::transceivers() const DC_NO_THREAD_SAFETY_ANALYSIS {
    return _cache->_transceivers;
}

const std::vector<std::string>& CacheReader::accounts() const DC_NO_THREAD_SAFETY_ANALYSIS {
    return _cache->_accounts;
}

const FabricCache& CacheReader::fabric() const DC_NO_THREAD_SAFETY_ANALYSIS {
    return _cache->_fabric;
}

const ZoningCache& CacheReader::zoning() const DC_NO_THREAD_SAFETY_ANALYSIS {
    return _cache->_zoningCache;
}

}  // namespace datacache
