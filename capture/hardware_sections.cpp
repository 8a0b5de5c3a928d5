#include <algorithm>
#include <iterator>
#include <sstream>

#include "capture/sections.h"
#include "common/Wwn.h"
#include "simulator/areas/Area.h"
#include "simulator/areas/fields.h"

namespace capture {

namespace {

using vexsim::Field;

/** A field that stands for a key, where the key has a value that the field can say. */
void addField(Table& table, const Field& field, const Answers& answers) {
    const std::string* const value = answers.value(field.key);
    if (value == nullptr) return;
    if (field.kind != Field::Flag) {
        table.add(field.name, quoted(*value));
    } else if (*value == "True" || *value == "False") {
        table.add(field.name, *value == "True" ? "true" : "false");
    }
}

/** One field that says what one key does, written as a text, a number or a flag. */
void addKey(Table& table, const char* field, const Answers& answers, const std::string& key,
            Field::Kind kind = Field::Text) {
    addField(table, {field, key.c_str(), kind, nullptr}, answers);
}

void addNumber(Table& table, const char* field, const Answers& answers, const std::string& key) {
    if (const std::optional<int64_t> number = answers.number(key)) table.add(field, *number);
}

/** The sections whose fields stand for a key each; [switch] has others besides. */
void describeFields(const Answers& answers, Document& document) {
    for (const vexsim::Area& area : vexsim::areas()) {
        for (const vexsim::Section& section : area.sections) {
            if (section.fields == nullptr) continue;
            Table table{'[' + std::string(section.name) + ']'};
            const bool identity = table.heading == "[switch]";
            const std::string* const wwn = answers.value("Oper.Switch.WWN");
            const bool nameless = identity && (wwn == nullptr || Wwn(*wwn).isNull());
            if (nameless) table.add("wwn", quoted("1000000000000001"));
            for (const Field& field : section.fields().list) {
                if (!nameless || field.kind != Field::Name) addField(table, field, answers);
            }
            if (identity) {
                addNumber(table, "domain", answers, "Oper.Switch.DomainID");
                addKey(table, "state", answers, "Oper.Switch.OperState");
                if (const std::string* const faults = answers.value("Oper.Switch.FaultList");
                    faults != nullptr && !faults->empty()) {
                    std::istringstream words(*faults);
                    table.add("faults", quotedList({std::istream_iterator<std::string>(words), {}}));
                }
            }
            if (!table.lines.empty()) document.tables.push_back(std::move(table));
        }
    }
}

void addUnits(Table& table, const char* field, const Answers& answers, const std::string& countKey,
              const std::string& key) {
    const std::optional<int64_t> count = answers.number(countKey);
    std::vector<std::string> states;
    for (int64_t unit = 0; count && unit < *count; ++unit) {
        const std::string* const state = answers.value(key + std::to_string(unit));
        if (state == nullptr) return;
        states.push_back(*state);
    }
    if (count) table.add(field, quotedList(states));
}

void describeChassis(const Answers& answers, Document& document) {
    Table chassis{"[chassis]"};
    addUnits(chassis, "power_supplies", answers, "Oper.Chassis.0.PowerSupplies",
             "Oper.Chassis.0.PowerSupply.");
    addUnits(chassis, "fans", answers, "Oper.Chassis.0.Fans", "Oper.Chassis.0.Fan.");
    addNumber(chassis, "slots", answers, "Oper.Chassis.0.MaxSlots");
    addKey(chassis, "enhanced_fault_monitoring", answers, "Oper.Switch.EnhFaultMonFeature", Field::Flag);
    if (!chassis.lines.empty()) document.tables.push_back(std::move(chassis));
}

void describeBlades(const Answers& answers, Document& document) {
    constexpr struct {
        const char* field;
        const char* key;
    } kTexts[] = {{"type", "Type"},       {"part", "PlanarPartNum"}, {"serial", "BoardSerialNum"},
                  {"state", "OperState"}, {"admin", "AdminState"},   {"diagnosis", "DiagStatus"}};
    constexpr int64_t kMostSlots = 65535;
    const int64_t slots = answers.number("Oper.Chassis.0.MaxSlots").value_or(0);
    for (int64_t slot = 0; slot < std::min(slots, kMostSlots); ++slot) {
        const std::string stem = "Oper.Blade." + std::to_string(slot) + '.';
        const std::string* const type = answers.value(stem + "Type");
        if (type == nullptr || type->empty()) continue;
        Table& blade = document.add("[[blade]]");
        blade.add("slot", slot);
        for (const auto& text : kTexts) addKey(blade, text.field, answers, stem + text.key);
        addNumber(blade, "temp_sensors", answers, stem + "TempSensors");
        addNumber(blade, "voltage_sensors", answers, stem + "VoltageSensors");
    }
}

}  // namespace

void describeHardware(const Answers& answers, Document& document) {
    describeFields(answers, document);
    describeChassis(answers, document);
    describeBlades(answers, document);
    // A list that does not end in good order is told key by key.
    if (answers.accountsEnded) document.add("[accounts]").add("users", quotedList(answers.accounts));
    if (answers.adminRefused) document.add("[admin]").add("held_elsewhere", "true");
}

}  // namespace capture
