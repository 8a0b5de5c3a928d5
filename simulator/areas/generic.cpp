#include <limits>

#include "simulator/areas/key_step.h"
#include "simulator/event_codes.h"

namespace vexsim {
namespace {

void loadSml(TableReader& table, Switch& target) {
    for (const std::string& key : table.unknownFields()) target.set(key, table.value(key));
}

Action readErase(TableReader& table) {
    return [key = table.text("key")](Switch& target) { target.erase(key); };
}

int32_t readCode(TableReader& table) {
    if (table.isInteger("code")) return static_cast<int32_t>(table.integer("code", INT32_MIN, INT32_MAX));
    const std::string name = table.text("code");
    const std::optional<int32_t> code = eventCode(name);
    if (!code) table.fail("code", "no event is called \"" + name + '"');
    return *code;
}

Action readRaise(TableReader& table) {
    Event event;
    event.code = readCode(table);
    if (table.has("source")) {
        const std::vector<int64_t> words = table.integers("source", INT32_MIN, INT32_MAX);
        if (words.size() != 3) table.fail("source", "\"source\" must be three numbers");
        for (size_t i = 0; i < 3; ++i) event.source.word[i] = static_cast<int32_t>(words[i]);
    }
    if (table.has("text")) event.text = table.text("text");
    if (table.has("unterminated")) event.unterminated = table.flag("unterminated");
    if (table.has("forced")) event.forced = table.flag("forced");
    return [event](Switch& target) { target.raise(event); };
}

Action readNote(TableReader& table) {
    return [text = table.text("text")](Switch& target) { target.note(text); };
}

Action readAdvanceClock(TableReader& table) {
    const auto seconds = static_cast<long>(table.integer("seconds", 0, INT32_MAX));
    return [seconds](Switch& target) { target.clockOffset += seconds; };
}

/** Only its pauses count, and they are the scenario's affair. */
Action readWait(TableReader&) {
    return [](Switch&) {};
}

}  // namespace

Area genericArea() {
    Area made;
    made.name = "generic";
    made.sections = {{"sml", false, loadSml}};
    made.steps = {
        keyStep({"set", {{"key"}, {"value", StepField::Value}}, {{"{key}", "{value}"}}, 0, ""}),
        {"erase", readErase},
        {"raise", readRaise},
        {"note", readNote},
        {"wait", readWait},
        {"advance_clock", readAdvanceClock},
    };
    return made;
}

}  // namespace vexsim
