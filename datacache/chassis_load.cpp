#include <algorithm>

#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/cim_status.h"
#include "switchlib/SmlBatch.h"

namespace {

/** Slots whose fault lists are read; what a switch claims beyond that is no chassis that exists. */
constexpr uint16_t kMaxFaultListSlots = 256;

/** A count of parts, cut to the entries that there are; a negative one is none. */
uint16_t partCount(std::string_view text) {
    return toInt(text) < 0 ? uint16_t{0} : std::min(toUint16(text), kMaxChassisParts);
}

/** Slots of a chassis with slots; a switch with fewer than 2 has none. */
uint16_t slotCount(std::string_view text) {
    const int32_t slots = toInt(text);
    const auto stored = static_cast<uint16_t>(slots);
    return slots < 2 || stored < 2 ? uint16_t{0} : stored;
}

bool contains(std::string_view text, const char* marker) {
    return text.find(marker) != std::string_view::npos;
}

/** The two faults that fault lists can tell of. */
struct Faults {
    bool managementProcessor = false;
    bool selfTest = false;

    void scanSwitch(std::string_view list) {
        managementProcessor |= contains(list, "HW_MP_ACCESS_CPU0") || contains(list, "HW_MP_ACCESS_CPU1") ||
                               contains(list, "HW_MP_DATA_MISMATCH");
        selfTest |= contains(list, "FW_POST_FAIL");
    }
    void scanBlade(std::string_view list) {
        managementProcessor |= contains(list, "HW_MP_ACCESS");
        selfTest |= contains(list, "FW_POST_FAIL");
    }
    StatusList statuses() const {
        return {selfTest ? CIM_SELF_TEST_FAILED : CIM_UNKNOWN,
                managementProcessor ? CIM_MANAGEMENT_ACCESS_FAULT : CIM_UNKNOWN};
    }
};

}  // namespace

int DataCache::_getChassisInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getChassisInfo()\n");
    SmlBatch counts(4);
    const size_t powerSuppliesKey = counts.add("Oper.Chassis.0.PowerSupplies");
    const size_t fansKey = counts.add("Oper.Chassis.0.Fans");
    const size_t slotsKey = counts.add("Oper.Chassis.0.MaxSlots");
    const size_t monitoringKey = counts.add("Oper.Switch.EnhFaultMonFeature");
    if (!counts.read(_handle)) return 0;

    _prevChassisState = _chassisState;
    _chassisState.powerSupplyCount = partCount(counts.text(powerSuppliesKey));
    _chassisState.fanCount = partCount(counts.text(fansKey));
    bladeSlotCount = slotCount(counts.text(slotsKey));
    const bool monitoring = counts.isTrue(monitoringKey);
    const uint16_t faultListSlots = std::min(bladeSlotCount, kMaxFaultListSlots);

    SmlBatch parts(size_t{1} + _chassisState.powerSupplyCount + _chassisState.fanCount + faultListSlots);
    for (int i = 0; i < _chassisState.powerSupplyCount; ++i) parts.add("Oper.Chassis.0.PowerSupply.%d", i);
    for (int i = 0; i < _chassisState.fanCount; ++i) parts.add("Oper.Chassis.0.Fan.%d", i);
    const size_t switchFaultsKey = parts.add("%s", monitoring ? "Oper.Switch.FaultList" : "Oper.Switch.Nop");
    for (int slot = 0; slot < faultListSlots; ++slot) {
        monitoring ? parts.add("Oper.Blade.%d.FaultList", slot) : parts.add("Oper.Switch.Nop");
    }
    // A failure here leaves the new counts in place, with the statuses and faults of the last good read.
    if (!parts.read(_handle)) return 0;

    size_t record = 0;
    for (size_t i = 0; i < _chassisState.powerSupplyCount; ++i) {
        _chassisState.powerSupplyStatus[i] = hardwareStatus(parts.text(record++));
    }
    for (size_t i = 0; i < _chassisState.fanCount; ++i) {
        _chassisState.fanStatus[i] = hardwareStatus(parts.text(record++));
    }
    Faults faults;
    faults.scanSwitch(parts.text(switchFaultsKey));
    for (size_t slot = 0; slot < faultListSlots; ++slot)
        faults.scanBlade(parts.text(switchFaultsKey + 1 + slot));
    _chassisState.switchFaults = faults.statuses();

    if (_prevChassisState.loaded) _reportPowerSupplies();
    _chassisState.loaded = true;
    return 1;
}

void DataCache::_reportPowerSupplies() {
    const auto& now = _chassisState.powerSupplyStatus;
    const auto& before = _prevChassisState.powerSupplyStatus;
    const uint16_t count = _chassisState.powerSupplyCount;
    const auto good = static_cast<uint16_t>(std::count(now.begin(), now.begin() + count, HARDWARE_GOOD));
    const Wwn& name = _switchState.switchWwn;
    for (uint16_t i = 0; i < count; ++i) {
        const auto number =
            static_cast<uint16_t>(i + 1);  // counted from 1 in events, from 0 in keys: meant so
        if (now[i] == before[i]) continue;
        if (now[i] == HARDWARE_NOT_INSTALLED) {
            DCEventPowerSupplyRemove event(name, number, good);
            _notifyHost(event);
        } else if (before[i] == HARDWARE_NOT_INSTALLED) {
            DCEventPowerSupplyAdd event(name, number);
            _notifyHost(event);
        } else if (now[i] == HARDWARE_BAD) {
            DCEventPowerSupplyFail event(name, number, good);
            _notifyHost(event);
        }
    }
}

StatusList DataCache::getSwitchFaults() const {
    const AccessGuard guard;
    return _chassisState.switchFaults;
}

uint16_t DataCache::getRootPowerSupplyCount() const {
    const AccessGuard guard;
    return _chassisState.powerSupplyCount;
}

HardwareStatus DataCache::_smlConvToHardwareStatus(char* state) {
    return hardwareStatus(state == nullptr ? "" : state);
}
