#include "datacache/event_codes.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class EventIntake : public CacheTest {
  protected:
    EventIntake() { start("[switch]\nwwn = '1000001122AABBCC'\n"); }
};

/** The codes with a name, and the queued ones, written down independently of the table. */
TEST_F(EventIntake, KnowsItsCodes) {
    const std::vector<int> queued = {32, 52, 57, 28, 39, 29, 82, 50, 14, 15, 72, 73, 33, 40,
                                     74, 75, 76, 77, 78, 16, 68, 69, 79, 80, 3,  1,  7};
    const std::vector<int> gaps = {18, 58, 59, 63, 64, 65, 71, 74, 75, 76, 77};
    const auto isIn = [](const std::vector<int>& codes, int code) {
        return std::find(codes.begin(), codes.end(), code) != codes.end();
    };
    for (int code = -1; code <= 300; ++code) {
        EXPECT_EQ(isQueuedEvent(code), isIn(queued, code)) << code;
        const bool named = (code >= 1 && code <= 82 && !isIn(gaps, code)) || code == 253 || code == 254;
        EXPECT_EQ(std::string(CachePeer::tagToString(code)) != "VEX_EVENT_OTHER", named) << code;
    }
    EXPECT_STREQ(CachePeer::tagToString(60), "VEX_EVENT_PORT_TEST_COMPLETE_2");
    EXPECT_STREQ(CachePeer::tagToString(254), "VEX_EVENT_CONNECTION_RESTORED");
    EXPECT_STREQ(CachePeer::tagToString(-2147483647 - 1), "VEX_EVENT_OTHER");
}

TEST_F(EventIntake, KeepsItsOwnCopyOfAnUnterminatedEvent) {
    sim.raise(32, {7, 8, 9}, std::string(2000, 'x'));
    sim.deliverPending();
    const std::string kept(1400, 'x');
    EXPECT_THAT(
        log(),
        ElementsAre("2 DCACHE: queueing VEX_EVENT_T[7:8:9] (32)VEX_EVENT_SWITCH_STATE_CHANGE : " + kept));
    pass();
    EXPECT_EQ(log()[1],
              "2 DCACHE: dequeueing VEX_EVENT_T[7:8:9] (32) VEX_EVENT_SWITCH_STATE_CHANGE : " + kept);
}

TEST_F(EventIntake, KicksWithoutWaking) {
    cache().vexlibEventKick(VEX_EVENT_CHASSIS_OPERCHANGE, nullptr, nullptr);
    vex_eventsource_s source{{4, 5, -6}};
    std::string text(1500, 'k');
    cache().vexlibEventKick(VEX_EVENT_SWITCH_STATE_CHANGE, &source, text.data());
    EXPECT_THAT(
        log(),
        ElementsAre("2 DCACHE: queueing - kick - VEX_EVENT_T[0:0:0] (33)VEX_EVENT_CHASSIS_OPERCHANGE : ",
                    "2 DCACHE: queueing - kick - VEX_EVENT_T[4:5:-6] (32)VEX_EVENT_SWITCH_STATE_CHANGE : " +
                        std::string(1395, 'k')));
    EXPECT_EQ(takeEvaluationRequests(), 0);
    pass();
    EXPECT_THAT(calls(), SizeIs(3)) << "the next pass, whatever wakes it, reads switch and chassis again";
}

TEST_F(EventIntake, ReportsRegistrationsThatFail) {
    const std::string fault = "step = [{do = 'fault', function = 'vex_enRegisterForEventList', ";
    sim.run(fault + "result = 5}]");
    EXPECT_TRUE(cache().startEventMonitor(nullptr));
    sim.run(fault + "key = '70', status = 9}]");
    EXPECT_TRUE(cache().startEventMonitor(nullptr));
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: Unable to register for events via vex_enRegisterForEvents",
                                   "2 DCACHE: Unable to register for event 70"));
}

TEST_F(EventIntake, IgnoresNotificationsWithoutCacheOrEvent) {
    DataCache::vexlibNotificationCB(nullptr, nullptr, nullptr);
    delete std::exchange(DataCache::instance, nullptr);
    vex_event_s event{};
    event.code = 32;
    log();
    DataCache::vexlibNotificationCB(nullptr, &event, nullptr);
    EXPECT_THAT(log(), IsEmpty());
}

}  // namespace
