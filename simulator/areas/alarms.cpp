#include "simulator/areas/key_step.h"
#include "simulator/event_codes.h"

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
    return
        [text, code = high ? kVoltageTooHigh : kVoltageTooLow](Switch& target) { target.raise(code, text); };
}

}  // namespace

Area alarmsArea() {
    Area made;
    made.name = "alarms";
    made.steps = {
        {"overheat", readOverheat},
        {"voltage", readVoltage},
        keyStep({"password_changed", {{"user"}}, {}, VEX_EVENT_USER_PASSWORD_CHANGED, "{user}"}),
        keyStep({"login_failed", {{"user"}}, {}, VEX_EVENT_USER_LOGIN_FAILURE, "{user}"}),
        keyStep({"cim_changed", {}, {}, VEX_EVENT_CIM_CFG_CHANGE, ""}),
    };
    return made;
}

}  // namespace vexsim
