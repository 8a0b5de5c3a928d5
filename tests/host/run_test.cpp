#include "tests/host/HostTest.h"

#include <csignal>
#include <nlohmann/json.hpp>
#include <regex>

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
                HasSubstr("Switch\n  up to date            yes\n  wwn                   1000001122334455\n"
                          "  domain                1\n"));
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
        while (tool.readLine(line) && !ends(line, "DCEventDataCacheUpdateComplete")) {
        }
        tool.signal(number);
        EXPECT_EQ(tool.finish(), 0) << tool.errors;
        EXPECT_THAT(tool.output, AllOf(Contains("Switch"), Contains("Chassis")));
    }
}

TEST_F(HostTest, RunReportsAccountsThatComeAndGo) {
    const std::string steps = writeFile("accounts.toml", R"(
[[step]]
do = "account_add"
name = "guest"
)");
    Tool tool(HOST_TOOL, {"run", "--switch", fullFile, "--scenario", steps});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    EXPECT_THAT(tool.output,
                Contains(HasSubstr("DCEventUserAcctAdd wwn=1000001122334455 userName=\"guest\"")));
}
