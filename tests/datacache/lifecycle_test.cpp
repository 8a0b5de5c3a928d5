// The cache with its real threads: start-up, retries, wake-ups, and the whole path from switch event to host
// event.
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "datacache/event_text.h"
#include "tests/support/CachePeer.h"
#include "tests/support/CacheTest.h"

namespace {

using ::testing::ElementsAre;

std::vector<unsigned> slept;

}  // namespace

/** Stands in for the C library's: connection retries take no time here. */
extern "C" unsigned sleep(unsigned seconds) {
    slept.push_back(seconds);
    return 0;
}

namespace {

constexpr const char* kSwitch = R"(
[switch]
wwn = "1000001122AABBCC"
[chassis]
power_supplies = ["Good", "Good"]
)";

constexpr const char* kPowerSupplyPulled =
    "[[step]]\ndo = \"power_supply\"\nindex = 2\nstate = \"NotInstalled\"\n";

/** Collects events from the evaluation thread; a gate can hold that thread inside the callback. */
struct Host {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> lines;
    bool gateShut = false;
    size_t stackBytes = 0;

    void receive(const DataCacheEvent& event) {
        // The first load of the zoning is always an event; these tests are not about it.
        if (event.type == DCEventActiveZonesetChange::TYPE || event.type == DCEventZoningDBChange::TYPE)
            return;
        // The callback may use the cache: the lock is recursive.
        const std::string name = DataCache::getInstance()->getRootSwitchWwn();
        DataCache::releaseInstance();
        pthread_attr_t attributes;
        pthread_getattr_np(pthread_self(), &attributes);
        std::unique_lock<std::mutex> guard(mutex);
        pthread_attr_getstacksize(&attributes, &stackBytes);
        pthread_attr_destroy(&attributes);
        lines.push_back(datacache::eventText(event) + " seen on " + name);
        changed.notify_all();
        changed.wait(guard, [this] { return !gateShut; });
    }
    bool await(size_t count) {
        std::unique_lock<std::mutex> guard(mutex);
        return changed.wait_for(guard, std::chrono::seconds(30), [&] { return lines.size() >= count; });
    }
    void gate(bool shut) {
        const std::lock_guard<std::mutex> guard(mutex);
        gateShut = shut;
        changed.notify_all();
    }
    std::vector<std::string> take() {
        const std::lock_guard<std::mutex> guard(mutex);
        return std::exchange(lines, {});
    }
};

Host& host() {
    static auto* const only = new Host;  // outlives the evaluation thread, which nothing stops
    return *only;
}

/** Waits for something to come true. */
template <typename Condition>
bool eventually(Condition condition) {
    for (int i = 0; i < 3000; ++i) {
        if (condition()) return true;
        usleep(10000);
    }
    return false;
}

const std::string kComplete = "DCEventDataCacheUpdateComplete seen on 1000001122AABBCC";

/** Each of these runs in a process of its own; the evaluation thread lives until its end. */
class Lifecycle : public ::testing::Test {
  protected:
    Lifecycle() {
        slept.clear();
        sim.reset();
        sim.keepTranscript(true);
        sim.loadSwitchText(kSwitch);
    }
    ~Lifecycle() override { EXPECT_EQ(sim.live().misuse, 0U); }
    void run() {
        ASSERT_TRUE(DataCache::init());
        ASSERT_TRUE(DataCache::start([](DataCacheEvent* event) { host().receive(*event); }));
        ASSERT_TRUE(host().await(1));
        EXPECT_THAT(host().take(), ElementsAre(kComplete)) << "the first pass runs at once";
    }
    vexsim::Simulator& sim = vexsim::Simulator::instance();
    LogCapture capture;
};

TEST_F(Lifecycle, InstanceIsNullBeforeInit) {
    EXPECT_EQ(DataCache::getInstance(), nullptr);
    EXPECT_EQ(DataCache::getInstance(), nullptr) << "the lock is recursive even then";
    DataCache::releaseInstance();
    DataCache::releaseInstance();
}

TEST_F(Lifecycle, ConnectsUntilItSucceeds) {
    sim.loadSwitchText(std::string(kSwitch) + R"(
        [zoning.limits]
        zonesets = 1
        zones = 1
        members = 1
        zones_per_zoneset = 1
        members_per_zone = 1
        aliases = 1
        members_per_alias = 1
    )");
    sim.run(R"(
        [[step]]
        do = "fault"
        function = "vex_IPConnect"
        times = 2
        result = 7
        [[step]]
        do = "fault"
        function = "vex_IPConnect"
        skip = 2
        times = 1
        handle = 0
    )");
    EXPECT_TRUE(DataCache::init());
    EXPECT_EQ(slept, (std::vector<unsigned>{10, 10})) << "a success without a handle is tried again at once";
    const std::string failed =
        "4 CRIT:DataCache:startVexlib[479] vexlib connection failed: 7 : retrying in 10 seconds...";
    EXPECT_THAT(capture.take(),
                ElementsAre("2 DCACHE: Creating a new datacache()", "2 DCACHE: attempting vexlib connection",
                            failed, failed, "2 DCACHE: vexlib connection established",
                            "2 DCACHE: zsl = 0, zl = 0, al = 0, zml = 0", "2 DCACHE: Zoning limits loaded"));
    EXPECT_NE(hSwitch, 0U);
    EXPECT_EQ(CachePeer(*DataCache::instance).handle(), hSwitch);
    EXPECT_EQ(sim.transcript()[0].function, "vex_IPConnect");
    EXPECT_EQ(sim.transcript()[0].detail, "localhost,cim,");

    DataCache* const first = DataCache::instance;
    sim.run("[[step]]\ndo = \"fault\"\nfunction = \"vex_fzsGetZoningLimitations\"\nresult = 1\n");
    EXPECT_TRUE(DataCache::init());
    EXPECT_EQ(DataCache::instance, first) << "a second call keeps the instance and its connection";
    EXPECT_EQ(capture.take().back(), "2 DCACHE: Zoning limits failed to load");
}

TEST_F(Lifecycle, CoalescesWakeUps) {
    run();
    host().gate(true);
    wakeEvaluation();
    ASSERT_TRUE(host().await(1)) << "a pass is under way, held in the callback";
    for (int i = 0; i < 3; ++i) wakeEvaluation();
    host().take();
    host().gate(false);
    ASSERT_TRUE(host().await(1));
    usleep(100000);
    EXPECT_THAT(host().take(), ElementsAre(kComplete)) << "three wake-ups, one pass";
}

TEST_F(Lifecycle, FailedPassIsReportedAndRetriedByTheNextEvent) {
    sim.run(
        "[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nkey = \"Oper.Chassis.*\"\nresult = 4\n");
    DataCache::init();
    DataCache::start([](DataCacheEvent* event) { host().receive(*event); });
    EXPECT_TRUE(eventually([&] {
        bool reported = false;
        for (const std::string& line : capture.take()) {
            reported |= line == "2 DCACHE: (EVAL) Cache update failed or incomplete";
        }
        return reported;
    }));
    EXPECT_FALSE(DataCache::getInstance()->isCacheReady());
    DataCache::releaseInstance();
    EXPECT_TRUE(host().take().empty());
    sim.run("[[step]]\ndo = \"switch_state\"\nstate = \"Online\"\n");
    ASSERT_TRUE(host().await(1));
    EXPECT_EQ(host().take()[0], kComplete);
}

TEST_F(Lifecycle, HealthAnswersWhileAPassHangsInTheSwitch) {
    run();
    EXPECT_TRUE(eventually([] { return DataCache::idle(); }));
    sim.run(
        "[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nkey = \"Oper.Chassis.*\"\ndelay_ms = "
        "3000\n");
    DataCache::refreshNow();
    ASSERT_TRUE(eventually([] {
        const datacache::PassHealth passes = DataCache::health().passes;
        return passes.running && passes.inArea && passes.area == datacache::CacheArea::Chassis;
    }));
    sim.run("[[step]]\ndo = \"switch_state\"\nstate = \"Online\"\n");  // its notification waits for the lock
    EXPECT_TRUE(eventually([] {
        const datacache::EventHealth events = DataCache::health().events;
        return events.received > events.queued + events.dropped;
    }));
    std::vector<std::chrono::nanoseconds> times(51);
    for (auto& time : times) {
        const auto begin = std::chrono::steady_clock::now();
        const datacache::Health health = DataCache::health();
        time = std::chrono::steady_clock::now() - begin;
        ASSERT_TRUE(health.passes.running);
        EXPECT_TRUE(health[datacache::CacheArea::Chassis].marked);
        EXPECT_FALSE(DataCache::idle());
    }
    std::nth_element(times.begin(), times.begin() + 25, times.end());
    EXPECT_LT(times[25], std::chrono::milliseconds(1));
}

TEST_F(Lifecycle, RetryIntervalMendsAnAreaWithoutAnEvent) {
    run();
    const auto good = [] { return DataCache::health()[datacache::CacheArea::Chassis].upToDate; };
    sim.run(
        "[[step]]\ndo = \"fault\"\nfunction = \"vex_smlGetBatch\"\nkey = \"Oper.Chassis.0.Fans\"\ntimes = "
        "2\n");
    DataCache::refreshNow();
    ASSERT_TRUE(eventually([&] { return !good() && DataCache::idle(); }));
    const uint32_t passes = DataCache::health().passes.count;
    usleep(1200000);
    EXPECT_EQ(DataCache::health().passes.count, passes) << "nothing is tried again unless that was asked for";
    DataCache::setRetryInterval(1);  // also for the wait that goes on
    EXPECT_TRUE(eventually([&] { return DataCache::health().passes.count == passes + 2; }));
    EXPECT_TRUE(good()) << "one that failed, and one that did not";
    usleep(1200000);
    EXPECT_EQ(DataCache::health().passes.count, passes + 2) << "nothing is left to be mended";
}

TEST_F(Lifecycle, HostThreadsReadWhileTheSwitchChanges) {
    run();
    std::atomic<bool> stop{false};
    std::vector<pthread_t> readers(3);
    for (pthread_t& reader : readers) {
        pthread_create(
            &reader, nullptr,
            [](void* flag) -> void* {
                while (!static_cast<std::atomic<bool>*>(flag)->load()) {
                    DataCache* cache = DataCache::getInstance();
                    const bool consistent = cache->getSwitchFaults().size() == 2 && cache->isCacheReady() &&
                                            DataCache::health().connection.connected;
                    DataCache::releaseInstance();
                    if (!consistent) return flag;
                }
                return nullptr;
            },
            &stop);
    }
    for (int i = 0; i < 50; ++i) {
        sim.run("[[step]]\ndo = \"power_supply\"\nindex = 1\nstate = \"" +
                std::string(i % 2 == 0 ? "Bad" : "Good") + "\"\n");
    }
    sim.waitDelivered();
    stop = true;
    for (const pthread_t reader : readers) {
        void* broken = nullptr;
        pthread_join(reader, &broken);
        EXPECT_EQ(broken, nullptr);
    }
}

}  // namespace
