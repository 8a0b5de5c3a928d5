#include <sys/stat.h>

#include "tests/host/HostTest.h"

using namespace testing;

TEST_F(HostTest, WrongUsageAndInputStartNothing) {
    const std::string malformed = writeFile("malformed.toml", "[switch]\nwwn = 5\n");
    const std::string badStep = writeFile("step.toml", "[[step]]\ndo = \"fly\"\n");
    const std::string badScript = writeFile("script", "# two edits\nedit\n  save all\n");
    const struct {
        std::vector<std::string> arguments;
        std::string message;
    } cases[] = {
        {{}, "subcommand"},
        {{"run"}, "needs --switch FILE"},
        {{"show", "wings", "--switch", switchFile}, "wings"},
        {{"run", "--switch", switchFile, "--for", "0.5s"}, "--for: 0.5s is no number of seconds\n"},
        {{"run", "--switch", malformed}, malformed + ":2: "},
        {{"run", "--switch", switchFile, "--scenario", badStep}, badStep + ":2: "},
        {{"capture", "x", "--replay", "y", "--strict"}, "captured without being played"},
        {{"zone", "--switch", switchFile}, "no statement"},
        {{"zone", "--switch", switchFile, "lock", "fly away"}, "not understood: fly away"},
        {{"config", "--switch", switchFile, "--script", badScript},
         badScript + ":3: not understood: save all"},
        {{"zone", "--switch", switchFile, "wait nan"}, "nan is no number of seconds"},
        {{"config", "--script", SCRATCH}, SCRATCH ": is a folder"},
        {{"run", "--vexlib", "/no/such/library.so"}, "/no/such/library.so"},
        {{"run", "--vexlib", "libm.so.6"}, "does not provide vexlib"},
        {{"run", "--vexlib", REFUSING_VEXLIB, "--switch", switchFile},
         "--switch is for the simulated switch"},
    };
    for (const auto& row : cases) {
        Tool tool(HOST_TOOL, row.arguments);
        EXPECT_EQ(tool.finish(), 2) << row.message;
        EXPECT_THAT(tool.errors, HasSubstr(row.message));
        EXPECT_THAT(tool.output, IsEmpty()) << row.message;
    }
}

TEST_F(HostTest, OutputIsWrittenOrItsFailureTold) {
    for (const char* argument : {"--help", "--help-all", "--version"})
        EXPECT_THAT(told(0, {argument}), HasSubstr("datacache-host"));
    EXPECT_THAT(told(1, {"--help"}, HOST_TOOL, "/dev/full"), HasSubstr("standard output cannot be written"));
    EXPECT_THAT(told(1, {"show", "switch", "--switch", switchFile}, HOST_TOOL, "/dev/full"),
                HasSubstr("standard output cannot be written"));
    EXPECT_THAT(told(1, {"show", "switch", "--switch", switchFile, "--transcript", "/dev/full"}),
                HasSubstr("/dev/full: lines of the transcript could not be written"));
    const std::string file = writeFile("metrics.prom", "from before");
    EXPECT_THAT(told(0, {"metrics", "--switch", switchFile, "--output", file}), IsEmpty());
    EXPECT_THAT(contents(file), AllOf(HasSubstr("\ndatacache_well 1\n"), EndsWith("\n# EOF\n")));
    struct stat made {};
    EXPECT_EQ(stat(file.c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 0777U, 0644U) << "others collect it";
    EXPECT_THAT(told(1, {"metrics", "--switch", switchFile, "--output", "/no/such/folder/x"}),
                HasSubstr("/no/such/folder/x cannot be written"));
}

TEST_F(HostTest, AConnectionThatIsRefusedOrComesLateIsTold) {
    EXPECT_THAT(told(1, {"show", "switch", "--vexlib", REFUSING_VEXLIB, "--timeout", "1.5"}),
                AllOf(HasSubstr("no connection to the switch yet; trying every 10 seconds\n"),
                      HasSubstr("the switch was not reached")));
    const std::string late = writeFile("late.toml", switchText + "[connect]\nrefuse = 1\n");
    EXPECT_THAT(told(0, {"show", "switch", "--switch", late}),
                ::testing::ContainsRegex("yet; trying every 10 seconds\n.*connected after [1-9][0-9]+ s"));
}

TEST_F(HostTest, AnAreaThatCannotBeReadHidesNoOther) {
    const std::string broken = writeFile(
        "broken.toml", switchText + faultOn("vex_smlGetBatch", "Oper.Chassis.0.PowerSupplies", "result = 5"));
    EXPECT_THAT(told(0, {"graph", "--switch", broken}), AllOf(StartsWith("graph fabric {"), EndsWith("}\n")));
    const std::string why =
        "datacache-host: chassis is not up to date: vex_smlGetBatch of Oper.Chassis.0.PowerSupplies and 3 "
        "more keys failed with 0x5\n";
    EXPECT_THAT(told(1, {"show", "chassis", "--switch", broken}),
                AllOf(HasSubstr("\n  up to date      no\n"), EndsWith(why)));
    EXPECT_THAT(told(1, {"show", "all", "--switch", broken}), AllOf(HasSubstr("\nLsdb\n"), EndsWith(why)));
    EXPECT_THAT(told(1, {"show", "health", "--switch", broken}),
                AllOf(HasSubstr("\n  well           no\n  problem 1      " + why.substr(16)),
                      HasSubstr("\n  ready          no\n")));
    EXPECT_THAT(told(0, {"show", "health", "--switch", switchFile}), HasSubstr("\n  well           yes\n"));
    EXPECT_THAT(told(1, {"verify", "--for", "0", "--switch", broken}),
                AllOf(HasSubstr("not up to date  chassis\n"), EndsWith(why)));
    EXPECT_THAT(told(0, {"metrics", "--switch", broken}),
                AllOf(HasSubstr("datacache_area_up_to_date{area=\"chassis\"} 0\n"),
                      HasSubstr("\ndatacache_well 0\n"), EndsWith("\n# EOF\n")));
}

TEST_F(HostTest, AStepThatCannotBeCarriedOutIsWrongInput) {
    const std::string step =
        writeFile("late.toml", "step = [{do = 'power_supply', index = 9, state = 'Good'}]");
    EXPECT_THAT(told(2, {"run", "--switch", switchFile, "--scenario", step}),
                AllOf(HasSubstr("\nChassis\n"), HasSubstr(step)));
}

TEST_F(HostTest, TheExampleHostsReadAndZone) {
    EXPECT_THAT(told(0, {switchFile}, MINIMAL_HOST),
                HasSubstr("switch 1000001122334455 has 2 power supplies\n"));
    EXPECT_THAT(told(0, {EXAMPLES_DIR "/blade-module.toml"}, PROVIDER_HOST),
                AllOf(HasSubstr("port   0 2000001122334401 OK\n"), HasSubstr("zoning committed\n"),
                      HasSubstr("event  DCEventZoningDBChange wwn=1000001122334401\n")));
}
