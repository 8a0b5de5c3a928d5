#include <stdexcept>

#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
[chassis]
power_supplies = ["Good"]
)";

/** What the host's callback throws at the next event of this type; 0 for nothing. */
int32_t throwAt = 0;
int callbacks = 0;

void throwingHost(DataCacheEvent* event) {
    ++callbacks;
    if (event->type == throwAt) throw "the host's own message";
}

class Evaluation : public CacheTest {
  protected:
    Evaluation() {
        throwAt = 0;
        callbacks = 0;
        load(kSwitch);
        log();
    }
    /** The areas that the log shows a pass to have read, in order. */
    std::vector<std::string> areasRead() {
        std::vector<std::string> areas;
        for (const std::string& line : log()) {
            const std::string start = "2 DCACHE: Updating ";
            if (line.compare(0, start.size(), start) == 0) areas.push_back(line.substr(start.size()));
        }
        return areas;
    }
    void useThrowingHost() {
        const AccessGuard guard;
        peer().callback = throwingHost;
    }
};

TEST_F(Evaluation, ReadsMarkedAreasInTheirOrder) {
    const std::vector<std::string> all = {"switch cache",       "chassis cache", "blades cache",
                                          "ports cache",        "fabric cache",  "zoning cache",
                                          "zoning cache (Done)"};
    settle();
    EXPECT_EQ(areasRead(), all) << "after construction every area is marked";
    EXPECT_FALSE(cache().workToDo());
    cache().updateAll();
    EXPECT_TRUE(cache().workToDo());
    pass();
    EXPECT_EQ(areasRead(), all);
    const std::pair<void (DataCache::*)(), std::vector<std::string>> requests[] = {
        {&DataCache::updateSwitch, {"switch cache"}},
        {&DataCache::updateChassis, {"chassis cache"}},
        {&DataCache::updateBlades, {"blades cache"}},
        {&DataCache::updatePorts, {"ports cache"}},
        {&DataCache::updateFabric, {"fabric cache"}},
        {&DataCache::updateZoning, {"zoning cache", "zoning cache (Done)"}},
        {&DataCache::updateAccounts, {}},  // the pass takes the mark away and reads nothing
    };
    for (const auto& [request, areas] : requests) {
        (cache().*request)();
        EXPECT_TRUE(cache().workToDo());
        pass();
        EXPECT_EQ(areasRead(), areas);
        EXPECT_FALSE(cache().workToDo());
    }
}

TEST_F(Evaluation, ReportsFailedAreasInTheirOrderAndRetriesThem) {
    {
        const AccessGuard guard;
        peer().bladesUpdate = peer().portsUpdate = peer().fabricUpdate = peer().zoningUpdate = false;
    }
    sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nresult = 3\ntimes = 2\n");
    EXPECT_FALSE(pass());
    const std::vector<std::string> lines = log();
    const std::vector<std::string> report(lines.end() - 6, lines.end());
    EXPECT_THAT(report, ElementsAre("2 DCACHE: _switchOK = false", "2 DCACHE: _chassisOK = false",
                                    "2 DCACHE: _bladesOK = false", "2 DCACHE: _portsOK = false",
                                    "2 DCACHE: _fabricOK = false", "2 DCACHE: _zoningOK = false"));
    EXPECT_FALSE(cache().isCacheReady());
    EXPECT_THAT(allEvents(), IsEmpty());
    cache().updateAll();
    EXPECT_TRUE(pass());
    EXPECT_TRUE(cache().isCacheReady());
    sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nresult = 3\n");
    cache().updateSwitch();
    EXPECT_FALSE(pass());
    EXPECT_FALSE(cache().isCacheReady()) << "readiness is lost again";
}

TEST_F(Evaluation, MessageThrownByALoaderSkipsTheRestAndIsRetried) {
    settle();
    useThrowingHost();
    throwAt = DCEventPowerSupplyFail::TYPE;
    sim.set("Oper.Chassis.0.PowerSupply.0", "Bad");
    cache().updateAll();
    log();
    callbacks = 0;
    EXPECT_TRUE(pass()) << "the results of the pass before still stand";
    EXPECT_EQ(callbacks, 3) << "the switch's status, the failing supply and the completion";
    std::vector<std::string> lines = log();
    EXPECT_EQ(lines.back(), "4 DCACHE: Exception: the host's own message");
    const AccessGuard guard;
    EXPECT_FALSE(peer().switchUpdate);
    EXPECT_TRUE(peer().chassisUpdate && peer().bladesUpdate && peer().fabricUpdate && peer().accountsUpdate);
}

TEST_F(Evaluation, EventWhoseDispatchThrowsStaysAtTheHead) {
    settle();
    useThrowingHost();
    throwAt = DCEventCIMChange::TYPE;
    sim.raise(78, {0, 0, 0}, "");
    sim.raise(78, {0, 0, 1}, "");
    sim.deliverPending();
    pass();
    {
        const AccessGuard guard;
        EXPECT_EQ(peer().eventQueue.size(), 2U);
        peer().eventQueue.push_front(nullptr);  // an empty entry goes without dispatch
    }
    throwAt = 0;
    callbacks = 0;
    pass();
    EXPECT_EQ(callbacks, 3) << "both events again, and the completion";
    const AccessGuard guard;
    EXPECT_TRUE(peer().eventQueue.empty());
}

TEST_F(Evaluation, MarksPortsForRefresh) {
    cache().localPortRefreshSet(255);
    {
        const AccessGuard guard;
        EXPECT_EQ(peer().localPortRefresh.count(), 1U);
        EXPECT_TRUE(peer().localPortRefresh[255]);
    }
    for (const int outside : {256, 100000, -1}) {
        try {
            cache().localPortRefreshSet(outside);
            ADD_FAILURE() << outside;
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "bitset::set");
        }
    }
    // The lock was released on the way out: another thread gets it.
    pthread_t thread;
    pthread_create(
        &thread, nullptr,
        [](void*) -> void* { return DataCache::instance->workToDo() ? &callbacks : nullptr; }, nullptr);
    void* work = nullptr;
    pthread_join(thread, &work);
    EXPECT_NE(work, nullptr);
    cache().localPortRefreshSet();
    const AccessGuard guard;
    EXPECT_TRUE(peer().localPortRefresh.all());
}

TEST_F(Evaluation, HostWithoutCallbackGetsNothing) {
    {
        const AccessGuard guard;
        peer().callback = nullptr;
    }
    settle();
    EXPECT_TRUE(cache().isCacheReady());
}

}  // namespace
