#include "simulator/areas/Area.h"

namespace vexsim {
namespace {

constexpr int64_t most_units = 65535;

/** Power supplies and fans: both are counted, and each has a state word. */
struct UnitKind {
    const char* field; /**< in [chassis] */
    const char* count_key;
    const char* key; /**< followed by the unit's number, from 0 */
    const char* label;
};

constexpr UnitKind power_supply{"power_supplies", "Oper.Chassis.0.PowerSupplies",
                                "Oper.Chassis.0.PowerSupply.", "Power supply"};
constexpr UnitKind fan{"fans", "Oper.Chassis.0.Fans", "Oper.Chassis.0.Fan.", "Fan"};

void setUnits(Switch& target, const UnitKind& kind, const std::vector<std::string>& states) {
    target.set(kind.count_key, std::to_string(states.size()));
    for (size_t i = 0; i < states.size(); ++i) target.set(kind.key + std::to_string(i), states[i]);
}

/** A list of states, or a number of good ones. */
void loadUnits(TableReader& table, Switch& target, const UnitKind& kind) {
    if (!table.has(kind.field)) return;
    if (table.isInteger(kind.field)) {
        const auto count = static_cast<size_t>(table.integer(kind.field, 0, most_units));
        setUnits(target, kind, std::vector<std::string>(count, "Good"));
    } else {
        setUnits(target, kind, table.words(kind.field, {"Good", "Bad", "NotInstalled", "Unknown"}));
    }
}

void setDefaults(Switch& target) {
    setUnits(target, power_supply, {});
    setUnits(target, fan, {});
    target.set("Oper.Chassis.0.MaxSlots", "0");
    target.set("Oper.Switch.EnhFaultMonFeature", "False");
}

void loadChassis(TableReader& table, Switch& target) {
    loadUnits(table, target, power_supply);
    loadUnits(table, target, fan);
    if (table.has("slots")) {
        const int64_t slots = table.integer("slots", 0, most_units);
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
Action readUnitStep(TableReader& table) {
    const int64_t index =
        table.integer("index", 1, most_units);  // as on the chassis' label; keys count from 0
    const std::string state = table.word("state", {"Good", "Bad", "NotInstalled", "Unknown"});
    return [index, state](Switch& target) {
        const std::string name = kind.label + (' ' + std::to_string(index));
        const std::string key = kind.key + std::to_string(index - 1);
        if (!target.has(key)) throw StepError("the chassis has no " + name);
        target.set(key, state);
        target.raise(VEX_EVENT_CHASSIS_OPERCHANGE, name + ' ' + state);
    };
}

}  // namespace

Area chassisArea() {
    Area made;
    made.name = "chassis";
    made.sections = {{"chassis", false, loadChassis}};
    made.steps = {{"power_supply", readUnitStep<power_supply>}, {"fan", readUnitStep<fan>}};
    made.defaults = setDefaults;
    return made;
}

}  // namespace vexsim
