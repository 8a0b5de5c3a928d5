#pragma once

#include <vector>

#include "report/clock.h"
#include "report/secrets.h"

namespace report {

/** An evaluation pass, as its calls show it. */
struct Pass {
    uint64_t begin = 0;  ///< on the recording's clock, as the end
    uint64_t end = 0;
    bool complete = false;                        ///< the cache said at its end that it is up to date
    std::vector<const recording::Record*> calls;  ///< of the evaluation thread
};

/**
 * The passes of a recording. The evaluation thread is the first that reads keys once events are registered
 * for. A pass ends where the thread was idle for a while, where the host was told that the cache is up to
 * date
 * (`completions`, times on the recording's clock in order), and where the recording ends.
 */
std::vector<Pass> passesOf(const recording::Recording& recording, const std::vector<uint64_t>& completions);

/** Something that happened. `fields` begins with its "kind". */
struct Happening {
    WallTime time = 0;
    Json fields;
};

/** What a switch event is called. */
using EventNames = const char* (*)(int32_t code);

/** The switch events and passes of a recording, which began at `begin`; less the passes that found nothing to
 * read. */
std::vector<Happening> happeningsOf(const recording::Recording& recording, WallTime begin,
                                    const std::vector<Pass>& passes, EventNames names,
                                    const Secrets& secrets);

/**
 * All that happened in order of time: "entries", each with "time" and the fields, of which the newest `most`
 * are kept, and how many earlier ones are "leftOut".
 */
Json timelineOf(std::vector<Happening> happenings, size_t most);

}  // namespace report
