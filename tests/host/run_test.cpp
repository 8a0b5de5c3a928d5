#include "tests/host/HostTest.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>

using namespace testing;

TEST_F(HostTest, RunPrintsEventsAndThenTheState) {
    std::remove("/tmp/cim.crit.out");
    const std::string output = told(0, {"run", "--switch", switchFile, "--scenario", scenario});
    EXPECT_TRUE(std::ifstream("/tmp/cim.crit.out")) << "the log's place is told in every manual";
    EXPECT_THAT(
        output,
        MatchesRegex(".*\n[0-9:]{8}\\.[0-9]{3}  DCEventPowerSupplyRemove wwn=[0-9]{16} index=1 count=0\n"
                     ".* DCEventSwitchStatusChange .* currentStatus=\\[10,0,0\\]\n"
                     ".*\nSwitch\n.*  domain                3\n.*\n        1  3 not installed\n.*"));
    EXPECT_THAT(output, Not(HasSubstr("datacache-host:")));
}

TEST_F(HostTest, JsonIsOneObjectALine) {
    Tool tool(HOST_TOOL, {"run", "--json", "--switch", switchFile, "--scenario", scenario});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    std::map<std::string, nlohmann::json> last;  // of each class of event and area
    for (const std::string& line : tool.output) {
        const nlohmann::json object = nlohmann::json::parse(line);
        last[object.at(object.contains("area") ? "area" : "class")] = object;
    }
    EXPECT_EQ(last["chassis"]["powerSupplies"][0]["status"]["code"], 3);
    const nlohmann::json& pulled = last["DCEventPowerSupplyRemove"];
    EXPECT_EQ(pulled.at("index"), 1);
    EXPECT_THAT(pulled.at("time").get<std::string>(),
                MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\\.[0-9]{3}[+-][0-9]{2}:[0-9]{2}"));
}

TEST_F(HostTest, AnInterruptEndsARunWithTheState) {
    Tool tool(HOST_TOOL, {"run", "--switch", switchFile});
    std::string line;
    while (tool.readLine(line) && line.find("DCEventDataCacheUpdateComplete") == std::string::npos) {
    }
    tool.signal(SIGTERM);
    EXPECT_EQ(tool.finish(), 128 + SIGTERM) << tool.errors;
    EXPECT_THAT(tool.errors, ::testing::EndsWith("datacache-host: interrupted\n"));
    EXPECT_THAT(tool.output, AllOf(Contains("Switch"), Contains("Chassis")));
}

TEST_F(HostTest, AnInterruptIsAnsweredAtOnceInEveryPhase) {
    const std::string hang = "hang = true";
    const struct {
        std::string function;  ///< what never returns
        std::vector<std::string> arguments;
        std::string undone;
    } cases[] = {
        {"vex_IPConnect", {"run"}, "connecting to the switch\n"},
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
    // Nobody can see that a process hangs: one that was interrupted before is started again, and given more
    // time.
    std::map<size_t, std::string> early;  // what they said
    for (size_t i = 0; i < std::size(cases); ++i) early[i] = "";
    for (int seconds = 1; !early.empty() && seconds < 100; seconds *= 4) {
        std::map<size_t, std::unique_ptr<Tool>> tools;
        for (const auto& [i, said] : early) {
            std::vector<std::string> arguments = cases[i].arguments;
            const std::string file = writeFile("hang" + std::to_string(i) + ".toml",
                                               switchText + faultOn(cases[i].function, "*", hang));
            arguments.insert(arguments.end(), {"--switch", file});
            tools[i] = std::make_unique<Tool>(HOST_TOOL, arguments);
        }
        std::this_thread::sleep_for(std::chrono::seconds(seconds));
        for (const auto& [i, tool] : tools) tool->signal(SIGINT);
        const auto begin = std::chrono::steady_clock::now();
        for (const auto& [i, tool] : tools) {
            EXPECT_EQ(tool->finish(), 128 + SIGINT) << cases[i].undone;
            early[i] = tool->errors;
            if (early[i].find("interrupted; left undone: " + cases[i].undone) != std::string::npos)
                early.erase(i);
        }
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::minutes(1)) << "of ten";
    }
    for (const auto& [i, said] : early) ADD_FAILURE() << cases[i].undone << said;
}

TEST_F(HostTest, RunTellsLossAndReturnOfReadiness) {
    const std::string lost = R"(step = [
{do = "fault", function = "vex_smlGetBatch", key = "Oper.Chassis.0.Fans", times = 0, status = 1},
{do = "power_supply", index = 1, state = "NotInstalled"})";
    const std::string found =
        R"(, {do = "clear_faults", after = "3s"}, {do = "power_supply", index = 1, state = "Good"})";
    for (const bool comesBack : {true, false}) {
        const std::string steps = writeFile("loss.toml", lost + (comesBack ? found : "") + ']');
        EXPECT_THAT(told(comesBack ? 0 : 1, {"run", "--switch", switchFile, "--scenario", steps}),
                    AllOf(HasSubstr("not ready: chassis is not up to date"),
                          HasSubstr(comesBack ? "chassis is up to date again; ready\n"
                                              : "the cache is not ready; not up to date: chassis\n")));
    }
    const std::string broken = writeFile(
        "broken.toml", switchText + faultOn("vex_smlGetBatch", "Oper.Chassis.0.Fans", "status = 1"));
    EXPECT_THAT(told(1, {"run", "--switch", broken, "--scenario", scenario}),
                AllOf(HasSubstr("\nSwitch\n"), HasSubstr("\n  up to date      no\n"),
                      HasSubstr("never became ready; not up to date: chassis")));
}

TEST_F(HostTest, VerifyFindsWhatNoEventToldOfAndNothingElse) {
    const std::string changes =
        "{do = 'power_supply', index = 1, state = 'Bad'}, {do = 'port_online', port = 1}, "
        "{do = 'account_add', name = 'guest'}]";
    for (const std::string lost : {"", "{do = 'fault', function = 'notification', key = '33'}, "}) {
        const std::string steps = writeFile("verify.toml", "step = [" + lost + changes);
        EXPECT_THAT(told(lost.empty() ? 0 : 1, {"verify", "--switch", switchFile, "--scenario", steps}),
                    MatchesRegex(lost.empty() ? "Verify\n  silent changes  0\n.*differences     -\n"
                                              : "Verify\n  silent changes  1\n.*\n    chassis  [^\n]*  power "
                                                "supply 1: status\n"));
    }
}
