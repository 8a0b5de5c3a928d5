// Switch files written from live switches and from recordings: what the cache makes of them.
#include <algorithm>
#include <map>
#include <sstream>

#include "simulator/switch_writer.h"
#include "tests/host/HostTest.h"

using namespace testing;

namespace {

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
[fabric]
switch = [{domain = 9, wwn = "10:00:00:11:22:33:44:99", management_status = 7}, # and one with odd ports
  {domain = 10, hops = 2, wwn = "100000112233449A", port_wwns = ["2000001122334401", "garbage", "", ""], offline = [3]}]
[ports]
count = 4
transceiver = {identifier = 13, oui = 0xABCDEF, serial = "ABC"}
port = [{numbers = [0], transceiver = {present = false}}, {numbers = [3], transceiver = {ddm = false}}]
[zoning]
active = {zone = [{name = "odd", members = ["beef", "0309"]}], zoneset = [{name = "prod", zones = ["odd"]}]}
alias = [{name = "beef", members = ["10000011223344AA", "9,4097"]}]
zone = [{name = "z1", members = ["beef", "0309"]}, {name = "lonely", type = "HardVPF"}]
zoneset = [{name = "prod", zones = ["z1"]}, {name = "empty"}]
[sml]
"Oper.Switch.Type" = "a # [b] \u007f"
"Oper.Chassis.0.Fans" = "many"
"Config.UserPort.0.3.Type" = "ZZ*[?"
)" + faultOn("*", "Oper.UserPort.0.2.AdminState", "unterminated = true") +
                         faultOn("*", "Config.Snmp.SysDescr", "status = 103") +
                         faultOn("vex_smlGetBatch", "Oper.Blade.1.FaultList", "status = 4294967295") +
                         faultOn("vex_smlGetBatch", "Oper.Blade.2.Type", "result = 5") +
                         faultOn("vex_fzsGetZoningLimitations", "*", "result = 77");

std::string printed(const std::vector<std::string>& words) {
    Tool tool(HOST_TOOL, words);
    tool.finish();
    return joined(tool.output);
}

std::string captured(const char* option, const std::string& path) {
    return printed({"capture", "-", option, path});
}

/** Each area that is in these lines of JSON under the text that names it, less the place for faults, which is
 * there once there were some. The health is of the process and not of the switch. */
std::map<std::string, std::string> areasIn(const std::string& text) {
    std::map<std::string, std::string> areas;
    std::istringstream lines(replaced(text, R"(,{"code":0,"text":"no fault"})", ""));
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("{\"area\":", 0) == 0) areas[line.substr(0, line.find(','))] = line;
    }
    areas.erase("{\"area\":\"health\"");
    return areas;
}

std::map<std::string, std::string> areas(const std::string& switchFile) {
    return areasIn(printed({"show", "all", "--json", "--switch", switchFile}));
}

TEST_F(HostTest, ACapturedSwitchIsTheSameSwitch) {
    const struct {
        std::string text;
        std::ptrdiff_t unsaid;  // keys under [sml]
    } switches[] = {
        {example("blade-module"), 0},
        {example("modular-chassis"), 0},
        {example("four-switch-fabric"), 0},
        {vexsim::writeSwitchFile({5, 140, vexsim::NameScheme::Naa3, false}), 0},
        {vexsim::writeSwitchFile({3, 0, vexsim::NameScheme::Naa2, true}), 0},
        {vexsim::writeSwitchFile({90, 3, vexsim::NameScheme::Naa5, false}), 8},  // more than it can list
        {kOdd, 4},
    };
    for (const auto& [text, unsaid] : switches) {
        const std::string file = writeFile("original.toml", text);
        const std::string made = captured("--switch", file);
        const std::string copy = writeFile("copy.toml", made);
        EXPECT_EQ(areas(copy), areas(file));
        EXPECT_EQ(captured("--switch", copy), made);
        const std::string keys = replaced(made, "\n\"", "\1");
        EXPECT_EQ(std::count(keys.begin(), keys.end(), '\1'), unsaid) << made;
    }
}

TEST_F(HostTest, ACapturedRecordingIsTheSwitchAtItsEnd) {
    const std::string path = writeFile("run.jsonl", "");
    // Compared with what the recorded process itself showed at its end; what it did not show is as it was.
    const auto compare = [&](const std::string& device, std::vector<std::string> words) {
        const std::string file = EXAMPLES_DIR "/" + device + ".toml";
        words.insert(words.end(), {"--json", "--record", path, "--switch", file});
        std::map<std::string, std::string> end = areasIn(printed(words));
        const std::string made = captured("--replay", path);
        std::map<std::string, std::string> copy = areas(writeFile("end.toml", made));
        const bool accountsRead = end.count("{\"area\":\"accounts\"") != 0;
        end.merge(areas(file));
        for (const char* unread : {"properties", "lsdb", accountsRead ? "" : "accounts"}) {
            for (auto* both : {&end, &copy}) both->erase(std::string("{\"area\":\"") + unread + '"');
        }
        EXPECT_EQ(copy, end) << words[1];
        EXPECT_EQ(made.find("\n[sml]"), made.find("\n[[fault]]")) << made;
    };
    for (const char* last : {"commit", "abandon"})
        compare("modular-chassis", {"zone", "lock", "remove zone backup", "create alias a", last});
    for (const std::string steps : {"blade-module", "modular-chassis", "fabric"}) {
        // Without the pauses, and without a failure that one of them would outlast.
        const std::string quick = without(example(steps + ".scenario"), {"after = "});
        const std::string played = writeFile("steps.toml", replaced(quick, "times = 2", "skip = 999999"));
        compare(steps == "fabric" ? "modular-chassis" : steps, {"run", "--scenario", played});
    }
    // A process that stopped with an edit on its hands: what it counted after that was its own. The reload
    // that follows, where there was time for one, would hide it.
    printed({"zone", "lock", "remove zone backup", "--record", path, "--switch",
             EXAMPLES_DIR "/modular-chassis.toml"});
    const std::string whole = contents(path);
    const size_t reload = whole.find("\"vex_fzsGetZoneset\"", whole.rfind("\"vex_ZonesetRemoveZone\""));
    writeFile("run.jsonl", whole.substr(0, whole.rfind('\n', reload) + 1));
    EXPECT_THAT(captured("--replay", path), HasSubstr("\nname = \"backup\"\n"));
}

TEST_F(HostTest, ACaptureTellsWhatWasNotReadAndWhatNoFileCanSay) {
    const std::string path = writeFile("all.jsonl", "");
    printed({"show", "all", "--switch", switchFile, "--record", path});
    const std::string bytes = replaced(contents(path), "\"Bad\"", "\"B\\u00ffd\"");
    writeFile("all.jsonl", without(bytes, {"vex_ZoneListMembers", "vex_MemberGetAttr", "Snmp"}));
    const std::string file = writeFile("old.toml", "old");
    const std::string remarks = told(0, {"capture", file, "--replay", path});
    EXPECT_THAT(contents(file), AllOf(HasSubstr("\"B?d\""), HasSubstr("active = \"prod\"")));
    for (const std::string remark :
         {"zoning: not all members of zone z1 were read", "zoning: not all members of alias db were read",
          "the value of Oper.Chassis.0.PowerSupply.1 is no UTF-8",
          "never read, so a default stands: [snmp] read_community"}) {
        EXPECT_THAT(contents(file), HasSubstr("\n# Not captured: " + remark));
        EXPECT_THAT(remarks, HasSubstr("\ndatacache-host: not captured: " + remark));
    }
    EXPECT_THAT(told(1, {"capture", "/dev/full", "--replay", path}),
                HasSubstr("cannot be written: No space"));
}

/** The same for two texts of which one has other names than the other, one for one. */
std::string shape(const std::map<std::string, std::string>& areas) {
    std::string json;
    for (const auto& [area, line] : areas) json += line;
    std::map<std::string, size_t> places;
    std::istringstream pieces(json);
    std::string shaped;
    bool text = false;
    for (std::string piece; std::getline(pieces, piece, '"'); text = !text)
        shaped += text ? std::to_string(places.emplace(piece, places.size()).first->second) : piece;
    return shaped;
}

TEST_F(HostTest, AMaskedCaptureDiffersInNamesAlone) {
    std::string text = replaced(example("modular-chassis"), "night", "weekend");  // sorted as it is masked
    text = replaced(text, "Modular 128-Port Fibre", "core-a: 192.0.2.32, [192.0.2.33] 00:11:22:AB:cd:ef");
    const std::string file = writeFile("named.toml", text);
    const std::string made = printed({"capture", "-", "--mask", "--switch", file});
    const std::string masked = writeFile("masked.toml", made);
    for (const char* name :
         {"core-a", "\"admin\"", "images", "operator", "public", "2.32", "2.33", "22:AB", "db8::20", "array_",
          "host1", "backup", "production", "weekend", "0907C", "0907B", "6600", "4402"})
        EXPECT_THAT(made, Not(HasSubstr(name)));
    EXPECT_THAT(made,
                AllOf(HasSubstr("wwn = \"2000000DEC0000"),
                      HasSubstr("\"name-1: 192.0.2.1, [192.0.2.2] 02:00:00:00:00:01 Channel Switch\"")));
    EXPECT_EQ(shape(areas(masked)), shape(areas(file)));
    EXPECT_EQ(captured("--switch", masked), made);
}

}  // namespace
