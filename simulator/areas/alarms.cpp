#include "simulator/areas/Area.h"

namespace vexsim {
namespace {

/*
 * Alarms come in two wordings, by the firmware that sends them; readers find the sensor's name by its place
 * in the text, so each wording is exact to the character. In the short one a fixed head of 17 characters
 * comes first and the name ends at the next blank; in the long one it begins five characters behind the last
 * ")".
 */
std::string shortTemperature(const std::string& sensor) {
    return "[A1002.0038][MP] Temp overheat, " + sensor + " above its limit";
}

std::string longTemperature(const std::string& sensor) {
    return "Alarm (1002.0038) the " + sensor + " temp sensor reading is out of range, it is too high";
}

/** Code 74 tells of a voltage that is too high, code 75 of one that is too low; the library has no names. */
constexpr int32_t voltage_high = 74;
constexpr int32_t voltage_low = 75;

std::string shortVoltage(const std::string& sensor, bool high) {
    return "Alarm [" + sensor + " voltage sensor shows " + (high ? "an overvoltage]" : "an undervoltage]");
}

std::string longVoltage(const std::string& sensor, bool high) {
    return "Alarm (1002.0041) the " + sensor + " voltage supply is out of range, it is too " +
           (high ? "high" : "low");
}

bool readLong(TableReader& table) {
    return table.has("wording") && table.word("wording", {"short", "long"}) == "long";
}

Action readOverheat(TableReader& table) {
    const std::string sensor = table.text("sensor");
    const std::string text = readLong(table) ? longTemperature(sensor) : shortTemperature(sensor);
    return [text](Switch& target) { target.raise(VEX_EVENT_OVERHEAT_ALARM, text); };
}

Action readVoltage(TableReader& table) {
    const std::string sensor = table.text("sensor");
    const bool high = table.word("level", {"high", "low"}) == "high";
    const std::string text = readLong(table) ? longVoltage(sensor, high) : shortVoltage(sensor, high);
    return [text, code = high ? voltage_high : voltage_low](Switch& target) { target.raise(code, text); };
}

template <vex_eventcode_e code>
Action readUserEvent(TableReader& table) {
    return [user = table.text("user")](Switch& target) { target.raise(code, user); };
}

Action readCimChanged(TableReader&) {
    return [](Switch& target) { target.raise(VEX_EVENT_CIM_CFG_CHANGE, ""); };
}

}  // namespace

Area alarmsArea() {
    Area made;
    made.name = "alarms";
    made.steps = {
        {"overheat", readOverheat},
        {"voltage", readVoltage},
        {"password_changed", readUserEvent<VEX_EVENT_USER_PASSWORD_CHANGED>},
        {"login_failed", readUserEvent<VEX_EVENT_USER_LOGIN_FAILURE>},
        {"cim_changed", readCimChanged},
    };
    return made;
}

}  // namespace vexsim
