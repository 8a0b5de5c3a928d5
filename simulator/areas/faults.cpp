#include <limits>

#include "simulator/areas/Area.h"

namespace vexsim {
namespace {

constexpr int64_t kMost = std::numeric_limits<uint32_t>::max();

Effect readEffect(TableReader& table) {
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
    if (table.has("delay_ms")) effect.delayMs = table.integer("delay_ms", 1, 600'000);
    if (table.has("uptime_s")) effect.uptimeSeconds = table.integer("uptime_s", 1, 86400);
    if (effects > 1) table.fail("a fault has one effect, apart from \"delay_ms\" and \"uptime_s\"");
    if (effects == 0 && effect.delayMs == 0 && effect.uptimeSeconds == 0)
        effect.status = effect.result = Scripted;
    return effect;
}

/** Effects that the function has no place for would never show, so they are mistakes. */
void checkEffect(TableReader& table, const std::string& function) {
    const bool reads = function == "vex_smlGet" || function == "vex_smlGetBatch" || function == "*";
    const bool hasStatuses = reads || function == "vex_smlSet" || function == "vex_smlSetBatch" ||
                             function == "vex_enRegisterForEventList";
    const bool names = function == "vex_fzsGetActiveZonesetName" || function == "vex_fzsGetZonesetList" ||
                       function == "vex_ZonesetGetName" || function == "vex_ZoneGetName" ||
                       function == "vex_ZoneAliasGetName";
    const struct {
        const char* field;
        bool fits;
    } effects[] = {
        {"status", hasStatuses},
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

FaultRule readRule(TableReader& table) {
    FaultRule rule;
    rule.function = table.text("function");
    if (rule.function != "*" && !isFunction(rule.function)) {
        table.fail("function", "the library has no function \"" + rule.function + '"');
    }
    if (table.has("key")) rule.key = table.text("key");
    if (table.has("skip")) rule.skip = static_cast<uint32_t>(table.integer("skip", 0, kMost));
    if (table.has("times")) rule.times = static_cast<uint32_t>(table.integer("times", 0, kMost));
    rule.effect = readEffect(table);
    checkEffect(table, rule.function);
    return rule;
}

Action readFault(TableReader& table) {
    return [rule = readRule(table)](Switch& target) { target.faults.add(rule); };
}

Action readClearFaults(TableReader&) {
    return [](Switch& target) { target.faults.clear(); };
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
    made.steps = {{"fault", readFault}, {"clear_faults", readClearFaults}};
    return made;
}

}  // namespace vexsim
