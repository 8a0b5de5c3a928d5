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

/** When a recording began; 0 for a header without a time, or with one that no clock shows. */
WallTime beginOf(const recording::Header& header);

/** So long after a recording's begin; a recording may tell any time. */
WallTime timeAfter(WallTime begin, uint64_t nanoseconds);

/**
 * Brings times of a replay to those of the recording that was replayed.
 *
 * The notifications are the same in both. Between two of them the cache makes the same calls but for a few,
 * as objects may be found at other addresses; so what happened in the replay after the third call of a kind
 * happened in the recording after the third call of that kind. Of the main thread's calls only those count
 * that read the accounts, as another host makes other ones.
 */
class ClockMap {
  public:
    ClockMap(const recording::Recording& recorded, const recording::Recording& replayed);

    /** Times on the two recordings' own clocks; order is kept. */
    uint64_t recordedTime(uint64_t replayedTime) const;

  private:
    struct Pair {
        uint64_t replayed;
        uint64_t recorded;
    };
    std::vector<Pair> _pairs;  ///< in order of both
};

}  // namespace report
