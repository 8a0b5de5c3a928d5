// The cache's health: silent changes, refused registrations, missing data, calls that hang, marks; and passes
// inside the callback.
#include <deque>
#include <functional>
#include <future>

#include "switchlib/CallWatch.h"
#include "tests/support/CacheState.h"
#include "tests/support/CacheTest.h"
#include "tests/support/zoning_limits.h"
#include "zoning/ZoningSession.h"

namespace {

using namespace testing;

const std::string kSwitch = R"(
switch = {wwn = '1000001122AABBCC', domain = 1}
features = {transparent = true}
chassis = {power_supplies = 2, slots = 3, enhanced_fault_monitoring = true}
blade = [{slot = 1, type = 'IO'}, {slot = 2, type = 'IO'}]
ports = {count = 4, transceiver = {oui = 0x00AABB}, port = [{numbers = [2], transceiver = {present = false}}]}
accounts = {users = ['admin']}
[fabric]
principal = '1000001122AABBCC'
switch = [{domain = 2, wwn = '1000001122000002', ports = 2}]
[zoning]
active = 'prod'
zone = [{name = 'z1', members = ['0103']}]
zoneset = [{name = 'prod', zones = ['z1']}]
)" + limitsText();

class Trust : public CacheTest {
  protected:
    void begin(const std::string& steps = "", const std::string& more = "") {
        restart();
        start(kSwitch + more);
        cache().readAccounts();
        if (!steps.empty()) step("step = [" + steps + ']');
    }
    /** Reads all as the refresh interval does, with the accounts, which are the host's to read. */
    void refresh() {
        DataCache::refreshNow();
        pass();
        cache().readAccounts();
    }
    /** The silent changes of all areas: "ports 1 port 3: status". */
    static std::vector<std::string> silent() {
        const Health health = DataCache::health();
        std::vector<std::string> found;
        for (const CacheArea area : kAllCacheAreas) {
            if (health[area].silentChanges == 0) continue;
            found.push_back(cacheAreaName(area) + (' ' + std::to_string(health[area].silentChanges)) + ' ' +
                            health[area].silentChange);
        }
        return found;
    }
    void fault(const std::string& fields) { sim.run("step = [{do = 'fault', " + fields + "}]"); }
    static std::vector<std::string> problems() { return DataCache::health().problems(); }
};

/** Every code that marks an area or changes what is cached. */
TEST_F(Trust, ARefreshFindsAChangeWhoseEventIsLost) {
    const auto raised = [](const char* key, const char* value, int code) {
        return std::string("{do = 'set', key = '") + key + "', value = '" + value +
               "'}, {do = 'raise', code = " + std::to_string(code) + '}';
    };
    const struct {
        int code;
        std::string steps;
        const char* silent;
        const char* before = "";
    } changes[] = {
        {1, "{do = 'fabric_rename', principal = '1000001122000002'}",
         "fabric 1 fabric's name is now 1000001122000002"},
        {3, "{do = 'zone_add', name = 'z2', members = ['0101']}", "zoning 1 configured zoning"},
        {3, "{do = 'zoneset_deactivate'}", "zoning 1 name of the active zoneset"},
        {7, "{do = 'remote_port_offline', domain = 2, port = 1}", "fabric 1 switch 1000001122000002: ports"},
        {14, "{do = 'port_offline', port = 3}", "ports 1 port 3: status"},
        {15, "{do = 'port_type', port = 1, type = 'E'}", "ports 1 port 1: type"},
        {28, "{do = 'blade_insert', slot = 2, type = 'CPU'}", "blades 1 slot 2",
         "{do = 'blade_remove', slot = 2}"},
        {29, "{do = 'blade_remove', slot = 2}", "blades 1 slot 2"},
        {32, "{do = 'switch_state', state = 'Offline'}", "switch 1 status is now 10"},
        {33, "{do = 'power_supply', index = 2, state = 'Bad'}", "chassis 1 power supply 2: status"},
        {39, "{do = 'blade_state', slot = 2, state = 'Down', admin = 'Down'}", "blades 1 slot 2"},
        {50, "{do = 'account_add', name = 'guest'}", "accounts 1 list of accounts"},
        {52, "{do = 'feature', name = 'fcoe', enabled = true}", "switch 1 mode of operation"},
        {57, raised("Oper.Chassis.0.PowerSupplies", "1", 57), "chassis 1 1 power supplies, not 2"},
        {76, "{do = 'transceiver_plugged', port = 2}", "ports 1 port 2: transceiver"},
        {77, "{do = 'transceiver_pulled', port = 0}", "ports 1 port 0: transceiver"},
        {82, raised("Oper.Switch.OperState", "Offline", 82), "switch 1 status is now 10"},
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(change.steps);
        enum { Lost, Told, Late };
        for (const int event : {Lost, Told, Late}) {
            begin(change.before);
            if (event == Lost)
                fault("function = 'notification', key = '" + std::to_string(change.code) + "'");
            sim.run("step = [" + change.steps + ']');
            if (event == Told) settle();
            refresh();
            EXPECT_THAT(silent(), IsEmpty()) << "the event may be on its way";
            settle();
            refresh();
            refresh();
            const std::vector<std::string> found(event == Lost ? 1 : 0, change.silent);
            EXPECT_EQ(silent(), found);
            EXPECT_EQ(cacheState(), freshState());
        }
    }
}

TEST_F(Trust, RefusedCodesAreAProblemAndAreRegisteredAgain) {
    const struct {
        std::string fault, problem, logged;
        size_t refused;
    } cases[] = {
        {"key = '1[456]'\nstatus = 205", "the switch refused to register 3 event codes: 14, 15, 16",
         "event 16", 3},
        {"result = 205", "the switch refused to register 28 event codes with 0xcd: 32, 52, 57",
         "events via vex_enRegisterForEvents", 28},
    };
    for (const auto& row : cases) {
        begin("", "[[fault]]\nfunction = 'vex_enRegisterForEventList'\ntimes = 2\n" + row.fault);
        EXPECT_THAT(problems(), ElementsAre(HasSubstr(row.problem)));
        EXPECT_EQ(DataCache::health().registration().refused, row.refused);
        calls();
        EXPECT_FALSE(peer().prepareRetry()) << "refused again";
        EXPECT_EQ(log().back(), "2 DCACHE: Unable to register for " + row.logged);
        const std::vector<std::string> made = calls();
        ASSERT_EQ(made.size(), 1U);
        EXPECT_EQ(std::count(made[0].begin(), made[0].end(), ',') + 1U, row.refused) << made[0];
        EXPECT_TRUE(peer().prepareRetry());
        EXPECT_EQ(calls(), made) << "these and no others";
        EXPECT_EQ(DataCache::health()[CacheArea::Chassis].markedBy, MarkCause::Retry);
        EXPECT_TRUE(pass());
        EXPECT_TRUE(DataCache::health().well());
        EXPECT_FALSE(peer().prepareRetry());
        EXPECT_THAT(calls(), Not(Contains(HasSubstr("vex_enRegister"))));
    }
}

TEST_F(Trust, AProblemLastsUntilItIsMended) {
    const struct {
        const char *fault, *problem;
    } cases[] = {
        {"function = 'vex_fzsGetZoningLimitations'", "zoning limits were not read"},
        {"function = '*'\nskip = 1\ntimes = 0\nresult = 206", "refuses calls, "},
        {"function = 'vex_smlGetBatch'\nkey = '*.Fan*'\ntimes = 0\nstatus = 5",
         "chassis is not up to date: Oper.Chassis.0.Fans has status 0x5"},
    };
    for (const auto& row : cases) {
        begin("", std::string("[[fault]]\n") + row.fault);
        EXPECT_THAT(problems(), Contains(HasSubstr(row.problem)));
        sim.run("step = [{do = 'clear_faults'}]");
        EXPECT_TRUE(peer().prepareRetry() || DataCache::health()[CacheArea::Switch].upToDate) << row.fault;
        pass();
        cache().readAccounts();
        EXPECT_THAT(problems(), IsEmpty()) << row.fault;
    }
}

TEST_F(Trust, HealthShowsTheHangingCallAndTheHolderOfTheLock) {
    begin("{do = 'fault', function = 'vex_fzsGetAllZonesAndAliases', hang = true}");
    auto session = std::async(std::launch::async,
                              [] { return DataCache::zoningSession("client").lockOutcome().done(); });
    ASSERT_TRUE(sim.waitHanging());
    const Health health = DataCache::health();
    EXPECT_EQ(health.lock().holder, LockHolder::Session);
    EXPECT_STREQ(health.lock().step, "lock");
    EXPECT_STREQ(health.pendingCall(0).call, "vex_fzsGetAllZonesAndAliases");
    EXPECT_FALSE(DataCache::idle());
    sim.release();
    EXPECT_TRUE(session.get());
    EXPECT_EQ(DataCache::health().lock().holder, LockHolder::Nobody);

    std::deque<CallWatch> many;
    for (int i = 0; i < 9; ++i) many.emplace_back("call");
    PendingCall calls[9];
    EXPECT_EQ(CallWatch::pending(calls, 8), 8U);
    EXPECT_STREQ(calls[8].call, "");
}

TEST_F(Trust, AMarkHasACauseAndATime) {
    const auto marked = [] {
        const AreaHealth chassis = DataCache::health()[CacheArea::Chassis];
        EXPECT_EQ(chassis.markedSince == WallTime(), chassis.markedBy == MarkCause::None);
        EXPECT_EQ(chassis.staleSince == WallTime(), chassis.upToDate);
        return std::string(markCauseName(chassis.markedBy)) + ' ' + std::to_string(chassis.markedByEvent);
    };
    restart();
    load(kSwitch);
    EXPECT_EQ(marked(), "start 0");
    settle();
    EXPECT_EQ(marked(), "none 0");
    fault("function = 'vex_smlGetBatch', key = '*.Fans', times = 0");
    sim.raise(33, {0, 0, 0}, "");
    settle();
    EXPECT_EQ(marked(), "event 33") << "a failed read keeps the mark";
    const WallTime since = DataCache::health()[CacheArea::Chassis].markedSince;
    cache().updateChassis();
    pass();
    EXPECT_EQ(marked(), "event 33") << "the first mark counts";
    EXPECT_EQ(DataCache::health()[CacheArea::Chassis].markedSince, since);
    sim.run("step = [{do = 'clear_faults'}]");
    pass();
    cache().updateChassis();
    EXPECT_EQ(marked(), "host 0");
}

/** The events that the host got, negative those of its second callback; and work for the first one to do. */
std::vector<int32_t> told;
std::deque<std::function<void()>> doInCallback;

void host(DataCacheEvent* event) {
    if (event->type == DCEventDataCacheUpdateComplete::TYPE) return;
    told.push_back(event->type);
    if (doInCallback.empty()) return;
    const std::function<void()> next = std::move(doInCallback.front());
    doInCallback.pop_front();
    next();
}

void otherHost(DataCacheEvent* event) {
    if (event->type != DCEventDataCacheUpdateComplete::TYPE) told.push_back(-event->type);
}

TEST_F(Trust, ACallbackMayRunAPassAndStoreAnotherCallback) {
    const int32_t a = DCEventCIMChange::TYPE, b = DCEventUserPasswdChg::TYPE,
                  c = DCEventUserLoginFailure::TYPE;
    const auto nested = [this]() DC_NO_THREAD_SAFETY_ANALYSIS { cache().evaluateCaches(); };
    const auto thrown = [] { throw "out of a callback"; };
    const auto nestedThenThrown = [&] { nested(), thrown(); };
    const struct {
        std::vector<std::function<void()>> inCallback;
        std::vector<int32_t> told, later;
    } cases[] = {
        {{nested}, {a, b, c}, {}},
        {{thrown}, {a}, {a, b, c}},
        {{nested, nested, nested}, {a, b, c}, {}},
        // The event whose dispatch throws stays; with a pass in it, it is the only one that is told again.
        {{nestedThenThrown}, {a, b, c}, {a}},
        {{nested, thrown}, {a, b, b, c}, {}},
        {{[this] { cache().startEventMonitor(otherHost); }}, {a, -b, -c}, {}},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(&row - cases);
        begin();
        peer().callback = host;
        doInCallback.assign(row.inCallback.begin(), row.inCallback.end());
        for (const int32_t code : {78, 72, 73}) sim.raise(code, {0, 0, 0}, "x");
        sim.deliverPending();
        for (const std::vector<int32_t>& expected : {row.told, row.later}) {
            pass();
            EXPECT_EQ(std::exchange(told, {}), expected);
        }
        EXPECT_TRUE(peer().eventQueue.empty());
        EXPECT_EQ(DataCache::health().events().waiting, 0U);
        EXPECT_FALSE(DataCache::health().passes().running);
    }
}

}  // namespace
