#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <regex>

#include "tests/host/Tool.h"

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

const char* const switchText = R"(
[switch]
wwn = "10:00:00:11:22:33:44:55"
[chassis]
power_supplies = ["Good", "Bad"]
fans = 1
)";

const char* const scenarioText = R"(
[[step]]
do = "power_supply"
index = 1
state = "NotInstalled"
[[step]]
do = "switch_state"
after = "50ms"
state = "Offline"
)";

class HostTest : public ::testing::Test {
  protected:
    const std::string switchFile = writeFile("switch.toml", switchText);
    const std::string scenario = writeFile("scenario.toml", scenarioText);
};

/** The time that every line of an event begins with. */
std::string withoutTime(const std::string& line) {
    static const std::regex time("\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d  ");
    return std::regex_search(line, time, std::regex_constants::match_continuous) ? line.substr(14) : "";
}

}  // namespace

TEST_F(HostTest, WrongUsageAndInputStartNothing) {
    const std::string malformed = writeFile("malformed.toml", "[switch]\nwwn = 5\n");
    const std::string badStep = writeFile("step.toml", "[[step]]\ndo = \"fly\"\n");
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {
        {{}, "subcommand"},
        {{"fly"}, "subcommand"},
        {{"run", "--fly"}, "--fly"},
        {{"run"}, "needs --switch FILE"},
        {{"show", "--switch", switchFile}, "area"},
        {{"show", "wings", "--switch", switchFile}, "wings"},
        {{"run", "--switch", switchFile, "--for", "soon"}, "--for"},
        {{"run", "--switch", malformed}, malformed + ":2: "},
        {{"run", "--switch", "/no/such/file"}, "/no/such/file"},
        {{"run", "--switch", switchFile, "--scenario", badStep}, badStep + ":2: "},
        {{"run", "--switch", switchFile, "--transcript", "/no/such/folder/file"}, "/no/such/folder/file"},
        {{"run", "--vexlib", "/no/such/library.so"}, "/no/such/library.so"},
        {{"run", "--vexlib", "libm.so.6"}, "does not provide vexlib"},
        {{"run", "--vexlib", REFUSING_VEXLIB, "--switch", switchFile},
         "--switch is for the simulated switch"},
        {{"run", "--vexlib", REFUSING_VEXLIB, "--scenario", scenario}, "--scenario is for the simulated"},
    };
    for (const auto& row : cases) {
        Tool tool(HOST_TOOL, row.arguments);
        EXPECT_EQ(tool.finish(), 2) << row.message;
        EXPECT_THAT(tool.errors, HasSubstr(row.message));
        EXPECT_THAT(tool.output, IsEmpty()) << row.message;
    }
}

TEST_F(HostTest, HelpAndVersionAreNoErrors) {
    for (const char* argument : {"--help", "--help-all", "--version"}) {
        Tool tool(HOST_TOOL, {argument});
        EXPECT_EQ(tool.finish(), 0);
        EXPECT_THAT(tool.output, Contains(HasSubstr("datacache-host")));
    }
}

TEST_F(HostTest, RunPrintsEventsAndThenTheState) {
    Tool tool(HOST_TOOL, {"run", "--switch", switchFile, "--scenario", scenario});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    std::vector<std::string> events;
    size_t i = 0;
    for (; i < tool.output.size() && !withoutTime(tool.output[i]).empty(); ++i) {
        const std::string event = withoutTime(tool.output[i]);
        if (event != "DCEventDataCacheUpdateComplete") events.push_back(event);
    }
    EXPECT_THAT(
        events,
        ::testing::IsSupersetOf(
            {std::string("DCEventPowerSupplyRemove wwn=1000001122334455 index=1 count=0"),
             std::string("DCEventSwitchStatusChange wwn=1000001122334455 principalWwn=1000001122334455 "
                         "previousStatus=[2] currentStatus=[10,0,0]")}));
    std::string state;
    for (; i < tool.output.size(); ++i) state += tool.output[i] + '\n';
    EXPECT_THAT(state,
                HasSubstr("Switch\n  up to date            yes\n  wwn                   1000001122334455\n"));
    EXPECT_THAT(state, HasSubstr("10 Stopped"));
    EXPECT_THAT(state, HasSubstr("  power supplies\n"
                                 "    index  status\n"
                                 "        1  3 not installed\n"
                                 "        2  2 bad\n"
                                 "  fans\n"));
    EXPECT_EQ(tool.errors, "");
}

TEST_F(HostTest, JsonIsOneObjectALine) {
    Tool tool(HOST_TOOL, {"run", "--json", "--switch", switchFile, "--scenario", scenario});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    const std::regex time("\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}[+-]\\d\\d:\\d\\d");
    bool pulled = false;
    for (const std::string& line : tool.output) {
        const nlohmann::json object = nlohmann::json::parse(line);
        if (object.contains("area")) {
            if (object["area"] != "chassis") continue;
            EXPECT_EQ(object["powerSupplies"][0]["status"]["code"], 3);
        } else {
            EXPECT_TRUE(std::regex_match(object.at("time").get<std::string>(), time)) << line;
            pulled = pulled || (object.at("class") == "DCEventPowerSupplyRemove" && object.at("index") == 1);
        }
    }
    EXPECT_TRUE(pulled);
}

TEST_F(HostTest, AnInterruptEndsWithTheState) {
    for (const int number : {SIGINT, SIGTERM}) {
        Tool tool(HOST_TOOL, {"run", "--switch", switchFile});
        std::string line;
        ASSERT_TRUE(tool.readLine(line));  // the cache is complete
        tool.signal(number);
        EXPECT_EQ(tool.finish(), 0) << tool.errors;
        EXPECT_THAT(tool.output, AllOf(Contains("Switch"), Contains("Chassis")));
    }
}

TEST_F(HostTest, AnAreaThatCannotBeReadIsNamed) {
    const std::string broken = writeFile("broken.toml", std::string(switchText) + R"(
[[fault]]
function = "vex_smlGetBatch"
key = "Oper.Chassis.0.Fans"
times = 0
status = 1
)");
    Tool show(HOST_TOOL, {"show", "chassis", "--switch", broken, "--timeout", "0.3"});
    EXPECT_EQ(show.finish(), 1);
    EXPECT_THAT(show.errors, HasSubstr("not up to date: chassis"));
    EXPECT_THAT(show.output, IsEmpty());

    Tool run(HOST_TOOL, {"run", "--switch", broken, "--scenario", scenario});
    EXPECT_EQ(run.finish(), 1);
    EXPECT_THAT(run.errors, HasSubstr("never became ready; not up to date: chassis"));
    EXPECT_THAT(run.output, AllOf(Contains("Switch"), Contains("  up to date      no")));
}

TEST_F(HostTest, AStepThatCannotBeCarriedOutIsWrongInput) {
    const std::string step =
        writeFile("late.toml", "[[step]]\ndo = \"power_supply\"\nindex = 9\nstate = \"Good\"\n");
    Tool tool(HOST_TOOL, {"run", "--switch", switchFile, "--scenario", step});
    EXPECT_EQ(tool.finish(), 2);
    EXPECT_THAT(tool.errors, HasSubstr(step));
    EXPECT_THAT(tool.output, Contains("Chassis"));
}

TEST_F(HostTest, ShowPrintsOneArea) {
    const std::string transcript = writeFile("transcript", "");
    Tool tool(HOST_TOOL, {"show", "switch", "--switch", switchFile, "--transcript", transcript});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    EXPECT_THAT(tool.output, Contains("  operational status    2 OK"));
    EXPECT_THAT(tool.output, ::testing::Not(Contains("Chassis")));
    std::FILE* const file = std::fopen(transcript.c_str(), "r");
    ASSERT_NE(file, nullptr);
    char text[256] = "";
    EXPECT_NE(std::fgets(text, sizeof text, file), nullptr);
    std::fclose(file);
    EXPECT_THAT(text, HasSubstr("vex_IPConnect localhost,cim, = 0"));
}

TEST_F(HostTest, ARefusedConnectionIsNotSilent) {
    Tool tool(HOST_TOOL, {"show", "switch", "--vexlib", REFUSING_VEXLIB, "--timeout", "1.5"});
    EXPECT_EQ(tool.finish(), 1);
    EXPECT_THAT(tool.errors, HasSubstr("no connection to the switch yet; trying every 10 seconds\n"));
    EXPECT_THAT(tool.errors, HasSubstr("the switch was not reached"));
}

TEST_F(HostTest, AConnectionThatComesLateIsTold) {
    const std::string late = writeFile("late.toml", std::string(switchText) + "[connect]\nrefuse = 1\n");
    Tool tool(HOST_TOOL, {"show", "switch", "--switch", late});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    EXPECT_THAT(tool.errors,
                ::testing::ContainsRegex("yet; trying every 10 seconds\n.*connected after 1. s"));
}

TEST_F(HostTest, TheMinimalHostReadsTheSwitch) {
    Tool tool(MINIMAL_HOST, {switchFile});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    EXPECT_THAT(tool.output, Contains("switch 1000001122334455 has 2 power supplies"));
}
