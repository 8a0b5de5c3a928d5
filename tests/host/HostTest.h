#pragma once

#include <gmock/gmock.h>

#include "tests/host/Tool.h"
#include "tests/support/zoning_limits.h"

/** A switch with something to show in every area. */
inline const std::string switchText = R"(
switch = {wwn = "10:00:00:11:22:33:44:55", domain = 3}
ports = {count = 2, port = [{numbers = [1], state = "Offline"}]}
chassis = {power_supplies = ["Good", "Bad"], fans = 1}
accounts = {users = ["admin", "evil\u001b[31m\u009b\"quoted\""]}
[fabric]
principal = "10:00:00:11:22:33:50:01"
switch = [{domain = 10, wwn = "10:00:00:11:22:33:50:01", ports = 2}]
[zoning]
active = "prod"
alias = [{name = "db", members = ["10000011223344AA"]}]
zone = [{name = "z1", members = ["0309", "db"]}]
zoneset = [{name = "prod", zones = ["z1"]}]
)" + limitsText();

inline const char* const scenarioText = R"(step = [
{do = "power_supply", index = 1, state = "NotInstalled"},
{do = "account_add", name = "guest"},
{do = "switch_state", after = "50ms", state = "Offline"}]
)";

/** A fault that lasts, as a section of a switch file. */
inline std::string faultOn(const std::string& function, const std::string& key, const std::string& effect) {
    return "[[fault]]\nfunction = \"" + function + "\"\nkey = \"" + key + "\"\ntimes = 0\n" + effect + '\n';
}

/** All lines as one text. */
inline std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return text;
}

class HostTest : public ::testing::Test {
  protected:
    /** What a program prints, errors last, until it ends with this status. */
    static std::string told(int status, const std::vector<std::string>& arguments,
                            const char* program = HOST_TOOL, const char* outputFile = nullptr) {
        Tool tool(program, arguments, outputFile);
        EXPECT_EQ(tool.finish(), status) << joined(tool.output) << tool.errors.substr(0, 4000);
        return joined(tool.output) + tool.errors;
    }

    const std::string switchFile = writeFile("switch.toml", switchText);
    const std::string scenario = writeFile("scenario.toml", scenarioText);
};
