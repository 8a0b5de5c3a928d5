#include "report/clock.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <deque>
#include <map>
#include <string_view>
#include <tuple>
#include <utility>

namespace report {

namespace {

constexpr WallTime kSecond = 1'000'000'000;
constexpr WallTime kLatest = 4'000'000'000 * kSecond;  ///< less than half of what a WallTime can tell
constexpr uint64_t kMainThread = 1;

/** The end of a call, and its kind: its function and first key. */
struct CallEnd {
    uint64_t time;
    std::string kind;
};

/** From a notification, or from the beginning, to the next one. */
struct Interval {
    uint64_t begin = 0;
    std::vector<CallEnd> calls;  ///< in order
};

std::string firstKey(const recording::Record& call) {
    const auto* const entries = std::get_if<recording::SmlEntries>(&call.in("records"));
    return entries == nullptr || entries->empty() ? "" : entries->front().key;
}

std::vector<Interval> intervalsOf(const recording::Recording& recording) {
    std::vector<Interval> intervals(1);
    std::vector<CallEnd> ends;
    for (const recording::Record& record : recording.records) {
        if (record.kind == recording::Record::Kind::Notification) {
            // Two that overlap may have returned in the other order.
            intervals.push_back({std::max(record.time, intervals.back().begin), {}});
        } else if (record.kind == recording::Record::Kind::Call) {
            const std::string key = firstKey(record);
            if (record.thread == kMainThread && key.find("PotentialUser") == std::string::npos) continue;
            ends.push_back({record.time + record.took, record.function->name + key});
        }
    }
    std::sort(ends.begin(), ends.end(), [](const CallEnd& one, const CallEnd& other) {
        return std::tie(one.time, one.kind) < std::tie(other.time, other.kind);
    });
    size_t current = 0;
    for (CallEnd& end : ends) {
        while (current + 1 < intervals.size() && intervals[current + 1].begin <= end.time) ++current;
        intervals[current].calls.push_back(std::move(end));
    }
    return intervals;
}

}  // namespace

WallTime now() {
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return static_cast<WallTime>(time.tv_sec) * kSecond + time.tv_nsec;
}

std::string localTime(WallTime time) {
    const auto seconds = static_cast<std::time_t>(time / kSecond);
    tm local{};
    localtime_r(&seconds, &local);
    char date[32];
    char zone[8];
    std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &local);
    std::strftime(zone, sizeof zone, "%z", &local);
    char text[64];
    std::snprintf(text, sizeof text, "%s.%03d%.3s:%s", date, static_cast<int>(time % kSecond / 1'000'000),
                  zone, zone + 3);
    return text;
}

WallTime beginOf(const recording::Header& header) {
    tm parts{};
    const char* const rest = strptime(header.time.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
    if (rest == nullptr) return 0;
    const WallTime seconds = timegm(&parts);
    if (seconds < 0 || seconds >= kLatest / kSecond) return 0;
    WallTime begin = seconds * kSecond;
    WallTime digit = kSecond / 10;
    if (*rest != '.') return begin;
    for (const char* at = rest + 1; *at >= '0' && *at <= '9'; ++at, digit /= 10) begin += (*at - '0') * digit;
    return begin;
}

WallTime timeAfter(WallTime begin, uint64_t nanoseconds) {
    return begin + static_cast<WallTime>(std::min<uint64_t>(nanoseconds, kLatest));
}

ClockMap::ClockMap(const recording::Recording& recorded, const recording::Recording& replayed) {
    const std::vector<Interval> told = intervalsOf(recorded);
    const std::vector<Interval> replay = intervalsOf(replayed);
    uint64_t latest = 0;
    const auto add = [&](uint64_t time, uint64_t toldTime) {
        latest = std::max(latest, toldTime);
        _pairs.push_back({time, latest});
    };
    for (size_t i = 0; i < replay.size(); ++i) {
        std::map<std::string_view, std::deque<uint64_t>> ends;
        if (i < told.size()) {
            for (const CallEnd& call : told[i].calls) ends[call.kind].push_back(call.time);
        }
        add(replay[i].begin, i < told.size() ? told[i].begin : latest);
        for (const CallEnd& call : replay[i].calls) {
            std::deque<uint64_t>& same = ends[call.kind];
            add(call.time, same.empty() ? latest : same.front());
            if (!same.empty()) same.pop_front();
        }
    }
}

uint64_t ClockMap::recordedTime(uint64_t replayedTime) const {
    const auto after = std::upper_bound(_pairs.begin(), _pairs.end(), replayedTime,
                                        [](uint64_t time, const Pair& pair) { return time < pair.replayed; });
    return after == _pairs.begin() ? 0 : (after - 1)->recorded;
}

}  // namespace report
