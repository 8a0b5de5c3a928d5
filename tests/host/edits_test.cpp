#include "tests/host/HostTest.h"

using ::testing::Contains;
using ::testing::HasSubstr;

TEST_F(HostTest, ZoningIsEditedUnderTheLockOnly) {
    Tool refused(HOST_TOOL, {"zone", "--switch", fullFile, "create zone z2"});
    EXPECT_EQ(refused.finish(), 1);
    EXPECT_THAT(refused.output, Contains(HasSubstr("create zone z2: refused: there is no lock")));

    Tool again(HOST_TOOL, {"zone", "--switch", fullFile, "--keep-going", "lock", "commit", "create zone z2"});
    EXPECT_EQ(again.finish(), 1);  // the commit gave the lock back
    EXPECT_THAT(again.output, Contains(HasSubstr("create zone z2: refused: there is no lock")));

    Tool aborted(HOST_TOOL,
                 {"zone", "--switch", fullFile, "lock", "create zone z2", "create zone z1", "commit"});
    EXPECT_EQ(aborted.finish(), 1);
    EXPECT_THAT(aborted.output, Contains(HasSubstr("create zone z1: exists already (code 3)")));
    EXPECT_THAT(aborted.output, Contains("abandon: done"));
    EXPECT_THAT(joined(aborted.output), ::testing::Not(HasSubstr("zone z2 (")));
}

TEST_F(HostTest, AZoningSessionChangesTheSwitch) {
    const std::string script = writeFile("session.zone",
                                         "\xEF\xBB\xBF"
                                         R"(# a session
lock
create zone z2 acl

  add wwn 10000011223344BB to zone z2
  add fcid 030900 to alias db
  add zone z2 to zoneset prod
  remove alias db from zone z1
  create alias gone
  remove alias gone
)");
    Tool tool(HOST_TOOL, {"zone", "--switch", fullFile, "--script", script, "commit"});
    EXPECT_EQ(tool.finish(), 0) << tool.errors << joined(tool.output);
    EXPECT_THAT(tool.output, Contains(::testing::MatchesRegex("lock: done \\(lock: (90|89) s left\\)")));
    EXPECT_THAT(joined(tool.output), HasSubstr("  zoneset prod (inactive)\n"
                                               "    zone z1 (Soft)\n"
                                               "      port 03:09\n"
                                               "    zone z2 (HardACL)\n"
                                               "      wwn 10000011223344BB\n"
                                               "  all zones and aliases\n"));
    EXPECT_THAT(joined(tool.output), HasSubstr("      wwn 10000011223344AA\n      fcid 030900\n"));
    EXPECT_THAT(joined(tool.output), ::testing::Not(HasSubstr("    alias gone")));
}

TEST_F(HostTest, AConfigurationSessionChangesTheSwitch) {
    const std::string key = "Config.Services.TelnetEnable";
    Tool tool(HOST_TOOL, {"config", "--switch", switchFile, "backup", "edit", "set " + key + " True",
                          "get " + key, "save", "get " + key, "restore", "get " + key});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    EXPECT_EQ(joined(tool.output), "backup: done\nedit: done\nset " + key + " True: done\nget " + key +
                                       ": False\nsave: done\nget " + key + ": True\nrestore: done\nget " +
                                       key + ": False\n");

    Tool refused(HOST_TOOL, {"config", "--switch", switchFile, "set " + key + " True"});
    EXPECT_EQ(refused.finish(), 1);
    EXPECT_THAT(refused.output, Contains(HasSubstr("refused: there is no edit")));

    const std::string keeping =
        writeFile("keeping.toml",
                  std::string(switchText) + faultOn("vex_smlSet", "Cmd.Switch.CancelAdmin", "result = 5"));
    Tool kept(HOST_TOOL, {"config", "--switch", keeping, "edit", "set " + key + " True", "save"});
    EXPECT_EQ(kept.finish(), 1);
    EXPECT_THAT(kept.output,
                ::testing::ElementsAre("edit: done", "set " + key + " True: done",
                                       HasSubstr("save: done, but the switch did not take admin rights back"),
                                       HasSubstr("give admin rights back: the switch refused")));

    Tool unsaved(HOST_TOOL, {"config", "--switch", switchFile, "edit", "set Config.No.Such 1"});
    EXPECT_EQ(unsaved.finish(), 1);
    EXPECT_THAT(unsaved.output,
                ::testing::ElementsAre("edit: done", HasSubstr("the switch refused"), "cancel: done"));
}
