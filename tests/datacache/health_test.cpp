#include <cstdio>

#include "common/log_hooks.h"
#include "datacache/HealthMonitor.h"
#include "tests/support/Allocations.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSwitch = R"(
switch = {wwn = "1000001122AABBCC"}
accounts = {users = ["admin", "guest"]}
ports = {count = 4}
fabric = {switch = [{domain = 7, wwn = "1000001122000007", ports = 3}]}
)";

class HealthTest : public CacheTest {
  protected:
    HealthTest() { start(kSwitch); }
    void fault(const std::string& fields) {
        sim.run("step = [{do = 'fault', function = 'vex_smlGetBatch', key = " + fields + "}]");
    }
    /** Marks everything and runs a pass. */
    void reread() {
        cache().updateAll();
        cache().localPortRefreshSet();
        cache().reloadZoning();
        settle();
    }
    /** The areas that are not up to date. */
    static std::vector<std::string> stale() {
        std::vector<std::string> names;
        const Health health = DataCache::health();
        for (size_t i = 0; i < kCacheAreas; ++i) {
            const auto area = static_cast<CacheArea>(i);
            if (!health[area].upToDate) names.emplace_back(cacheAreaName(area));
        }
        return names;
    }
};

TEST_F(HealthTest, TellsOfValuesThatAreNone) {
    const std::pair<CacheArea, const char*> cases[] = {
        {CacheArea::Switch, "Oper.Switch.WWN _getSwitchInfo:1364"},
        {CacheArea::Ports, "Oper.Switch.MaxPorts _getPortInfo:1630"}};
    for (const auto& [area, place] : cases) {
        const std::string text = place;
        fault('\'' + text.substr(0, text.find(' ')) + "', value = '0'");
        reread();
        const ReadFailure failure = DataCache::health()[area].lastFailure;
        EXPECT_EQ(failure.fault, ReadFault::BadValue);
        EXPECT_EQ(failure.key + (' ' + std::string(failure.function)) + ':' + std::to_string(failure.line),
                  text);
        reread();
        EXPECT_EQ(DataCache::health()[area].lastFailure.line, failure.line) << "it is kept";
    }
}

TEST_F(HealthTest, FollowsMarksAndTheAccountsThatOnlyTheHostReads) {
    EXPECT_TRUE(cache().readAccounts());
    EXPECT_THAT(stale(), IsEmpty());
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
    const AreaHealth accounts = DataCache::health()[CacheArea::Accounts];
    EXPECT_EQ(accounts.lastFailure.fault, ReadFault::NoEnd);
    EXPECT_EQ(accounts.failures, 1U);

    cache().updateFabric();
    EXPECT_THAT(stale(), ElementsAre("accounts", "fabric"));
    DataCache::refreshNow();
    EXPECT_EQ(stale().size(), kCacheAreas);
    EXPECT_TRUE(peer().localPortRefresh.all());
    EXPECT_EQ(settle(), 1);
}

TEST_F(HealthTest, CountsEventsFromTheDoorToTheirDispatch) {
    const auto before = DataCache::health().events;
    for (const int32_t code : {32, 70, 33, 11}) sim.raise(code, {0, 0, 0}, "", true);
    sim.deliverPending();
    cache().vexlibEventKick(VEX_EVENT_CIM_CFG_CHANGE, nullptr, nullptr);
    const auto after = DataCache::health().events;
    EXPECT_EQ(after.received - before.received, 4U);
    EXPECT_EQ(after.queued - before.queued, 2U);
    EXPECT_EQ(after.dropped - before.dropped, 2U);
    EXPECT_EQ(after.waiting, 3U) << "the host's own waits as well";
    EXPECT_GE(after.mostWaiting, 3U);
    EXPECT_FALSE(HealthMonitor::instance().noEventWaits());
    settle();
    EXPECT_TRUE(HealthMonitor::instance().noEventWaits()) << "what was dropped does not wait";
    EXPECT_EQ(DataCache::health().events.waiting, 0U);
    EXPECT_EQ(DataCache::health().events.mostWaiting, after.mostWaiting);
}

TEST_F(HealthTest, TimesPassesAndNamesTheSlowestArea) {
    fault("'Oper.Zoning.ActiveChecksum', delay_ms = 50");
    cache().updateSwitch();
    cache().updateZoning();
    pass();
    const auto after = DataCache::health().passes;
    EXPECT_FALSE(after.running);
    EXPECT_EQ(after.lastCalls, 2U);
    EXPECT_GE(after.last, std::chrono::milliseconds(50));
    EXPECT_GE(after.longest, after.last);
    if (after.longest == after.last) {
        EXPECT_EQ(after.longestArea, CacheArea::Zoning);
    }
    pass();
    EXPECT_EQ(DataCache::health().passes.count, after.count + 1);
    EXPECT_LT(DataCache::health().passes.last, after.longest);
}

TEST_F(HealthTest, AScanOfThePortsCostsAlmostNoAllocations) {
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
