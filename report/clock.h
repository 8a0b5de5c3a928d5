#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recording/Reader.h"

namespace report {

/** Nanoseconds since 1970, UTC. */
using WallTime = int64_t;

WallTime now();

/** Local time in ISO 8601 with milliseconds and offset. */
std::string localTime(WallTime time);

/** When a recording began; 0 for a header without a time. */
WallTime beginOf(const recording::Header& header);

/**
 * Brings times of a replay to those of the recording that was replayed.
 *
 * The notifications are the same in both, and so, between two of them, are the calls that the cache's
 * threads make and those that read the accounts: what happened in the replay behind so many of either
 * happened in the recording behind the same. The main thread's other calls do not count, as another host
 * makes other ones.
 */
class ClockMap {
  public:
    ClockMap(const recording::Recording& recorded, const recording::Recording& replayed);

    /** Times on the two recordings' own clocks; order is kept. */
    uint64_t recordedTime(uint64_t replayedTime) const;

  private:
    /** From a notification, or from the beginning, to the next one. */
    struct Interval {
        uint64_t begin = 0;
        std::vector<uint64_t> calls;  ///< their ends, in order
    };
    static std::vector<Interval> intervalsOf(const recording::Recording& recording);

    const std::vector<Interval> _recorded;
    const std::vector<Interval> _replayed;
};

}  // namespace report
