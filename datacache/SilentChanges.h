#pragma once

#include <array>
#include <bitset>
#include <cstdint>

#include "datacache/Health.h"
#include "datacache/event_marks.h"

namespace datacache {

/** What a read of an area found to differ from the read before. */
struct Difference {
    using Words = char[sizeof AreaHealth::silentChange];

    bool any = false;
    Words words = {};     ///< the first difference, for an area other than the ports
    PortSet portsRead{};  ///< ports: those that this read asked for
    PortSet ports{};      ///< ports: those that differ
    /** Ports: what differs of each, a set of PortDifference. */
    std::array<uint8_t, kPortRows> ofPort{};
};

enum PortDifference : uint8_t { PORT_STATUS = 1, PORT_TYPE = 2, PORT_TRANSCEIVER = 4 };

/**
 * Decides which differences were silent: those of which no switch event told before the pass after the read
 * had ended. Not locked; its owner sees to that. Takes no memory.
 */
class SilentChanges {
  public:
    /** An event tells of a change, which takes back what a read found there before. */
    void announced(const EventMarks& marks);
    /** A read found a difference, or none: what was announced of the area until then is spent. */
    void found(CacheArea area, const Difference& difference);
    void beginPass() { ++_passes; }
    /** Counts in `areas` the differences that nobody announced. */
    void endPass(std::array<AreaHealth, kCacheAreas>& areas);

  private:
    struct Suspect {
        bool any = false;
        uint32_t pass = 0;  ///< the newest pass that had begun when it was found
        WallTime time{};
        Difference::Words words = {};
        PortSet ports;
    };

    void suspect(CacheArea area, const Difference& difference);

    uint32_t _passes = 0;
    std::bitset<kCacheAreas> _announced;
    PortSet _portsAnnounced;
    /** Found in the pass before the running one or earlier, then in the running one. */
    std::array<std::array<Suspect, 2>, kCacheAreas> _suspects;
    std::array<uint8_t, kPortRows> _ofPort{};  ///< of the ports among the suspects
};

}  // namespace datacache
