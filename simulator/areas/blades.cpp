#include "simulator/areas/key_step.h"
#include "simulator/areas/keys.h"

namespace vexsim {
namespace {

constexpr int64_t kLastSlot = 65535;
constexpr int64_t kMostSensors = 65535;

/** The keys of a slot, behind "Oper.Blade.SLOT.", and what an empty slot answers. */
constexpr struct {
    const char* name;
    const char* empty;
} kSlotKeys[] = {
    {"OperState", "NotInstalled"},
    {"PlanarPartNum", ""},
    {"BoardSerialNum", ""},
    {"Type", ""},
    {"AdminState", ""},
    {"DiagStatus", ""},
    {"TempSensors", "0"},
    {"VoltageSensors", "0"},
    {"FaultList", ""},
};

std::string slotKey(int64_t slot, const char* name) {
    return "Oper.Blade." + std::to_string(slot) + '.' + name;
}

constexpr Words kBladeStates{"Online", "Offline", "Diagnostics", "Down",
                             "Downed", "Pending", "PoweredOff",  "NotInstalled"};

constexpr Words kBladeAdminStates{"Online", "Offline", "Diagnostics", "Down", "Downed", "PoweredOff"};

constexpr Words kDiagnoses{"Passed", "Compromised", "Failed"};

std::string wordOr(TableReader& table, const char* field, Words words, const char* fallback) {
    return table.has(field) ? table.word(field, words) : fallback;
}

std::string sensors(TableReader& table, const char* field) {
    return std::to_string(table.has(field) ? table.integer(field, 0, kMostSensors) : 0);
}

/** What is plugged into a slot; the same in a switch file and in a step. */
struct Blade {
    int64_t slot;
    std::string type, part, serial, state, admin, diagnosis, tempSensors, voltageSensors;

    explicit Blade(TableReader& table)
        : slot(table.integer("slot", 0, kLastSlot)),
          type(table.word("type", {"IO", "CPU", "PS", "FAN"})),
          part(table.has("part") ? table.text("part") : "PN-" + type),
          serial(table.has("serial") ? table.text("serial") : "SN-" + type + '-' + std::to_string(slot)),
          state(wordOr(table, "state", kBladeStates, "Online")),
          admin(wordOr(table, "admin", kBladeAdminStates, "Online")),
          diagnosis(wordOr(table, "diagnosis", kDiagnoses, "Passed")),
          tempSensors(sensors(table, "temp_sensors")),
          voltageSensors(sensors(table, "voltage_sensors")) {}

    void plugInto(Switch& target) const {
        target.set(slotKey(slot, "OperState"), state);
        target.set(slotKey(slot, "PlanarPartNum"), part);
        target.set(slotKey(slot, "BoardSerialNum"), serial);
        target.set(slotKey(slot, "Type"), type);
        target.set(slotKey(slot, "AdminState"), admin);
        target.set(slotKey(slot, "DiagStatus"), diagnosis);
        target.set(slotKey(slot, "TempSensors"), tempSensors);
        target.set(slotKey(slot, "VoltageSensors"), voltageSensors);
    }
};

/** The value of the store: what is not there is an empty slot's. */
bool occupied(const Switch& target, int64_t slot) {
    return target.value(slotKey(slot, "OperState"), "NotInstalled") != "NotInstalled";
}

void requireSlot(const Switch& target, int64_t slot) {
    if (slot >= target.number("Oper.Chassis.0.MaxSlots")) {
        throw StepError("the chassis has no slot " + std::to_string(slot));
    }
}

void requireBlade(const Switch& target, int64_t slot) {
    requireSlot(target, slot);
    if (!occupied(target, slot)) throw StepError("slot " + std::to_string(slot) + " is empty");
}

void raiseBlade(Switch& target, vex_eventcode_e code, int64_t slot) {
    target.raise(code, "Blade " + std::to_string(slot), {{0, static_cast<int32_t>(slot), 0}});
}

void loadBlade(TableReader& table, Switch& target) {
    const Blade blade(table);
    if (blade.slot >= target.number("Oper.Chassis.0.MaxSlots")) {
        table.fail("slot", "the chassis has no slot " + std::to_string(blade.slot));
    }
    if (target.has(slotKey(blade.slot, "Type"))) {
        table.fail("slot", "slot " + std::to_string(blade.slot) + " is described twice");
    }
    blade.plugInto(target);
}

Action readBladeInsert(TableReader& table) {
    return [blade = Blade(table)](Switch& target) {
        requireSlot(target, blade.slot);
        if (occupied(target, blade.slot)) {
            throw StepError("slot " + std::to_string(blade.slot) + " is not empty");
        }
        blade.plugInto(target);
        raiseBlade(target, VEX_EVENT_BLADE_INSERTED, blade.slot);
    };
}

Action readBladeRemove(TableReader& table) {
    const int64_t slot = table.integer("slot", 0, kLastSlot);
    return [slot](Switch& target) {
        requireBlade(target, slot);
        for (const auto& key : kSlotKeys) target.erase(slotKey(slot, key.name));
        target.set(slotKey(slot, "FaultList"), "");  // the slot is there still
        raiseBlade(target, VEX_EVENT_BLADE_REMOVED, slot);
    };
}

/** The keys of the slots that the chassis has and the store has nothing of. */
std::optional<Reading> readEmptySlot(Switch& target, const std::string& key) {
    for (const auto& known : kSlotKeys) {
        const auto middle = keyMiddle(key, "Oper.Blade.", std::string(".") + known.name);
        if (!middle) continue;
        const std::optional<uint16_t> slot = keyNumber(*middle);
        if (!slot || *slot >= target.number("Oper.Chassis.0.MaxSlots")) return std::nullopt;
        return Reading{Ok, known.empty};
    }
    return std::nullopt;
}

}  // namespace

Area bladesArea() {
    Area made;
    made.name = "blades";
    made.sections = {{"blade", true, loadBlade}};
    made.steps = {{"blade_insert", readBladeInsert},
                  {"blade_remove", readBladeRemove},
                  keyStep({"blade_state",
                           {numberField("slot", 0, kLastSlot), optional(wordField("state", kBladeStates)),
                            optional(wordField("admin", kBladeAdminStates)),
                            optional(wordField("diagnosis", kDiagnoses))},
                           {{"Oper.Blade.{slot}.OperState", "{state}"},
                            {"Oper.Blade.{slot}.AdminState", "{admin}"},
                            {"Oper.Blade.{slot}.DiagStatus", "{diagnosis}"}},
                           VEX_EVENT_BLADE_STATE_CHANGE,
                           "Blade {slot}",
                           {nullptr, "slot"},
                           [](const Switch& target, const StepValues& values) {
                               requireBlade(target, std::stoll(values.at("slot")));
                           }})};
    made.read = readEmptySlot;
    return made;
}

}  // namespace vexsim
