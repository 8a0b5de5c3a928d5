// The example switches through the real library: what they show, and what a start-up asks of the switch.
#include <fstream>
#include <set>
#include <sstream>

#include "tests/support/CacheTest.h"

namespace {

/** An example switch with a scenario for it. */
struct Example {
    const char* switchFile;
    const char* scenario;
};

constexpr Example kExamples[] = {
    {"blade-module.toml", "blade-module.scenario.toml"},
    {"modular-chassis.toml", "modular-chassis.scenario.toml"},
    {"modular-chassis.toml", "fabric.scenario.toml"},
};

std::string contents(const char* name) {
    std::ifstream file(std::string(EXAMPLES_DIR "/") + name);
    std::ostringstream text;
    text << file.rdbuf();
    EXPECT_TRUE(file.good()) << name;
    return text.str();
}

/** The scenario's steps, one text each. */
std::vector<std::string> stepsOf(const std::string& scenario) {
    static const std::string kHead = "[[step]]";
    std::vector<std::string> steps;
    for (size_t at = scenario.find(kHead); at != std::string::npos;) {
        const size_t next = scenario.find(kHead, at + kHead.size());
        steps.push_back(scenario.substr(at, next - at));
        at = next;
    }
    return steps;
}

class Examples : public CacheTest {
  protected:
    /** The accounts are read when the host asks; this host asks after every step. */
    void readAccounts() {
        const AccessGuard guard;
        cache()._getAcctInfo();
    }
};

TEST_F(Examples, ShowEveryClassOfEvent) {
    std::set<std::string> seen;
    for (const Example& example : kExamples) {
        delete std::exchange(DataCache::instance, nullptr);
        load(contents(example.switchFile));
        settle();
        readAccounts();
        for (const std::string& step : stepsOf(contents(example.scenario))) {
            sim.run(step, example.scenario);
            settle();
            readAccounts();
        }
        EXPECT_TRUE(cache().isCacheReady()) << example.scenario << " leaves something broken";
        for (const std::string& event : allEvents()) seen.insert(event.substr(0, event.find(' ')));
        delete std::exchange(DataCache::instance, nullptr);
        EXPECT_EQ(sim.live().texts + sim.live().zonesets + sim.live().members, 0U) << example.switchFile;
    }
    const std::set<std::string> all = {
        "DCEventFabricAdd",       "DCEventFabricRemove",     "DCEventFabricChange",
        "DCEventSwitchAdd",       "DCEventSwitchRemove",     "DCEventSwitchStatusChange",
        "DCEventBladeAdd",        "DCEventBladeRemove",      "DCEventPortAdd",
        "DCEventPortRemove",      "DCEventPortStatusChange", "DCEventFanAdd",
        "DCEventFanRemove",       "DCEventPowerSupplyAdd",   "DCEventPowerSupplyRemove",
        "DCEventPowerSupplyFail", "DCEventCPUAdd",           "DCEventCPURemove",
        "DCEventUserAcctAdd",     "DCEventUserAcctRemove",   "DCEventActiveZonesetChange",
        "DCEventZoningDBChange",  "DCEventUserPasswdChg",    "DCEventUserLoginFailure",
        "DCEventEnvEvent",        "DCEventCIMChange",        "DCEventDataCacheUpdateComplete",
    };
    EXPECT_EQ(seen, all);
}

}  // namespace
