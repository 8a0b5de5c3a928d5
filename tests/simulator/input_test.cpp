#include <fstream>

#include "tests/simulator/SimulatorTest.h"

using vexsim::InputError;

namespace {

struct BadInput {
    const char* text;
    const char* message;
};

}  // namespace

TEST_F(SimulatorTest, ASwitchFileThatIsWrongChangesNothingAndSaysWhere) {
    const BadInput cases[] = {
        {"[swicth]\n", R"(f:1: unknown section "swicth")"},
        {"x = 1\n", R"(f:1: unknown section "x")"},
        {"\n[switch\n", R"(f:2: Error while parsing table header: expected ']', saw '\n')"},
        {"[chassis]\nfans = 1\nfans = 2\n",
         R"(f:3: Error while parsing key-value pair: cannot redefine existing integer 'fans')"},
        {"\n[switch]\ndomain = 1\n", R"(f:2: [switch] needs "wwn")"},
        {"[switch]\nwwn = 5\n", R"(f:2: "wwn" must be a text, not a number)"},
        {"[switch]\nwwn = '10:00'\n",
         R"(f:2: "wwn" must be a world wide name like "10:00:00:11:22:33:44:55")"},
        {"[switch]\nwwn = '10-00-00-11-22-33-44-55'\n",
         R"(f:2: "wwn" must be a world wide name like "10:00:00:11:22:33:44:55")"},
        {"[switch]\nwwn = '1000001122334455'\ndomain = 240\n", R"(f:3: "domain" must be from 1 to 239)"},
        {"[switch]\nwwn = '1000001122334455'\nb = 1\na = 1\n", R"(f:3: unknown field "b" in [switch])"},
        {"[chassis]\nfans = [\n  'Good',\n  'Bod']\n",
         R"(f:4: "fans" must be one of "Good", "Bad", "NotInstalled", "Unknown")"},
        {"[features]\nfcoe = 'yes'\n", R"(f:2: "fcoe" must be true or false, not a text)"},
        {"\"a\\nb\" = 3\n", R"(f:1: unknown section "a b")"},
        {"switch = 3\n", R"(f:1: "switch" must be a table, not a number)"},
        {"[network]\nipv4_address = '300.1.1.1'\n",
         R"(f:2: "ipv4_address" must be an IPv4 address like "192.0.2.10")"},
        {"[ports]\ncount = 4\n[[ports.port]]\nnumbers = [1, 1]\n", R"(f:4: "numbers" names 1 twice)"},
        {"[ports]\ncount = 4\n[[ports.port]]\nnumbers = [1]\n[[ports.port]]\nnumbers = [2, 1]\n",
         "f:6: port 1 is described twice"},
        {"[[name_server]]\nwwns = ['2000001122000001',\n '20:00:00:11:22:00:00:01']\n",
         "f:1: the name server has 2000001122000001 already"},
        {"[[blade]]\nslot = 0\ntype = 'IO'\n", "f:2: the chassis has no slot 0"},
        {"[chassis]\nslots = 2\n[[blade]]\nslot = 1\ntype = 'IO'\n[[blade]]\nslot = 1\ntype = 'PS'\n",
         "f:7: slot 1 is described twice"},
        {"[[lsdb]]\ndomain = 4\n[[lsdb]]\ndomain = 4\n", "f:4: the links of domain 4 are described twice"},
        {"[[lsdb]]\ndomain = 4\nlinks = [{local_port = 1}]\n", "f:3: a link needs \"neighbor\""},
        {"[connect]\nrefuse = 0\n", R"(f:2: "refuse" must be from 1 to 4294967295)"},
        {"[zoning.limits]\nzones = 1\n", R"(f:1: [zoning.limits] needs "zonesets")"},
        {"[sml]\nOper.Switch.X = '1'\n",
         R"(f:2: "Oper" must be a text, a number, true or false, not a table)"},
        {"[[fault]]\nfunction = 'vex_smlGot'\n", R"(f:2: the library has no function "vex_smlGot")"},
        {"[[fault]]\nfunction = 'vex_fzsGetZoneset'\nstatus = 1\n",
         R"(f:3: "status" has no effect on vex_fzsGetZoneset)"},
        {"[[fault]]\nfunction = '*'\nnull = true\nresult = 1\n",
         R"(f:1: a fault has one effect, apart from "delay_ms" and "uptime_s")"},
    };
    sim.set("Kept", "yes");
    for (const BadInput& bad : cases) {
        EXPECT_EQ(errorOf([&] { sim.loadSwitchText(bad.text, "f"); }), bad.message);
        EXPECT_EQ(sim.get("Kept"), "yes") << bad.text;
    }
    EXPECT_EQ(errorOf([&] { sim.loadSwitchFile("/nowhere/s.toml"); }),
              "/nowhere/s.toml:1: cannot be read: No such file or directory");
    EXPECT_EQ(errorOf([&] { sim.loadSwitchFile("/tmp"); }), "/tmp:1: cannot be read: Is a directory");
    const BadInput files[] = {
        {"[chassis]\nfans = 1\n", R"(:1: the switch has no name: [switch] needs "wwn")"},
        {"[switch]\nwwn = '1000001122000001'\nprincipal = '1000001122000002'\n",
         ":3: the principal is no switch of the fabric"},
    };
    const std::string path = testing::TempDir() + "switch.toml";
    for (const BadInput& bad : files) {
        std::ofstream(path) << bad.text;
        EXPECT_EQ(errorOf([&] { sim.loadSwitchFile(path); }), path + bad.message);
    }
}

TEST_F(SimulatorTest, WhatWouldEndTheParserIsRefused) {
    const auto times = [](size_t count, const std::string& part) {
        std::string text;
        for (size_t i = 0; i < count; ++i) text += part;
        return text;
    };
    const std::string deep = times(20000, "a.") + "b";
    const std::pair<std::string, const char*> cases[] = {
        {deep + " = 1\n", "f:1: tables"},
        {"\n[" + deep + "]\n", "f:2: tables"},
        {"[sml]\n[[" + deep + "]]\n", "f:2: tables"},
        {"x = {\"a.a\" = 1, " + deep + " = 2}\n", "f:1: tables"},
        {"x = '''\n'#''''\ny = " + times(20000, "[") + '\n', "f:3: tables"},
        {"x = [ # ' [\n" + times(20000, "{a = ["), "f:2: tables"},
        {"\n  [[ # ]]\n", "f:2: this is not TOML"},
        {"x = [\n\n }]\ny = 2\n", "f:3: this is not TOML"},
        {"x = \"\\\"" + times(99, ".") + "\" # " + deep + "\n", "unknown section"},
        {"x = [" + times(99, "1.5, ") + "[{a.b = ''}]]\n", "unknown section"},
        {"x = \"\"\"" + times(99, "[\n.") + "\"\"\"\"\"\n", "unknown section"},
    };
    for (const auto& [text, message] : cases) {
        EXPECT_THAT(errorOf([&, file = text] { sim.loadSwitchText(file, "f"); }), testing::HasSubstr(message))
            << text.substr(0, 40);
    }
}

TEST_F(SimulatorTest, AScenarioThatIsWrongStartsNothingAndSaysWhere) {
    const std::string good = "[[step]]\ndo = 'set'\nkey = 'Ran'\nvalue = 1\n";  // four lines
    const BadInput cases[] = {
        {"[[stop]]\n", R"(f:5: unknown field "stop" in the file)"},
        {"[[step]]\n", R"(f:5: [[step]] needs "do")"},
        {"[[step]]\ndo = 'fly'\n", R"(f:6: unknown step "fly")"},
        {"[[step]]\ndo = 'fan'\nindex = 0\n", R"(f:7: "index" must be from 1 to 65535)"},
        {"[[step]]\ndo = 'fan'\nindex = 1\nstate = 'Good'\nspeed = 3\n",
         R"(f:9: unknown field "speed" in step "fan")"},
        {"[[step]]\ndo = 'wait'\n", R"(f:5: step "wait" needs "for")"},
        {"[[step]]\ndo = 'wait'\nfor = '5m'\n",
         R"(f:7: "for" must be seconds, or a text like "500ms" or "2s", up to a day)"},
        {"[[step]]\ndo = 'wait'\nfor = -1\n",
         R"(f:7: "for" must be seconds, or a text like "500ms" or "2s", up to a day)"},
        {"[[step]]\ndo = 'raise'\ncode = 'VEX_EVENT_NONE'\n", R"(f:7: no event is called "VEX_EVENT_NONE")"},
        {"[[step]]\ndo = 'raise'\ncode = 3000000000\n",
         R"(f:7: "code" must be from -2147483648 to 2147483647)"},
        {"[[step]]\ndo = 'raise'\ncode = 1\nsource = [1, 2]\n", R"(f:8: "source" must be three numbers)"},
        {"[[step]]\ndo = 'feature'\nname = 'x'\n", R"(f:7: unknown feature "x")"},
        {"[[step]]\ndo = 'fault'\nfunction = 1\n", R"(f:7: "function" must be a text, not a number)"},
    };
    for (const BadInput& bad : cases) {
        EXPECT_EQ(errorOf([&] { sim.run(good + bad.text, "f"); }), bad.message);
    }
    EXPECT_EQ(sim.get("Ran"), std::nullopt);
}
