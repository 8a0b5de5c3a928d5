#include <map>
#include <stdexcept>

#include "datacache/event_codes.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
principal = "1000001122000001"
[ports]
count = 20
)";

const std::string kName = "wwn=1000001122AABBCC";
const std::string kFabric = "wwn=1000001122000001";

class Dispatch : public CacheTest {
  protected:
    Dispatch() {
        load(kSwitch);
        settle();
        clear();
    }
    void clear() {
        const AccessGuard guard;
        peer().switchUpdate = peer().chassisUpdate = peer().bladesUpdate = peer().portsUpdate =
            peer().fabricUpdate = peer().accountsUpdate = peer().zoningUpdate = false;
        peer().localPortRefresh.reset();
        takeEvaluationRequests();
        events();
        log();
        calls();
    }
    void dispatch(int32_t code, const std::string& text, int32_t port = 0) {
        vex_event_s event{};
        event.code = code;
        event.source = {{1, 2, port}};
        text.copy(event.text, sizeof event.text);
        const AccessGuard guard;
        peer().dispatch(&event);
    }
    /** The areas that are marked, one letter each. */
    std::string marked() {
        const AccessGuard guard;
        const CachePeer c = peer();
        std::string letters;
        if (c.switchUpdate) letters += 'S';
        if (c.chassisUpdate) letters += 'C';
        if (c.bladesUpdate) letters += 'B';
        if (c.portsUpdate) letters += 'P';
        if (c.fabricUpdate) letters += 'F';
        if (c.accountsUpdate) letters += 'A';
        if (c.zoningUpdate) letters += 'Z';
        return letters;
    }
    size_t portsMarked() {
        const AccessGuard guard;
        return peer().localPortRefresh.count();
    }
    int32_t wakeUps() { return takeEvaluationRequests(); }
};

struct Effect {
    std::string areas;
    size_t ports = 0;  ///< marked for refresh
    std::vector<std::string> events = {};
    std::vector<std::string> lines = {};  ///< beyond the first
};

TEST_F(Dispatch, EveryCodeHasItsEffectOrNone) {
    const std::string alarm = "DCEventEnvEvent " + kName + " component=";
    const std::map<int32_t, Effect> effects = {
        {1, {"F"}},
        {3, {"Z"}},
        {7, {"F"}},
        {14, {"P", 1}},
        {15, {"P", 1}},
        {28, {"BP", 256}},
        {29, {"BP", 256}},
        {32, {"S"}},
        {33, {"C"}},
        {39, {"BP", 256}},
        {40, {"", 0, {alarm + R"("temperature" condition="overtemp" description="unknown")"}}},
        {50, {"A"}},
        {52, {"SCP", 256}},
        {57, {"SCP", 256}},
        {72, {"", 0, {"DCEventUserPasswdChg " + kName + " userName=\"text\""}}},
        {73, {"", 0, {"DCEventUserLoginFailure " + kName + " userName=\"text\""}}},
        {74, {"", 0, {alarm + R"("power supply" condition="voltage high" description="unknown")"}}},
        {75, {"", 0, {alarm + R"("power supply" condition="voltage low" description="unknown")"}}},
        {76,
         {"",
          0,
          {},
          {"2 DCACHE: VEX_EVENT_PORT_MEDIA_INSTERTED event only contains 0 items, string = 'text'"}}},
        {77,
         {"",
          0,
          {},
          {"2 DCACHE: VEX_EVENT_PORT_MEDIA_REMOVED event only contains 0 items, string = 'text'"}}},
        {78, {"", 0, {"DCEventCIMChange"}}},
        {82, {"SB"}},
    };
    for (int32_t code = -1; code <= 300; ++code) {
        SCOPED_TRACE(code);
        clear();
        dispatch(code, "text", 3);
        const auto found = effects.find(code);
        const Effect effect = found == effects.end() ? Effect() : found->second;
        EXPECT_EQ(marked(), effect.areas);
        EXPECT_EQ(portsMarked(), effect.ports);
        EXPECT_EQ(events(), effect.events);
        std::vector<std::string> lines = {"2 DCACHE: dequeueing VEX_EVENT_T[1:2:3] (" + std::to_string(code) +
                                          ") " + eventCodeName(code) + " : text"};
        lines.insert(lines.end(), effect.lines.begin(), effect.lines.end());
        EXPECT_EQ(log(), lines);
        EXPECT_EQ(wakeUps(), effect.areas.empty() ? 0 : 1);
        EXPECT_THAT(calls(), IsEmpty());
    }
}

TEST_F(Dispatch, WorkThatWaitsIsWorkForEveryEvent) {
    cache().updateZoning();
    dispatch(16, "");
    EXPECT_EQ(wakeUps(), 1);
}

TEST_F(Dispatch, PortEventsMarkPortsThatAreScanned) {
    const struct {
        int32_t port;
        size_t marked;
    } kPorts[] = {{0, 1},          {19, 1},  {20, 0},
                  {127, 0},        {128, 0}, {256, 0},
                  {2147483647, 0}, {-1, 0},  {-2147483647 - 1, 0}};
    for (const auto& row : kPorts) {
        clear();
        dispatch(14, "", row.port);
        EXPECT_EQ(portsMarked(), row.marked) << row.port;
        EXPECT_EQ(marked(), row.marked != 0 ? "P" : "") << row.port;
    }
}

TEST_F(Dispatch, NameServerEntriesAreEventsInTheirOrder) {
    const std::string add = "DCEventPortAdd " + kFabric + " portWwn=";
    const std::string remove = "DCEventPortRemove " + kFabric + " portWwn=";
    dispatch(79, "x,y,200000051E000001");
    EXPECT_THAT(events(), ElementsAre(add + "200000051E000001 fromNameServer=true"));
    dispatch(80, "x,y,200000051E000001;x,y,200000051e000002;x,y");
    EXPECT_THAT(events(), ElementsAre(remove + "200000051E000001 fromNameServer=true",
                                      remove + "200000051E000002 fromNameServer=true"));
    dispatch(79, "x,y,no name;x,y,");
    EXPECT_THAT(events(), ElementsAre(add + "0000000000000000 fromNameServer=true",
                                      add + "0000000000000000 fromNameServer=true"));
    dispatch(79, "x,y");
    EXPECT_THAT(events(), IsEmpty());

    std::string full;
    while (full.size() < 1400) full += "x,y,200000051E000001;";
    dispatch(79, full);  // 1400 of it fit, 14 characters of the last entry among them
    const std::vector<std::string> all = events();
    ASSERT_EQ(all.size(), 67U);
    EXPECT_EQ(all[65], add + "200000051E000001 fromNameServer=true");
    EXPECT_EQ(all[66], add + "0000000000000000 fromNameServer=true");
}

TEST_F(Dispatch, TextsOutOfRangeLeaveTheDispatch) {
    cache().updateZoning();
    try {
        dispatch(40, "x temp sensor reading is out of range, it is too high)");
        ADD_FAILURE();
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "basic_string::substr");
    }
    EXPECT_EQ(wakeUps(), 0);
    EXPECT_THAT(events(), IsEmpty());
}

}  // namespace
