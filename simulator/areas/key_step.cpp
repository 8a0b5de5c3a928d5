#include "simulator/areas/key_step.h"

#include <algorithm>
#include <memory>
#include <string_view>

namespace vexsim {
namespace {

void readField(TableReader& table, const StepField& field, const char* step, StepValues& values) {
    std::string& value = values[field.name];
    switch (field.kind) {
        case StepField::Text:
            value = table.text(field.name);
            return;
        case StepField::Value:
            value = table.value(field.name);
            return;
        case StepField::Flag:
            value = table.flag(field.name) ? "True" : "False";
            return;
        case StepField::Word:
            value = table.word(field.name, field.words);
            return;
        case StepField::Number: {
            const int64_t number = table.integer(field.name, field.low, field.high);
            value = std::to_string(number);
            values[field.name + std::string("-1")] = std::to_string(number - 1);
            return;
        }
        case StepField::KeyOf: {
            value = table.text(field.name);
            const char* const key = field.fields->keyOf(value);
            if (key == nullptr) table.fail(field.name, std::string("unknown ") + step + " \"" + value + '"');
            values[field.name + std::string(".key")] = key;
            return;
        }
    }
}

/** "a", "b" or "c" */
std::string alternatives(const std::vector<std::string>& names) {
    std::string text;
    for (size_t i = 0; i < names.size(); ++i) {
        if (i > 0) text += i + 1 < names.size() ? ", " : " or ";
        text += '"' + names[i] + '"';
    }
    return text;
}

StepValues readFields(TableReader& table, const KeyStep& row) {
    StepValues values;
    std::vector<std::string> missing;
    bool anyOptional = false;
    for (const StepField& field : row.fields) {
        if (field.optional && !table.has(field.name)) {
            missing.push_back(field.name);
            continue;
        }
        if (field.fallback != nullptr && !table.has(field.name)) {
            values[field.name] = field.fallback;
            continue;
        }
        anyOptional = anyOptional || field.optional;
        readField(table, field, row.name, values);
    }
    if (!missing.empty() && !anyOptional)
        table.fail("step \"" + std::string(row.name) + "\" needs " + alternatives(missing));
    return values;
}

/** A pattern as the step says it; nullopt where it names a field that the step is silent about. */
std::optional<std::string> expand(std::string_view pattern, const StepValues& values, const Switch& target) {
    std::string text;
    for (size_t at = 0; at < pattern.size(); ++at) {
        const char c = pattern[at];
        if (c != '{' && c != '[') {
            text += c;
            continue;
        }
        const size_t end = pattern.find(c == '{' ? '}' : ']', at);
        const std::string_view inner = pattern.substr(at + 1, end - at - 1);
        at = end;
        if (c == '[') {
            text += target.value(*expand(inner, values, target));
            continue;
        }
        const auto found = values.find(std::string(inner));
        if (found == values.end()) return std::nullopt;
        text += found->second;
    }
    return text;
}

void perform(const KeyStep& row, const StepValues& values, Switch& target) {
    if (row.check != nullptr) row.check(target, values);
    for (const auto& [key, value] : row.keys) {
        const std::optional<std::string> set = expand(value, values, target);
        if (set) target.set(*expand(key, values, target), *set);
    }
    if (row.code == 0) return;
    vex_eventsource_s source{};
    for (size_t i = 0; i < row.source.size(); ++i) {
        if (row.source[i] != nullptr) source.word[i] = std::stoi(values.at(row.source[i]));
    }
    target.raise(row.code, *expand(row.text, values, target), source);
}

}  // namespace

StepField wordField(const char* name, Words words) {
    StepField field{name, StepField::Word};
    field.words = words;
    return field;
}

StepField numberField(const char* name, int64_t low, int64_t high) {
    StepField field{name, StepField::Number};
    field.low = low;
    field.high = high;
    return field;
}

StepField keyOfField(const char* name, const Fields& fields) {
    StepField field{name, StepField::KeyOf};
    field.fields = &fields;
    return field;
}

StepField optional(StepField field) {
    field.optional = true;
    return field;
}

StepField orElse(StepField field, const char* fallback) {
    field.fallback = fallback;
    return field;
}

StepKind keyStep(KeyStep row) {
    const char* const name = row.name;
    const auto shared = std::make_shared<const KeyStep>(std::move(row));
    return {name, [shared](TableReader& table) -> Action {
                return [shared, values = readFields(table, *shared)](Switch& target) {
                    perform(*shared, values, target);
                };
            }};
}

}  // namespace vexsim
