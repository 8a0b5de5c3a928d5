#include <algorithm>
#include <ctime>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "datacache/DataCache.h"
#include "host/areas.h"
#include "report/fields.h"

namespace host {

using namespace datacache;

namespace {

Json millisecondsOf(Duration duration) {
    return static_cast<double>(duration.count()) / 1000;
}

Json failureOf(const ReadFailure& failure) {
    if (failure.fault == ReadFault::None) return Json();
    return {{"text", failureText(failure)},
            {"time", timeOf(failure.time)},
            {"fault", readFaultName(failure.fault)},
            {"call", failure.call},
            {"key", failure.key},
            {"keys", failure.keys},
            {"status", static_cast<uint32_t>(failure.status)},
            {"function", failure.function},
            {"line", failure.line}};
}

/** By what the area is marked: "event 33", "host", ...; null where it is not. */
Json causeOf(const AreaHealth& health) {
    if (!health.marked) return Json();
    const std::string cause = markCauseName(health.markedBy);
    return health.markedBy == MarkCause::Event ? cause + ' ' + std::to_string(health.markedByEvent) : cause;
}

Json areaOf(CacheArea area, const AreaHealth& health) {
    return {{"name", cacheAreaName(area)},
            {"upToDate", health.upToDate},
            {"staleSince", timeOf(health.staleSince)},
            {"marked", health.marked},
            {"markedSince", timeOf(health.markedSince)},
            {"markedBy", causeOf(health)},
            {"lastGoodRead", timeOf(health.lastGoodRead)},
            {"reads", health.reads},
            {"failures", health.failures},
            {"inARow", health.failuresInARow},
            {"gaps", health.gaps},
            {"lastFailure", failureOf(health.lastFailure)},
            {"firstGap", failureOf(health.firstGap)},
            {"silentChanges", health.silentChanges},
            {"lastSilentChange", timeOf(health.lastSilentChange)},
            {"silentChange", health.silentChanges == 0 ? Json() : Json(health.silentChange)}};
}

Json registrationOf(const RegistrationHealth& registration) {
    Json codes = Json::array();
    for (size_t i = 0; i < registration.refused; ++i) codes.push_back(registration.refusedCodes[i]);
    return {{"attempts", registration.attempts}, {"result", registration.result}, {"refusedCodes", codes}};
}

Json lockOf(const LockHealth& lock) {
    return {{"holder", lockHolderName(lock.holder)},
            {"since", timeOf(lock.since)},
            {"area", lock.inArea ? Json(cacheAreaName(lock.area)) : Json()},
            {"step", lock.step}};
}

Json pendingCallsOf(const Health& health) {
    Json calls = Json::array();
    for (uint32_t i = 0; i < health.pendingCalls(); ++i) {
        const PendingCall& call = health.pendingCall(i);
        calls.push_back(
            {{"call", call.call}, {"key", call.key}, {"keys", call.keys}, {"since", timeOf(call.since)}});
    }
    return calls;
}

bool contains(const std::vector<std::string>& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

}  // namespace

Json timeOf(WallTime time) {
    if (time == WallTime()) return Json();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    tm local{};
    localtime_r(&seconds, &local);
    std::ostringstream text;
    text << std::put_time(&local, "%Y-%m-%dT%H:%M:%S%z");
    return text.str();
}

bool upToDate(CacheArea area) {
    return DataCache::health()[area].upToDate;
}

std::vector<std::string> staleAreas(const Health& health) {
    std::vector<std::string> names;
    for (const CacheArea area : kAllCacheAreas) {
        if (area == CacheArea::Accounts) continue;  // no pass reads them
        if (health[area].reads == 0 || health[area].failuresInARow != 0)
            names.emplace_back(cacheAreaName(area));
    }
    return names;
}

std::string staleReason(const std::string& name) {
    for (const CacheArea area : kAllCacheAreas) {
        if (name != cacheAreaName(area)) continue;
        const std::vector<std::string> problems = DataCache::health().problems(area);
        if (!problems.empty()) return problems.front();
    }
    return name + " is not up to date";  // the failure is mended, or the area was never read
}

void warnOfCapacity() {
    static std::vector<std::string> told;
    const std::vector<std::string> problems = DataCache::health().capacity().problems();
    for (const std::string& problem : problems) {
        if (!contains(told, problem)) std::cerr << "datacache-host: " << problem << std::endl;
    }
    told = problems;
}

void reportStale(const std::string& area) {
    std::cerr << "datacache-host: " << staleReason(area) << std::endl;
}

Json healthArea() {
    const Health health = DataCache::health();
    Json areas = Json::array();
    for (const CacheArea area : kAllCacheAreas) areas.push_back(areaOf(area, health[area]));
    const ConnectionHealth& connection = health.connection();
    const PassHealth& passes = health.passes();
    const EventHealth& events = health.events();
    const CapacityHealth& capacity = health.capacity();
    return {
        {"area", "health"},
        {"time", timeOf(health.time())},
        {"well", health.well()},
        {"problems", health.problems()},
        {"ready", passes.ready},
        {"idle", DataCache::idle()},
        {"connection",
         {{"connected", connection.connected},
          {"attempts", connection.attempts},
          {"lastResult", connection.lastResult},
          {"failuresInARow", connection.failuresInARow},
          {"lastFailure", connection.lastFailure},
          {"failingSince", timeOf(connection.failingSince)}}},
        {"registration", registrationOf(health.registration())},
        {"limits",
         {{"attempts", health.limits().attempts},
          {"read", health.limits().read},
          {"failure", failureOf(health.limits().failure)}}},
        {"thread", {{"asked", passes.threadAsked}, {"made", passes.threadMade}}},
        {"passes",
         {{"count", passes.count},
          {"running", passes.running},
          {"runningSince", passes.running ? timeOf(passes.runningSince) : Json()},
          {"runningArea", passes.running && passes.inArea ? Json(cacheAreaName(passes.area)) : Json()},
          {"lastMilliseconds", millisecondsOf(passes.last)},
          {"lastCalls", passes.lastCalls},
          {"longestMilliseconds", millisecondsOf(passes.longest)},
          {"longestArea", cacheAreaName(passes.longestArea)},
          {"longestCalls", passes.longestCalls}}},
        {"events",
         {{"received", events.received},
          {"queued", events.queued},
          {"dropped", events.dropped},
          {"waiting", events.waiting},
          {"mostWaiting", events.mostWaiting}}},
        {"capacity",
         {{"complete", capacity.complete()},
          {"domainListFull", capacity.domainListFull},
          {"portEntriesBeyond", capacity.portEntriesBeyond},
          {"localPortsBeyond", capacity.localPortsBeyond},
          {"slotsBeyond", capacity.slotsBeyond},
          {"switchesGivenUp", capacity.switchesGivenUp}}},
        {"lock", lockOf(health.lock())},
        {"pendingCalls", pendingCallsOf(health)},
        {"areas", areas},
    };
}

namespace {

/** A failure's sentence, or nothing. */
Json textOf(const Json& failure) {
    return failure.is_null() ? Json() : failure["text"];
}

/** "count 3, running no, ..." */
std::string lineOf(const Json& group) {
    std::string line;
    for (const auto& [name, value] : group.items()) {
        const Json& shown = name == "failure" ? textOf(value) : value;
        line += (line.empty() ? "" : ", ") + report::wordsOf(name) + ' ' + plainText(shown);
    }
    return line;
}

/** One row of the table of areas, for people. */
Json rowOf(const Json& area) {
    const auto both = [&](const char* first, const char* joint, const char* second) -> Json {
        if (area[second].is_null()) return Json();
        return plainText(area[first]) + joint + plainText(area[second]);
    };
    return {{"name", area["name"]},
            {"upToDate", area["upToDate"]},
            {"staleSince", area["staleSince"]},
            {"marked", both("markedSince", " by ", "markedBy")},
            {"lastGoodRead", area["lastGoodRead"]},
            {"reads", area["reads"]},
            {"failures", area["failures"]},
            {"inARow", area["inARow"]},
            {"gaps", area["gaps"]},
            {"lastFailure", textOf(area["lastFailure"])},
            {"firstGap", textOf(area["firstGap"])},
            {"silentChanges", area["silentChanges"]},
            {"lastSilentChange", both("lastSilentChange", " ", "silentChange")}};
}

}  // namespace

void printHealth(std::ostream& out, const Json& area) {
    Json shown;
    for (const auto& [name, value] : area.items()) {
        if (name == "problems") {
            for (size_t i = 0; i < value.size(); ++i) shown["problem " + std::to_string(i + 1)] = value[i];
        } else if (name == "areas") {
            for (const Json& one : value) shown[name].push_back(rowOf(one));
        } else {
            shown[name] = value.is_object() ? Json(lineOf(value)) : value;
        }
    }
    printArea(out, shown);
}

}  // namespace host
