#include <algorithm>

#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/bit_sets.h"
#include "datacache/cim_status.h"
#include "datacache/reports.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

namespace {

/** The answer of a walk through the slots that is at its end. */
constexpr uint16_t kNoSlot = 65535;

/** BladeState::kind. */
enum Kind : uint16_t { KIND_NONE = 0, KIND_FAN = 1, KIND_POWER_SUPPLY = 2, KIND_CPU = 3, KIND_IO = 4 };

/** Components of one kind in all slots, those that leave no entry included. */
struct ComponentCounts {
    uint16_t fans = 0;
    uint16_t powerSupplies = 0;
};

template <typename Event>
void sendAdd(const DataCacheCallback& host, const Wwn& name, uint16_t slot) {
    notify(host, Event(name, slot));
}

template <typename Event>
void sendRemove(const DataCacheCallback& host, const Wwn& name, uint16_t slot, const ComponentCounts&) {
    notify(host, Event(name, slot));
}

/** For events that tell how many of the kind are left. */
template <typename Event, uint16_t ComponentCounts::*Left>
void sendRemoveOf(const DataCacheCallback& host, const Wwn& name, uint16_t slot,
                  const ComponentCounts& counts) {
    notify(host, Event(name, slot, counts.*Left));
}

/** One kind of component: the switch's word for it, and how the host hears that one came or went. */
struct KindRow {
    Kind kind;
    const char* type;
    void (*sendAdd)(const DataCacheCallback&, const Wwn&, uint16_t slot);
    void (*sendRemove)(const DataCacheCallback&, const Wwn&, uint16_t slot, const ComponentCounts&);
};

constexpr KindRow kKinds[] = {
    {KIND_FAN, "FAN", sendAdd<DCEventFanAdd>, sendRemoveOf<DCEventFanRemove, &ComponentCounts::fans>},
    {KIND_POWER_SUPPLY, "PS", sendAdd<DCEventPowerSupplyAdd>,
     sendRemoveOf<DCEventPowerSupplyRemove, &ComponentCounts::powerSupplies>},
    {KIND_CPU, "CPU", sendAdd<DCEventCPUAdd>, sendRemove<DCEventCPURemove>},
    {KIND_IO, "IO", sendAdd<DCEventBladeAdd>, sendRemove<DCEventBladeRemove>},
};

Kind kindOf(std::string_view type) {
    for (const KindRow& row : kKinds) {
        if (type == row.type) return row.kind;
    }
    return KIND_NONE;
}

/** What the switch says of one slot. */
struct Slot {
    Kind kind = KIND_NONE;  ///< of an empty slot none
    uint16_t operStatus = 0;
    uint16_t tempSensors = 0;
    uint16_t voltageSensors = 0;
};

/** Reads one slot; false when the call or any key failed. */
bool readSlot(uint32_t handle, uint32_t number, Slot& slot) {
    SmlBatch batch;
    const size_t stateKey = batch.add("Oper.Blade.%u.OperState", number);
    const size_t partKey = batch.add("Oper.Blade.%u.PlanarPartNum", number);
    const size_t serialKey = batch.add("Oper.Blade.%u.BoardSerialNum", number);
    const size_t typeKey = batch.add("Oper.Blade.%u.Type", number);
    const size_t adminKey = batch.add("Oper.Blade.%u.AdminState", number);
    const size_t diagnosisKey = batch.add("Oper.Blade.%u.DiagStatus", number);
    const size_t temperatureKey = batch.add("Oper.Blade.%u.TempSensors", number);
    const size_t voltageKey = batch.add("Oper.Blade.%u.VoltageSensors", number);
    if (!batch.read(handle)) return false;

    const std::string_view state = batch.text(stateKey);
    slot.operStatus = cimBladeStatus(state, batch.text(adminKey), batch.text(diagnosisKey)).front();
    const bool absent = state == "NotInstalled" || state == "PoweredOff";
    if (absent || state.empty() || batch.text(partKey).empty() || batch.text(serialKey).empty()) return true;
    slot.kind = kindOf(batch.text(typeKey));
    slot.tempSensors = toUint16(batch.text(temperatureKey));
    slot.voltageSensors = toUint16(batch.text(voltageKey));
    return true;
}

/** Empties every slot; the count and `loaded` stay. */
void clearSlots(BladeState& state) {
    BladeState empty;
    empty.loaded = state.loaded;
    empty.slotCount = state.slotCount;
    state = empty;
}

/**
 * Stores a slot. One beyond the last entry leaves no trace, but for a blade, which throws std::out_of_range
 * "bitset::set".
 */
void storeSlot(BladeState& state, size_t number, const Slot& slot) {
    if (slot.kind == KIND_IO) bitSet(state.ioBlades, number);
    if (slot.kind == KIND_CPU) bitSet(state.cpuBlades, number);
    if (number >= kMaxSlots) return;
    state.kind[number] = slot.kind;
    state.tempSensors[number] = slot.tempSensors;
    state.voltageSensors[number] = slot.voltageSensors;
    state.operStatus[number] = slot.operStatus;
}

/** Reads the sensors of a switch that is its own only slot. */
bool readSingleSlot(uint32_t handle, BladeState& state) {
    SmlBatch batch;
    batch.add("Oper.Switch.Nop");  // part of the request, read by nobody
    const size_t temperatureKey = batch.add("Oper.Blade.0.TempSensors");
    const size_t voltageKey = batch.add("Oper.Blade.0.VoltageSensors");
    const bool answered = batch.get(handle);
    clearSlots(state);  // whether or not the call succeeded
    if (!answered) {
        logUpdateFailed("_getBladeInfo", 1435);
        return false;
    }
    // Such a switch need not have sensors, so each key fails alone and without a report.
    if (batch.status(temperatureKey) == 0) state.tempSensors[0] = toUint16(batch.text(temperatureKey));
    if (batch.status(voltageKey) == 0) state.voltageSensors[0] = toUint16(batch.text(voltageKey));
    return true;
}

/** Reads slot after slot; one that fails ends it, and the state keeps what was read before. */
bool readSlots(uint32_t handle, BladeState& state, ComponentCounts& counts) {
    for (uint16_t number = 0; number < state.slotCount; ++number) {
        Slot slot;
        if (!readSlot(handle, number, slot)) {
            logUpdateFailed("_getBladeInfo", 1465);
            return false;
        }
        clearSlots(state);  // Required: each slot read discards the earlier ones.
        storeSlot(state, number, slot);
        if (slot.kind == KIND_FAN) ++counts.fans;
        if (slot.kind == KIND_POWER_SUPPLY) ++counts.powerSupplies;
    }
    return true;
}

void reportChanges(const DataCacheCallback& host, const Wwn& name, const BladeState& before,
                   const BladeState& now, const ComponentCounts& counts) {
    const uint16_t slots = std::min(now.slotCount, kMaxSlots);
    for (uint16_t slot = 0; slot < slots; ++slot) {
        if (now.kind[slot] == before.kind[slot]) continue;
        for (const KindRow& row : kKinds) {
            if (row.kind == now.kind[slot]) row.sendAdd(host, name, slot);
        }
        for (const KindRow& row : kKinds) {
            if (row.kind == before.kind[slot]) row.sendRemove(host, name, slot, counts);
        }
    }
}

}  // namespace

bool DataCache::_getBladeInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getBladeInfo()\n");
    _prevBladeState = _bladeState;
    SmlBatch batch;
    const size_t slotsKey = batch.add("Oper.Chassis.0.MaxSlots");
    if (!batch.read(_handle)) {
        logUpdateFailed("_getBladeInfo", 1415);
        return false;
    }
    _bladeState.slotCount = toUint16(batch.text(slotsKey));
    HealthMonitor::instance().slots(int64_t{_bladeState.slotCount} - kMaxSlots);
    // A single slot is no chassis: it reports nothing and does not count as loaded.
    if (_bladeState.slotCount == 1) return readSingleSlot(_handle, _bladeState);

    ComponentCounts counts;
    if (!readSlots(_handle, _bladeState, counts)) return false;
    if (_bladeState.loaded) {
        reportChanges(_callback, _switchState.switchWwn, _prevBladeState, _bladeState, counts);
    }
    _bladeState.loaded = true;
    return true;
}

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
