#pragma once

#include <string>
#include <vector>

#include "common/AccessLock.h"
#include "datacache/DataCache.h"

namespace datacache {

/**
 * Reads the live cache: holds the access lock for its life, and shows the cached state as it stands. A reader
 * that must not wait for the switch takes a snapshot instead (DataCache::snapshot()).
 *
 *     const CacheReader cache;
 *     if (!cache) return;                      // DataCache::init() was not called
 *     for (unsigned port = 0; port < kPortRows; ++port) {
 *         if (!cache.ports().localPortsPresent[port]) continue;
 *         use(port, cache.ports().portStatus[port]);
 *     }
 *
 * The constructor waits for a pass that runs. References are good while the object lives; whoever keeps
 * something copies it. Make it short, since no pass can begin meanwhile; inside the host's callback it is
 * free, as the lock is held already. An area that was never read shows its empty record (`loaded` is then
 * false), and one whose last read failed what was known before: DataCache::health() tells them apart.
 */
class DC_EXPORT DC_SCOPED_CAPABILITY CacheReader {
  public:
    DC_NODISCARD CacheReader() DC_ACQUIRE(access_lock);
    ~CacheReader() DC_RELEASE();
    CacheReader(const CacheReader&) = delete;
    CacheReader& operator=(const CacheReader&) = delete;

    /** False when there is no instance; nothing else may then be asked. */
    explicit operator bool() const { return _cache != nullptr; }
    /** The cache itself, for its lookups. */
    DataCache* operator->() const { return _cache; }
    DataCache& operator*() const { return *_cache; }

    const SwitchState& localSwitch() const;
    const ChassisState& chassis() const;
    const BladeState& blades() const;
    const PortState& ports() const;
    const TransceiverState& transceivers() const;
    /** The names as of the last DataCache::_getAcctInfo(), in the switch's order. */
    const std::vector<std::string>& accounts() const;
    /** The fabric's switches with their ports. */
    const FabricCache& fabric() const;
    /** The zoning; ZoningCache::database() copies it. Edit it through DataCache::zoningSession(). */
    const ZoningCache& zoning() const;

  private:
    DataCache* const _cache;
};

}  // namespace datacache
