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
        {{"fly"}, "no such command: fly"},
        {{"run", "--fly"}, "--fly"},
        {{"run"}, "needs --switch FILE"},
        {{"show", "--switch", switchFile}, "area"},
        {{"show", "wings", "--switch", switchFile}, "wings"},
        {{"run", "--switch", switchFile, "--for", "0.5s"}, "--for: 0.5s is no number of seconds\n"},
        {{"run", "--switch", malformed}, malformed + ":2: "},
        {{"run", "--switch", "/no/such/file"}, "/no/such/file"},
        {{"run", "--switch", switchFile, "--scenario", badStep}, badStep + ":2: "},
        {{"run", "--switch", switchFile, "--transcript", "/no/such/folder/file"}, "/no/such/folder/file"},
        {{"zone", "--switch", switchFile}, "no statement"},
        {{"zone", "--switch", switchFile, "lock", "fly away"}, "not understood: fly away"},
        {{"config", "--switch", switchFile, "--script", badScript},
         badScript + ":3: not understood: save all"},
        {{"zone", "--switch", switchFile, "wait 1,5"}, "1,5 is no number of seconds"},
        {{"zone", "--switch", switchFile, "wait nan"}, "nan is no number of seconds"},
        {{"config", "--script", SCRATCH}, SCRATCH ": is a folder"},
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

TEST_F(HostTest, OutputIsWrittenOrItsFailureTold) {
    for (const char* argument : {"--help", "--help-all", "--version"}) {
        Tool tool(HOST_TOOL, {argument});
        EXPECT_EQ(tool.finish(), 0);
        EXPECT_THAT(tool.output, Contains(HasSubstr("datacache-host")));
    }
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"show", "switch", "--switch", fullFile}}) {
        Tool tool(HOST_TOOL, arguments, "/dev/full");
        EXPECT_EQ(tool.finish(), 1);
        EXPECT_THAT(tool.errors, HasSubstr("standard output cannot be written"));
    }
    Tool full(HOST_TOOL, {"show", "switch", "--switch", fullFile, "--transcript", "/dev/full"});
    EXPECT_EQ(full.finish(), 1);
    EXPECT_THAT(full.errors, HasSubstr("/dev/full: lines of the transcript could not be written"));
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

TEST_F(HostTest, AnAreaThatCannotBeReadHidesNoOther) {
    const std::string broken = writeFile(
        "broken.toml",
        std::string(fullText) + faultOn("vex_smlGetBatch", "Oper.Chassis.0.PowerSupplies", "result = 5"));
    const std::string key = "get Config.Services.TelnetEnable";
    const struct {
        std::vector<std::string> arguments;
        bool good;
        std::string line;  ///< of its output
    } cases[] = {
        {{"show", "ports"}, true, "  up to date  yes"},
        {{"show", "accounts"}, true, "    admin"},
        {{"graph"}, true, "graph fabric {"},
        {{"zone", "wait 0"}, true, "wait 0: done"},
        {{"config", key}, true, key + ": True"},
        {{"show", "lsdb"}, true, "  records"},
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
    std::string text = switchText;
    for (int domain = 100; domain < 164; ++domain) {
        text += "[[fabric.switch]]\ndomain = " + std::to_string(domain) + "\nwwn = \"1000001122335" +
                std::to_string(domain) + "\"\n";
    }
    Tool tool(HOST_TOOL, {"show", "fabric", "--switch", writeFile("big.toml", text)});
    EXPECT_EQ(tool.finish(), 0);
    EXPECT_THAT(tool.errors, HasSubstr("the fabric may be larger than what is shown"));
    EXPECT_THAT(tool.output, Contains("  complete      no"));
}

TEST_F(HostTest, AStepThatCannotBeCarriedOutIsWrongInput) {
    const std::string step =
        writeFile("late.toml", "[[step]]\ndo = \"power_supply\"\nindex = 9\nstate = \"Good\"\n");
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
