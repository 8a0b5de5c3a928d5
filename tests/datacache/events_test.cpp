// Events of the switch: their way into the queue, their dispatch, the pass that follows, and what health
// tells of it.
#include <cstdio>
#include <map>
#include <set>
#include <stdexcept>

#include "common/log_hooks.h"
#include "datacache/CacheReader.h"
#include "datacache/HealthMonitor.h"
#include "datacache/event_codes.h"
#include "tests/support/Allocations.h"
#include "tests/support/CacheTest.h"

namespace {

using namespace testing;

class Events : public CacheTest {
  protected:
    Events() {
        start(
            "switch = {wwn = '1000001122AABBCC'}\nchassis = {power_supplies = ['Good']}\n"
            "ports = {count = 20, transceiver = {oui = 0x00AABB}}\naccounts = {users = ['admin']}");
    }
    void fault(const std::string& fields) {
        sim.run("step = [{do = 'fault', function = 'vex_smlGetBatch', key = " + fields + "}]");
    }
    void dispatch(int32_t code, const std::string& text, int32_t port = 0) {
        vex_event_s event{};
        event.code = code;
        event.source = {{1, 2, port}};
        text.copy(event.text, sizeof event.text);
        const AccessGuard guard;
        peer().dispatch(&event);
    }
    /** Takes the marks away; gives the areas that were marked, one letter each, and how many ports. */
    std::string takeMarks() {
        const AccessGuard guard;
        const CachePeer c = peer();
        std::string marks;
        const std::pair<bool*, char> areas[] = {
            {&c.switchUpdate, 'S'}, {&c.chassisUpdate, 'C'},  {&c.bladesUpdate, 'B'}, {&c.portsUpdate, 'P'},
            {&c.fabricUpdate, 'F'}, {&c.accountsUpdate, 'A'}, {&c.zoningUpdate, 'Z'}};
        for (const auto& [marked, letter] : areas) {
            if (std::exchange(*marked, false)) marks += letter;
        }
        if (c.localPortRefresh.any()) marks += std::to_string(c.localPortRefresh.count());
        c.localPortRefresh.reset();
        return marks;
    }
};

TEST_F(Events, KeepsItsOwnCopyOfAnUnterminatedEvent) {
    sim.raise(32, {7, 8, 9}, std::string(2000, 'x'));
    sim.deliverPending();
    takeEvaluationRequests();
    vex_eventsource_s source{{4, 5, -6}};
    std::string text(1500, 'k');
    cache().vexlibEventKick(VEX_EVENT_CHASSIS_OPERCHANGE, nullptr, nullptr);
    cache().vexlibEventKick(VEX_EVENT_CHASSIS_OPERCHANGE, &source, text.data());
    EXPECT_EQ(takeEvaluationRequests(), 0) << "the next pass, whatever wakes it, takes what was kicked";
    EXPECT_THAT(
        log(),
        ElementsAre("2 DCACHE: queueing VEX_EVENT_T[7:8:9] (32)VEX_EVENT_SWITCH_STATE_CHANGE : " +
                        std::string(1400, 'x'),
                    "2 DCACHE: queueing - kick - VEX_EVENT_T[0:0:0] (33)VEX_EVENT_CHASSIS_OPERCHANGE : ",
                    "2 DCACHE: queueing - kick - VEX_EVENT_T[4:5:-6] (33)VEX_EVENT_CHASSIS_OPERCHANGE : " +
                        std::string(1395, 'k')));
    pass();
    EXPECT_EQ(log()[1], "2 DCACHE: dequeueing VEX_EVENT_T[7:8:9] (32) VEX_EVENT_SWITCH_STATE_CHANGE : " +
                            std::string(1400, 'x'));
    EXPECT_THAT(calls(), SizeIs(3)) << "switch and chassis are read again";
}

TEST_F(Events, IgnoresNotificationsWithoutCacheOrEvent) {
    DataCache::vexlibNotificationCB(nullptr, nullptr, nullptr);
    EXPECT_THAT(log(), IsEmpty());
    delete std::exchange(DataCache::instance, nullptr);
    vex_event_s event{};
    event.code = 32;
    log();
    DataCache::vexlibNotificationCB(nullptr, &event, nullptr);
    EXPECT_THAT(log(), IsEmpty());
}

/** Written down independently of the table. */
TEST_F(Events, EveryCodeMarksItsAreasOrNone) {
    const std::map<int32_t, const char*> marks = {
        {1, "F"},  {3, "Z"},  {7, "F"},      {14, "P1"}, {15, "P1"},     {28, "BP256"},  {29, "BP256"},
        {32, "S"}, {33, "C"}, {39, "BP256"}, {50, "A"},  {52, "SCP256"}, {57, "SCP256"}, {82, "SB"}};
    const std::set<int32_t> queuedToo = {16, 40, 68, 69, 72, 73, 74, 75, 76, 77, 78, 79, 80};
    const std::set<int32_t> gaps = {18, 58, 59, 63, 64, 65, 71, 74, 75, 76, 77};
    for (int32_t code = -1; code <= 300; ++code) {
        SCOPED_TRACE(code);
        const auto found = marks.find(code);
        const bool named = (code >= 1 && code <= 82 && gaps.count(code) == 0) || code == 253 || code == 254;
        EXPECT_EQ(isQueuedEvent(code), found != marks.end() || queuedToo.count(code) != 0);
        EXPECT_EQ(std::string(CachePeer::tagToString(code)) != "VEX_EVENT_OTHER", named);
        dispatch(code, "text", 3);
        EXPECT_EQ(log()[0], "2 DCACHE: dequeueing VEX_EVENT_T[1:2:3] (" + std::to_string(code) + ") " +
                                eventCodeName(code) + " : text");
        EXPECT_EQ(takeMarks(), found == marks.end() ? "" : found->second);
        EXPECT_EQ(takeEvaluationRequests(), found == marks.end() ? 0 : 1);
    }
    EXPECT_STREQ(CachePeer::tagToString(60), "VEX_EVENT_PORT_TEST_COMPLETE_2");
    EXPECT_STREQ(CachePeer::tagToString(254), "VEX_EVENT_CONNECTION_RESTORED");
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_EQ(events().size(), 6U) << "the alarms, the users' and the change of the configuration";
    cache().updateZoning();
    dispatch(16, "");
    EXPECT_EQ(takeEvaluationRequests(), 1) << "work that waits is work for every event";
}

TEST_F(Events, PortEventsMarkPortsThatAreScannedAndHostsThoseWithARow) {
    for (const int32_t port : {0, 19, 20, 128, 2147483647, -1, -2147483647 - 1}) {
        dispatch(14, "", port);
        EXPECT_EQ(takeMarks(), port == 0 || port == 19 ? "P1" : "") << port;
    }
    cache().localPortRefreshSet(255);
    for (const int outside : {256, -1}) EXPECT_THROW(cache().localPortRefreshSet(outside), std::out_of_range);
    EXPECT_TRUE(lockIsFree()) << "it was released on the way out";
    EXPECT_EQ(takeMarks(), "1");
}

TEST_F(Events, MediaEventsThatSayTooLittleOrTooMuchChangeNothing) {
    const std::string unterminated = "1;2;3;0;1;5;" + std::string(1388, 'x');
    const std::tuple<int, std::string, std::string> texts[] = {
        {77, "1;2;3", "REMOVED event only contains 3 items, string = '1;2;3'"},
        {76, unterminated, "INSTERTED event only contains 7 items, string = '" + unterminated + "'"}};
    for (const auto& [code, text, line] : texts) {
        dispatch(code, text);
        EXPECT_EQ(log().back(), "2 DCACHE: VEX_EVENT_PORT_MEDIA_" + line);
    }
    for (const char* number : {"-1", "256", "65536", "-99999999999"}) {
        dispatch(76, std::string("0;0;0;") + number + ";1;65;0123456789ABCDEF;1");
        dispatch(77, std::string("0;0;0;") + number);
    }
    EXPECT_EQ(log().size(), 8U) << "no remark";
    EXPECT_EQ(media("0"), "0 yes 00AABB SIM0000000000000");
    EXPECT_FALSE(cache().workToDo()) << "no scan follows";
    dispatch(76, "9;9;9;0;1;4161;0123456789ABCDEF;257");  // 4161 is 4096 + 65
    EXPECT_EQ(media("0"), "1 yes A 0123456789ABCDEF") << "OUI and format are cut to a byte";
    dispatch(76, "9;9;9;0;0;65;0123456789ABCDEF;1");
    EXPECT_EQ(media("0"), "2 no  ") << "presence 0 resets";
    dispatch(76, "9;9;9;255;1;65;0123456789ABCDEF;1");
    EXPECT_TRUE(CacheReader().transceivers().mediaPresent[255]);
}

TEST_F(Events, ReportsFailedAreasInTheirOrder) {
    restart();
    load("switch = {wwn = '1000001122AABBCC'}");
    peer().bladesUpdate = peer().portsUpdate = peer().fabricUpdate = peer().zoningUpdate = false;
    sim.run("step = [{do = 'fault', function = 'vex_smlGetBatch', result = 3, times = 2}]");
    EXPECT_FALSE(pass());
    const std::vector<std::string> lines = log();
    EXPECT_THAT(std::vector<std::string>(lines.end() - 6, lines.end()),
                ElementsAre("2 DCACHE: _switchOK = false", "2 DCACHE: _chassisOK = false",
                            "2 DCACHE: _bladesOK = false", "2 DCACHE: _portsOK = false",
                            "2 DCACHE: _fabricOK = false", "2 DCACHE: _zoningOK = false"));
    EXPECT_THAT(allEvents(), IsEmpty());
}

TEST_F(Events, MessageThrownByALoaderSkipsTheRestAndIsRetried) {
    static int callbacks = 0;
    peer().callback = [](DataCacheEvent* event) {
        ++callbacks;
        if (event->type == DCEventPowerSupplyFail::TYPE) throw "the host's own message";
    };
    sim.set("Oper.Chassis.0.PowerSupply.0", "Bad");
    cache().updateAll();
    EXPECT_TRUE(pass()) << "the results of the pass before still stand";
    EXPECT_EQ(callbacks, 3) << "the switch's status, the failing supply and the completion";
    EXPECT_EQ(log().back(), "4 DCACHE: Exception: the host's own message");
    EXPECT_EQ(DataCache::health()[CacheArea::Chassis].lastFailure.fault, ReadFault::Exception);
    EXPECT_FALSE(peer().switchUpdate);
    EXPECT_TRUE(peer().chassisUpdate && peer().bladesUpdate && peer().fabricUpdate && peer().accountsUpdate);
}

TEST_F(Events, DispatchThrowsAsItsTextsDoAndNeedsNoEventAndNoCallback) {
    cache().updateZoning();
    EXPECT_THROW(dispatch(40, "x temp sensor reading is out of range, it is too high)"), std::out_of_range);
    EXPECT_EQ(takeEvaluationRequests(), 0);
    peer().eventQueue.push_front(nullptr);
    pass();
    EXPECT_TRUE(peer().eventQueue.empty()) << "an empty entry goes without dispatch";
    peer().callback = nullptr;
    cache().updateAll();
    EXPECT_TRUE(pass()) << "a host without a callback gets nothing";
}

TEST_F(Events, TellsOfValuesThatAreNone) {
    const std::pair<CacheArea, const char*> cases[] = {
        {CacheArea::Switch, "Oper.Switch.WWN _getSwitchInfo:1364"},
        {CacheArea::Ports, "Oper.Switch.MaxPorts _getPortInfo:1630"}};
    for (const auto& [area, place] : cases) {
        const std::string text = place;
        fault('\'' + text.substr(0, text.find(' ')) + "', value = '0'");
        cache().updateAll();
        cache().localPortRefreshSet();
        pass();
        const ReadFailure failure = DataCache::health()[area].lastFailure;
        EXPECT_EQ(failure.fault, ReadFault::BadValue);
        EXPECT_EQ(failure.key + (' ' + std::string(failure.function)) + ':' + std::to_string(failure.line),
                  text);
        EXPECT_TRUE(pass());
        EXPECT_EQ(DataCache::health()[area].lastFailure.line, failure.line) << "it is kept";
    }
}

TEST_F(Events, FollowsMarksAndTheAccountsThatOnlyTheHostReads) {
    EXPECT_TRUE(cache().readAccounts());
    sim.raise(VEX_EVENT_USER_ACL_CHANGE, {0, 0, 0}, "", true);
    settle();
    EXPECT_TRUE(DataCache::health()[CacheArea::Accounts].marked) << "the pass read no accounts";
    EXPECT_FALSE(cache().workToDo()) << "but took the mark away";
    fault("'*PotentialUser*', times = 0, value = 'again'");
    sim.keepTranscript(false);
    log();
    EXPECT_FALSE(cache().readAccounts());
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: _getAcctInfo()",
                                   "2 DCACHE: _getAcctInfo() the list of accounts has no end",
                                   "2 DCACHE: Cache update failed: DataCache:_getAcctInfo:1897"));
    EXPECT_EQ(DataCache::health()[CacheArea::Accounts].lastFailure.fault, ReadFault::NoEnd);
    EXPECT_FALSE(DataCache::health()[CacheArea::Accounts].upToDate);
}

TEST_F(Events, CountsEventsFromTheDoorToTheirDispatch) {
    const auto before = DataCache::health().events();
    for (const int32_t code : {32, 70, 33, 11}) sim.raise(code, {0, 0, 0}, "", true);
    sim.deliverPending();
    cache().vexlibEventKick(VEX_EVENT_CIM_CFG_CHANGE, nullptr, nullptr);
    const auto after = DataCache::health().events();
    EXPECT_EQ(after.received - before.received, 4U);
    EXPECT_EQ(after.queued - before.queued, 2U);
    EXPECT_EQ(after.dropped - before.dropped, 2U);
    EXPECT_EQ(after.waiting, 3U) << "the host's own waits as well";
    EXPECT_GE(after.mostWaiting, 3U);
    EXPECT_FALSE(HealthMonitor::instance().noEventWaits());
    settle();
    EXPECT_TRUE(HealthMonitor::instance().noEventWaits()) << "what was dropped does not wait";
    EXPECT_EQ(DataCache::health().events().mostWaiting, after.mostWaiting);
}

TEST_F(Events, TimesPassesAndNamesTheSlowestArea) {
    fault("'Oper.Zoning.ActiveChecksum', delay_ms = 50");
    cache().updateSwitch();
    cache().updateZoning();
    pass();
    const auto after = DataCache::health().passes();
    EXPECT_FALSE(after.running);
    EXPECT_EQ(after.lastCalls, 2U);
    EXPECT_GE(after.last, std::chrono::milliseconds(50));
    EXPECT_GE(after.longest, after.last);
    if (after.longest == after.last) {
        EXPECT_EQ(after.longestArea, CacheArea::Zoning);
    }
    pass();
    EXPECT_EQ(DataCache::health().passes().count, after.count + 1);
    EXPECT_EQ(DataCache::health().passes().lastCalls, 0U);
    EXPECT_NE(DataCache::health().passes().last, after.last);
}

TEST_F(Events, AScanOfThePortsCostsAlmostNoAllocations) {
    restart();
    start("switch = {wwn = '1000001122AABBCC'}\nports = {count = 128}");
    sim.keepTranscript(false);
    observeLog(nullptr, nullptr);
    const AccessGuard guard;
    cache().localPortRefreshSet();
    vex_smlrequest_s records[8] = {};
    for (int i = 0; i < 8; ++i) std::sprintf(records[i].key, "Oper.UserPort.0.%d.SFPSerialNumber", 120 + i);
    Allocations bare;
    for (int port = 0; port < 128; ++port) vex_smlGetBatch(hSwitch, records, 8);
    const size_t calls = bare.count();
    EXPECT_TRUE(peer().getPortInfo());
    EXPECT_LE(bare.count() - calls, calls + 32) << calls;
}

}  // namespace
