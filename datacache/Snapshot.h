#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/Wwn.h"
#include "common/export.h"
#include "datacache/BladeState.h"
#include "datacache/ChassisState.h"
#include "datacache/FabricCache.h"
#include "datacache/Health.h"
#include "datacache/PortState.h"
#include "datacache/SwitchState.h"
#include "zoning/ZoningDatabase.h"

namespace datacache {

/** How far an area of a snapshot could be trusted when the snapshot was published. */
struct SnapshotArea {
    bool known = false;       ///< it was read completely at least once; before that its record is empty
    bool upToDate = false;    ///< its last read succeeded, and nothing marked it since
    WallTime lastGoodRead{};  ///< the epoch stands for "never"
    // New fields are added here, at the end.
};

/**
 * The state of the cache as one pass left it, for readers that must never wait for the switch.
 *
 *     DataCache::setSnapshots(true);           // once, before DataCache::init()
 *     ...
 *     const std::shared_ptr<const Snapshot> now = DataCache::snapshot();
 *     if (!now) return;                        // the first pass has read nothing yet
 *     for (unsigned port = 0; port < kPortRows; ++port) {
 *         if (!now->ports().localPortsPresent[port]) continue;
 *         use(now->localPortName(port), now->ports().portStatus[port]);
 *     }
 *
 * DataCache::snapshot() gives the newest one. It takes no lock that a pass holds, so it returns at once while
 * a pass hangs in the switch library. A snapshot never changes, needs no lock, and may be read by any number
 * of threads. References into it, and pointers of its fabric's walkers, are good for as long as somebody
 * holds the snapshot: keep the pointer beside them. Whoever drops the last one frees what no other snapshot
 * shares.
 *
 * When one is published:
 * - in the first pass after they were turned on, after each area that was read, so that a slow switch shows
 *   area by area (an area not read yet has an empty record, and area() says so);
 * - at the end of every later pass that read an area or took up an event about a transceiver, before
 *   DCEventDataCacheUpdateComplete is sent;
 * - after DataCache::readAccounts() and _getAcctInfo(), whose events are sent before it. Inside the callback
 *   of a pass they leave that to the pass.
 * Nothing else publishes. What a host changes in the cache itself is no pass: an edit made through
 * ZoningCache directly shows once a pass has loaded the zoning anew, and a mark such as
 * DataCache::updatePorts() once a pass has acted on it. Inside the host's callback a snapshot is older than
 * the event, but for DCEventDataCacheUpdateComplete: there CacheReader shows the live state.
 *
 * Snapshots share the areas that did not change between them, and only the others are copied, within the
 * pass. Where memory is short for that, the older snapshot stays and the next pass tries again.
 *
 * The records are the ones that CacheReader shows. All are handed out by reference, and a later version of
 * the library may give them more fields at their end.
 */
class DC_EXPORT Snapshot {
  public:
    ~Snapshot();
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;

    /** Counts the snapshots of the process, from 1; a later one has a higher number. */
    uint64_t serial() const;
    WallTime publishedAt() const;
    /** Whether the last pass had found every area up to date, as DataCache::isCacheReady() says. */
    bool isReady() const;
    /** An area of no known number is one that was never read. */
    const SnapshotArea& area(CacheArea area) const;

    const SwitchState& localSwitch() const;
    const ChassisState& chassis() const;
    const BladeState& blades() const;
    const PortState& ports() const;
    const TransceiverState& transceivers() const;
    /** The names as of the last DataCache::readAccounts(), in the switch's order. */
    const std::vector<std::string>& accounts() const;
    /** A copy of the fabric with its switches and their ports; its walkers and lookups need no lock. */
    const FabricCache& fabric() const;
    /** The zoning as it was loaded last. */
    const ZoningDatabase& zoning() const;

    /** The name of a local port, or the null name where there is no such port. */
    Wwn localPortName(unsigned port) const;

  private:
    friend class SnapshotPublisher;
    struct Parts;
    DC_HIDDEN explicit Snapshot(std::unique_ptr<const Parts> parts);

    const std::unique_ptr<const Parts> _parts;
};

}  // namespace datacache
