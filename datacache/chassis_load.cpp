#include <algorithm>

#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/cim_status.h"
#include "datacache/reports.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

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

/** What is read first: the counts, and whether there are fault lists. */
struct ChassisCounts {
    uint16_t powerSupplies = 0;
    uint16_t fans = 0;
    uint16_t slots = 0;
    bool monitoring = false;
};

bool readCounts(uint32_t handle, ChassisCounts& counts) {
    SmlBatch batch;
    const size_t powerSuppliesKey = batch.add("Oper.Chassis.0.PowerSupplies");
    const size_t fansKey = batch.add("Oper.Chassis.0.Fans");
    const size_t slotsKey = batch.add("Oper.Chassis.0.MaxSlots");
    const size_t monitoringKey = batch.add("Oper.Switch.EnhFaultMonFeature");
    if (!batch.read(handle)) return false;
    counts = {partCount(batch.text(powerSuppliesKey)), partCount(batch.text(fansKey)),
              slotCount(batch.text(slotsKey)), batch.isTrue(monitoringKey)};
    return true;
}

/** Reads the statuses of as many units as the state counts, and the fault lists. */
bool readUnits(uint32_t handle, const ChassisCounts& counts, ChassisState& state) {
    const uint16_t faultLists = std::min(counts.slots, kMaxFaultListSlots);
    SmlBatch batch(size_t{1} + counts.powerSupplies + counts.fans + faultLists);
    for (int i = 0; i < counts.powerSupplies; ++i) batch.add("Oper.Chassis.0.PowerSupply.%d", i);
    for (int i = 0; i < counts.fans; ++i) batch.add("Oper.Chassis.0.Fan.%d", i);
    const size_t switchFaultsKey =
        batch.add("%s", counts.monitoring ? "Oper.Switch.FaultList" : "Oper.Switch.Nop");
    for (int slot = 0; slot < faultLists; ++slot) {
        counts.monitoring ? batch.add("Oper.Blade.%d.FaultList", slot) : batch.add("Oper.Switch.Nop");
    }
    if (!batch.read(handle)) return false;

    size_t record = 0;
    for (size_t i = 0; i < counts.powerSupplies; ++i) {
        state.powerSupplyStatus[i] = hardwareStatus(batch.text(record++));
    }
    for (size_t i = 0; i < counts.fans; ++i) state.fanStatus[i] = hardwareStatus(batch.text(record++));
    Faults faults;
    faults.scanSwitch(batch.text(switchFaultsKey));
    for (size_t slot = 1; slot <= faultLists; ++slot) faults.scanBlade(batch.text(switchFaultsKey + slot));
    state.switchFaults = faults.statuses();
    return true;
}

void reportPowerSupplies(const DataCacheCallback& host, const Wwn& name, const ChassisState& before,
                         const ChassisState& now) {
    const auto& statuses = now.powerSupplyStatus;
    const auto good = static_cast<uint16_t>(
        std::count(statuses.begin(), statuses.begin() + now.powerSupplyCount, HARDWARE_GOOD));
    for (uint16_t i = 0; i < now.powerSupplyCount; ++i) {
        const HardwareStatus status = statuses[i];
        const HardwareStatus previous = before.powerSupplyStatus[i];
        // Required: events count units from 1, though keys count them from 0.
        const auto number = static_cast<uint16_t>(i + 1);
        if (status == previous) continue;
        if (status == HARDWARE_NOT_INSTALLED) {
            notify(host, DCEventPowerSupplyRemove(name, number, good));
        } else if (previous == HARDWARE_NOT_INSTALLED) {
            notify(host, DCEventPowerSupplyAdd(name, number));
        } else if (status == HARDWARE_BAD) {
            notify(host, DCEventPowerSupplyFail(name, number, good));
        }
    }
}

}  // namespace

int DataCache::_getChassisInfo() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _getChassisInfo()\n");
    ChassisCounts counts;
    if (!readCounts(_handle, counts)) return 0;
    _prevChassisState = _chassisState;
    _chassisState.powerSupplyCount = counts.powerSupplies;
    _chassisState.fanCount = counts.fans;
    bladeSlotCount = counts.slots;
    // A failure here leaves the new counts in place, with the statuses and faults of the last good read.
    if (!readUnits(_handle, counts, _chassisState)) return 0;
    if (_prevChassisState.loaded) {
        reportPowerSupplies(_callback, _switchState.switchWwn, _prevChassisState, _chassisState);
    }
    _chassisState.loaded = true;
    return 1;
}

StatusList DataCache::getSwitchFaults() const {
    const AccessGuard guard;
    return _chassisState.switchFaults;
}

uint16_t DataCache::getRootPowerSupplyCount() const {
    const AccessGuard guard;
    return _chassisState.powerSupplyCount;
}
