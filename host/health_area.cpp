#include <ctime>
#include <iomanip>
#include <sstream>

#include "datacache/DataCache.h"
#include "host/areas.h"

using namespace datacache;

namespace {

/** Local time in ISO 8601 to the second; null for never. */
Json timeOf(WallTime time) {
    if (time == WallTime()) return Json();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    tm local{};
    localtime_r(&seconds, &local);
    std::ostringstream text;
    text << std::put_time(&local, "%Y-%m-%dT%H:%M:%S%z");
    return text.str();
}

Json millisecondsOf(Duration duration) {
    return static_cast<double>(duration.count()) / 1000;
}

Json failureOf(const ReadFailure& failure) {
    if (failure.fault == ReadFault::None) return Json();
    return {{"text", failureText(failure)},
            {"time", timeOf(failure.time)},
            {"call", failure.call},
            {"key", failure.key},
            {"status", static_cast<uint32_t>(failure.status)},
            {"function", failure.function},
            {"line", failure.line}};
}

Json areaOf(CacheArea area, const AreaHealth& health) {
    return {{"name", cacheAreaName(area)},
            {"upToDate", health.upToDate},
            {"marked", health.marked},
            {"lastGoodRead", timeOf(health.lastGoodRead)},
            {"reads", health.reads},
            {"failures", health.failures},
            {"inARow", health.failuresInARow},
            {"gaps", health.gaps},
            {"lastFailure", failureOf(health.lastFailure)},
            {"firstGap", failureOf(health.firstGap)}};
}

}  // namespace

Json healthArea() {
    const Health health = DataCache::health();
    Json areas = Json::array();
    for (size_t i = 0; i < kCacheAreas; ++i)
        areas.push_back(areaOf(static_cast<CacheArea>(i), health.areas[i]));
    const PassHealth& passes = health.passes;
    const EventHealth& events = health.events;
    const CapacityHealth& capacity = health.capacity;
    return {
        {"area", "health"},
        {"upToDate", staleAreas(health).empty()},
        {"connected", health.connection.connected},
        {"connectionAttempts", health.connection.attempts},
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
        {"areas", areas},
    };
}

void printHealth(std::ostream& out, const Json& area) {
    Json shown = area;
    shown.erase("areas");
    // One line each for a person: "count 3, running no, ...".
    for (const char* group : {"passes", "events", "capacity"}) {
        std::string line;
        for (const auto& field : area[group].items()) {
            line += (line.empty() ? "" : ", ") + wordsOf(field.key()) + ' ' + plainText(field.value());
        }
        shown[group] = line;
    }
    Json rows = Json::array();
    for (const Json& one : area["areas"]) {
        Json row = one;
        for (const char* failure : {"lastFailure", "firstGap"}) {
            row[failure] = one[failure].is_null() ? Json() : one[failure]["text"];
        }
        rows.push_back(row);
    }
    shown["areas"] = rows;
    printArea(out, shown);
}
