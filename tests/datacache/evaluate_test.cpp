#include <stdexcept>

#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/** What the host's callback throws at the next event of this type; 0 for nothing. */
int32_t throwAt = 0;
int callbacks = 0;

void throwingHost(DataCacheEvent* event) {
    ++callbacks;
    if (event->type == throwAt) throw "the host's own message";
}

class Evaluation : public CacheTest {
  protected:
    Evaluation() { load("[switch]\nwwn = '1000001122AABBCC'\n[chassis]\npower_supplies = ['Good']\n"); }
    void settleThenThrowAt(int32_t type) {
        settle();
        log();
        throwAt = type;
        callbacks = 0;
        const AccessGuard guard;
        peer().callback = throwingHost;
    }
};

TEST_F(Evaluation, ReportsFailedAreasInTheirOrder) {
    {
        const AccessGuard guard;
        peer().bladesUpdate = peer().portsUpdate = peer().fabricUpdate = peer().zoningUpdate = false;
    }
    sim.run("step = [{do = 'fault', function = 'vex_smlGetBatch', result = 3, times = 2}]");
    EXPECT_FALSE(pass());
    const std::vector<std::string> lines = log();
    EXPECT_THAT(std::vector<std::string>(lines.end() - 6, lines.end()),
                ElementsAre("2 DCACHE: _switchOK = false", "2 DCACHE: _chassisOK = false",
                            "2 DCACHE: _bladesOK = false", "2 DCACHE: _portsOK = false",
                            "2 DCACHE: _fabricOK = false", "2 DCACHE: _zoningOK = false"));
    EXPECT_THAT(allEvents(), IsEmpty());
}

TEST_F(Evaluation, MessageThrownByALoaderSkipsTheRestAndIsRetried) {
    settleThenThrowAt(DCEventPowerSupplyFail::TYPE);
    sim.set("Oper.Chassis.0.PowerSupply.0", "Bad");
    cache().updateAll();
    EXPECT_TRUE(pass()) << "the results of the pass before still stand";
    EXPECT_EQ(callbacks, 3) << "the switch's status, the failing supply and the completion";
    EXPECT_EQ(log().back(), "4 DCACHE: Exception: the host's own message");
    EXPECT_EQ(DataCache::health()[CacheArea::Chassis].lastFailure.fault, ReadFault::Exception);
    const AccessGuard guard;
    EXPECT_FALSE(peer().switchUpdate);
    EXPECT_TRUE(peer().chassisUpdate && peer().bladesUpdate && peer().fabricUpdate && peer().accountsUpdate);
}

TEST_F(Evaluation, EventWhoseDispatchThrowsStaysAtTheHead) {
    settleThenThrowAt(DCEventCIMChange::TYPE);
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

TEST_F(Evaluation, MarksNoPortThatHasNoRow) {
    cache().localPortRefreshSet(255);
    for (const int outside : {256, -1}) {
        try {
            cache().localPortRefreshSet(outside);
            ADD_FAILURE() << outside;
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "bitset::set");
        }
    }
    EXPECT_TRUE(lockIsFree()) << "it was released on the way out";
    const AccessGuard guard;
    EXPECT_EQ(peer().localPortRefresh.count(), 1U);
    EXPECT_TRUE(peer().localPortRefresh[255]);
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
