#include <cstdio>
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

/** Areas that the passes read. */
constexpr CacheArea kPassAreas[] = {CacheArea::Switch, CacheArea::Chassis, CacheArea::Blades,
                                    CacheArea::Ports,  CacheArea::Fabric,  CacheArea::Zoning};

std::optional<CacheArea> areaNamed(const std::string& name) {
    for (size_t i = 0; i < kCacheAreas; ++i) {
        if (name == cacheAreaName(static_cast<CacheArea>(i))) return static_cast<CacheArea>(i);
    }
    return std::nullopt;
}

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

bool upToDate(CacheArea area) {
    return DataCache::health()[area].upToDate;
}

std::vector<std::string> staleAreas(const Health& health) {
    std::vector<std::string> names;
    for (const CacheArea area : kPassAreas) {
        if (health[area].reads == 0 || health[area].failuresInARow != 0)
            names.emplace_back(cacheAreaName(area));
    }
    return names;
}

std::string staleReason(const std::string& name) {
    const std::optional<CacheArea> area = areaNamed(name);
    const Health health = DataCache::health();
    std::string reason = name + " is not up to date";
    if (!area) return reason;
    const AreaHealth& state = health[*area];
    if (state.failuresInARow != 0) return reason + ": " + failureText(state.lastFailure);
    if (state.reads == 0) return reason + ": it was not read yet";
    return reason + ": it changed since it was read";
}

void warnOfCapacity() {
    static bool told[5];
    const CapacityHealth capacity = DataCache::health().capacity();
    const auto warn = [](bool& known, bool now, const std::string& text) {
        if (now && !known) std::cerr << "datacache-host: " << text << std::endl;
        known = now;
    };
    warn(
        told[0], capacity.domainListFull,
        "the fabric may be larger than what is shown: the switch's list of domains fills its 255 characters, "
        "and its last number may be cut");
    warn(told[1], capacity.portEntriesBeyond != 0,
         std::to_string(capacity.portEntriesBeyond) +
             " ports of other switches are not shown: the cache holds 256 a switch");
    warn(told[2], capacity.localPortsBeyond != 0,
         std::to_string(capacity.localPortsBeyond) + " local ports are not shown: the cache holds 128");
    warn(told[4], capacity.switchesGivenUp != 0,
         "the ports of " + std::to_string(capacity.switchesGivenUp) +
             " switches are not read any more: their management server kept failing");
    warn(told[3], capacity.slotsBeyond != 0,
         std::to_string(capacity.slotsBeyond) + " slots are not shown: the cache holds 32");
}

void reportStale(const std::string& area) {
    std::cerr << "datacache-host: " << staleReason(area) << std::endl;
}

Json healthArea() {
    const Health health = DataCache::health();
    Json areas = Json::array();
    for (size_t i = 0; i < kCacheAreas; ++i)
        areas.push_back(areaOf(static_cast<CacheArea>(i), health[static_cast<CacheArea>(i)]));
    const PassHealth& passes = health.passes();
    const EventHealth& events = health.events();
    const CapacityHealth& capacity = health.capacity();
    return {
        {"area", "health"},
        {"upToDate", staleAreas(health).empty()},
        {"connected", health.connection().connected},
        {"connectionAttempts", health.connection().attempts},
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
            line +=
                (line.empty() ? "" : ", ") + report::wordsOf(field.key()) + ' ' + plainText(field.value());
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

}  // namespace host
