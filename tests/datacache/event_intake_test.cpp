#include "datacache/event_codes.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* kSwitch = "[switch]\nwwn = \"1000001122AABBCC\"\n";

class EventIntake : public CacheTest {
  protected:
    EventIntake() {
        load(kSwitch);
        settle();
        log();
        calls();
        allEvents();
    }
    size_t queued() {
        const AccessGuard guard;
        return peer().eventQueue.size();
    }
    bool awakened() { return takeEvaluationRequests() != 0; }
};

/** The codes with a name, the registered and the queued ones, written down independently of the table. */
TEST_F(EventIntake, KnowsItsCodes) {
    const std::vector<int> registered = {32, 52, 57, 28, 39, 29, 82, 50, 14, 15, 72, 73, 33, 40,
                                         74, 75, 76, 77, 78, 16, 68, 69, 79, 80, 3,  1,  7,  70};
    std::vector<int> list;
    for (const vex_eventreg_s& entry : eventRegistrations()) {
        list.push_back(entry.code);
        EXPECT_EQ(entry.result, 0);
    }
    EXPECT_EQ(list, registered);

    const std::vector<int> gaps = {18, 58, 59, 63, 64, 65, 71, 74, 75, 76, 77};
    for (int code = -1; code <= 300; ++code) {
        const bool inList = std::find(registered.begin(), registered.end(), code) != registered.end();
        EXPECT_EQ(isQueuedEvent(code), inList && code != 70) << code;
        const bool named =
            (code >= 1 && code <= 82 && std::find(gaps.begin(), gaps.end(), code) == gaps.end()) ||
            code == 253 || code == 254;
        EXPECT_EQ(std::string(CachePeer::tagToString(code)) != "VEX_EVENT_OTHER", named) << code;
    }
    EXPECT_STREQ(CachePeer::tagToString(1), "VEX_EVENT_FABRIC_CHANGE");
    EXPECT_STREQ(CachePeer::tagToString(60), "VEX_EVENT_PORT_TEST_COMPLETE_2");
    EXPECT_STREQ(CachePeer::tagToString(82), "VEX_EVENT_SWITCH_FAULT_CHANGE");
    EXPECT_STREQ(CachePeer::tagToString(254), "VEX_EVENT_CONNECTION_RESTORED");
    EXPECT_STREQ(CachePeer::tagToString(-2147483647 - 1), "VEX_EVENT_OTHER");
}

TEST_F(EventIntake, KeepsItsOwnCopyOfAnUnterminatedEvent) {
    sim.raise(32, {7, 8, 9}, std::string(2000, 'x'));
    sim.deliverPending();
    {
        const AccessGuard guard;
        ASSERT_THAT(peer().eventQueue, SizeIs(1));
        const vex_event_s& copy = *peer().eventQueue.front();
        EXPECT_EQ(std::string(copy.text, sizeof copy.text), std::string(1400, 'x'));
        EXPECT_EQ(copy.source.word[2], 9);
    }
    EXPECT_THAT(log(),
                ElementsAre("2 DCACHE: queueing VEX_EVENT_T[7:8:9] (32)VEX_EVENT_SWITCH_STATE_CHANGE : " +
                            std::string(1400, 'x')));
    settle();
}

TEST_F(EventIntake, KicksWithoutWaking) {
    cache().vexlibEventKick(VEX_EVENT_CHASSIS_OPERCHANGE, nullptr, nullptr);
    EXPECT_THAT(
        log(),
        ElementsAre("2 DCACHE: queueing - kick - VEX_EVENT_T[0:0:0] (33)VEX_EVENT_CHASSIS_OPERCHANGE : "));
    vex_eventsource_s source{{4, 5, -6}};
    std::string text(1500, 'k');
    cache().vexlibEventKick(VEX_EVENT_SWITCH_STATE_CHANGE, &source, text.data());
    EXPECT_FALSE(awakened());
    EXPECT_EQ(queued(), 2U);
    {
        const AccessGuard guard;
        EXPECT_EQ(std::string(peer().eventQueue.back()->text), std::string(1395, 'k'));
        EXPECT_EQ(peer().eventQueue.back()->source.word[2], -6);
    }
    calls();
    pass();
    EXPECT_EQ(queued(), 0U) << "the next pass, whatever wakes it, takes them";
    EXPECT_THAT(calls(), SizeIs(3)) << "switch and chassis were read again";
}

TEST_F(EventIntake, ReportsRegistrationsThatFail) {
    sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_enRegisterForEventList\"\nresult = 5\n");
    EXPECT_TRUE(cache().startEventMonitor(nullptr));
    EXPECT_THAT(log(), Contains("2 DCACHE: Unable to register for events via vex_enRegisterForEvents"));

    sim.run(
        "[[step]]\ndo = \"fault\"\nfunction = \"vex_enRegisterForEventList\"\nkey = \"70\"\nstatus = 9\n"
        "[[step]]\ndo = \"fault\"\nfunction = \"vex_enRegisterForEventList\"\nkey = \"3\"\nstatus = 9\n");
    EXPECT_TRUE(cache().startEventMonitor(nullptr));
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: Unable to register for event 3",
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
