#pragma once

#include <array>
#include <bitset>
#include <memory>

#include "common/AccessLock.h"
#include "common/Mutex.h"
#include "datacache/DataCache.h"
#include "datacache/Snapshot.h"

namespace datacache {

/** What a snapshot holds: each area is shared with the snapshots in which it is the same. */
struct Snapshot::Parts {
    uint64_t serial = 0;
    WallTime publishedAt{};
    bool ready = false;
    std::array<SnapshotArea, kCacheAreas> areas{};
    std::shared_ptr<const SwitchState> localSwitch;
    std::shared_ptr<const ChassisState> chassis;
    std::shared_ptr<const BladeState> blades;
    std::shared_ptr<const PortState> ports;
    std::shared_ptr<const TransceiverState> transceivers;
    std::shared_ptr<const std::vector<std::string>> accounts;
    std::shared_ptr<const FabricCache> fabric;
    std::shared_ptr<const ZoningDatabase> zoning;
    uint32_t zoningVersion = 0;  ///< the zoning cache's, when it was copied
};

/**
 * Makes and keeps the process's newest snapshot. There is one publisher for all instances of the cache, so
 * that a host may ask before there is one. What a pass touches is only noted until a snapshot is published;
 * while snapshots are off, nothing is copied.
 */
class SnapshotPublisher {
  public:
    static SnapshotPublisher& instance();

    /** Turns snapshots on, or off, which drops the newest one. False when they were so already. */
    bool turn(bool on) DC_EXCLUDES(_mutex);
    /** The newest snapshot, or null. Waits for no pass. */
    std::shared_ptr<const Snapshot> newest() DC_EXCLUDES(_mutex);

    /** The records of an area may differ from those of the newest snapshot. */
    void touch(CacheArea area) DC_REQUIRES(access_lock);
    void touchTransceivers() DC_REQUIRES(access_lock);
    /**
     * Publishes the cache's state where something may have changed since the newest snapshot. When memory is
     * short that one stays, and the next call tries again. Throws nothing of its own.
     */
    void publish(const DataCache& cache) DC_REQUIRES(access_lock) DC_EXCLUDES(_mutex);

  private:
    friend class SnapshotPass;
    friend class SnapshotRead;
    /** The records that are copied one by one; the zoning tells by its version whether it changed. */
    enum Part { SWITCH, CHASSIS, BLADES, PORTS, TRANSCEIVERS, ACCOUNTS, FABRIC, PARTS };

    /** What differs from `before`, which may be null, copied; null where nothing differs. */
    std::unique_ptr<Snapshot::Parts> changed(const DataCache& cache, const Snapshot* before) const
        DC_REQUIRES(access_lock);

    /** Whether no pass has ended with a snapshot since they were turned on. */
    bool inFirstPass() DC_EXCLUDES(_mutex);
    void passEnded() DC_EXCLUDES(_mutex);

    Mutex _mutex;  ///< below all other locks; held for a few stores at a time
    bool _on DC_GUARDED_BY(_mutex) = false;
    uint32_t _turns DC_GUARDED_BY(_mutex) = 0;        ///< how often they were turned on
    uint32_t _turnsServed DC_GUARDED_BY(_mutex) = 0;  ///< these when a pass last ended with a snapshot
    std::shared_ptr<const Snapshot> _newest DC_GUARDED_BY(_mutex);

    uint64_t _serial DC_GUARDED_BY(access_lock) = 0;     ///< of the last one published
    std::bitset<PARTS> _due DC_GUARDED_BY(access_lock);  ///< to be copied
    unsigned _passes DC_GUARDED_BY(access_lock) = 0;     ///< that run: a callback can nest them
    unsigned _reads DC_GUARDED_BY(access_lock) = 0;      ///< of areas that are under way: these too
};

/** A pass, for the publisher: publishes at its end, if it is not inside another one. */
class SnapshotPass {
  public:
    explicit SnapshotPass(const DataCache& cache) DC_REQUIRES(access_lock);
    ~SnapshotPass() DC_REQUIRES(access_lock);
    SnapshotPass(const SnapshotPass&) = delete;
    SnapshotPass& operator=(const SnapshotPass&) = delete;

    /** Publishes before the end, so that the host finds the snapshot when it is called. */
    void publish() DC_REQUIRES(access_lock);

  private:
    const DataCache& _cache;
};

/**
 * A read of an area, for the publisher, from before its first call to after its last record. The first pass
 * publishes at its end; so does one outside of any pass.
 */
class SnapshotRead {
  public:
    SnapshotRead(const DataCache& cache, CacheArea area) DC_REQUIRES(access_lock);
    ~SnapshotRead() DC_REQUIRES(access_lock);
    SnapshotRead(const SnapshotRead&) = delete;
    SnapshotRead& operator=(const SnapshotRead&) = delete;

  private:
    const DataCache& _cache;
};

}  // namespace datacache
