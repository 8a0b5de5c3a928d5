#include "simulator/areas/key_step.h"

namespace vexsim {
namespace {

constexpr int64_t kMostUnits = 65535;

/** Power supplies and fans: both are counted, and each has a state word. */
struct UnitKind {
    const char* field; /**< in [chassis] */
    const char* countKey;
    const char* key; /**< followed by the unit's number, from 0 */
    const char* label;
};

constexpr UnitKind kPowerSupply{"power_supplies", "Oper.Chassis.0.PowerSupplies",
                                "Oper.Chassis.0.PowerSupply.", "Power supply"};
constexpr UnitKind kFan{"fans", "Oper.Chassis.0.Fans", "Oper.Chassis.0.Fan.", "Fan"};

constexpr Words kUnitStates{"Good", "Bad", "NotInstalled", "Unknown"};

void setUnits(Switch& target, const UnitKind& kind, const std::vector<std::string>& states) {
    target.set(kind.countKey, std::to_string(states.size()));
    for (size_t i = 0; i < states.size(); ++i) target.set(kind.key + std::to_string(i), states[i]);
}

/** A list of states, or a number of good ones. */
void loadUnits(TableReader& table, Switch& target, const UnitKind& kind) {
    if (!table.has(kind.field)) return;
    if (table.isInteger(kind.field)) {
        const auto count = static_cast<size_t>(table.integer(kind.field, 0, kMostUnits));
        setUnits(target, kind, std::vector<std::string>(count, "Good"));
    } else {
        setUnits(target, kind, table.words(kind.field, kUnitStates));
    }
}

void setChassisDefaults(Switch& target) {
    setUnits(target, kPowerSupply, {});
    setUnits(target, kFan, {});
    target.set("Oper.Chassis.0.MaxSlots", "0");
    target.set("Oper.Switch.EnhFaultMonFeature", "False");
}

void loadChassis(TableReader& table, Switch& target) {
    loadUnits(table, target, kPowerSupply);
    loadUnits(table, target, kFan);
    if (table.has("slots")) {
        const int64_t slots = table.integer("slots", 0, kMostUnits);
        target.set("Oper.Chassis.0.MaxSlots", std::to_string(slots));
        for (int64_t slot = 0; slot < slots; ++slot) {
            target.set("Oper.Blade." + std::to_string(slot) + ".FaultList", "");
        }
    }
    if (table.has("enhanced_fault_monitoring")) {
        const bool on = table.flag("enhanced_fault_monitoring");
        target.set("Oper.Switch.EnhFaultMonFeature", on ? "True" : "False");
    }
}

template <const UnitKind& kind>
void needUnit(const Switch& target, const StepValues& values) {
    if (!target.has(kind.key + values.at("index-1")))
        throw StepError(std::string("the chassis has no ") + kind.label + ' ' + values.at("index"));
}

/** Units count from 1 on the chassis' label, their keys from 0. */
std::vector<StepField> unitFields() {
    return {numberField("index", 1, kMostUnits), wordField("state", kUnitStates)};
}

}  // namespace

Area chassisArea() {
    Area made;
    made.name = "chassis";
    made.sections = {{"chassis", false, loadChassis}};
    made.steps = {
        keyStep({"power_supply",
                 unitFields(),
                 {{"Oper.Chassis.0.PowerSupply.{index-1}", "{state}"}},
                 VEX_EVENT_CHASSIS_OPERCHANGE,
                 "Power supply {index} {state}",
                 {},
                 needUnit<kPowerSupply>}),
        keyStep({"fan",
                 unitFields(),
                 {{"Oper.Chassis.0.Fan.{index-1}", "{state}"}},
                 VEX_EVENT_CHASSIS_OPERCHANGE,
                 "Fan {index} {state}",
                 {},
                 needUnit<kFan>}),
    };
    made.defaults = setChassisDefaults;
    return made;
}

}  // namespace vexsim
