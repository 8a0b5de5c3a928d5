#include "datacache/SnapshotPublisher.h"

#include <exception>
#include <new>
#include <utility>

#include "datacache/EvalSignal.h"
#include "datacache/add_switch.h"
#include "datacache/wake_ups.h"

namespace datacache {

namespace {

/** Copies a record where it is to be copied, or where there is no copy yet; says whether it did. */
template <typename Record>
bool renew(std::shared_ptr<const Record>& part, bool due, const Record& now) {
    if (!due && part != nullptr) return false;
    part = std::make_shared<const Record>(now);
    return true;
}

std::shared_ptr<const FabricCache> copyOf(const FabricCache& fabric) {
    auto copy = std::make_shared<FabricCache>();
    copyFabric(fabric, *copy);
    return copy;
}

/** Brings what is known of the areas up to now; says whether it differed. */
bool renewAreas(std::array<SnapshotArea, kCacheAreas>& areas) {
    const Health health = DataCache::health();
    bool differed = false;
    for (size_t i = 0; i < kCacheAreas; ++i) {
        const AreaHealth& now = health[static_cast<CacheArea>(i)];
        SnapshotArea& area = areas[i];
        differed = differed || area.upToDate != now.upToDate || area.lastGoodRead != now.lastGoodRead;
        area.upToDate = now.upToDate;
        area.lastGoodRead = now.lastGoodRead;
        area.known = now.lastGoodRead != WallTime{};
    }
    return differed;
}

}  // namespace

SnapshotPublisher& SnapshotPublisher::instance() {
    // Never destroyed, as the evaluation thread runs on while a process ends by exit(); and in a place of its
    // own, since a pass must not fail for want of memory here.
    alignas(SnapshotPublisher) static unsigned char room[sizeof(SnapshotPublisher)];
    static auto* const publisher = new (room) SnapshotPublisher;
    return *publisher;
}

bool SnapshotPublisher::turn(bool on) {
    std::shared_ptr<const Snapshot> dropped;  // is freed after the mutex was given back
    const Lock guard(_mutex);
    if (on == _on) return false;
    _on = on;
    if (on) ++_turns;
    _newest.swap(dropped);
    return true;
}

std::shared_ptr<const Snapshot> SnapshotPublisher::newest() {
    const Lock guard(_mutex);
    return _newest;
}

void SnapshotPublisher::touch(CacheArea area) {
    static constexpr unsigned kPartsOf[kCacheAreas] = {
        1U << SWITCH,
        1U << CHASSIS,
        1U << BLADES,
        1U << PORTS | 1U << TRANSCEIVERS | 1U << FABRIC,  // the scan keeps the local switch's record
        1U << ACCOUNTS,
        1U << FABRIC,
        0,  // a read of the zoning mostly asks for its checksums alone, so the version tells what was loaded
    };
    _due |= kPartsOf[static_cast<size_t>(area)];
}

void SnapshotPublisher::touchTransceivers() {
    _due.set(TRANSCEIVERS);
}

std::unique_ptr<Snapshot::Parts> SnapshotPublisher::changed(const DataCache& cache,
                                                            const Snapshot* before) const {
    auto parts = before == nullptr ? std::make_unique<Snapshot::Parts>()
                                   : std::make_unique<Snapshot::Parts>(*before->_parts);
    const bool ready = cache._cacheReady;
    bool changed = std::exchange(parts->ready, ready) != ready;
    changed |= renewAreas(parts->areas);
    changed |= renew(parts->localSwitch, _due[SWITCH], cache._switchState);
    changed |= renew(parts->chassis, _due[CHASSIS], cache._chassisState);
    changed |= renew(parts->blades, _due[BLADES], cache._bladeState);
    changed |= renew(parts->ports, _due[PORTS], cache._portState);
    changed |= renew(parts->transceivers, _due[TRANSCEIVERS], cache._transceivers);
    changed |= renew(parts->accounts, _due[ACCOUNTS], cache._accounts);
    if (_due[FABRIC] || parts->fabric == nullptr) {
        parts->fabric = copyOf(cache._fabric);
        changed = true;
    }
    const ZoningCache& zoning = cache._zoningCache;
    if (parts->zoningVersion != zoning._version || parts->zoning == nullptr) {
        parts->zoning = std::make_shared<const ZoningDatabase>(zoning.database());
        parts->zoningVersion = zoning._version;
        changed = true;
    }
    return changed ? std::move(parts) : nullptr;
}

void SnapshotPublisher::publish(const DataCache& cache) {
    std::shared_ptr<const Snapshot> before;
    uint32_t turn = 0;
    {
        const Lock guard(_mutex);
        if (!_on) return;
        before = _newest;
        turn = _turns;
    }
    try {
        std::unique_ptr<Snapshot::Parts> parts = changed(cache, before.get());
        if (parts == nullptr) return;
        parts->serial = _serial + 1;
        parts->publishedAt = std::chrono::system_clock::now();
        std::shared_ptr<const Snapshot> next(new Snapshot(std::move(parts)));
        const Lock guard(_mutex);
        if (!_on || _turns != turn) return;  // turned off meanwhile, so nothing may be left of it
        _newest.swap(next);                  // what was the newest is freed after the mutex is given back
        ++_serial;
        _due.reset();
    } catch (const std::exception&) {
        cim_log(CIM_LOG_TRACE, "DCACHE: no memory for a snapshot, the next pass tries again\n");
    }
}

bool SnapshotPublisher::inFirstPass() {
    const Lock guard(_mutex);
    return _turns != _turnsServed;
}

void SnapshotPublisher::passEnded() {
    const Lock guard(_mutex);
    if (_newest != nullptr) _turnsServed = _turns;
}

SnapshotPass::SnapshotPass(const DataCache& cache) : _cache(cache) {
    ++SnapshotPublisher::instance()._passes;
}

SnapshotPass::~SnapshotPass() {
    publish();
    SnapshotPublisher& publisher = SnapshotPublisher::instance();
    if (--publisher._passes == 0) publisher.passEnded();
}

void SnapshotPass::publish() {
    SnapshotPublisher& publisher = SnapshotPublisher::instance();
    // With a read under way, whose callback runs this pass, an area is half read.
    if (publisher._passes == 1 && publisher._reads == 0) publisher.publish(_cache);
}

SnapshotRead::SnapshotRead(const DataCache& cache, CacheArea area) : _cache(cache) {
    SnapshotPublisher& publisher = SnapshotPublisher::instance();
    ++publisher._reads;
    publisher.touch(area);  // at once, as a read that fails or is left may have changed something
}

SnapshotRead::~SnapshotRead() {
    SnapshotPublisher& publisher = SnapshotPublisher::instance();
    if (--publisher._reads != 0) return;
    if (publisher._passes == 0 || (publisher._passes == 1 && publisher.inFirstPass()))
        publisher.publish(_cache);
}

}  // namespace datacache

using namespace datacache;

std::shared_ptr<const Snapshot> DataCache::snapshot() {
    return SnapshotPublisher::instance().newest();
}

void DataCache::setSnapshots(bool on) {
    if (SnapshotPublisher::instance().turn(on) && on) wakeEvaluation();
}
