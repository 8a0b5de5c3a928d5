#include "tests/support/CacheTest.h"

#include <algorithm>
#include <thread>

#include "datacache/event_text.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "tests/support/Allocations.h"
#include "tests/support/CacheState.h"

namespace {

std::vector<std::string>& received() {
    static std::vector<std::string> lines;
    return lines;
}

void record(DataCacheEvent* event) {
    const Allocations::Pause own;
    received().push_back(datacache::eventText(*event));
}

}  // namespace

CacheTest::CacheTest() {
    sim.keepTranscript(true);
    restart();
    received().clear();
}

CacheTest::~CacheTest() {
    restart();
}

void CacheTest::restart() {
    delete DataCache::instance;
    DataCache::instance = nullptr;
    DataCache::setSnapshots(false);
    hSwitch = 0;
    adminModeHeld = 0;
    takeEvaluationRequests();
    EXPECT_EQ(sim.live().misuse, misuse) << "a real library would have crashed";
    sim.reset();
    sim.setDelivery(vexsim::Delivery::Manual);
}

void CacheTest::load(const std::string& switchToml) {
    sim.loadSwitchText(switchToml);
    DataCache::init();
    cache().startEventMonitor(record);
    wakeEvaluation();  // as the evaluation thread starts with a pass
}

void CacheTest::start(const std::string& switchToml) {
    load(switchToml);
    settle();
    allEvents();
    calls();
    log();
}

bool CacheTest::pass() {
    const AccessGuard guard;
    return cache().evaluateCaches();
}

int CacheTest::settle() {
    int passes = 0;
    for (;;) {
        const size_t delivered = sim.deliverPending();
        const bool woken = takeEvaluationRequests() != 0;
        if (delivered == 0 && !woken) return passes;
        if (!woken) continue;
        pass();
        ++passes;
    }
}

void CacheTest::step(const std::string& steps) {
    sim.run(steps);
    settle();
}

std::vector<std::string> CacheTest::allEvents() {
    return std::exchange(received(), {});
}

std::vector<std::string> CacheTest::events() {
    std::vector<std::string> lines = allEvents();
    lines.erase(std::remove(lines.begin(), lines.end(), "DCEventDataCacheUpdateComplete"), lines.end());
    return lines;
}

std::vector<std::string> CacheTest::calls() {
    std::vector<std::string> lines;
    for (const vexsim::Call& call : sim.transcript()) lines.push_back(call.function + ' ' + call.detail);
    sim.clearTranscript();
    return lines;
}

std::vector<std::string> CacheTest::freshState() {
    DataCache* const followed = std::exchange(DataCache::instance, nullptr);
    const uint32_t handle = hSwitch;
    DataCache::init();
    pass();
    cache().updateSwitch();  // which now takes the faults of the chassis in
    pass();
    cache().readAccounts();
    std::vector<std::string> lines = cacheState();
    delete std::exchange(DataCache::instance, followed);
    hSwitch = handle;
    return lines;
}

bool CacheTest::lockIsFree() {
    bool taken = false;
    std::thread([&taken] {
        taken = pthread_mutex_trylock(&access_mutex) == 0;
        if (taken) pthread_mutex_unlock(&access_mutex);
    }).join();
    return taken;
}

bool CacheTest::fabricLockIsFree() {
    uint32_t other = 0;
    vex_IPConnect("localhost", "test", "", &other);
    bool free = true;
    for (const char* command : {"Cmd.Switch.ReqAdmin", "Cmd.Zoning.FabricLock.77",
                                "Cmd.Zoning.FabricUnlock.77", "Cmd.Switch.RelAdmin"}) {
        void* reply = nullptr;
        free = vex_smlSet(other, command, &reply) == 0 && free;
    }
    return free;
}
