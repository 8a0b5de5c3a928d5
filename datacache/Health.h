#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/LockHolder.h"
#include "common/export.h"
#include "switchlib/PendingCall.h"
#include "switchlib/ReadFailure.h"

/**
 * How far the cache can be trusted, and why not further.
 *
 * A cache of outside state is wrong in three ways: it is behind, because a read failed or an event is still
 * waiting; nobody tells it of a change; or it cannot hold what there is. DataCache::health() answers all
 * three from records of its own, without waiting for anything: also while an evaluation pass hangs in a call
 * of the switch library with the cache locked. Health::well() sums them up, Health::problems() says it in
 * words.
 *
 * A host sees the records by reference, and later versions add fields at their ends. Copy the fields that you
 * keep, and make no arrays of records.
 */
namespace datacache {

/** The areas that are read by themselves, in the order in which a pass reads them. */
enum class CacheArea : uint8_t { Switch, Chassis, Blades, Ports, Accounts, Fabric, Zoning };
constexpr size_t kCacheAreas = 7;
constexpr std::array<CacheArea, kCacheAreas> kAllCacheAreas = {
    CacheArea::Switch,   CacheArea::Chassis, CacheArea::Blades, CacheArea::Ports,
    CacheArea::Accounts, CacheArea::Fabric,  CacheArea::Zoning};

/** "switch", "chassis", ...; "unknown" for any other value. */
DC_EXPORT const char* cacheAreaName(CacheArea area);

using WallTime = std::chrono::system_clock::time_point;  ///< the epoch stands for "never"
using Duration = std::chrono::microseconds;

/** Who asked for an area to be read. */
enum class MarkCause : uint8_t {
    None,
    Start,    ///< nothing was read yet
    Event,    ///< a switch event: AreaHealth::markedByEvent
    Host,     ///< an update request of the host, refreshNow() and reloadZoning() included
    Retry,    ///< the retry interval passed, or a read failed
    Refresh,  ///< the refresh interval passed
    Session,  ///< a zoning session ended
};

/** "start", "event", ...; "unknown" for any other value. */
DC_EXPORT const char* markCauseName(MarkCause cause);

/** The way to the switch library. */
struct ConnectionHealth {
    bool connected = false;
    uint32_t attempts = 0;   ///< to connect, refused ones included
    int32_t lastResult = 0;  ///< of the last attempt
    /** Reading calls that the library refused as a whole, since the last one that it carried out. A
     * connection that is gone shows here; the cache does not connect again. */
    uint32_t failuresInARow = 0;
    int32_t lastFailure = 0;  ///< the result of the last one refused
    WallTime failingSince{};  ///< the first of the row
    // New fields are added here, at the end.
};

/** The registration for switch events. What is refused, the cache will never be told of. */
struct RegistrationHealth {
    static constexpr size_t kMostRefused = 28;

    uint32_t attempts = 0;  ///< calls, repeated ones included
    int32_t result = 0;     ///< of the last call; not 0 when the library refused it as a whole
    uint32_t refused = 0;   ///< codes that are not registered
    std::array<int32_t, kMostRefused> refusedCodes{};  ///< the first `refused` entries
    // New fields are added here, at the end.
};

/** The fabric's zoning limits. */
struct LimitsHealth {
    uint32_t attempts = 0;
    bool read = false;
    ReadFailure failure;  ///< of the last attempt that failed
    // New fields are added here, at the end.
};

/**
 * One area. Counts start with the process and wrap at 2^32.
 *
 * The accounts are read by DataCache::readAccounts() alone, which the host calls: their mark stays until
 * then, and no pass reads them, nor does the retry or the refresh interval.
 */
struct AreaHealth {
    bool upToDate = false;                 ///< its last read succeeded, and nothing has marked it since
    bool marked = false;                   ///< to be read, by the next pass
    WallTime staleSince{};                 ///< since when it is not up to date; the epoch while it is
    WallTime markedSince{};                ///< the first mark since the last good read
    MarkCause markedBy = MarkCause::None;  ///< of that mark
    int32_t markedByEvent = 0;             ///< the event's code, for MarkCause::Event
    WallTime lastGoodRead{};
    uint32_t reads = 0;
    uint32_t failures = 0;        ///< of these reads
    uint32_t failuresInARow = 0;  ///< since the last good one
    ReadFailure lastFailure;      ///< of the last read that failed, even after a good one
    /** Keys that the last good read went without: it took the area for read, as the rest is of use. An active
     * zoneset that could not be read is told until a read has mended it. */
    uint32_t gaps = 0;
    ReadFailure firstGap;  ///< the first of them
    /** Reads that found another state than the one before, though no switch event had told of a change: until
     * then the cache was wrong without a word. A read counts once the pass after it has ended, as the event
     * may have been on its way. */
    uint32_t silentChanges = 0;
    WallTime lastSilentChange{};  ///< when the last of them was read
    char silentChange[128] = {};  ///< its first difference in words: "port 3: status"
    // New fields are added here, at the end.
};

/** The evaluation passes. */
struct PassHealth {
    /** The evaluation thread: asked for, and made. Without it nothing is ever read. */
    bool threadAsked = false;
    bool threadMade = false;
    bool ready = false;  ///< the last pass found every area up to date, as isCacheReady() says
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
    // New fields are added here, at the end.
};

/** Switch events since the process began. received = queued + dropped + those that wait for the lock. */
struct EventHealth {
    uint32_t received = 0;     ///< notifications of the switch library
    uint32_t queued = 0;       ///< of these, for the next pass
    uint32_t dropped = 0;      ///< of these, of a kind that the cache does not handle
    uint32_t waiting = 0;      ///< in the queue now, those that the host queued included
    uint32_t mostWaiting = 0;  ///< ever
    // New fields are added here, at the end.
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
    // New fields are added here, at the end.

    DC_EXPORT bool complete() const;
    /** Health::problems() about the capacity; empty exactly where complete(). */
    DC_EXPORT std::vector<std::string> problems() const;
};

/** "nobody", "reader", ...; "unknown" for any other value. */
DC_EXPORT const char* lockHolderName(LockHolder holder);

/** The access lock at the moment. A host that locks `access_mutex` itself is not seen. */
struct LockHealth {
    LockHolder holder = LockHolder::Nobody;
    WallTime since{};  ///< when it was taken, to some milliseconds
    bool inArea = false;
    CacheArea area = CacheArea::Switch;
    char step[96] = {};  ///< "create zone backup", cut to the field
    // New fields are added here, at the end.
};

struct HealthRecord;

/** A call that has not returned for so long is a problem. */
constexpr std::chrono::seconds kSlowCall{10};

/**
 * A copy of all of it, consistent in itself and immutable; a copy of a Health shares it. Safe to use from any
 * thread, for as long as it lives.
 */
class DC_EXPORT Health {
  public:
    /** For the cache; hosts call DataCache::health(). */
    explicit Health(std::shared_ptr<const HealthRecord> record);

    /**
     * Whether all is well: connected, with calls that succeed and return; registered for every event; an
     * evaluation thread; zoning limits; every area read and up to date (the accounts once they were read);
     * no active zoneset missing; and room for all that the switch has. Silent changes do not count, as what
     * they found is right again.
     */
    bool well() const;
    /** A sentence for everything that is not well, without its full stop; empty exactly where well(). */
    std::vector<std::string> problems() const;
    /** Those of them that are about one area. */
    std::vector<std::string> problems(CacheArea area) const;

    const ConnectionHealth& connection() const;
    const RegistrationHealth& registration() const;
    const LimitsHealth& limits() const;
    /** An area; for a value outside the enumeration an empty record. */
    const AreaHealth& operator[](CacheArea area) const;
    const PassHealth& passes() const;
    const EventHealth& events() const;
    const CapacityHealth& capacity() const;
    const LockHealth& lock() const;
    /** The calls of the switch library that had not returned, the oldest first; at most 8 are told. */
    uint32_t pendingCalls() const;
    /** One of them; for an index beyond them an empty record. */
    const PendingCall& pendingCall(uint32_t index) const;
    /** When the copy was made. */
    WallTime time() const;

  private:
    std::shared_ptr<const HealthRecord> _record;
};

/** "none", "call failed", "key failed", "bad value", "no end", "exception"; "unknown" for any other value. */
DC_EXPORT const char* readFaultName(ReadFault fault);
/** A failure in words: "Oper.Switch.WWN has status 0x5, log line _getSwitchInfo:1351"; empty for none. */
DC_EXPORT std::string failureText(const ReadFailure& failure);

}  // namespace datacache
