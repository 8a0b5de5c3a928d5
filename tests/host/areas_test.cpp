#include "tests/host/HostTest.h"

#include <fstream>
#include <nlohmann/json.hpp>

using ::testing::Contains;
using ::testing::HasSubstr;

TEST_F(HostTest, EveryAreaShowsWhatTheSwitchHas) {
    const struct {
        const char* area;
        std::vector<std::string> lines;
    } cases[] = {
        {"switch", {"  domain                3"}},
        {"blades",
         {"       1  I/O blade  2 OK                                  3                0",
          "       0  -          -                                     0                0"}},
        {"ports",
         {"        0  2000001122334455  2 OK                5 F   1 GL           -            -           -",
          "        1  2001001122334455  10 Stopped          5 F   1 GL           -            -           "
          "-"}},
        {"fabric",
         {"         3  1000001122334455  yes    no             2                         0  no",
          "        10  1000001122335001  no     yes            2                         0  no"}},
        {"accounts", {"    admin", "    evil\\u001b[31m\\u009b\\\"quoted\\\""}},
        {"zoning",
         {"  active zoneset  prod", "    members       4     99", "  zoneset prod (active)",
          "    zone z1 (Soft)", "      port 03:09", "      alias db", "  all zones and aliases",
          "    alias db", "      wwn 10000011223344AA"}},
        {"properties", {"  telnet enabled         True", "  domain id              3"}},
        {"lsdb", {"    3          0  1           10"}},
        {"health", {"  up to date           yes"}},
    };
    for (const auto& row : cases) {
        Tool tool(HOST_TOOL, {"show", row.area, "--switch", fullFile});
        EXPECT_EQ(tool.finish(), 0) << tool.errors;
        EXPECT_THAT(tool.output, ::testing::IsSupersetOf(row.lines)) << row.area;
    }
    Tool json(HOST_TOOL, {"show", "all", "--json", "--switch", fullFile});
    EXPECT_EQ(json.finish(), 0) << json.errors;
    std::vector<std::string> names;
    for (const std::string& line : json.output) names.push_back(nlohmann::json::parse(line).at("area"));
    EXPECT_THAT(names, ::testing::ElementsAre("switch", "chassis", "blades", "ports", "fabric", "accounts",
                                              "zoning", "properties", "lsdb", "health"));
}

TEST_F(HostTest, TheGraphHasTheSwitchesTheirPortsAndLinks) {
    const std::string transcript = writeFile("transcript", "");
    Tool tool(HOST_TOOL, {"graph", "--switch", fullFile, "--transcript", transcript});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    std::string call;
    std::getline(std::ifstream(transcript), call);
    EXPECT_THAT(call, HasSubstr("vex_IPConnect localhost,cim, = 0"));
    const std::string dot = joined(tool.output);
    for (const char* part : {"graph fabric {", "d3 [label=<", "<b>domain 3</b><br/>1000001122334455",
                             "<i>local switch</i>", "d10 [label=<", "<i>principal switch</i>",
                             "bgcolor=\"#b7e1b0\">0</td>", "bgcolor=\"#dddddd\">1</td>", "d3 -- d10 "}) {
        EXPECT_THAT(dot, HasSubstr(part));
    }
}
