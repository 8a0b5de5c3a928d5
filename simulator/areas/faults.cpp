#include <algorithm>
#include <iterator>
#include <limits>
#include <string>

#include "simulator/areas/Area.h"

namespace vexsim {
namespace {

constexpr int64_t kMost = std::numeric_limits<uint32_t>::max();

Effect readEffect(TableReader& table, const std::string& function) {
    Effect effect;
    int effects = 0;
    const auto has = [&](const char* field) {
        if (!table.has(field)) return false;
        ++effects;
        return true;
    };
    if (has("result")) effect.result = static_cast<int32_t>(table.integer("result", INT32_MIN, INT32_MAX));
    if (has("status")) effect.status = static_cast<uint32_t>(table.integer("status", 0, kMost));
    if (has("value")) effect.value = table.value("value");
    if (has("truncate"))
        effect.truncate = static_cast<size_t>(table.integer("truncate", 0, VEX_SML_VALUE_SIZE));
    if (has("unterminated")) effect.unterminated = table.flag("unterminated");
    if (has("null")) effect.null = table.flag("null");
    if (has("handle")) effect.handle = static_cast<uint32_t>(table.integer("handle", 0, kMost));
    if (has("in_part")) effect.inPart = table.flag("in_part");
    if (table.has("carried_out")) effect.carriedOut = table.flag("carried_out");
    if (table.has("hang")) effect.hang = table.flag("hang");
    if (table.has("delay_ms")) effect.delayMs = table.integer("delay_ms", 1, 600'000);
    if (table.has("uptime_s")) effect.uptimeSeconds = table.integer("uptime_s", 1, 86400);
    if (effects > 1)
        table.fail(
            "a fault has one effect, apart from \"carried_out\", \"hang\", \"delay_ms\" and \"uptime_s\"");
    if (effects == 0 && effect.delayMs == 0 && effect.uptimeSeconds == 0 && !effect.hang) {
        effect.lost = function == kNotification;
        if (!effect.lost) effect.status = effect.result = Scripted;
    }
    if (effect.carriedOut && !effect.result && !effect.status)
        table.fail("carried_out", "\"carried_out\" goes with \"result\" or \"status\"");
    return effect;
}

/** Whether calls of the function change anything, and say so in a result. */
bool changes(const std::string& function) {
    constexpr const char* kVerbs[] = {"Set", "Add", "Remove", "Delete", "Destroy", "Register"};
    return std::any_of(std::begin(kVerbs), std::end(kVerbs),
                       [&](const char* verb) { return function.find(verb) != std::string::npos; });
}

/** Effects that the function has no place for would never show, so they are mistakes. */
void checkEffect(TableReader& table, const std::string& function) {
    const bool reads = function == "vex_smlGet" || function == "vex_smlGetBatch" || function == "*";
    const bool sets = function == "vex_smlSet" || function == "vex_smlSetBatch";
    const bool hasStatuses = reads || sets || function == "vex_enRegisterForEventList";
    const bool isCall = function != kNotification;
    const bool names = function == "vex_fzsGetActiveZonesetName" || function == "vex_fzsGetZonesetList" ||
                       function == "vex_ZonesetGetName" || function == "vex_ZoneGetName" ||
                       function == "vex_ZoneAliasGetName";
    const struct {
        const char* field;
        bool fits;
    } effects[] = {
        {"result", isCall},
        {"status", hasStatuses},
        {"null", isCall},
        {"uptime_s", isCall},
        {"hang", isCall},
        {"in_part", sets},
        {"carried_out", changes(function)},
        {"value", reads || names},
        {"truncate", reads},
        {"unterminated", reads || names},
        {"handle", function == "vex_IPConnect"},
    };
    for (const auto& effect : effects) {
        if (!effect.fits && table.has(effect.field)) {
            table.fail(effect.field, '"' + std::string(effect.field) + "\" has no effect on " + function);
        }
    }
}

/** The function that a step names, or "*" where it is silent. */
std::string readFunction(TableReader& table) {
    std::string function = table.has("function") ? table.text("function") : "*";
    if (function != "*" && function != kNotification && !isFunction(function))
        table.fail("function", "the library has no function \"" + function + '"');
    return function;
}

FaultRule readRule(TableReader& table) {
    FaultRule rule;
    table.text("function");  // only here must it be there
    rule.function = readFunction(table);
    if (table.has("key")) rule.key = table.text("key");
    if (table.has("skip")) rule.skip = static_cast<uint32_t>(table.integer("skip", 0, kMost));
    if (table.has("times")) rule.times = static_cast<uint32_t>(table.integer("times", 0, kMost));
    rule.effect = readEffect(table, rule.function);
    checkEffect(table, rule.function);
    return rule;
}

Action readFault(TableReader& table) {
    return [rule = readRule(table)](Switch& target) { target.faults.add(rule); };
}

Action readClearFaults(TableReader& table) {
    return [function = readFunction(table)](Switch& target) {
        target.faults.clear(function);
        target.release(function);
    };
}

Action readRelease(TableReader& table) {
    return [function = readFunction(table)](Switch& target) { target.release(function); };
}

/** A run that starts with refused connections. */
void loadConnect(TableReader& table, Switch& target) {
    FaultRule rule;
    rule.function = "vex_IPConnect";
    rule.times = static_cast<uint32_t>(table.integer("refuse", 1, kMost));
    rule.effect.result = table.has("result")
                             ? static_cast<int32_t>(table.integer("result", INT32_MIN, INT32_MAX))
                             : static_cast<int32_t>(Refused);
    target.faults.add(rule);
}

}  // namespace

Area faultsArea() {
    Area made;
    made.name = "faults";
    made.sections = {
        {"connect", false, loadConnect},
        {"fault", true, [](TableReader& table, Switch& target) { target.faults.add(readRule(table)); }},
    };
    made.steps = {{"fault", readFault}, {"clear_faults", readClearFaults}, {"release", readRelease}};
    return made;
}

}  // namespace vexsim
