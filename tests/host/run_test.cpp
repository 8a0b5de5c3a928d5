#include "tests/host/HostTest.h"

#include <chrono>
#include <csignal>
#include <nlohmann/json.hpp>
#include <regex>
#include <thread>

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;

namespace {

bool ends(const std::string& line, const std::string& end) {
    return line.size() >= end.size() && line.compare(line.size() - end.size(), end.size(), end) == 0;
}

/** The time that every line of an event begins with. */
std::string withoutTime(const std::string& line) {
    static const std::regex time("\\d\\d:\\d\\d:\\d\\d\\.\\d\\d\\d  ");
    return std::regex_search(line, time, std::regex_constants::match_continuous) ? line.substr(14) : "";
}

}  // namespace

TEST_F(HostTest, RunPrintsEventsAndThenTheState) {
    Tool tool(HOST_TOOL, {"run", "--switch", switchFile, "--scenario", scenario});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    std::vector<std::string> events;
    for (const std::string& line : tool.output) events.push_back(withoutTime(line));
    EXPECT_THAT(
        events,
        ::testing::IsSupersetOf(
            {std::string("DCEventPowerSupplyRemove wwn=1000001122334455 index=1 count=0"),
             std::string("DCEventUserAcctAdd wwn=1000001122334455 userName=\"guest\""),
             std::string("DCEventSwitchStatusChange wwn=1000001122334455 principalWwn=1000001122334455 "
                         "previousStatus=[2] currentStatus=[10,0,0]")}));
    EXPECT_THAT(tool.output, ::testing::IsSupersetOf({std::string("  domain                1"),
                                                      std::string("        1  3 not installed")}));
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

TEST_F(HostTest, AnInterruptEndsARunWithTheState) {
    Tool tool(HOST_TOOL, {"run", "--switch", switchFile});
    std::string line;
    while (tool.readLine(line) && !ends(line, "DCEventDataCacheUpdateComplete")) {
    }
    tool.signal(SIGTERM);
    EXPECT_EQ(tool.finish(), 128 + SIGTERM) << tool.errors;
    EXPECT_THAT(tool.errors, ::testing::EndsWith("datacache-host: interrupted\n"));
    EXPECT_THAT(tool.output, AllOf(Contains("Switch"), Contains("Chassis")));
}

TEST_F(HostTest, AnInterruptIsAnsweredAtOnceInEveryPhase) {
    const std::string hang = "delay_ms = 600000";
    const struct {
        std::string function;  ///< what takes ten minutes
        std::vector<std::string> arguments;
        std::string undone;
    } cases[] = {
        {"vex_IPConnect", {"show", "ports"}, "connecting to the switch\n"},
        {"vex_IPConnect", {"run"}, "connecting to the switch\n"},
        {"vex_smlGetBatch", {"graph"}, "reading the switch\n"},
        {"vex_smlGetBatch", {"run"}, "reading the switch, and showing the state\n"},
        {"vex_smlGet", {"show", "properties"}, "showing properties\n"},
        {"vex_smlSet",
         {"config", "get Oper.Switch.WWN", "edit", "save"},
         "edit (begun; what the switch made of it is not known), and 1 more; the switch may still hold admin "
         "rights and an open edit\n"},
        {"vex_smlSetBatch",
         {"zone", "lock", "commit"},
         "lock (begun; what the switch made of it is not known), and 1 more; the switch may still hold the "
         "fabric's zoning lock"},
        {"vex_smlSet", {"zone", "lock", "wait 600", "commit"}, "commit\n"},
        {"vex_smlSet", {"run", "--for", "600"}, "the rest of the time\n"},
    };
    std::vector<std::unique_ptr<Tool>> tools;
    for (size_t i = 0; i < std::size(cases); ++i) {
        std::vector<std::string> arguments = cases[i].arguments;
        const std::string file =
            writeFile("hang" + std::to_string(i) + ".toml", fullText + faultOn(cases[i].function, "*", hang));
        arguments.insert(arguments.end(), {"--switch", file});
        tools.push_back(std::make_unique<Tool>(HOST_TOOL, arguments));
    }
    std::this_thread::sleep_for(std::chrono::seconds(*EMULATOR == '\0' ? 1 : 8));  // until all hang
    for (const auto& tool : tools) tool->signal(SIGINT);
    const auto begin = std::chrono::steady_clock::now();
    for (size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(tools[i]->finish(), 128 + SIGINT) << cases[i].undone;
        EXPECT_THAT(tools[i]->errors, HasSubstr("interrupted; left undone: " + cases[i].undone));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(HostTest, RunTellsLossAndReturnOfReadiness) {
    const std::string lost = R"(
[[step]]
do = "fault"
function = "vex_smlGetBatch"
key = "Oper.Chassis.0.Fans"
times = 0
status = 1
[[step]]
do = "power_supply"
index = 1
state = "NotInstalled"
)";
    const std::string found = R"(
[[step]]
do = "clear_faults"
after = "1s"
[[step]]
do = "power_supply"
index = 1
state = "Good"
)";
    for (const bool comesBack : {true, false}) {
        const std::string steps = writeFile("loss.toml", lost + (comesBack ? found : ""));
        Tool run(HOST_TOOL, {"run", "--switch", switchFile, "--scenario", steps});
        EXPECT_EQ(run.finish(), comesBack ? 0 : 1);
        EXPECT_THAT(run.errors, HasSubstr("not ready: chassis is not up to date"));
        EXPECT_THAT(run.errors, HasSubstr(comesBack ? "chassis is up to date again; ready\n"
                                                    : "the cache is not ready; not up to date: chassis\n"));
    }
    const std::string broken = writeFile(
        "broken.toml", switchText + faultOn("vex_smlGetBatch", "Oper.Chassis.0.Fans", "status = 1"));
    Tool never(HOST_TOOL, {"run", "--switch", broken, "--scenario", scenario});
    EXPECT_EQ(never.finish(), 1);
    EXPECT_THAT(never.errors, HasSubstr("never became ready; not up to date: chassis"));
    EXPECT_THAT(never.output, AllOf(Contains("Switch"), Contains("  up to date      no")));
}
