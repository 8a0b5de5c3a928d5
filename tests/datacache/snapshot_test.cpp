// Snapshots: when they are published, what they share, and what they cost those who do not want them.
#include "datacache/SnapshotPublisher.h"

#include <array>

#include "tests/support/Allocations.h"
#include "tests/support/CacheState.h"
#include "tests/support/CacheTest.h"
#include "tests/support/lines.h"

namespace {

const std::string kSwitch =
    "switch = {wwn = '1000001122AABBCC'}\nchassis = {power_supplies = 2}\nports = {count = 4}\n"
    "[accounts]\nusers = ['admin']\n[[zoning.zone]]\nname = 'z'\nmembers = ['2000001122000001']\n";

using Newest = std::shared_ptr<const Snapshot>;

/** The areas that two snapshots do not share. */
std::string differing(const Newest& a, const Newest& b) {
    static const char* const kNames[] = {"switch",       "chassis",  "blades", "ports",
                                         "transceivers", "accounts", "fabric", "zoning"};
    const auto areas = [](const Snapshot& of) -> std::array<const void*, 8> {
        return {&of.localSwitch(),  &of.chassis(),  &of.blades(), &of.ports(),
                &of.transceivers(), &of.accounts(), &of.fabric(), &of.zoning()};
    };
    Lines names;
    for (size_t i = 0; i < std::size(kNames); ++i)
        if (areas(*a)[i] != areas(*b)[i]) names.push_back(kNames[i]);
    return joined(names, " ");
}

/** What each event of the host finds as the newest snapshot. */
std::vector<std::pair<int32_t, Newest>> found;

class Snapshots : public CacheTest {
  protected:
    Newest turnedOn(const std::string& switchToml) {
        DataCache::setSnapshots(true);
        EXPECT_EQ(DataCache::snapshot(), nullptr);
        start(switchToml);
        return DataCache::snapshot();
    }
    void observe() {
        found.clear();
        peer().callback = [](DataCacheEvent* event) {
            found.emplace_back(event->type, DataCache::snapshot());
        };
    }
};

TEST_F(Snapshots, OnlyWhatAPassTouchedIsCopied) {
    Newest before = turnedOn(kSwitch);
    EXPECT_TRUE(before->isReady());
    const struct {
        const char *steps, *touched;
    } cases[] = {
        {"do = 'power_supply'\nindex = 1\nstate = 'Bad'", "chassis"},
        {"do = 'switch_state'\nstate = 'Offline'", "switch"},
        {"do = 'port_offline'\nport = 1", "ports transceivers fabric"},
        {"do = 'transceiver_plugged'\nport = 1\nserial = 'S'", "transceivers"},
        {"do = 'transceiver_pulled'\nport = 1", "transceivers"},
        {"do = 'switch_join'\ndomain = 9\nwwn = '1000001122000009'", "fabric"},
        {"do = 'zoning_replace'\n[[step.zone]]\nname = 'y'", "zoning"},
        {"do = 'raise'\ncode = 3", ""},
        {"do = 'fault'\nfunction = 'vex_smlGetBatch'\nkey = 'Oper.Zoning.*'\ntimes = 1\nresult = 1\n"
         "[[step]]\ndo = 'raise'\ncode = 3",
         ""},
        {"do = 'password_changed'\nuser = 'admin'", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.steps);
        step("[[step]]\n" + std::string(c.steps));
        const Newest now = DataCache::snapshot();
        EXPECT_EQ(differing(before, now), c.touched);
        EXPECT_EQ(stateOf(*now), cacheState());
        EXPECT_EQ(now->fabric()._switches.get_last()->id(), cache().getFabric(1)->_switches.get_last()->id())
            << "copies draw no ids";
        before = now;
    }
    pass();
    EXPECT_EQ(DataCache::snapshot(), before) << "a pass that read nothing publishes nothing";
    cache().readAccounts();
    EXPECT_EQ(differing(before, DataCache::snapshot()), "accounts");
    EXPECT_EQ(DataCache::snapshot()->accounts(), std::vector<std::string>{"admin"});
    DataCache::setSnapshots(false);
    EXPECT_EQ(DataCache::snapshot(), nullptr);
    EXPECT_EQ(stateOf(*before).size() + 1, cacheState().size()) << "who has one keeps it";
}

TEST_F(Snapshots, TheFirstPassPublishesEachAreaAndLaterOnesTheirEnd) {
    DataCache::setSnapshots(true);
    load(kSwitch);
    observe();
    step("[[step]]\ndo = 'fault'\nfunction = 'vex_smlGetBatch'\nkey = 'Oper.Blade*'\ntimes = 1\nresult = 1");
    // The events of the zoning's first load come while it is read, behind all other areas.
    ASSERT_GE(found.size(), 3U);
    const Snapshot& early = *found[0].second;
    EXPECT_EQ(found[0].first, DCEventActiveZonesetChange::TYPE);
    EXPECT_TRUE(early.area(CacheArea::Ports).known && early.area(CacheArea::Ports).upToDate);
    EXPECT_GT(early.area(CacheArea::Ports).lastGoodRead.time_since_epoch().count(), 0);
    EXPECT_FALSE(early.area(CacheArea::Zoning).known || early.zoning().loaded || early.isReady());
    EXPECT_FALSE(early.area(static_cast<CacheArea>(kCacheAreas)).known);
    EXPECT_EQ(early.localPortName(3).tostring(), "2003001122AABBCC");
    EXPECT_TRUE(early.localPortName(4).isNull() && early.localPortName(kPortRows).isNull());
    EXPECT_EQ(found.back().first, DCEventDataCacheUpdateComplete::TYPE);
    EXPECT_TRUE(found.back().second->isReady()) << "published before its event";
    EXPECT_LT(early.publishedAt(), found.back().second->publishedAt());

    found.clear();
    const Newest before = DataCache::snapshot();
    step("[[step]]\ndo = 'port_offline'\nport = 1\n[[step]]\ndo = 'power_supply'\nindex = 1\nstate = 'Bad'");
    ASSERT_GE(found.size(), 3U);
    for (const auto& [type, newest] : found) {
        if (type == DCEventDataCacheUpdateComplete::TYPE) break;
        EXPECT_EQ(newest, before) << type << " comes before the end";
    }
    DataCache::setSnapshots(false);
    DataCache::setSnapshots(true);
    EXPECT_EQ(settle(), 1) << "that asks for a pass";
    EXPECT_GT(DataCache::snapshot()->serial(), before->serial());
    EXPECT_EQ(stateOf(*DataCache::snapshot()), cacheState());
}

/** A callback that reads the accounts and runs a pass while an area is half read. */
TEST_F(Snapshots, ACallbackPublishesNothingHalfRead) {
    turnedOn(kSwitch);
    found.clear();
    peer().callback = [](DataCacheEvent* event) {
        const bool outermost = found.empty();
        found.emplace_back(event->type, DataCache::snapshot());
        if (!outermost || event->type != DCEventPortStatusChange::TYPE) return;
        DataCache::instance->readAccounts();
        DataCache::instance->updateChassis();
        pthread_mutex_lock(&access_mutex);
        DataCache::instance->evaluateCaches();
        pthread_mutex_unlock(&access_mutex);
        found.emplace_back(0, DataCache::snapshot());
    };
    const Newest before = DataCache::snapshot();
    {
        const AccessGuard guard;
        cache().updatePorts();
        cache().localPortRefreshSet();
    }
    sim.run("[[step]]\ndo = 'set'\nkey = 'Oper.UserPort.0.1.OperState'\nvalue = 'Offline'");
    pass();
    ASSERT_GE(found.size(), 3U);
    EXPECT_EQ(found[0].second, before);
    for (const auto& [type, newest] : found) EXPECT_TRUE(type != 0 || newest == before);
    EXPECT_EQ(differing(before, DataCache::snapshot()), "chassis ports transceivers accounts fabric");
    EXPECT_EQ(stateOf(*DataCache::snapshot()), cacheState());
}

TEST_F(Snapshots, CostNothingWhereNobodyAskedAndSurviveWantOfMemory) {
    start(kSwitch);
    const AccessGuard guard;
    SnapshotPublisher& publisher = SnapshotPublisher::instance();
    const auto publish = [&](size_t memoryFor) {
        publisher.touch(CacheArea::Ports);
        publisher.touch(CacheArea::Chassis);
        Allocations memory;
        memory.failAfter(memoryFor);
        publisher.publish(cache());
        return memory.count();
    };
    EXPECT_EQ(publish(0), 0U);
    DataCache::setSnapshots(true);
    for (int round = 0; round < 2; ++round) {  // the first one copies all areas
        const Newest before = DataCache::snapshot();
        size_t has = 0;
        while (publish(has) > has) {
            ASSERT_EQ(DataCache::snapshot(), before) << "memory for " << has;
            ++has;
        }
        EXPECT_GT(has, 5U);
        EXPECT_NE(DataCache::snapshot(), before);
        EXPECT_EQ(stateOf(*DataCache::snapshot()), cacheState());
    }
}

}  // namespace
