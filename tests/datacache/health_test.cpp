#include <algorithm>

#include "common/log_writer.h"
#include "datacache/CacheReader.h"
#include "datacache/HealthMonitor.h"
#include "tests/support/Allocations.h"
#include "tests/support/CacheTest.h"

namespace {

using datacache::AreaHealth;
using datacache::CacheArea;
using datacache::Health;
using datacache::ReadFault;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
domain = 1
[accounts]
users = ["admin", "guest"]
[ports]
count = 4
[fabric]
[[fabric.switch]]
domain = 7
wwn = "1000001122000007"
ports = 3
)";

class HealthTest : public CacheTest {
  protected:
    void fault(const std::string& fields) {
        const std::string all = fields.find("function") == 0 ? "" : "function = \"vex_smlGetBatch\"\n";
        sim.run("[[step]]\ndo = \"fault\"\n" + all + fields);
    }
    void repair() { sim.run("[[step]]\ndo = \"clear_faults\"\n"); }
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
        for (size_t i = 0; i < datacache::kCacheAreas; ++i) {
            const auto area = static_cast<CacheArea>(i);
            if (!health[area].upToDate) names.emplace_back(datacache::cacheAreaName(area));
        }
        return names;
    }
};

TEST_F(HealthTest, TellsHowAReadFailed) {
    start(kSwitch);
    const struct {
        const char* fault;
        CacheArea area;
        ReadFault kind;
        const char* call;
        const char* key;
        int32_t status;
        const char* function;
        int line;
    } cases[] = {
        {"key = \"Oper.Switch.OperState\"\nresult = 5\n", CacheArea::Switch, ReadFault::CallFailed,
         "vex_smlGetBatch", "Oper.Switch.WhoIsPrincipal", 5, "_getSwitchInfo", 1351},
        {"key = \"Oper.Switch.MaxPorts\"\nvalue = \"0\"\n", CacheArea::Ports, ReadFault::BadValue,
         "vex_smlGetBatch", "Oper.Switch.MaxPorts", 0, "_getPortInfo", 1630},
        {"key = \"Oper.Chassis.0.Fan.0\"\nstatus = 9\n", CacheArea::Chassis, ReadFault::KeyFailed,
         "vex_smlGetBatch", "Oper.Chassis.0.Fan.0", 9, "", 0},
        {"function = \"vex_fzsGetZonesetList\"\nresult = 12\n", CacheArea::Zoning, ReadFault::CallFailed,
         "vex_fzsGetZonesetList", "", 12, "", 0},
        {"function = \"vex_fzsGetAllZonesAndAliases\"\nresult = 13\n", CacheArea::Zoning,
         ReadFault::CallFailed, "vex_fzsGetAllZonesAndAliases", "", 13, "", 0},
    };
    sim.set("Oper.Chassis.0.Fans", "1");
    sim.set("Oper.Chassis.0.Fan.0", "Good");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.fault);
        fault(c.fault);
        reread();
        EXPECT_FALSE(cache().isCacheReady());
        const AreaHealth area = DataCache::health()[c.area];
        EXPECT_FALSE(area.upToDate);
        EXPECT_TRUE(area.marked);
        EXPECT_EQ(area.lastFailure.fault, c.kind);
        EXPECT_STREQ(area.lastFailure.call, c.call);
        EXPECT_STREQ(area.lastFailure.key, c.key);
        EXPECT_EQ(area.lastFailure.status, c.status);
        EXPECT_STREQ(area.lastFailure.function, c.function);
        EXPECT_EQ(area.lastFailure.line, c.line);
        reread();
        EXPECT_THAT(stale(), ElementsAre("accounts"));
        EXPECT_EQ(DataCache::health()[c.area].lastFailure.status, c.status) << "it is kept";
    }
}

TEST_F(HealthTest, FollowsMarksAndTheAccountsThatOnlyTheHostReads) {
    start(kSwitch);
    EXPECT_THAT(stale(), ElementsAre("accounts"));
    {
        const AccessGuard guard;
        EXPECT_TRUE(cache()._getAcctInfo());
    }
    EXPECT_THAT(stale(), IsEmpty());
    sim.raise(VEX_EVENT_USER_ACL_CHANGE, {0, 0, 0}, "", true);
    settle();
    EXPECT_TRUE(DataCache::health()[CacheArea::Accounts].marked) << "the pass read no accounts";
    fault("key = \"*NextPotentialUser.guest\"\nvalue = \"again\"\n");
    fault("key = \"*NextPotentialUser.again\"\ntimes = 0\nvalue = \"again\"\n");
    {
        const AccessGuard guard;
        EXPECT_FALSE(cache()._getAcctInfo());
    }
    const AreaHealth accounts = DataCache::health()[CacheArea::Accounts];
    EXPECT_EQ(accounts.lastFailure.fault, ReadFault::NoEnd);
    EXPECT_EQ(accounts.reads, 2U);
    EXPECT_EQ(accounts.failures, 1U);

    cache().updateFabric();
    EXPECT_THAT(stale(), ElementsAre("accounts", "fabric"));
    const uint32_t reads = DataCache::health()[CacheArea::Fabric].reads;
    cache().reloadZoning();
    settle();
    EXPECT_EQ(DataCache::health()[CacheArea::Fabric].reads, reads + 1);
    DataCache::refreshNow();
    EXPECT_EQ(stale().size(), datacache::kCacheAreas);
    EXPECT_TRUE(peer().localPortRefresh.all());
    EXPECT_EQ(settle(), 1);
}

TEST_F(HealthTest, CountsEventsFromTheDoorToTheirDispatch) {
    start(kSwitch);
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
    EXPECT_FALSE(datacache::HealthMonitor::instance().noEventWaits());
    settle();
    EXPECT_TRUE(datacache::HealthMonitor::instance().noEventWaits()) << "what was dropped does not wait";
    EXPECT_EQ(DataCache::health().events.waiting, 0U);
    EXPECT_EQ(DataCache::health().events.mostWaiting, after.mostWaiting);
}

TEST_F(HealthTest, TellsWhatTheCacheHasNoRoomFor) {
    start(kSwitch);
    EXPECT_TRUE(DataCache::health().capacity.complete());
    sim.set("Oper.Switch.MaxPorts", "131");
    sim.set("Oper.TopologyAll.7.PortEntries", "300");
    for (int entry = 0; entry < 300; ++entry) {
        sim.set("Oper.TopologyAll.7.Entry." + std::to_string(entry) + ".PortWwn", "2000001122000007");
    }
    fault("key = \"Oper.UserPort.0.*\"\ntimes = 0\nvalue = \"2000001122AABBCC\"\n");
    reread();
    EXPECT_EQ(DataCache::health().capacity.localPortsBeyond, 3U);
    EXPECT_EQ(DataCache::health().capacity.portEntriesBeyond, 44U);
    fault("key = \"Oper.Eport.LsdbRecordList.255\"\nvalue = \"" + std::string(254, '7') + "7\"\n");
    cache().updateFabric();
    settle();
    EXPECT_FALSE(DataCache::health().capacity.complete());
    repair();
    sim.set("Oper.Switch.MaxPorts", "4");
    sim.set("Oper.TopologyAll.7.PortEntries", "3");
    reread();
    EXPECT_TRUE(DataCache::health().capacity.complete());
}

TEST_F(HealthTest, TimesPassesAndNamesTheSlowestArea) {
    start(kSwitch);
    fault("key = \"Oper.Zoning.ActiveChecksum\"\ndelay_ms = 50\n");
    cache().updateSwitch();
    cache().updateZoning();
    const uint32_t passes = DataCache::health().passes.count;
    pass();
    const auto after = DataCache::health().passes;
    EXPECT_EQ(after.count, passes + 1);
    EXPECT_FALSE(after.running);
    EXPECT_EQ(after.lastCalls, 2U);
    EXPECT_GE(after.last, std::chrono::milliseconds(50));
    EXPECT_GE(after.longest, after.last);
    pass();
    EXPECT_LT(DataCache::health().passes.last, after.longest);
    EXPECT_EQ(DataCache::health().passes.lastCalls, 0U);
    if (after.longest == after.last) {
        EXPECT_EQ(after.longestArea, CacheArea::Zoning);
    }
}

TEST_F(HealthTest, ReaderShowsTheRecordsUnderTheLock) {
    start(kSwitch);
    {
        const datacache::CacheReader reader;
        ASSERT_TRUE(reader);
        EXPECT_FALSE(lockIsFree());
        EXPECT_EQ(reader.localSwitch().switchWwn, Wwn("1000001122AABBCC"));
        EXPECT_EQ(reader.ports().portCount, 4);
        EXPECT_EQ(reader.fabric().getSwitchCount(), 2);
        EXPECT_TRUE(reader.chassis().loaded);
        EXPECT_EQ(reader->getRootSwitchDomainID(), 1);
        EXPECT_EQ(reader.zoning().getUberZoneset(), nullptr) << "the switch has no zoning";
    }
    EXPECT_TRUE(lockIsFree());
}

// ---- What memory the passes ask for, and what happens when there is none ----

TEST_F(HealthTest, AScanOfThePortsCostsAlmostNoAllocations) {
    constexpr size_t kPorts = 128;
    start("[switch]\nwwn = \"1000001122AABBCC\"\n[ports]\ncount = 128\n");
    sim.keepTranscript(false);
    observeLog(nullptr, nullptr);
    const AccessGuard guard;
    cache().localPortRefreshSet();
    size_t bare = 0;
    {
        static constexpr const char* kKeys[] = {"OperState",       "AdminState",  "Type",
                                                "DDM.Supported",   "SFPData0_31", "SFPData32_63",
                                                "SFPSerialNumber", "HWType"};
        vex_smlrequest_s records[std::size(kKeys)] = {};
        const Allocations allocations;
        for (size_t port = 0; port < kPorts; ++port) {
            for (size_t i = 0; i < std::size(kKeys); ++i) {
                std::snprintf(records[i].key, sizeof records[i].key, "%s.UserPort.0.%zu.%s",
                              i == 2 ? "Config" : "Oper", port, kKeys[i]);
            }
            vex_smlGetBatch(hSwitch, records, std::size(kKeys));
        }
        bare = allocations.count();
    }
    const Allocations allocations;
    EXPECT_TRUE(peer().getPortInfo());
    EXPECT_LE(allocations.count(), bare + 32) << bare;
}

}  // namespace
