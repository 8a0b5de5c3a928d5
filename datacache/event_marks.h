#pragma once

#include <bitset>
#include <cstdint>

#include "datacache/Health.h"
#include "datacache/PortState.h"
#include "vexlib/vexlib.h"

namespace datacache {

/** Local ports, by their index. */
using PortSet = std::bitset<kPortRows>;

/** What a switch event says has changed: the areas that the next pass must read. */
struct EventMarks {
    std::bitset<kCacheAreas> areas;  ///< by CacheArea
    bool allPorts = false;           ///< every local port is to be read
    int32_t port = -1;               ///< the one local port to be read, or -1
    int32_t transceiver = -1;        ///< the local port whose transceiver the event itself tells of, or -1

    bool has(CacheArea area) const { return areas[static_cast<size_t>(area)]; }
    /** The ports of which it tells, their transceivers included. */
    PortSet ports() const;
};

/** Reads an event, whose source and text are anything. Ports outside the tables are left as they are. */
EventMarks marksOf(const vex_event_s& event);

}  // namespace datacache
