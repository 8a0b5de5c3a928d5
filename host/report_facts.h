#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "host/EventQueue.h"
#include "host/request.h"

namespace host {

/** What was seen of the switch. */
struct Witnessed {
    std::deque<HostEvent> events;    ///< the newest of those that the cache told
    std::vector<Json> areas;         ///< those that could be read
    std::optional<Json> graph;       ///< of the fabric
    std::string log;                 ///< its end, before anything was read for the report alone
    std::string trouble;             ///< why the switch could not be read; empty where it was
    std::vector<std::string> notes;  ///< what else the reader of the report must know
};

/** The end of the cache's log, and of the file before it. */
std::string logTail();

/** All that a report says, with secrets masked unless the user wants them shown. Throws
 * recording::RecordingError. */
Json reportFacts(const HostRequest& request, const Witnessed& seen);

}  // namespace host
