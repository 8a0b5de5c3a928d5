#include "tests/host/HostTest.h"

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(HostTest, WrongUsageAndInputStartNothing) {
    const std::string malformed = writeFile("malformed.toml", "[switch]\nwwn = 5\n");
    const std::string badStep = writeFile("step.toml", "[[step]]\ndo = \"fly\"\n");
    const std::string badScript = writeFile("script", "# two edits\nedit\n  save all\n");
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
        {{"zone", "--switch", switchFile}, "no statement"},
        {{"zone", "--switch", switchFile, "lock", "fly away"}, "not understood: fly away"},
        {{"config", "--switch", switchFile, "--script", badScript},
         badScript + ":3: not understood: save all"},
        {{"config", "--script", "/no/such/script"}, "/no/such/script"},
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

TEST_F(HostTest, TheMinimalHostReadsTheSwitch) {
    Tool tool(MINIMAL_HOST, {switchFile});
    EXPECT_EQ(tool.finish(), 0) << tool.errors;
    EXPECT_THAT(tool.output, Contains("switch 1000001122334455 has 2 power supplies"));
}
