#include "tests/support/CacheTest.h"

#include <algorithm>

#include "host/event_fields.h"
#include "switchlib/NORV_Vex_Lib.h"

namespace {

std::vector<std::string>& received() {
    static std::vector<std::string> lines;
    return lines;
}

void record(DataCacheEvent* event) {
    received().push_back(eventLine(*event));
}

/** Takes the wake-ups that the evaluation thread would have taken. */
bool takeWakeUps() {
    pthread_mutex_lock(&eval_mutex);
    const bool woken = eval_ready != 0;
    eval_ready = 0;
    pthread_mutex_unlock(&eval_mutex);
    return woken;
}

void dropInstance() {
    delete DataCache::instance;
    DataCache::instance = nullptr;
    hSwitch = 0;
    adminModeHeld = 0;
    takeWakeUps();
}

}  // namespace

CacheTest::CacheTest() {
    dropInstance();
    received().clear();
    sim.reset();
    sim.setDelivery(vexsim::Delivery::Manual);
}

CacheTest::~CacheTest() {
    dropInstance();
    sim.reset();
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
        const bool woken = takeWakeUps();
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
