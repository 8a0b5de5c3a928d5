// What the recorder writes and the replayer makes of it: over the simulated switch, which this program
// reaches through the recorder.
#include "recording/Reader.h"

#include <dlfcn.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <regex>
#include <set>
#include <thread>

#include "recorder/recorder.h"
#include "simulator/Simulator.h"
#include "tests/host/HostTest.h"
#include "tests/recording/CacheRun.h"

using recording::Record;
using ::testing::HasSubstr;

namespace {

/** The switch of which there is a recording of each platform. */
const std::string kSwitchFile = RECORDINGS_DIR "/switch.toml";
const std::string kSwitchText = contents(kSwitchFile);

class Recordings : public HostTest {
  protected:
    void SetUp() override { sim.setDelivery(vexsim::Delivery::Manual); }

    /** Records from now on, into a file of the test's own. */
    std::string record(const std::string& name) {
        const std::string path = writeFile(name, "");
        char error[200] = "";
        EXPECT_EQ(vexrecord_start(RTLD_NEXT, path.c_str(), error, sizeof error), 0) << error;
        return path;
    }

    /** Runs the cache through a scenario; what it tells. */
    std::string live(const std::string& device, const std::string& steps) {
        static const std::string kHead = "[[step]]";
        sim.reset();
        sim.setDelivery(vexsim::Delivery::Manual);
        sim.loadSwitchText(device);
        CacheRun run;
        const auto settle = [&] { run.settle([&] { return sim.deliverPending() != 0; }); };
        run.start();
        settle();
        run.readAccounts();
        for (size_t at = steps.find(kHead), next = 0; at != std::string::npos; at = next) {
            next = steps.find(kHead, at + kHead.size());
            const std::string one = steps.substr(at, next - at);
            sim.run(std::regex_replace(one, std::regex("after = \"[^\"]*\""), ""));
            settle();
            run.readAccounts();
        }
        EXPECT_TRUE(DataCache::instance->isCacheReady());
        return joined(run.story());
    }

    /** The same, told by the cache over the replayer. */
    static std::string replayed(const std::string& path) { return told(0, {path}, REPLAY_CACHE); }

    vexsim::Simulator& sim = vexsim::Simulator::instance();
};

const char* const stepsText = R"(
[[step]]
do = "fault_list"
faults = ["HW_MP_ACCESS_CPU0"]
[[step]]
do = "account_add"
name = "gu\u00ebst"
[[step]]
do = "raise"
code = "VEX_EVENT_USER_LOGIN_FAILURE"
source = [-1, 0, 2147483647]
text = "admin"
unterminated = true
[[step]]
do = "port_online"
port = 1
[[step]]
do = "switch_state"
state = "Offline"
)";

TEST_F(Recordings, OfEachExampleReplayToTheSameEventsCallsAndLog) {
    const char* const examples[][2] = {{"blade-module", "blade-module"},
                                       {"modular-chassis", "modular-chassis"},
                                       {"modular-chassis", "fabric"}};
    std::set<std::string> classes;
    for (const auto& [device, steps] : examples) {
        const std::string path = record(std::string(steps) + ".jsonl");
        const std::string folder = EXAMPLES_DIR "/";
        const std::string told =
            live(contents(folder + device + ".toml"), contents(folder + steps + ".scenario.toml"));
        EXPECT_EQ(replayed(path), told) << steps;
        const std::regex event("\n! DCEvent(\\w+)");
        for (std::sregex_iterator one(told.begin(), told.end(), event), end; one != end; ++one)
            classes.insert((*one)[1]);
    }
    std::string all;
    for (const std::string& name : classes) all += name + ' ';
    EXPECT_EQ(all,
              "ActiveZonesetChange BladeAdd BladeRemove CIMChange CPUAdd CPURemove DataCacheUpdateComplete "
              "EnvEvent FabricAdd FabricChange FabricRemove FanAdd FanRemove PortAdd PortRemove "
              "PortStatusChange PowerSupplyAdd PowerSupplyFail PowerSupplyRemove SwitchAdd SwitchRemove "
              "SwitchStatusChange UserAcctAdd UserAcctRemove UserLoginFailure UserPasswdChg ZoningDBChange ");
}

TEST_F(Recordings, OfOnePlatformReplayOnTheOther) {
    const std::string told = live(kSwitchText, stepsText);
    for (const char* path : {RECORDINGS_DIR "/powerpc.jsonl", RECORDINGS_DIR "/x86.jsonl"})
        EXPECT_EQ(replayed(path), told) << path;
}

TEST_F(Recordings, HoldEveryByteAndChangeNone) {
    const std::string text =
        kSwitchText + faultOn("vex_smlGetBatch", "Oper.Switch.WWN", "unterminated = true") +
        faultOn("vex_smlGetBatch", "Oper.Switch.Model", "value = \"\\u0001\\u0080\\u00ff\\\"\\\\\"") +
        faultOn("vex_smlSetBatch", "*", "status = 4294967295") +
        faultOn("vex_smlGet", "Oper.Switch.DomainID", "value = \"caf\\u00e9\"");
    std::vector<std::string> bytes;  // of the bare calls, and of the recorded ones
    std::string path;
    for (const bool recorded : {false, true}) {
        if (recorded) path = record("bytes.jsonl");
        sim.reset();
        sim.loadSwitchText(text);
        uint32_t handle = 0;
        vex_IPConnect("h", "c", "", &handle);
        vex_smlrequest_s keys[3] = {
            {"Oper.Switch.WWN", "x", 7}, {"Oper.Switch.Model", "", 0}, {"no.such", "", 0}};
        std::string all;
        const auto add = [&](int32_t result) {
            all += std::to_string(result) + ' ' + std::to_string(errno);
            all.append(reinterpret_cast<const char*>(keys), sizeof keys);
        };
        errno = 77;
        add(vex_smlGetBatch(handle, keys, 3));
        errno = 78;
        add(vex_smlSetBatch(handle, keys, 3));
        char* value = nullptr;
        uint32_t extra = 0;
        all += std::to_string(vex_smlGet(handle, "Oper.Switch.DomainID", &value, &extra));
        all += value;
        all += std::to_string(vex_libFreeMemory(value)) + std::to_string(vex_libFreeMemory(value));
        vex_memberid_u id{};
        id.domain_port = {3, {}, 0x01020304};
        void* member = vex_MemberCreate(VEX_ZMT_DOMAIN_PORT, &id);
        all += std::to_string(vex_MemberDestroy(&member)) + (member == nullptr ? "gone" : "there");
        bytes.push_back(all);
    }
    EXPECT_EQ(bytes[0], bytes[1]);
    const recording::Recording recording = recording::load(path);
    ASSERT_EQ(recording.records.size(), 8U);
    const auto& read = std::get<recording::SmlEntries>(recording.records[1].back("records"));
    EXPECT_EQ(read[0].value, "1000001122334455" + std::string(240, '#'));
    EXPECT_EQ(read[1].value, "\x01\xc2\x80\xc3\xbf\"\\");  // UTF-8, as the switch file is
    EXPECT_EQ(read[2].status, 201U);
    EXPECT_EQ(std::get<recording::SmlEntries>(recording.records[2].back("records"))[1].status, 0xffffffffU);
    const auto& text1 = std::get<recording::HandedText>(recording.records[3].back("value"));
    EXPECT_EQ(text1.text, "caf\xc3\xa9");
    EXPECT_EQ(std::get<recording::Address>(recording.records[4].in("memory")).value, text1.memory.value);
    EXPECT_NE(recording.records[5].status(), 0);  // released twice
    EXPECT_EQ(std::get<recording::Member>(recording.records[6].in("id")).id.domain_port.port, 0x01020304U);
}

TEST_F(Recordings, EndWholeAtTheLimitInAForkAndWhenKilled) {
    sim.loadSwitchText(kSwitchText);
    uint32_t handle = 0;
    const auto read = [&handle] {
        vex_smlrequest_s key{"Oper.Switch.WWN", "", 0};
        vex_smlGetBatch(handle, &key, 1);
    };
    setenv("VEXRECORD_LIMIT", "9000", 1);
    const std::string path = record("limited.jsonl");
    vex_IPConnect("h", "c", "", &handle);
    std::vector<std::thread> threads(4);
    std::atomic<size_t> begun{0};
    for (std::thread& thread : threads)
        thread = std::thread([&] {
            read();
            for (++begun; begun < threads.size();) std::this_thread::yield();
            for (int i = 0; i < 50; ++i) read();
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_LE(std::filesystem::file_size(path), 9000U);
    recording::Reader reader(path);
    Record last;
    size_t records = 0;
    std::set<uint64_t> seen;
    for (; reader.next(last); ++records) seen.insert(last.thread);
    EXPECT_EQ(last.kind, Record::Kind::End);
    EXPECT_GT(records, 30U);
    EXPECT_GE(seen.size(), 5U);  // the threads' own numbers

    unsetenv("VEXRECORD_LIMIT");
    const std::string parent = record("parent.jsonl");
    read();
    const pid_t child = fork();
    while (child == 0) read();
    const std::string childFile = parent + '.' + std::to_string(child);
    while (!std::filesystem::exists(childFile) || std::filesystem::file_size(childFile) < 100000)
        usleep(1000);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_EQ(recording::load(parent).records.size(), 1U);
    EXPECT_EQ(recording::load(childFile).tornLine, 0U);
    EXPECT_EQ(recording::load(childFile).records.back().thread, 1U);
}

TEST_F(Recordings, WithSecretsMaskedReplayAsWell) {
    setenv("VEXRECORD_MASK", "1", 1);
    const std::string path = record("masked.jsonl");
    live(kSwitchText, stepsText);
    char* value = nullptr;
    uint32_t extra = 0;
    void* reply = nullptr;
    vex_smlGet(1577058305, "Config.Snmp.ReadComm", &value, &extra);
    vex_libFreeMemory(value);
    vex_smlSet(1577058305, "Config.Snmp.WriteComm.topsecret", &reply);
    const std::string text = contents(path);
    for (const char* secret : {"admin", "quoted", "gu\\u00c3", "topsecret", "\"public\""})
        EXPECT_THAT(text, ::testing::Not(HasSubstr(secret)));
    EXPECT_THAT(text, AllOf(HasSubstr("NextPotentialUser.masked-"), HasSubstr("1000001122334455"),
                            HasSubstr("\"masked\":true")));
    EXPECT_THAT(replayed(path), HasSubstr("! DCEventUserAcctAdd wwn=1000001122334455 userName=\"masked-"));
}

TEST_F(Recordings, ThatAreDamagedSayWhere) {
    const std::string path = record("good.jsonl");
    live(switchText, "");
    const std::string good = contents(path);
    const std::string second = good.substr(0, good.find('\n') + 1);
    const struct {
        std::string text;
        const char* message;
    } cases[] = {
        {good.substr(0, 30), ":1: this is no recording of vexlib"},
        {std::regex_replace(good, std::regex("\"version\":1"), "\"version\":2"),
         ":1: a recording of version 2, and"},
        {second + "rubbish\n" + good, ":2: the line is no record"},
        {second + "{\"n\":1}\n", ":2: thread is missing"},
        {std::regex_replace(good, std::regex("\"count\":8"), "\"count\":99999999999"),
         ": args.count 99999999999 is too large"},
        {std::regex_replace(good, std::regex("\"Online\""), "\"\\u0394\""),
         ": back.records has a character that stands for no byte"},
    };
    for (const auto& [text, message] : cases) {
        const std::string bad = writeFile("bad.jsonl", text);
        Tool tool(HOST_TOOL, {"show", "switch", "--replay", bad});
        EXPECT_EQ(tool.finish(), 2);
        EXPECT_THAT(tool.errors, ::testing::MatchesRegex("[^\n]*\n"));
        EXPECT_THAT(tool.errors, AllOf(::testing::StartsWith(bad + ':'), HasSubstr(message)));
    }
    // From a later program, cut and torn: what is skipped is said once, whoever reads it.
    const std::string later =
        R"({"n":2,"thread":1,"time":2,"took":1,"call":"vex_later","args":{"x":[1]},"new":{}}
{"n":9,"note":"of a kind to come","thread":1,"time":2,"took":1}
{"n":10,"end":"limit","limit":4096,"lost":3}
)";
    const std::string torn =
        writeFile("torn.jsonl", std::regex_replace(good.substr(0, good.size() - 9), std::regex("\n"),
                                                   "\n" + later, std::regex_constants::format_first_only));
    for (const char* command : {"show", "capture", "report"}) {
        std::vector<std::string> words = {command, command == std::string("show") ? "switch" : "-"};
        words.insert(words.end(), {"--replay", torn});
        const std::string all = told(0, words);
        for (const char* remark :
             {"the last line is not whole and was skipped", "was cut here, at its limit of 4096",
              "records are missing: 3", "does not know were skipped: 2, of which"})
            EXPECT_EQ(all.find(remark), all.rfind(remark)) << all;
        EXPECT_THAT(all,
                    AllOf(HasSubstr("not whole"), HasSubstr("limit of 4096"), HasSubstr(": 2, of which")));
    }

    told(0, {"--hostile", path, *EMULATOR == '\0' ? "1000" : "100"}, REPLAY_CACHE);
}

/** A line of a recording; times in milliseconds. */
std::string call(int n, int thread, int begin, int end, const std::string& rest) {
    const auto nanoseconds = [](int time) { return std::to_string(time * 1000000LL); };
    return "{\"n\":" + std::to_string(n) + ",\"thread\":" + std::to_string(thread) +
           ",\"time\":" + nanoseconds(begin) + ",\"took\":" + nanoseconds(end - begin) + "," + rest + "}\n";
}
std::string batch(const std::string& key) {
    return R"("call":"vex_smlGetBatch","args":{"handle":1,"records":[")" + key +
           R"("],"count":1},"result":0,"back":{"records":[[0,")" + key + "!\"]]}";
}
std::string registration(int context) {
    return R"("call":"vex_enRegisterForEventList","args":{"handle":1,"callback":9,"context":)" +
           std::to_string(context) + R"(,"list":[1],"count":1},"result":0,"back":{"list":[0]})";
}
std::string notification(const std::string& text, int context, int user) {
    return R"("event":{"code":1,"source":[0,0,0],"text":")" + text + R"("},"context":)" +
           std::to_string(context) + ",\"user\":" + std::to_string(user) + ",\"waited\":0";
}
std::string connection(int n, int second, int result) {
    return call(
        n, 1, second * 1000, second * 1000 + 1,
        R"("call":"vex_IPConnect","args":{"host":"localhost","client":"cim","options":""},"result":)" +
            std::to_string(result) + R"(,"back":{"handle":)" + (result == 0 ? "1577058305" : "null") + "}");
}

TEST_F(Recordings, ReplayInAHostOfOnesOwnByPosition) {
    const std::string head = contents(RECORDINGS_DIR "/x86.jsonl");
    const std::string whole =
        head.substr(0, head.find('\n') + 1) + call(1, 1, 1, 2, registration(7)) +
        call(2, 1, 3, 4, registration(8)) + call(3, 1, 11, 12, batch("asked")) +
        call(4, 1, 10, 13, notification("ask", 7, 5)) +  // inside k1
        call(5, 1, 9, 20, batch("k1")) + call(6, 3, 22, 23, notification("between", 8, 0)) +
        call(7, 1, 30, 40, batch("k2")) + call(8, 3, 41, 42, notification("late", 7, 0)) +
        call(9, 1, 300, 301, batch("k3"));
    const std::string path = writeFile("own.jsonl", whole);
    const std::string other =
        writeFile("other.jsonl", whole + call(10, 5, 400, 401, batch("k9")) +
                                     "{\"n\":11,\"end\":\"limit\",\"limit\":5000,\"lost\":0}\n");
    // What a call found is fixed; the host's own words right behind one are not.
    const std::vector<std::string> all = {"ask\\+user asked! .*k1! .*k2! .*k3! ", "second:between .*k2!",
                                          "first:late .*k3!"};
    const struct {
        std::string file, mode, speed, last;
        int status;
        std::vector<std::string> told;
    } cases[] = {
        {path, "strict", "max", "3", 0, all},
        {path, "lenient", "max", "3", 0, all},
        {path, "strict", "2", "3", 0, all},
        {path, "Strict", "1", "3", 2, {"VEXREPLAY_MODE is neither strict nor lenient"}},
        {path, "strict", "max", "2", 3, {"own.jsonl:10: expected of thread 1: .*k3.*; it did not come"}},
        {path, "lenient", "max", "4", 0, {"no recorded call is left for this thread; this came: .*k4"}},
        {other,
         "strict",
         "max",
         "3",
         3,
         {"other.jsonl:11: expected of thread 5: .*k9.*; this thread did not come"}},
        {other,
         "strict",
         "max",
         "4",
         3,
         {"was cut here, at its limit of 5000 bytes\\), and this came: .*k4"}},
    };
    for (const auto& one : cases) {
        setenv("VEXREPLAY_FILE", one.file.c_str(), 1);
        setenv("VEXREPLAY_MODE", one.mode.c_str(), 1);
        setenv("VEXREPLAY_SPEED", one.speed.c_str(), 1);
        const std::string said = told(one.status, {"--host", one.last}, REPLAY_CACHE);
        for (const std::string& pattern : one.told)
            EXPECT_TRUE(std::regex_search(said, std::regex(pattern))) << pattern << '\n' << said;
    }
}

TEST_F(Recordings, OfAHostThatWaitedAndAskedForItselfReplayInTheTool) {
    std::string good = contents(RECORDINGS_DIR "/x86.jsonl");
    const size_t head = good.find('\n') + 1;
    const std::string begin = good.substr(0, head);
    good.erase(0, good.find('\n', head) + 1);  // the connection too
    const std::string own = R"("call":"vex_ZonesetTestName","args":{"name":"x"},"result":0)";
    const std::string slow = writeFile(
        "slow.jsonl", begin + connection(1, 0, 5) + connection(1, 0, 5) + connection(1, 0, 5) +
                          connection(1, 0, 0) + call(1, 1, 0, 1, own) + call(1, 9, 0, 1, own) + good);
    const std::string never = writeFile("never.jsonl", begin + connection(1, 0, 5) + connection(2, 10, 5));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(told(0, {"run", "--replay", slow, "--strict", "--speed", "max"}),
                HasSubstr("DCEventUserLoginFailure"));
    EXPECT_THAT(told(1, {"run", "--replay", never, "--speed", "max"}),
                HasSubstr("the switch was not reached"));
    EXPECT_THAT(told(1, {"show", "ports", "--replay", never}), HasSubstr("did not answer in this recording"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(Recordings, OfAZoningSessionAndARunReplayInTheTool) {
    const std::string path = writeFile("zone.jsonl", "");
    const std::vector<std::string> session = {"zone", "lock", "create zone z2",
                                              "add wwn 10:00:00:11:22:33:44:66 to zone z2", "commit"};
    const auto tool = [](int status, std::vector<std::string> words, const std::vector<std::string>& more) {
        words.insert(words.end(), more.begin(), more.end());
        return std::regex_replace(told(status, words), std::regex("\\d\\d:\\d\\d:\\d\\d\\.\\d{3}"), "");
    };
    const std::string live = tool(0, session, {"--switch", kSwitchFile, "--record", path});
    EXPECT_THAT(live, HasSubstr("zone z2 ("));
    EXPECT_EQ(tool(0, session, {"--replay", path}), live);
    const std::vector<std::string> other = {"zone", "lock", "create zone z3", "abandon"};
    EXPECT_THAT(tool(3, other, {"--replay", path, "--strict"}),
                AllOf(HasSubstr(path), HasSubstr("expected of thread 1: "), HasSubstr("z2"),
                      HasSubstr("; this came: "), HasSubstr("z3")));
    EXPECT_THAT(tool(1, other, {"--replay", path}), HasSubstr("never asked when it was recorded: "));
    EXPECT_THAT(told(0, {"show", "zoning", "--replay", path}), HasSubstr("zone z2 ("));

    const std::string run = writeFile("run.jsonl", "");
    const std::string events =
        tool(0, {"run"}, {"--switch", switchFile, "--scenario", scenario, "--record", run});
    const std::string again = tool(0, {"run"}, {"--replay", run, "--strict", "--speed", "max"});
    const std::regex passes("  DCEventDataCacheUpdateComplete\n");
    EXPECT_EQ(std::regex_replace(again, passes, ""), std::regex_replace(events, passes, ""));
}

}  // namespace
