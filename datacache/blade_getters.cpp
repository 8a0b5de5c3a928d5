#include "datacache/DataCache.h"
#include "datacache/bit_sets.h"

namespace {

constexpr uint16_t kNoSlot = 65535;

}  // namespace

uint16_t DataCache::getFirstRootIOBladeIndex() const {
    const AccessGuard guard;
    // Required: all slots that can have an entry, while the next-step stops at the slots of the chassis.
    for (uint16_t slot = 0; slot < kMaxSlots; ++slot) {
        if (_bladeState.ioBlades[slot]) return slot;
    }
    return kNoSlot;
}

uint16_t DataCache::getNextRootIOBladeIndex(const uint16_t& slot) const {
    const AccessGuard guard;
    // A chassis of more slots than there are entries makes the walk throw once it comes to the end of them.
    for (uint32_t next = static_cast<uint16_t>(slot + 1); next < bladeSlotCount; ++next) {
        if (!bitTest(_bladeState.ioBlades, next)) continue;
        cim_log(CIM_LOG_TRACE, "DCACHE: getNextRootIOBladeIndex( %d ) returns %d\n", slot,
                static_cast<int>(next));
        return static_cast<uint16_t>(next);
    }
    return kNoSlot;
}

uint16_t DataCache::getRootTemperatureSensorCount(const uint16_t& slot) const {
    const AccessGuard guard;
    return slot < kMaxSlots ? _bladeState.tempSensors[slot] : uint16_t{0};
}

uint16_t DataCache::getRootVoltageSensorCount(const uint16_t& slot) const {
    const AccessGuard guard;
    return slot < kMaxSlots ? _bladeState.voltageSensors[slot] : uint16_t{0};
}

uint16_t DataCache::getRootSlotCount() const {
    const AccessGuard guard;
    return _bladeState.slotCount;
}
