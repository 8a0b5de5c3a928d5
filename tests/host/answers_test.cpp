#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/host/HostTest.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST_F(HostTest, ShowsAllAreasAndNothingThatATerminalObeys) {
    Tool json(HOST_TOOL, {"show", "all", "--json", "--switch", switchFile});
    EXPECT_EQ(json.finish(), 0) << json.errors;
    std::vector<std::string> names;
    for (const std::string& line : json.output) names.push_back(nlohmann::json::parse(line).at("area"));
    EXPECT_THAT(names, ElementsAre("switch", "chassis", "blades", "ports", "fabric", "accounts", "zoning",
                                   "properties", "lsdb", "health"));
    Tool accounts(HOST_TOOL, {"show", "accounts", "--switch", switchFile});
    EXPECT_EQ(accounts.finish(), 0) << accounts.errors;
    EXPECT_EQ(accounts.output.back(), "    evil\\u001b[31m\\u009b\\\"quoted\\\"");
}

TEST_F(HostTest, TheGraphHasTheSwitchesTheirPortsAndLinks) {
    const std::string transcript = writeFile("transcript", "");
    Tool tool(HOST_TOOL, {"graph", "--switch", switchFile, "--transcript", transcript});
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

TEST_F(HostTest, ZoningIsEditedUnderTheLockOnly) {
    Tool refused(HOST_TOOL,
                 {"zone", "--switch", switchFile, "--keep-going", "lock", "commit", "create zone z2"});
    EXPECT_EQ(refused.finish(), 1);  // the commit gave the lock back
    EXPECT_THAT(refused.output, Contains(HasSubstr("create zone z2: refused: there is no lock")));

    Tool aborted(HOST_TOOL,
                 {"zone", "--switch", switchFile, "lock", "create zone z2", "create zone z1", "commit"});
    EXPECT_EQ(aborted.finish(), 1);
    EXPECT_THAT(aborted.output, Contains(HasSubstr("create zone z1: exists already (code 3)")));
    EXPECT_THAT(aborted.output, Contains("abandon: done"));
    EXPECT_THAT(joined(aborted.output), ::testing::Not(HasSubstr("zone z2 (")));

    const std::string script = writeFile("session.zone",
                                         "\xEF\xBB\xBF"
                                         "# a session\nlock\n\n  add fcid 030900 to alias db\n"
                                         "create zone z2 acl\nadd zone z2 to zoneset prod\n"
                                         "remove alias db from zone z1\ncreate alias gone\n"
                                         "remove alias gone\n");
    Tool tool(HOST_TOOL, {"zone", "--switch", switchFile, "--script", script, "commit"});
    EXPECT_EQ(tool.finish(), 0) << tool.errors << joined(tool.output);
    EXPECT_THAT(tool.output, Contains(::testing::MatchesRegex("lock: done \\(lock: (90|89) s left\\)")));
    EXPECT_THAT(joined(tool.output), HasSubstr("  zoneset prod (inactive)\n    zone z1 (Soft)\n"
                                               "      port 03:09\n    zone z2 (HardACL)\n"
                                               "  all zones and aliases\n"));
    EXPECT_EQ(tool.output.back(), "      fcid 030900");
}

TEST_F(HostTest, AConfigurationSessionGivesBackWhatItTook) {
    const std::string key = "Config.Services.TelnetEnable";
    Tool tool(HOST_TOOL, {"config", "--switch", switchFile, "backup", "edit", "set " + key + " True", "save",
                          "restore", "get " + key});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    EXPECT_THAT(tool.output, ElementsAre("backup: done", "edit: done", "set " + key + " True: done",
                                         "save: done", "restore: done", "get " + key + ": False"));

    Tool refused(HOST_TOOL, {"config", "--switch", switchFile, "set " + key + " True"});
    EXPECT_EQ(refused.finish(), 1);
    EXPECT_THAT(refused.output, Contains(HasSubstr("refused: there is no edit")));

    const std::string keeping =
        writeFile("keeping.toml", switchText + faultOn("vex_smlSet", "Cmd.Switch.CancelAdmin", "result = 5"));
    Tool kept(HOST_TOOL, {"config", "--switch", keeping, "edit", "save"});
    EXPECT_EQ(kept.finish(), 1);
    EXPECT_THAT(
        kept.output,
        ElementsAre("edit: done", HasSubstr("save: done, but the switch did not take admin rights back"),
                    HasSubstr("give admin rights back: the switch refused")));

    Tool unsaved(HOST_TOOL, {"config", "--switch", switchFile, "edit", "set Config.No.Such 1"});
    EXPECT_EQ(unsaved.finish(), 1);
    EXPECT_THAT(unsaved.output, ElementsAre("edit: done", HasSubstr("the switch refused"), "cancel: done"));
}
