#include "report/clock.h"

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace report {

namespace {

constexpr WallTime kSecond = 1'000'000'000;
constexpr uint64_t kMainThread = 1;

bool readsAccounts(const recording::Record& call) {
    const auto* const entries = std::get_if<recording::SmlEntries>(&call.in("records"));
    return entries != nullptr && !entries->empty() &&
           entries->front().key.find("PotentialUser") != std::string::npos;
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
    WallTime begin = static_cast<WallTime>(timegm(&parts)) * kSecond;
    WallTime digit = kSecond / 10;
    if (*rest != '.') return begin;
    for (const char* at = rest + 1; *at >= '0' && *at <= '9'; ++at, digit /= 10) begin += (*at - '0') * digit;
    return begin;
}

std::vector<ClockMap::Interval> ClockMap::intervalsOf(const recording::Recording& recording) {
    std::vector<Interval> intervals(1);
    std::vector<uint64_t> ends;
    for (const recording::Record& record : recording.records) {
        if (record.kind == recording::Record::Kind::Notification) {
            // Two that overlap may have returned in the other order.
            intervals.push_back({std::max(record.time, intervals.back().begin), {}});
        } else if (record.kind == recording::Record::Kind::Call &&
                   (record.thread != kMainThread || readsAccounts(record))) {
            ends.push_back(record.time + record.took);
        }
    }
    std::sort(ends.begin(), ends.end());
    size_t current = 0;
    for (const uint64_t end : ends) {
        while (current + 1 < intervals.size() && intervals[current + 1].begin <= end) ++current;
        intervals[current].calls.push_back(end);
    }
    return intervals;
}

ClockMap::ClockMap(const recording::Recording& recorded, const recording::Recording& replayed)
    : _recorded(intervalsOf(recorded)), _replayed(intervalsOf(replayed)) {}

uint64_t ClockMap::recordedTime(uint64_t replayedTime) const {
    size_t at = 0;
    while (at + 1 < _replayed.size() && _replayed[at + 1].begin <= replayedTime) ++at;
    const std::vector<uint64_t>& made = _replayed[at].calls;
    const auto calls =
        static_cast<size_t>(std::upper_bound(made.begin(), made.end(), replayedTime) - made.begin());
    const Interval& interval = _recorded[std::min(at, _recorded.size() - 1)];
    if (calls == 0 || interval.calls.empty()) return interval.begin;
    return interval.calls[std::min(calls, interval.calls.size()) - 1];
}

}  // namespace report
