#include <fstream>
#include <utility>

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
    EventsTest() { seen.clear(); }

    int32_t registerFor(std::vector<vex_eventreg_s> list) {
        const int32_t result =
            vex_enRegisterForEventList(handle, record, &seen, list.data(), static_cast<int32_t>(list.size()));
        registered = list;
        return result;
    }

    std::vector<std::string> delivered() {
        sim.deliverPending();
        return std::exchange(seen, {});
    }

    std::vector<vex_eventreg_s> registered;
};

}  // namespace

TEST_F(EventsTest, OnlyRegisteredCodesArriveUnlessForced) {
    sim.run("do = 'raise'\ncode = 1\nforced = true");  // nobody is there to hear it
    ASSERT_EQ(registerFor({{1, 9}, {-5, 9}, {32, 9}}), 0);
    EXPECT_EQ(registered[1].result, 0);
    sim.run(R"(
        [[step]]
        do = "raise"
        code = "VEX_EVENT_FABRIC_CHANGE"
        source = [1, -2, 3]
        text = "a"
        [[step]]
        do = "raise"
        code = 3
        [[step]]
        do = "raise"
        code = -5
        [[step]]
        do = "raise"
        code = 2147483647
        forced = true
        [[step]]
        do = "switch_state"
        state = "Offline"
    )");
    sim.raise(33, {0, 0, 0}, "dropped");
    sim.raise(33, {0, 0, 0}, "forced", true);
    EXPECT_THAT(delivered(), testing::ElementsAre("1[1:-2:3]a", "-5[0:0:0]", "2147483647[0:0:0]",
                                                  "32[0:0:0]Switch state Offline", "33[0:0:0]forced"));
    EXPECT_EQ(sim.get("Oper.Switch.OperState"), "Offline");
}

TEST_F(EventsTest, TextsMayFillTheirField) {
    ASSERT_EQ(registerFor({{1, 0}}), 0);
    sim.run("do = 'raise'\ncode = 1\ntext = 'ab'\nunterminated = true");
    sim.raise(1, {0, 0, 0}, std::string(1399, 'x'));
    sim.raise(1, {0, 0, 0}, std::string(5000, 'y'));
    EXPECT_THAT(delivered(), testing::ElementsAre("1[0:0:0]ab" + std::string(1398, '#'),
                                                  "1[0:0:0]" + std::string(1399, 'x'),
                                                  "1[0:0:0]" + std::string(1400, 'y')));
}

TEST_F(EventsTest, AScenarioRunsInItsTimeAndWritesItsTranscript) {
    const std::string path = testing::TempDir() + "transcript.txt";
    std::remove(path.c_str());
    ASSERT_EQ(registerFor({{33, 0}}), 0);
    sim.setDelivery(Delivery::Thread);
    sim.loadSwitchText("[chassis]\nfans = 1\n");
    sim.keepTranscript(true);
    sim.writeTranscript(path);
    sim.loadScenarioText(
        "[[step]]\ndo = 'fan'\nindex = 1\nstate = 'Bad'\n[[step]]\ndo = 'note'\nafter = '400ms'\ntext = "
        "'half'\n"
        "[[step]]\ndo = 'wait'\nfor = 0.04\n",
        "s");
    EXPECT_TRUE(sim.scenarioDone());
    EXPECT_TRUE(seen.empty());
    get("Oper.Chassis.0.Fan.0");
    sim.startScenario();
    EXPECT_FALSE(sim.scenarioDone());
    EXPECT_FALSE(sim.waitScenario(10));
    sim.waitScenario();
    EXPECT_TRUE(sim.scenarioDone());
    sim.writeTranscript("");
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line.substr(11));
    EXPECT_THAT(lines, testing::ElementsAre("vex_smlGetBatch Oper.Chassis.0.Fan.0 = 0", "step s:1 fan",
                                            "event 33 VEX_EVENT_CHASSIS_OPERCHANGE [0:0:0] Fan 1 Bad",
                                            "step s:5 note", "note half", "step s:9 wait"));
    EXPECT_EQ(sim.transcript().back().detail, "half");
}
