#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/Wwn.h"
#include "datacache/BladeState.h"
#include "datacache/ChassisState.h"
#include "datacache/FabricCache.h"
#include "datacache/PortState.h"
#include "datacache/SilentChanges.h"
#include "datacache/SwitchState.h"

namespace datacache {

/** What the switch says of its zoning without handing it out. */
struct ZoningPrint {
    uint32_t activeName = 0;  ///< a number that stands for the active zoneset's name
    uint32_t activeChecksum = 0;
    uint32_t inactiveChecksum = 0;
};

/** A number that stands for a text, for comparisons. */
uint32_t printOf(std::string_view text);

/**
 * Numbers that stand for what the last good read of each area found, so that the next one can be compared
 * with it without a copy. Each function compares, keeps the new state, and says the first difference in
 * words; the first read of an area differs from nothing. The prints take no memory; the caller holds the
 * access lock.
 */
class AreaPrints {
  public:
    /** `faults` are the chassis's, which the switch's status repeats; they are not compared here. */
    Difference compare(const SwitchState& state, const std::vector<unsigned short>& faults);
    Difference compare(const ChassisState& state);
    Difference compare(const BladeState& state);
    /** `read` are the ports that this scan asked for; the others are compared the next time that they are. */
    Difference compare(const PortState& ports, const TransceiverState& media, const PortSet& read);
    Difference compare(const std::vector<std::string>& accounts);
    /** Remote switches alone, as the local one's ports are the ports area's; and not the ports of a switch
     * whose management server failed. */
    Difference compare(const FabricCache& fabric);
    Difference compare(const ZoningPrint& zoning);

  private:
    struct Switch {
        uint32_t name = 0, status = 0, faults = 0, mode = 0;
    };
    struct Chassis {
        uint32_t supplies = 0, fans = 0, faults = 0;
        std::array<uint16_t, kMaxChassisParts> supply{}, fan{};
    };
    struct Blades {
        uint32_t slots = 0;
        std::array<uint32_t, kMaxSlots> slot{};
    };
    struct Port {
        bool known = false;
        uint32_t status = 0, type = 0, transceiver = 0;
    };
    struct Member {
        Wwn name;
        uint32_t domain = 0, ports = 0;
        bool portsKnown = false;
    };
    struct Fabric {
        Wwn name;
        uint32_t count = 0;
        std::array<Member, 256> members;  ///< a fabric has 239 domains at most

        const Member* find(const Wwn& wanted) const;
    };

    std::optional<Switch> _switch;
    std::optional<Chassis> _chassis;
    std::optional<Blades> _blades;
    std::array<Port, kPortRows> _ports;
    std::optional<uint32_t> _accounts;
    bool _fabricKnown = false;
    Fabric _fabric, _fabricNow;  ///< both here, as they are too large for the evaluation thread's stack
    std::optional<ZoningPrint> _zoning;
};

}  // namespace datacache
