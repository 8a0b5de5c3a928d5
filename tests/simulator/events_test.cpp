#include <chrono>
#include <fstream>
#include <functional>

#include "tests/host/Tool.h"
#include "tests/simulator/SimulatorTest.h"

using namespace vexsim;

namespace {

/** What the callback saw. */
std::vector<std::string> seen;

void record(void* context, vex_event_s* event, void*) {
    const auto& word = event->source.word;
    const std::string text(event->text, strnlen(event->text, sizeof event->text));
    seen.push_back(std::to_string(event->code) + '[' + std::to_string(word[0]) + ':' +
                   std::to_string(word[1]) + ':' + std::to_string(word[2]) + ']' + text +
                   (context == &seen ? "" : " wrong context"));
}

class EventsTest : public SimulatorTest {
  protected:
    EventsTest() {
        seen.clear();
        vex_eventreg_s list[] = {{1, 9}, {-5, 9}, {33, 9}};
        EXPECT_EQ(vex_enRegisterForEventList(handle, record, &seen, list, 3), 0);
    }
};

}  // namespace

TEST_F(EventsTest, OnlyRegisteredCodesArriveUnlessForced) {
    sim.run(R"(step = [{do = "raise", code = "VEX_EVENT_FABRIC_CHANGE", source = [1, -2, 3], text = "a"},
                       {do = "raise", code = 3}, {do = "raise", code = -5},
                       {do = "raise", code = 2147483647, forced = true},
                       {do = "raise", code = 1, text = "ab", unterminated = true}])");
    sim.raise(1, {0, 0, 0}, std::string(1399, 'x'));
    sim.raise(1, {0, 0, 0}, std::string(5000, 'y'));
    sim.deliverPending();
    EXPECT_THAT(
        seen, testing::ElementsAre("1[1:-2:3]a", "-5[0:0:0]", "2147483647[0:0:0]",
                                   "1[0:0:0]ab" + std::string(1398, '#'), "1[0:0:0]" + std::string(1399, 'x'),
                                   "1[0:0:0]" + std::string(1400, 'y')));
}

TEST_F(EventsTest, FaultsLoseAndDelayNotifications) {
    const struct {
        const char* fault;  ///< on notifications
        std::vector<std::string> arrive;
    } cases[] = {
        {"times = 2", {"33[0:0:0]3", "1[0:0:0]4"}},
        {"skip = 1, times = 0", {"1[0:0:0]1"}},
        {"key = '1', times = 0", {"33[0:0:0]2", "33[0:0:0]3"}},
        {"key = 'VEX_EVENT_CHASSIS_*'", {"1[0:0:0]1", "33[0:0:0]3", "1[0:0:0]4"}},
        {"key = '33', delay_ms = 1", {"1[0:0:0]1", "33[0:0:0]3", "1[0:0:0]4", "33[0:0:0]2"}},
    };
    for (const auto& [fault, arrive] : cases) {
        sim.setDelivery(std::string(fault).find("delay") == std::string::npos ? Delivery::Thread
                                                                              : Delivery::Manual);
        sim.run(std::string("step = [{do = 'fault', function = 'notification', ") + fault + R"(},
            {do = "raise", code = 9, text = "counts for no fault"},
            {do = "raise", code = 1, text = "1"}, {do = "raise", code = 33, text = "2"},
            {do = "raise", code = 33, text = "3"}, {do = "raise", code = 1, text = "4"},
            {do = "clear_faults", function = "notification"}, {do = "raise", code = -5}])");
        std::vector<std::string> all = arrive;
        const bool late = arrive.back() == "33[0:0:0]2";
        all.insert(all.end() - (late ? 1 : 0), "-5[0:0:0]");
        sim.deliverPending();
        sim.waitDelivered();
        EXPECT_EQ(seen, all) << fault;
        seen.clear();
    }
}

TEST_F(EventsTest, ARefusedCodeIsRegisteredBesideTheOthersWhenItIsTriedAgain) {
    sim.reset();
    EXPECT_EQ(vex_IPConnect("localhost", "cim", "", &handle), 0);
    sim.setDelivery(Delivery::Manual);
    sim.run(R"(step = [
        {do = "fault", function = "vex_enRegisterForEventList", key = "3", status = 9},
        {do = "fault", function = "vex_enRegisterForEventList", key = "5", status = 9, carried_out = true}])");
    vex_eventreg_s list[] = {{1, 0}, {3, 0}, {5, 0}};
    const auto raiseAll = [this] {
        for (const int32_t code : {1, 3, 5}) sim.raise(code, {0, 0, 0}, "");
        sim.deliverPending();
        return std::exchange(seen, {});
    };
    EXPECT_EQ(vex_enRegisterForEventList(handle, record, &seen, list, 3), 0);
    EXPECT_EQ(list[0].result + 10 * list[1].result + 100 * list[2].result, 990);
    EXPECT_THAT(raiseAll(), testing::ElementsAre("1[0:0:0]", "5[0:0:0]"));
    EXPECT_EQ(vex_enRegisterForEventList(handle, record, &seen, &list[1], 1), 0);
    EXPECT_THAT(raiseAll(), testing::ElementsAre("1[0:0:0]", "3[0:0:0]", "5[0:0:0]"));
    EXPECT_EQ(vex_enRegisterForEventList(handle, record, nullptr, list, 1), 0);
    EXPECT_THAT(raiseAll(), testing::ElementsAre("1[0:0:0] wrong context"));
}

TEST_F(EventsTest, ACallHangsUntilItIsLetGo) {
    const std::function<void()> endings[] = {
        [this] { sim.run("do = 'release'"); },
        [this] { sim.run("do = 'clear_faults'\nfunction = 'vex_smlGet'"); },
        [this] { sim.release("vex_smlGet"); },
        [this] { sim.loadSwitchText(""); },
        [this] { sim.reset(); },
    };
    for (const auto& end : endings) {
        sim.setDelivery(Delivery::Thread);
        // The call hangs in the callback, for which the end of the scenario waits.
        static uint32_t connection;
        ASSERT_EQ(vex_IPConnect("localhost", "cim", "", &connection), 0);
        vex_eventreg_s list[] = {{1, 0}};
        const auto read = [](void*, vex_event_s*, void*) {
            char* value = nullptr;
            uint32_t extra = 0;
            if (vex_smlGet(connection, "A.1", &value, &extra) == 0) vex_libFreeMemory(value);
        };
        EXPECT_EQ(vex_enRegisterForEventList(connection, read, nullptr, list, 1), 0);
        sim.run("do = 'fault'\nfunction = 'vex_smlGet'\ntimes = 0\nhang = true");
        sim.loadScenarioText("[[step]]\ndo = 'raise'\ncode = 1\n");
        sim.startScenario();
        ASSERT_TRUE(sim.waitHanging("vex_smlGet"));
        const std::vector<Call> calls = sim.hanging();
        ASSERT_EQ(calls.size(), 1U);
        EXPECT_EQ(calls[0].function + ' ' + calls[0].detail, "vex_smlGet A.1");
        EXPECT_EQ(calls[0].handle, connection);
        sim.release("vex_smlSet");
        EXPECT_EQ(vex_smlGetBatch(connection, nullptr, 0), 0) << "others go on";
        EXPECT_FALSE(sim.waitScenario(0));
        EXPECT_FALSE(sim.waitHanging("vex_smlSet", 0));
        end();
        sim.waitScenario();
        EXPECT_EQ(sim.hanging().size(), 0U);
        EXPECT_EQ(sim.live().misuse, 0U);
        sim.run("do = 'clear_faults'");
    }
}

TEST_F(EventsTest, AScenarioRunsInItsTimeAndWritesItsTranscript) {
    const std::string path = writeFile("transcript.txt", "");
    sim.setDelivery(Delivery::Thread);
    sim.loadSwitchText("[chassis]\nfans = 1\n");
    sim.writeTranscript(path);
    sim.loadScenarioText("step = [{do = 'note', after = '3600s', text = 'late'}]", "endless");
    sim.startScenario();
    EXPECT_FALSE(sim.waitScenario(10)) << "and the next one takes its place";
    sim.loadScenarioText(R"(step = [{do = "fan", index = 1, state = "Bad"},
        {do = "note", after = "400ms", text = "half"},
        {do = "wait", for = 0.04}])",
                         "s");
    EXPECT_NE(command("Cmd.Nothing"), 0);
    const auto begin = std::chrono::steady_clock::now();
    sim.startScenario();
    sim.waitScenario();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(440));
    sim.writeTranscript("");
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line.substr(11));
    EXPECT_THAT(lines, testing::ElementsAre("vex_smlSet Cmd.Nothing = 201", "step s:1 fan",
                                            "event 33 VEX_EVENT_CHASSIS_OPERCHANGE [0:0:0] Fan 1 Bad",
                                            "step s:2 note", "note half", "step s:3 wait"));
}
