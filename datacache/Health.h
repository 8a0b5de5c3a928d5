#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include "common/export.h"
#include "switchlib/ReadFailure.h"

/**
 * How far the cache can be trusted, and why not further.
 *
 * A cache of outside state is wrong in two ways: it is behind, because a read failed or an event was missed,
 * or it cannot hold what there is. DataCache::health() answers both from records of its own, without waiting
 * for anything: also while an evaluation pass hangs in a call of the switch library with the cache locked.
 */
namespace datacache {

/** The areas that are read by themselves, in the order in which a pass reads them. */
enum class CacheArea : uint8_t { Switch, Chassis, Blades, Ports, Accounts, Fabric, Zoning };
constexpr size_t kCacheAreas = 7;

/** "switch", "chassis", ... */
DC_EXPORT const char* cacheAreaName(CacheArea area);

using WallTime = std::chrono::system_clock::time_point;  ///< the epoch stands for "never"
using Duration = std::chrono::microseconds;

/**
 * One area. Counts start with the process and wrap at 2^32.
 *
 * The accounts are read by DataCache::_getAcctInfo() alone, which the host calls: their mark stays until
 * then, and neither a pass nor the retry interval reads them.
 */
struct AreaHealth {
    bool upToDate = false;  ///< its last read succeeded, and nothing has marked it since
    bool marked = false;    ///< to be read, by the next pass
    WallTime lastGoodRead{};
    uint32_t reads = 0;
    uint32_t failures = 0;        ///< of these reads
    uint32_t failuresInARow = 0;  ///< since the last good one
    ReadFailure lastFailure;      ///< of the last read that failed, even after a good one
    /** Keys that the last good read went without: it took the area for read, as the rest is of use. */
    uint32_t gaps = 0;
    ReadFailure firstGap;  ///< the first of them
};

/** The evaluation passes. */
struct PassHealth {
    uint32_t count = 0;  ///< passes that ended
    bool running = false;
    WallTime runningSince{};  ///< of the running pass
    bool inArea = false;      ///< the running pass is reading an area: `area`
    CacheArea area = CacheArea::Switch;
    Duration last{};                            ///< how long the last one took
    uint32_t lastCalls = 0;                     ///< reading calls that it made to the switch library
    Duration longest{};                         ///< the longest of all
    CacheArea longestArea = CacheArea::Switch;  ///< the area that took most of that one's time
    uint32_t longestCalls = 0;
};

/** Switch events since the process began. received = queued + dropped + those that wait for the lock. */
struct EventHealth {
    uint32_t received = 0;     ///< notifications of the switch library
    uint32_t queued = 0;       ///< of these, for the next pass
    uint32_t dropped = 0;      ///< of these, of a kind that the cache does not handle
    uint32_t waiting = 0;      ///< in the queue now, those that the host queued included
    uint32_t mostWaiting = 0;  ///< ever
};

/** What the switch has and the cache has no room for, as of the last read; all 0 where it holds everything.
 */
struct CapacityHealth {
    /** The list of domains filled its 255 characters: switches may be missing, and the last number cut. */
    bool domainListFull = false;
    uint32_t portEntriesBeyond = 0;  ///< port entries behind the first 256 of remote switches, in all
    uint32_t localPortsBeyond = 0;   ///< local ports behind the first 128
    /** Remote switches whose management server kept failing, so that their ports are never read again. */
    uint32_t switchesGivenUp = 0;
    uint32_t slotsBeyond = 0;  ///< slots of the chassis behind the first 32

    bool complete() const {
        return !domainListFull && portEntriesBeyond == 0 && localPortsBeyond == 0 && slotsBeyond == 0 &&
               switchesGivenUp == 0;
    }
};

/** The way to the switch library. */
struct ConnectionHealth {
    bool connected = false;
    uint32_t attempts = 0;   ///< refused ones included
    int32_t lastResult = 0;  ///< of the last attempt
};

/** A copy, consistent in itself. Several KiB: keep it off small stacks. */
struct Health {
    ConnectionHealth connection;
    std::array<AreaHealth, kCacheAreas> areas;
    PassHealth passes;
    EventHealth events;
    CapacityHealth capacity;

    const AreaHealth& operator[](CacheArea area) const { return areas[static_cast<size_t>(area)]; }
    AreaHealth& operator[](CacheArea area) { return areas[static_cast<size_t>(area)]; }
};

}  // namespace datacache
