#include <fstream>

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

TEST_F(EventsTest, AScenarioRunsInItsTimeAndWritesItsTranscript) {
    const std::string path = writeFile("transcript.txt", "");
    sim.setDelivery(Delivery::Thread);
    sim.loadSwitchText("[chassis]\nfans = 1\n");
    sim.writeTranscript(path);
    sim.loadScenarioText(R"(step = [{do = "fan", index = 1, state = "Bad"},
        {do = "note", after = "400ms", text = "half"},
        {do = "wait", for = 0.04}])",
                         "s");
    EXPECT_NE(command("Cmd.Nothing"), 0);
    sim.startScenario();
    EXPECT_FALSE(sim.waitScenario(10));
    sim.waitScenario();
    sim.writeTranscript("");
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line.substr(11));
    EXPECT_THAT(lines, testing::ElementsAre("vex_smlSet Cmd.Nothing = 201", "step s:1 fan",
                                            "event 33 VEX_EVENT_CHASSIS_OPERCHANGE [0:0:0] Fan 1 Bad",
                                            "step s:2 note", "note half", "step s:3 wait"));
}
