// The cache with its real threads: start-up, retries, wake-ups, and the whole path from switch event to host
// event.
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "datacache/event_text.h"
#include "datacache/wake_ups.h"
#include "tests/support/CacheTest.h"
#include "tests/support/zoning_limits.h"

namespace {

using ::testing::ElementsAre;

std::vector<unsigned> slept;
unsigned unslept = 0;  ///< what a signal leaves of the next sleep

/** What becomes of the evaluation thread's stack. */
enum { AsWanted, Refused, TooLarge } stack = AsWanted;

}  // namespace

/** Stands in for the C library's: connection retries take no time here. */
extern "C" unsigned sleep(unsigned seconds) {
    slept.push_back(seconds);
    return std::exchange(unslept, 0);
}

extern "C" int pthread_attr_setstacksize(pthread_attr_t* attributes, size_t size) noexcept {
    static const auto real =
        reinterpret_cast<decltype(&pthread_attr_setstacksize)>(dlsym(RTLD_NEXT, "pthread_attr_setstacksize"));
    return stack == Refused ? EINVAL : real(attributes, stack == TooLarge ? ~size_t{0} << 20 : size);
}

namespace {

const std::string kSwitch = "switch = {wwn = '1000001122AABBCC'}\nchassis = {power_supplies = 2}\n";

/** Collects events from the evaluation thread; a gate can hold that thread inside the callback. */
struct Host {
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> lines;
    bool gateShut = false;

    void receive(const DataCacheEvent& event) {
        // The first load of the zoning is always an event; these tests are not about it.
        if (event.type == DCEventActiveZonesetChange::TYPE || event.type == DCEventZoningDBChange::TYPE)
            return;
        // The callback may use the cache: the lock is recursive.
        const std::string name = DataCache::getInstance()->getRootSwitchWwn();
        DataCache::releaseInstance();
        std::unique_lock<std::mutex> guard(mutex);
        lines.push_back(eventText(event) + " seen on " + name);
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
        unslept = 4;
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
    void fault(const std::string& fields) {
        sim.run("step = [{do = 'fault', function = 'vex_smlGetBatch', key = " + fields + "}]");
    }
    static constexpr const char* kNews = "step = [{do = 'switch_state', state = 'Online'}]";
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
    sim.loadSwitchText(kSwitch + "[zoning]\n" + limitsText());
    sim.run("do = 'fault'\nfunction = 'vex_IPConnect'\ntimes = 2\nresult = 7");
    sim.run("do = 'fault'\nfunction = 'vex_IPConnect'\nskip = 2\ntimes = 1\nhandle = 0");
    EXPECT_TRUE(DataCache::init());
    EXPECT_EQ(slept, (std::vector<unsigned>{10, 4, 10}))
        << "a signal cuts the first sleep short, whose rest follows; a success without a handle is tried "
           "again at once";
    const std::string failed =
        "4 CRIT:DataCache:startVexlib[479] vexlib connection failed: 7 : retrying in 10 seconds...";
    EXPECT_THAT(capture.take(),
                ElementsAre("2 DCACHE: Creating a new datacache()", "2 DCACHE: attempting vexlib connection",
                            failed, failed, "2 DCACHE: vexlib connection established",
                            "2 DCACHE: zsl = 0, zl = 0, al = 0, zml = 0", "2 DCACHE: Zoning limits loaded"));
    EXPECT_NE(hSwitch, 0U);
    const auto first = std::pair(DataCache::instance, hSwitch);
    EXPECT_TRUE(DataCache::init());
    EXPECT_EQ(std::pair(DataCache::instance, hSwitch), first) << "kept by a second call";
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
    EXPECT_TRUE(eventually([] { return DataCache::idle(); }));
    EXPECT_THAT(host().take(), ElementsAre(kComplete)) << "three wake-ups, one pass";
}

TEST_F(Lifecycle, HealthAndSnapshotAnswerWhileAPassHangsInTheSwitch) {
    DataCache::setSnapshots(true);
    EXPECT_EQ(DataCache::snapshot(), nullptr);
    run();
    EXPECT_TRUE(DataCache::waitIdle(30'000));
    {
        const AccessGuard reader;
        EXPECT_TRUE(DataCache::idle()) << "readers do not count";
        EXPECT_EQ(DataCache::health().lock().holder, LockHolder::Reader);
        EXPECT_TRUE(DataCache::waitIdle(30'000) && DataCache::waitReady(30'000)) << "at once";
    }
    EXPECT_EQ(DataCache::health().lock().holder, LockHolder::Nobody);
    fault("'Oper.Chassis.*', hang = true");
    DataCache::refreshNow();
    ASSERT_TRUE(sim.waitHanging());
    sim.run(kNews);  // its notification waits for the lock
    EXPECT_TRUE(eventually([] {
        const EventHealth events = DataCache::health().events();
        return events.received > events.queued + events.dropped;
    }));
    const std::shared_ptr<const Snapshot> before = DataCache::snapshot();
    DataCache::setSnapshots(false);
    DataCache::setSnapshots(true);
    EXPECT_EQ(DataCache::snapshot(), nullptr) << "until the pass goes on";
    EXPECT_EQ(before->localSwitch().switchWwn.tostring(), "1000001122AABBCC");
    const Health health = DataCache::health();
    const PassHealth& passes = health.passes();
    EXPECT_TRUE(passes.running && passes.inArea && passes.area == CacheArea::Chassis);
    EXPECT_TRUE(health[CacheArea::Chassis].marked && !health[CacheArea::Chassis].upToDate);
    const LockHealth& lock = health.lock();
    EXPECT_TRUE(lock.holder == LockHolder::Pass && lock.inArea && lock.area == CacheArea::Chassis);
    EXPECT_TRUE(lock.since != WallTime() && lock.since <= health.time());
    ASSERT_EQ(health.pendingCalls(), 1U);
    EXPECT_STREQ(health.pendingCall(0).call, "vex_smlGetBatch");
    EXPECT_STREQ(health.pendingCall(0).key, "Oper.Chassis.0.PowerSupplies");
    EXPECT_LE(health.pendingCall(0).since, health.time());
    EXPECT_FALSE(DataCache::idle());
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(DataCache::waitIdle(50));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(50));
    sim.run("step = [{do = 'clear_faults'}]");
    EXPECT_TRUE(DataCache::waitIdle(30'000));
    EXPECT_EQ(DataCache::health().pendingCalls(), 0U);
    EXPECT_EQ(DataCache::snapshot()->chassis().powerSupplyCount, 2);
}

TEST_F(Lifecycle, TheRefreshIntervalFindsAChangeWhoseEventWasLost) {
    run();
    sim.run("do = 'fault'\nfunction = 'notification'");
    sim.run("do = 'power_supply'\nindex = 1\nstate = 'Bad'");
    const auto chassis = [] { return DataCache::health()[CacheArea::Chassis]; };
    DataCache::setRefreshInterval(1);
    EXPECT_TRUE(eventually([&] { return chassis().silentChanges == 1; }));
    EXPECT_STREQ(chassis().silentChange, "power supply 1: status");
    fault("'Oper.Chassis.*', hang = true");
    ASSERT_TRUE(sim.waitHanging());
    EXPECT_EQ(chassis().markedBy, MarkCause::Refresh);
    DataCache::setRefreshInterval(0);
    sim.run("step = [{do = 'clear_faults'}]");
}

TEST_F(Lifecycle, AFailedPassIsRetriedByTheNextEventAndTheHostToldOfReadiness) {
    static std::vector<bool> told;
    DataCache::setReadinessCallback(
        [](bool ready, void* context) {
            EXPECT_TRUE(DataCache::waitReady(0) == ready && context == &told);
            told.push_back(ready);
        },
        &told);
    fault("'Oper.Chassis.0.Fans', times = 1");
    DataCache::init();
    EXPECT_FALSE(DataCache::waitReady(0)) << "nothing was read";
    DataCache::start([](DataCacheEvent* event) { host().receive(*event); });
    EXPECT_TRUE(DataCache::waitIdle(30'000));
    EXPECT_EQ(capture.take().back(), "2 DCACHE: (EVAL) Cache update failed or incomplete");
    EXPECT_FALSE(DataCache::waitReady(20));
    EXPECT_TRUE(told.empty() && host().take().empty()) << "it was not ready before either";
    sim.run(kNews);
    ASSERT_TRUE(host().await(1));
    EXPECT_EQ(host().take()[0], kComplete);
    EXPECT_TRUE(DataCache::waitReady(0) && DataCache::waitIdle(30'000));
    fault("'Oper.Chassis.0.Fans', times = 1");
    for (int pass = 0; pass < 3; ++pass) {
        DataCache::refreshNow();
        EXPECT_TRUE(DataCache::waitIdle(30'000));
    }
    EXPECT_THAT(told, ElementsAre(true, false, true));
}

TEST_F(Lifecycle, AThreadThatCannotBeMadeIsLogged) {
    ASSERT_TRUE(DataCache::init());
    for (const auto& [how, line] : {std::pair(Refused, "2 DCACHE: pthread_attr_setstacksize failed"),
                                    {TooLarge, "2 DCACHE: Thread creation failed"}}) {
        stack = how;
        EXPECT_TRUE(DataCache::start(nullptr));
        EXPECT_EQ(capture.take().back(), line);
        EXPECT_THAT(DataCache::health().problems(),
                    ::testing::Contains("the evaluation thread could not be made"));
        EXPECT_FALSE(DataCache::idle());
    }
    stack = AsWanted;
}

TEST_F(Lifecycle, RetryIntervalMendsAnAreaWithoutAnEvent) {
    run();
    const auto good = [] { return DataCache::health()[CacheArea::Chassis].upToDate; };
    fault("'Oper.Chassis.0.Fans', times = 2");
    DataCache::refreshNow();
    ASSERT_TRUE(eventually([&] { return !good() && DataCache::idle(); }));
    const uint32_t passes = DataCache::health().passes().count;
    usleep(1200000);
    EXPECT_EQ(DataCache::health().passes().count, passes)
        << "nothing is tried again unless that was asked for";
    const auto begin = std::chrono::steady_clock::now();
    DataCache::setRetryInterval(1);  // also for the wait that goes on
    EXPECT_TRUE(eventually([&] { return DataCache::health().passes().count == passes + 2; }));
    EXPECT_GT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(900)) << "between the two";
    EXPECT_TRUE(good()) << "one that failed, and one that did not";
    usleep(1200000);
    EXPECT_EQ(DataCache::health().passes().count, passes + 2) << "nothing is left to be mended";
}

TEST_F(Lifecycle, HostThreadsReadWhileTheSwitchChanges) {
    DataCache::setSnapshots(true);
    run();
    std::atomic<bool> stop{false};
    std::atomic<bool> consistent{true};
    std::vector<std::thread> readers(3);
    for (std::thread& reader : readers) {
        reader = std::thread([&] {
            while (!stop) {
                DataCache* const cache = DataCache::getInstance();
                if (cache->getSwitchFaults().size() != 2 || !cache->isCacheReady()) consistent = false;
                DataCache::releaseInstance();
                if (!DataCache::health().connection().connected) consistent = false;
                const std::shared_ptr<const Snapshot> newest = DataCache::snapshot();
                if (newest->chassis().powerSupplyCount != 2 || !newest->isReady()) consistent = false;
            }
        });
    }
    for (int i = 0; i < 50; ++i) {
        sim.run("step = [{do = 'power_supply', index = 1, state = '" +
                std::string(i % 2 == 0 ? "Bad" : "Good") + "'}]");
    }
    sim.waitDelivered();
    stop = true;
    for (std::thread& reader : readers) reader.join();
    EXPECT_TRUE(consistent);
}

}  // namespace
