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
        {{"run"}, "needs --switch FILE"},
        {{"show", "wings", "--switch", switchFile}, "wings"},
        {{"run", "--switch", switchFile, "--for", "0.5s"}, "--for: 0.5s is no number of seconds\n"},
        {{"run", "--switch", malformed}, malformed + ":2: "},
        {{"run", "--switch", switchFile, "--scenario", badStep}, badStep + ":2: "},
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
    for (const char* argument : {"--help", "--help-all", "--version"}) {
        Tool tool(HOST_TOOL, {argument});
        EXPECT_EQ(tool.finish(), 0);
        EXPECT_THAT(tool.output, Contains(HasSubstr("datacache-host")));
    }
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"show", "switch", "--switch", switchFile}}) {
        Tool tool(HOST_TOOL, arguments, "/dev/full");
        EXPECT_EQ(tool.finish(), 1);
        EXPECT_THAT(tool.errors, HasSubstr("standard output cannot be written"));
    }
    Tool full(HOST_TOOL, {"show", "switch", "--switch", switchFile, "--transcript", "/dev/full"});
    EXPECT_EQ(full.finish(), 1);
    EXPECT_THAT(full.errors, HasSubstr("/dev/full: lines of the transcript could not be written"));
}

TEST_F(HostTest, AConnectionThatIsRefusedOrComesLateIsTold) {
    Tool refused(HOST_TOOL, {"show", "switch", "--vexlib", REFUSING_VEXLIB, "--timeout", "1.5"});
    EXPECT_EQ(refused.finish(), 1);
    EXPECT_THAT(refused.errors, HasSubstr("no connection to the switch yet; trying every 10 seconds\n"));
    EXPECT_THAT(refused.errors, HasSubstr("the switch was not reached"));
    Tool late(HOST_TOOL,
              {"show", "switch", "--switch", writeFile("late.toml", switchText + "[connect]\nrefuse = 1\n")});
    EXPECT_EQ(late.finish(), 0) << late.errors;
    EXPECT_THAT(late.errors,
                ::testing::ContainsRegex("yet; trying every 10 seconds\n.*connected after 1. s"));
}

TEST_F(HostTest, AnAreaThatCannotBeReadHidesNoOther) {
    const std::string broken = writeFile(
        "broken.toml", switchText + faultOn("vex_smlGetBatch", "Oper.Chassis.0.PowerSupplies", "result = 5"));
    const std::string key = "get Config.Services.TelnetEnable";
    const struct {
        std::vector<std::string> arguments;
        bool good;
        std::string line;  ///< of its output
    } cases[] = {
        {{"show", "ports"}, true, "  up to date  yes"},
        {{"graph"}, true, "graph fabric {"},
        {{"config", key}, true, key + ": False"},
        {{"show", "chassis"}, false, "  up to date      no"},
        {{"show", "all"}, false, "Lsdb"},
    };
    for (const auto& row : cases) {
        std::vector<std::string> arguments = row.arguments;
        arguments.insert(arguments.end(), {"--switch", broken});
        Tool tool(HOST_TOOL, arguments);
        EXPECT_EQ(tool.finish(), row.good ? 0 : 1) << row.line;
        EXPECT_THAT(tool.output, Contains(row.line));
        EXPECT_EQ(tool.errors, row.good ? ""
                                        : "datacache-host: chassis is not up to date: vex_smlGetBatch of "
                                          "Oper.Chassis.0.PowerSupplies and 3 more keys failed with 0x5\n");
    }
}

TEST_F(HostTest, ADomainListThatIsFullIsTold) {
    std::string text = "switch = {wwn = '1000001122334455'}\nfabric.switch = [";
    for (int domain = 100; domain < 164; ++domain)
        text +=
            "{domain = " + std::to_string(domain) + ", wwn = '1000001122335" + std::to_string(domain) + "'},";
    Tool tool(HOST_TOOL, {"show", "fabric", "--switch", writeFile("big.toml", text + ']')});
    EXPECT_EQ(tool.finish(), 0);
    EXPECT_THAT(tool.errors, HasSubstr("the fabric may be larger than what is shown"));
    EXPECT_THAT(tool.output, Contains("  complete      no"));
}

TEST_F(HostTest, AStepThatCannotBeCarriedOutIsWrongInput) {
    const std::string step =
        writeFile("late.toml", "step = [{do = 'power_supply', index = 9, state = 'Good'}]");
    Tool tool(HOST_TOOL, {"run", "--switch", switchFile, "--scenario", step});
    EXPECT_EQ(tool.finish(), 2);
    EXPECT_THAT(tool.errors, HasSubstr(step));
    EXPECT_THAT(tool.output, Contains("Chassis"));
}

TEST_F(HostTest, TheExampleHostsReadAndZone) {
    Tool minimal(MINIMAL_HOST, {switchFile});
    EXPECT_EQ(minimal.finish(), 0) << minimal.errors;
    EXPECT_THAT(minimal.output, Contains("switch 1000001122334455 has 2 power supplies"));
    Tool provider(PROVIDER_HOST, {EXAMPLES_DIR "/blade-module.toml"});
    EXPECT_EQ(provider.finish(), 0) << provider.errors;
    for (const char* line : {"port   0 2000001122334401 OK", "zoning committed",
                             "event  DCEventZoningDBChange wwn=1000001122334401"}) {
        EXPECT_THAT(provider.output, Contains(line));
    }
}
