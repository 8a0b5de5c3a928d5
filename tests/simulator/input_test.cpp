#include <unistd.h>

#include <fstream>

#include "tests/simulator/SimulatorTest.h"

using namespace testing;

namespace {

struct BadInput {
    std::string text;
    const char* message;
};

std::string times(size_t count, const std::string& part) {
    std::string text;
    for (size_t i = 0; i < count; ++i) text += part;
    return text;
}

}  // namespace

TEST_F(SimulatorTest, ASwitchFileThatIsWrongChangesNothingAndSaysWhere) {
    const std::string deep = times(20000, "a.") + "b";
    const BadInput cases[] = {
        {"[swicth]\n", R"(f:1: unknown section "swicth")"},
        {"\n[switch]\ndomain = 1\n", R"(f:2: [switch] needs "wwn")"},
        {"[switch]\nwwn = '10:00'\n", R"(f:2: "wwn" must be a world wide name like "10:00:00:11:22)"},
        {"[switch]\nwwn = '1000001122334455'\nb = 1\na = 1\n", R"(f:3: unknown field "b" in [switch])"},
        {"[chassis]\nfans = [\n  'Good',\n  'Bod']\n", R"(f:4: "fans" must be one of "Good", "Bad", "Not)"},
        {"[features]\nfcoe = 'yes'\n", R"(f:2: "fcoe" must be true or false, not a text)"},
        {"[network]\nipv4_address = '300.1.1.1'\n", R"(f:2: "ipv4_address" must be an IPv4 address like)"},
        {"[[lsdb]]\ndomain = 4\n[[lsdb]]\ndomain = 4\n", "f:4: the links of domain 4 are described twice"},
        {"[[fault]]\nfunction = '*'\nnull = true\nresult = 1\n", "f:1: a fault has one effect, apart"},
        {"[[fault]]\nfunction = 'notification'\nhang = true\n", R"(f:3: "hang" has no effect on notif)"},
        {"[[fault]]\nfunction = 'vex_smlSet'\nvalue = 1\ncarried_out = true\n",
         R"(f:4: "carried_out" goes with "res)"},
        {"[[zoning.zone]]\nname = 'z'\nmembers = ['no']\n", R"(f:3: "no" is no member: neither an address)"},
        {"[zoning]\nactive = 's'\n", R"(f:2: there is no "s")"},
        // Nesting that would overflow the parser's stack is refused, what only looks like it is not.
        {"\n[" + deep + "]\n", "f:2: tables"},
        {"x = {\"a.a\" = 1, " + deep + " = 2}\n", "f:1: tables"},
        {"x = '''\n'#''''\ny = " + times(20000, "[") + '\n', "f:3: tables"},
        {"x = [\n\n }]\ny = 2\n", "f:3: this is not TOML"},
        {"x = \"\\\"" + times(99, ".") + "\" # " + deep + "\n", "unknown section"},
        {"x = \"\"\"" + times(99, "[\n.") + "\"\"\"\"\"\n", "unknown section"},
    };
    sim.set("Kept", "yes");
    for (const BadInput& bad : cases) {
        EXPECT_THAT([&] { sim.loadSwitchText(bad.text, "f"); },
                    ThrowsMessage<vexsim::InputError>(HasSubstr(bad.message)));
        EXPECT_EQ(sim.get("Kept"), "yes") << bad.message;
    }
    const std::string path = testing::TempDir() + std::to_string(getpid()) + "switch.toml";
    std::ofstream(path) << "[chassis]\nfans = 1\n";
    EXPECT_THAT(
        [&] { sim.loadSwitchFile(path); },
        ThrowsMessage<vexsim::InputError>(path + R"(:1: the switch has no name: [switch] needs "wwn")"));
}

TEST_F(SimulatorTest, AScenarioThatIsWrongStartsNothingAndSaysWhere) {
    sim.loadSwitchText("[chassis]\nslots = 2\n[[blade]]\nslot = 1\ntype = 'IO'\n");
    const std::string good = "[[step]]\ndo = 'set'\nkey = 'Ran'\nvalue = 1\n[[step]]\n";  // five lines
    const BadInput cases[] = {
        {"", R"(f:5: [[step]] needs "do")"},
        {"do = 'fan'\nindex = 0\n", R"(f:7: "index" must be from 1 to 65535)"},
        {"do = 'wait'\nfor = '5m'\n", R"(f:7: "for" must be seconds, or a text like "500ms" or "2s", up)"},
        {"do = 'raise'\ncode = 1\nsource = [1, 2]\n", R"(f:8: "source" must be three numbers)"},
    };
    for (const BadInput& bad : cases)
        EXPECT_THAT([&] { sim.run(good + bad.text, "f"); },
                    ThrowsMessage<vexsim::InputError>(HasSubstr(bad.message)));
    EXPECT_EQ(sim.get("Ran"), std::nullopt);
    EXPECT_THAT([&] { sim.run("do = 'blade_insert'\nslot = 1\ntype = 'IO'", "f"); },
                ThrowsMessage<vexsim::InputError>("f:1: slot 1 is not empty"));
    EXPECT_THAT([&] { sim.run("do = 'zone_remove'\nname = 'none'", "f"); },
                ThrowsMessage<vexsim::InputError>("f:1: the switch has no zone \"none\""));
}
