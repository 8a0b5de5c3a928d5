// Switch files written from live switches and from recordings: what the cache makes of them.
#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

#include "simulator/switch_writer.h"
#include "tests/host/HostTest.h"

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

std::string contents(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::string example(const std::string& name) {
    return contents(EXAMPLES_DIR "/" + name + ".toml");
}

std::string replaced(std::string text, const std::string& what, const std::string& by) {
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

/** The lines that have none of these words. */
std::string without(const std::string& text, const std::vector<std::string>& words) {
    std::string left;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const auto has = [&](const std::string& word) { return line.find(word) != std::string::npos; };
        if (std::none_of(words.begin(), words.end(), has)) left += line + '\n';
    }
    return left;
}

/** Values that no section has a word for, keys and calls that fail, names in every form. */
const std::string kOdd = R"(
switch = {wwn = "10:00:00:11:22:33:44:55", domain = 3, name = "bay\u0007 \"3\" \\ \u00e9"}
blade = [{slot = 1, type = "IO", serial = "x\ty"}]
accounts = {users = ["admin", "a", "b", "a", "evil\u001b[31m"]}
chassis = {power_supplies = ["Good", "Bad"], slots = 3, enhanced_fault_monitoring = true}
name_server = [{port = 2, wwns = ["21:00:00:11:22:00:00:01", "21:00:00:11:22:00:00:02"]}]
lsdb = [{domain = 9, links = [{local_port = 3, neighbor = "x"}, {local_port = "q", neighbor = 3}]}]
[ports]
count = 4
transceiver = {identifier = 13, oui = 0xABCDEF, serial = "ABC"}
port = [{numbers = [0], transceiver = {present = false}}, {numbers = [3], transceiver = {ddm = false}}]
[[fabric.switch]]
domain = 9
wwn = "10:00:00:11:22:33:44:99"
management_status = 7
[[fabric.switch]]
domain = 10
wwn = "10:00:00:11:22:33:44:9A"
hops = 2
offline = [3]
port_wwns = ["2000001122334401", "garbage", "", "2000001122334402"]
[zoning]
active = {zone = [{name = "odd", members = ["beef", "0309"]}], zoneset = [{name = "prod", zones = ["odd"]}]}
alias = [{name = "beef", members = ["10000011223344AA", "9,4097"]}]
zone = [{name = "z1", members = ["beef", "0309"]}, {name = "lonely", type = "HardVPF"}]
zoneset = [{name = "prod", zones = ["z1"]}, {name = "empty"}]
[sml]
"Oper.Switch.Type" = "a # [b] \u007f"
"Oper.Chassis.0.Fans" = "many"
"Config.UserPort.0.3.Type" = "ZZ*[?"
"Oper.UserPort.0.0.WWN" = "5555"
"Oper.System.Eth.0.IPv4Address" = "nowhere"
)" + faultOn("*", "Oper.UserPort.0.2.AdminState", "unterminated = true") +
                         faultOn("*", "Config.Snmp.SysDescr", "status = 103") +
                         faultOn("vex_smlGetBatch", "Oper.Blade.2.*", "status = 4294967295") +
                         faultOn("vex_smlGetBatch", "Oper.Switch.EnhFaultMonFeature", "result = 5") +
                         faultOn("vex_fzsGetZoneset", "empty", "result = 77");

class Captures : public HostTest {
  protected:
    /** What the tool prints, and with which status it ends. */
    static std::pair<std::string, int> printed(std::vector<std::string> words, const std::string& option,
                                               const std::string& path) {
        words.insert(words.end(), {option, path});
        Tool tool(HOST_TOOL, words);
        const int status = tool.finish();
        return {joined(tool.output) + tool.errors, status};
    }

    /** All areas but the health and what else tells of the past: the place for faults once there were some.
     */
    static std::string areas(const std::string& option, const std::string& path,
                             std::vector<std::string> unread = {}) {
        unread.insert(unread.end(), {"\"area\":\"health\"", "datacache-host: ", "libvexreplay: "});
        const std::string text = printed({"show", "all", "--json"}, option, path).first;
        return without(replaced(text, R"(,{"code":0,"text":"no fault"})", ""), unread);
    }

    /** The file that is captured. */
    static std::string captured(const std::string& option, const std::string& path, const std::string& to,
                                const std::vector<std::string>& more = {}) {
        std::vector<std::string> words = {"capture", writeFile(to, "old")};
        const std::string file = words.back();
        words.insert(words.end(), more.begin(), more.end());
        const bool live = option == "--switch";
        EXPECT_EQ(printed(words, option, path).second,
                  live ? printed({"show", "all"}, option, path).second : 0);
        return file;
    }
};

TEST_F(Captures, OfASwitchAreTheSameSwitch) {
    const std::string switches[] = {
        example("blade-module"),
        example("modular-chassis"),
        example("four-switch-fabric"),
        vexsim::writeSwitchFile({90, 3, vexsim::NameScheme::Naa5, false}),  // more than it can list
        vexsim::writeSwitchFile({5, 140, vexsim::NameScheme::Naa3, false}),
        vexsim::writeSwitchFile({3, 0, vexsim::NameScheme::Naa2, true}),
        kOdd,
    };
    for (const std::string& text : switches) {
        const std::string file = writeFile("original.toml", text);
        const std::string copy = captured("--switch", file, "copy.toml");
        EXPECT_EQ(areas("--switch", copy), areas("--switch", file));
        EXPECT_EQ(contents(captured("--switch", copy, "again.toml")), contents(copy));
        if (text == kOdd || text == switches[3]) continue;
        EXPECT_THAT(contents(copy), AllOf(Not(HasSubstr("\n[sml]")), Not(HasSubstr("\n[[fault]]"))));
    }
}

TEST_F(Captures, OfARecordedScenarioAreTheSwitchAtItsEnd) {
    const char* const runs[][2] = {{"blade-module", "blade-module"},
                                   {"modular-chassis", "modular-chassis"},
                                   {"modular-chassis", "fabric"}};
    for (const auto& [device, steps] : runs) {
        // Without the pauses, and without a failure that one of them would outlast.
        const std::string quick = without(example(std::string(steps) + ".scenario"), {"after = "});
        const std::string played = writeFile("steps.toml", replaced(quick, "times = 2", "skip = 999999"));
        const std::string path = writeFile("run.jsonl", "");
        const std::string file = EXAMPLES_DIR "/" + std::string(device) + ".toml";
        printed({"run", "--switch", file, "--scenario", played}, "--record", path);
        const std::string end = captured("--replay", path, "end.toml");
        const std::vector<std::string> unread = {"\"area\":\"properties\"", "\"area\":\"lsdb\""};
        EXPECT_EQ(areas("--switch", end, unread), areas("--replay", path, unread)) << steps;
        EXPECT_THAT(contents(end), AllOf(Not(HasSubstr("\n[sml]")), Not(HasSubstr("\n[[fault]]")))) << steps;
    }
}

TEST_F(Captures, TellWhatWasNotReadAndWhatNoFileCanSay) {
    const std::string path = writeFile("all.jsonl", "");
    printed({"show", "all", "--switch", switchFile}, "--record", path);
    const std::string bytes = replaced(contents(path), "\"Bad\"", "\"B\\u00ffd\"");
    const std::string unread = writeFile("unread.jsonl", without(bytes, {"vex_ZoneListMembers", "Snmp"}));
    const auto [told, status] = printed({"capture", "-"}, "--replay", unread);
    EXPECT_EQ(status, 0);
    EXPECT_THAT(told, AllOf(HasSubstr("\"B?d\""), HasSubstr("active = \"prod\"")));
    for (const std::string remark : {"zoning: not all members of zone z1 were read",
                                     "the value of Oper.Chassis.0.PowerSupply.1 is no UTF-8",
                                     "never read, so a default stands: [snmp] read_community"}) {
        EXPECT_THAT(told, AllOf(HasSubstr("\n# Not captured: " + remark),
                                HasSubstr("\ndatacache-host: not captured: " + remark)));
    }
}

/** The same twice over where one has other texts than the other, one for one: each text by the place where it
 * appeared first. */
std::string shape(const std::string& json) {
    std::map<std::string, size_t> places;
    std::istringstream pieces(json);
    std::string shaped;
    bool text = false;
    for (std::string piece; std::getline(pieces, piece, '"'); text = !text)
        shaped += text ? std::to_string(places.emplace(piece, places.size()).first->second) : piece;
    return shaped;
}

TEST_F(Captures, ThatAreMaskedDifferInNamesAlone) {
    std::string text = replaced(example("modular-chassis"), "night", "weekend");  // sorted as it is masked
    text = replaced(text, "Modular 128-Port Fibre", "core-a: 192.0.2.32, [192.0.2.33] 00:11:22:AB:cd:ef");
    text += "[sml]\n\"Config.System.HostName\" = \"core-a.example\"\n";
    const std::string file = writeFile("named.toml", text);
    const std::string masked = captured("--switch", file, "masked.toml", {"--mask"});
    const std::string made = contents(masked);
    for (const char* name :
         {"core-a", "\"admin\"", "images", "operator", "public", "2.32", "2.33", "22:AB", "db8::20", "array_",
          "host1", "backup", "production", "weekend", "0907C", "0907B", "6600", "4402"})
        EXPECT_THAT(made, Not(HasSubstr(name)));
    EXPECT_THAT(made,
                AllOf(HasSubstr("wwn = \"2000000DEC0000"),
                      HasSubstr("\"name-1: 192.0.2.1, [192.0.2.2] 02:00:00:00:00:01 Channel Switch\"")));
    EXPECT_EQ(shape(areas("--switch", masked)), shape(areas("--switch", file)));
    EXPECT_EQ(contents(captured("--switch", masked, "again.toml")), made);
}

}  // namespace
