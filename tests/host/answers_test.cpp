#include <nlohmann/json.hpp>

#include "tests/host/HostTest.h"

using namespace testing;

TEST_F(HostTest, ShowsAllAreasAndNothingThatATerminalObeys) {
    Tool json(HOST_TOOL, {"show", "all", "--json", "--switch", switchFile});
    EXPECT_EQ(json.finish(), 0) << json.errors;
    std::vector<std::string> names;
    for (const std::string& line : json.output) names.push_back(nlohmann::json::parse(line).at("area"));
    EXPECT_THAT(names, ElementsAre("switch", "chassis", "blades", "ports", "fabric", "accounts", "zoning",
                                   "properties", "lsdb", "health"));
    EXPECT_THAT(told(0, {"show", "accounts", "--switch", switchFile}),
                EndsWith("\n    evil\\u001b[31m\\u009b\\\"quoted\\\"\n"));
}

TEST_F(HostTest, TheGraphHasTheSwitchesTheirPortsAndLinks) {
    const std::string dot = told(0, {"graph", "--switch", switchFile});
    for (const char* part :
         {"<b>domain 3</b><br/>1000001122334455", "<i>local switch</i>", "<i>principal switch</i>",
          "bgcolor=\"#b7e1b0\">0</td>", "bgcolor=\"#dddddd\">1</td>", "d3 -- d10 "}) {
        EXPECT_THAT(dot, HasSubstr(part));
    }
    std::string domains = "03,10";
    while (domains.size() < 255) domains += ",3,10";
    const std::string full = writeFile(
        "full.toml", switchText + "[sml]\n\"Oper.Eport.LsdbRecordList.255\" = \"" + domains + "\"\n");
    EXPECT_THAT(told(0, {"graph", "--switch", full}),
                AllOf(HasSubstr("<br/>not complete: the list of domains is full"),
                      HasSubstr("fills its 255 characters, and its last number may be cut")));
}

TEST_F(HostTest, ZoningIsEditedUnderTheLockOnly) {
    EXPECT_THAT(told(1, {"zone", "--switch", switchFile, "--keep-going", "lock", "commit", "create zone z2"}),
                HasSubstr("create zone z2: refused: there is no lock"))
        << "the commit gave it back";
    EXPECT_THAT(
        told(1, {"zone", "--switch", switchFile, "lock", "create zone z2", "create zone z1", "commit"}),
        AllOf(HasSubstr("create zone z1: exists already (code 3)"), HasSubstr("\nabandon: done\n"),
              Not(HasSubstr("zone z2 ("))));
    const std::string script = writeFile("session.zone",
                                         "\xEF\xBB\xBF"
                                         "# a session\nlock\n\n  add fcid 030900 to alias db\n"
                                         "create zone z2 acl\nadd zone z2 to zoneset prod\n"
                                         "remove alias db from zone z1\ncreate alias gone\n"
                                         "remove alias gone\n");
    EXPECT_THAT(told(0, {"zone", "--switch", switchFile, "--script", script, "commit"}),
                AllOf(HasSubstr("  zoneset prod (inactive)\n    zone z1 (Soft)\n      port 03:09\n"
                                "    zone z2 (HardACL)\n  all zones and aliases\n"),
                      EndsWith("      fcid 030900\n")));
}

TEST_F(HostTest, AConfigurationSessionGivesBackWhatItTook) {
    const std::string key = "Config.Services.TelnetEnable";
    EXPECT_THAT(told(1, {"config", "--switch", switchFile, "backup", "edit", "set " + key + " True", "save",
                         "restore", "get " + key, "edit", "set Config.No.Such 1"}),
                MatchesRegex("backup: done\nedit: done\nset " + key + " True: done\nsave: done\n" +
                             "restore: done\nget " + key + ": False\n" +
                             "edit: done\n[^\n]*the switch refused[^\n]*\ncancel: done\n"));
    const std::string keeping =
        writeFile("keeping.toml", switchText + faultOn("vex_smlSet", "Cmd.Switch.CancelAdmin", "result = 5"));
    EXPECT_THAT(told(1, {"config", "--switch", keeping, "edit", "save"}),
                MatchesRegex("edit: done\nsave: done, but the switch did not take admin rights back[^\n]*\n"
                             "give admin rights back: the switch refused[^\n]*\n"));
}
