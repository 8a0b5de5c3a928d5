// Calls that the host makes inside its callback: each row of the table in docs/integration.md is tried.
#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>

#include "datacache/CacheReader.h"
#include "datacache/event_text.h"
#include "tests/support/CacheTest.h"
#include "tests/support/zoning_limits.h"
#include "zoning/ZoningSession.h"

namespace {

const std::string kSwitch = R"(
switch = {wwn = "1000001122334401", domain = 3}
ports = {count = 2}
accounts = {users = ["admin"]}
[zoning]
active = "prod"
zone = [{name = "z1", members = ["0309"]}]
zoneset = [{name = "prod", zones = ["z1"]}]
)" + limitsText();

/** The step that leads to each event: one that is dispatched, two of areas, and the end of a pass. */
const std::map<int32_t, const char*> kCauses = {
    {DCEventUserLoginFailure::TYPE, "step = [{do = 'login_failed', user = 'a'}]"},
    {DCEventPortStatusChange::TYPE, "step = [{do = 'port_offline', port = 1}]"},
    {DCEventZoningDBChange::TYPE, "step = [{do = 'zone_add', name = 'z2', members = ['0308']}]"},
    {DCEventDataCacheUpdateComplete::TYPE, "step = [{do = 'login_failed', user = 'a'}]"},
};

/** A call with its result as a text, which is empty for void. */
struct Call {
    Call() = default;
    template <typename Function>
    Call(Function function)
        : run([function](DataCache& cache) -> std::string {
              const auto call = [&] {
                  if constexpr (std::is_invocable_v<Function>)
                      return function();
                  else
                      return std::invoke(function, cache);
              };
              using Given = decltype(call());
              if constexpr (std::is_void_v<Given>)
                  return call(), "";
              else if constexpr (std::is_arithmetic_v<Given>)
                  return std::to_string(call());
              else
                  return call();
          }) {}
    std::function<std::string(DataCache&)> run;
};
std::string gave;  ///< the result of the call
int32_t from = 0;  ///< the event in which the call is to be made; 0 once it was made
Call call;

void onEvent(DataCacheEvent* event) {
    if (event->type != from) return;
    from = 0;
    gave = call.run(*DataCache::instance);
}

std::string otherEvents;  ///< the events that the other callback got
void otherCallback(DataCacheEvent* event) {
    otherEvents += std::string(otherEvents.empty() ? "" : " ") + eventName(event->type);
}

std::string zoningSession(DataCache&) {
    ZoningSession session = DataCache::zoningSession("callback");
    ZoningOutcome outcome = session.lockOutcome();
    if (outcome.done()) outcome = session.createZone("mine", VEX_ZT_SOFT);
    if (outcome.done()) outcome = session.commit();
    return outcome.text();
}

vex_event_s* chassisEvent() {
    auto* const event = new vex_event_s{};
    event->code = VEX_EVENT_CHASSIS_OPERCHANGE;
    return event;
}

class Callback : public CacheTest {
  protected:
    /** Makes the call in an event. Returns the areas that the running pass reads after the call and, behind a
     * bar, the areas that later passes read. */
    std::string areasRead(int32_t event) {
        start(kSwitch);
        cache().startEventMonitor(onEvent);
        from = event;
        gave = "never called";
        otherEvents.clear();
        log();
        sim.run(kCauses.at(event));
        sim.deliverPending();
        takeEvaluationRequests();
        const Call made = call;
        size_t before = 0;  // lines before the call
        call = [&](DataCache& cache) {
            const std::string result = made.run(cache);
            before = lines().size();
            return result;
        };
        pass();
        std::string areas = areasIn(lines(), before);
        _lines.clear();
        int passes = 0;
        for (; passes < 3 && takeEvaluationRequests() != 0; ++passes) pass();
        const std::string later = areasIn(lines(), 0);
        _lines.clear();
        call = made;
        return areas + '|' + later + (passes == 3 ? " without end" : "");
    }

  private:
    /** The log since the pass began. */
    const std::vector<std::string>& lines() {
        for (std::string& line : log()) _lines.push_back(std::move(line));
        return _lines;
    }
    static std::string areasIn(const std::vector<std::string>& lines, size_t line) {
        std::string areas;
        for (std::smatch found; line < lines.size(); ++line) {
            if (std::regex_match(lines[line], found, std::regex("2 DCACHE: Updating (\\w+) cache")))
                areas += (areas.empty() ? "" : " ") + found[1].str();
        }
        return areas;
    }
    std::vector<std::string> _lines;
};

/** The names in the first column of the table, without their arguments; "get*" stands for all that begin so.
 */
std::set<std::string> tableNames() {
    std::ifstream page(EXAMPLES_DIR "/../docs/integration.md");
    std::set<std::string> names;
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (line.rfind("| Call from the callback |", 0) == 0) inside = true;
        if (line.empty()) inside = false;
        if (!inside) continue;
        const std::string column = line.substr(0, line.find('|', 1));
        const std::regex word("`([A-Za-z_]+[*]?)[^`]*`");
        for (std::sregex_iterator one(column.begin(), column.end(), word), end; one != end; ++one)
            names.insert((*one)[1]);
    }
    return names;
}

/** The exported functions of DataCache that hosts can call, less those that the page says never to call
 * there. */
std::set<std::string> publicNames() {
    const std::set<std::string> never = {"DataCache",       "init",       "start",
                                         "startEvalThread", "evalThread", "instance"};
    std::ifstream list(EXAMPLES_DIR "/../cmake/exports.txt");
    std::set<std::string> names;
    std::smatch found;
    for (std::string line; std::getline(list, line);) {
        if (!std::regex_search(line, found, std::regex("^DataCache::([a-z]\\w+|_getAcctInfo)"))) continue;
        if (never.count(found[1]) == 0) names.insert(found[1]);
    }
    return names;
}

TEST_F(Callback, MayCallWhatTheTableSays) {
    constexpr int32_t kDispatch = DCEventUserLoginFailure::TYPE;
    constexpr int32_t kPorts = DCEventPortStatusChange::TYPE;
    constexpr int32_t kZoning = DCEventZoningDBChange::TYPE;
    constexpr int32_t kComplete = DCEventDataCacheUpdateComplete::TYPE;
    const std::string all = "switch chassis blades ports fabric zoning";
    const struct {
        const char* names;  ///< in the table's first column
        int32_t event;      ///< from which the call is made
        Call call;
        const std::string gave;
        const std::string areas;  ///< as areasRead() returns them
    } rows[] = {
        {"getInstance releaseInstance get* calc* sml*", kPorts,
         [](DataCache&) {
             const std::string name = DataCache::getInstance()->getRootSwitchWwn();
             DataCache::releaseInstance();
             const uint16_t type = DataCache::smlTypeToCIMType(name);
             return DataCache::instance->calcPortWwn(name, "1") +
                    (type == 0 && !lockIsFree() ? " locked" : "");
         },
         "2001001122334401 locked", "|"},
        {"CacheReader", kPorts, [] { return CacheReader().ports().portStatus[1]; }, "10", "|"},
        {"is*", kPorts, &DataCache::isCacheReady, "1", "|"},
        {"health", kPorts,
         [](DataCache&) {
             const Health health = DataCache::health();
             const PassHealth& passes = health.passes();
             return cacheAreaName(passes.area) + std::string(passes.running ? " is read" : "");
         },
         "ports is read", "|"},
        {"idle", kComplete, DataCache::idle, "0", "|"},
        {"waitReady waitIdle", kComplete,
         [] { return 10 * DataCache::waitReady(60000) + DataCache::waitIdle(60000); }, "10", "|"},
        {"snapshot setSnapshots", kPorts,
         [] {
             DataCache::setSnapshots(true);
             const bool published = DataCache::snapshot() != nullptr;
             DataCache::setSnapshots(false);
             return published;
         },
         "0", "|"},
        {"setReadinessCallback", kPorts, [] { DataCache::setReadinessCallback(nullptr, nullptr); }, "", "|"},
        {"workToDo", kPorts, &DataCache::workToDo, "1", "|"},
        {"workToDo", kComplete, &DataCache::workToDo, "0", "|"},
        {"updateSwitch updateChassis updateBlades", kPorts, &DataCache::updateSwitch, "", "|switch"},
        {"updatePorts", kPorts, &DataCache::updatePorts, "", "|"},
        {"updateFabric", kPorts, &DataCache::updateFabric, "", "fabric|"},
        {"updateZoning", kZoning, &DataCache::updateZoning, "", "|"},
        {"updateAccounts", kPorts, &DataCache::updateAccounts, "", "|"},
        {"updateAll", kDispatch, &DataCache::updateAll, "", all + '|'},
        {"localPortRefreshSet", kPorts, [](DataCache& cache) { cache.localPortRefreshSet(); }, "", "|"},
        {"refreshNow", kPorts, DataCache::refreshNow, "", "fabric zoning|switch chassis blades"},
        {"refreshNow", kZoning, DataCache::refreshNow, "", "|switch chassis blades ports fabric"},
        {"refreshNow", kComplete,
         [] {
             from = kComplete;  // and from each one that follows
             DataCache::refreshNow();
         },
         "", '|' + all + ' ' + all + ' ' + all + " without end"},
        {"reloadZoning", kPorts, &DataCache::reloadZoning, "", "zoning|"},
        {"reloadZoning", kZoning, &DataCache::reloadZoning, "", "|"},
        {"reloadZoning", kComplete, &DataCache::reloadZoning, "", "|zoning"},
        {"setRetryInterval setRefreshInterval", kPorts,
         [] { DataCache::setRetryInterval(0), DataCache::setRefreshInterval(0); }, "", "|"},
        {"readAccounts _getAcctInfo", kPorts,
         [this](DataCache& cache) {
             cache.readAccounts();
             cache.startEventMonitor(otherCallback);
             sim.run("step = [{do = 'account_add', name = 'guest'}]");
             const bool both = cache.readAccounts() && cache._getAcctInfo();
             return (both ? "" : "not read ") + otherEvents;
         },
         "DCEventUserAcctAdd", "|"},
        {"startEventMonitor", kPorts, [](DataCache& cache) { return cache.startEventMonitor(otherCallback); },
         "1", "|"},
        {"startVexlib", kPorts, &DataCache::startVexlib, "1", "|"},
        {"vexlibEventKick queueVexlibEvent", kDispatch,
         [](DataCache& cache) { cache.queueVexlibEvent(chassisEvent()); }, "", "chassis|"},
        {"vexlibEventKick queueVexlibEvent", kPorts,
         [](DataCache& cache) { cache.vexlibEventKick(VEX_EVENT_CHASSIS_OPERCHANGE, nullptr, nullptr); }, "",
         "|chassis"},
        {"vexlibNotificationCB", kComplete,
         [](DataCache&) {
             const std::unique_ptr<vex_event_s> event(chassisEvent());
             DataCache::vexlibNotificationCB(nullptr, event.get(), nullptr);
         },
         "", "|chassis"},
        {"evaluateCaches", kDispatch, &DataCache::evaluateCaches, "1", "|"},
        {"evaluateCaches", kPorts, &DataCache::evaluateCaches, "1", "|"},
        {"ZoningSession zoningSession", kPorts, zoningSession, "commit: done", "zoning|"},
        {"ZoningSession zoningSession", kZoning, zoningSession, "commit: done", "|zoning"},
        {"ZoningCache zoningCache", kPorts,
         [](DataCache& cache) {
             ZoningCache& zoning = cache.zoningCache();
             std::string zone = "mine";
             const int locked = zoning.ZoningLock(zone.data());
             const uint32_t created = zoning.createZone(zone.data(), VEX_ZT_SOFT);
             return std::to_string(locked) + std::to_string(created) +
                    std::to_string(zoning.replaceZoningDB()) + std::to_string(zoning.database().zones.size());
         },
         "1012", "|"},
        {"ZoningCache zoningCache", kZoning,
         [](DataCache& cache) {
             cache.zoningCache().clearZoningCache();
             return CacheReader().zoning().database().zones.size();
         },
         "0", "|"},
    };
    std::set<std::string> tried;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.names + std::string(" from ") + eventName(row.event));
        std::istringstream names(row.names);
        for (std::string name; names >> name;) tried.insert(name);
        call = row.call;
        EXPECT_EQ(areasRead(row.event), row.areas);
        EXPECT_EQ(gave, row.gave);
        restart();
    }
    const std::set<std::string> named = tableNames();
    EXPECT_EQ(named, tried);
    for (const std::string& name : publicNames()) {
        const bool inTable = std::any_of(named.begin(), named.end(), [&](const std::string& one) {
            return one.back() == '*' ? name.rfind(one.substr(0, one.size() - 1), 0) == 0 : one == name;
        });
        EXPECT_TRUE(inTable) << name;
    }
}

}  // namespace
