#include <map>
#include <stdexcept>

#include "datacache/event_codes.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::IsEmpty;

class Dispatch : public CacheTest {
  protected:
    Dispatch() { start("[switch]\nwwn = '1000001122AABBCC'\n[ports]\ncount = 20\n"); }
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

TEST_F(Dispatch, EveryCodeMarksItsAreasOrNone) {
    const std::map<int32_t, const char*> marks = {
        {1, "F"},  {3, "Z"},  {7, "F"},      {14, "P1"}, {15, "P1"},     {28, "BP256"},  {29, "BP256"},
        {32, "S"}, {33, "C"}, {39, "BP256"}, {50, "A"},  {52, "SCP256"}, {57, "SCP256"}, {82, "SB"}};
    for (int32_t code = -1; code <= 300; ++code) {
        SCOPED_TRACE(code);
        dispatch(code, "text", 3);
        EXPECT_EQ(log()[0], "2 DCACHE: dequeueing VEX_EVENT_T[1:2:3] (" + std::to_string(code) + ") " +
                                eventCodeName(code) + " : text");
        const auto found = marks.find(code);
        EXPECT_EQ(takeMarks(), found == marks.end() ? "" : found->second);
        EXPECT_EQ(takeEvaluationRequests(), found == marks.end() ? 0 : 1);
    }
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_EQ(events().size(), 6U) << "the alarms, the users' and the change of the configuration";
    cache().updateZoning();
    dispatch(16, "");
    EXPECT_EQ(takeEvaluationRequests(), 1) << "work that waits is work for every event";
}

TEST_F(Dispatch, PortEventsMarkPortsThatAreScanned) {
    for (const int32_t port : {0, 19, 20, 127, 128, 256, 2147483647, -1, -2147483647 - 1}) {
        dispatch(14, "", port);
        EXPECT_EQ(takeMarks(), port == 0 || port == 19 ? "P1" : "") << port;
    }
}

TEST_F(Dispatch, NameServerEntriesEndWithTheField) {
    std::string full;
    while (full.size() < 1400) full += "x,y,200000051E000001;";
    dispatch(79, full);  // 1400 of it fit, 14 characters of the last entry among them
    const std::vector<std::string> all = events();
    ASSERT_EQ(all.size(), 67U);
    EXPECT_EQ(all[65], "DCEventPortAdd wwn=1000001122AABBCC portWwn=200000051E000001 fromNameServer=true");
    EXPECT_EQ(all[66], "DCEventPortAdd wwn=1000001122AABBCC portWwn=0000000000000000 fromNameServer=true");
}

TEST_F(Dispatch, TextsOutOfRangeLeaveTheDispatch) {
    cache().updateZoning();
    EXPECT_THROW(dispatch(40, "x temp sensor reading is out of range, it is too high)"), std::out_of_range);
    EXPECT_EQ(takeEvaluationRequests(), 0);
    EXPECT_THAT(events(), IsEmpty());
}

}  // namespace
