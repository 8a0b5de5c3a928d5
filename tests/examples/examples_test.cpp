// The example switches through the real library: what they show, and what a start-up asks of the switch.
#include <fstream>
#include <iterator>
#include <set>

#include "tests/support/CacheTest.h"

namespace {

std::string contents(const std::string& name) {
    std::ifstream file(EXAMPLES_DIR "/" + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

class Examples : public CacheTest {};

TEST_F(Examples, ShowEveryClassOfEvent) {
    const std::pair<const char*, const char*> examples[] = {
        {"blade-module.toml", "blade-module.scenario.toml"},
        {"modular-chassis.toml", "modular-chassis.scenario.toml"},
        {"modular-chassis.toml", "fabric.scenario.toml"},
    };
    const std::string head = "[[step]]";
    std::set<std::string> seen;
    for (const auto& [switchFile, scenario] : examples) {
        start(contents(switchFile));
        cache().readAccounts();
        const std::string steps = contents(scenario);
        for (size_t at = steps.find(head), next = 0; at != std::string::npos; at = next) {
            next = steps.find(head, at + head.size());
            step(steps.substr(at, next - at));
            cache().readAccounts();  // this host asks after every step
        }
        EXPECT_TRUE(cache().isCacheReady()) << scenario << " leaves something broken";
        for (const std::string& event : allEvents()) seen.insert(event.substr(7, event.find(' ') - 7));
        restart();
    }
    std::string all;
    for (const std::string& name : seen) all += name + ' ';
    EXPECT_EQ(all,
              "ActiveZonesetChange BladeAdd BladeRemove CIMChange CPUAdd CPURemove DataCacheUpdateComplete "
              "EnvEvent FabricAdd FabricChange FabricRemove FanAdd FanRemove PortAdd PortRemove "
              "PortStatusChange PowerSupplyAdd PowerSupplyFail PowerSupplyRemove SwitchAdd SwitchRemove "
              "SwitchStatusChange UserAcctAdd UserAcctRemove UserLoginFailure UserPasswdChg ZoningDBChange ");
}

}  // namespace
