#pragma once

#include <cstdint>
#include <string>

#include "common/Wwn.h"
#include "common/export.h"

/**
 * A port of a switch, as lookups answer it: a small value, made on request and stored nowhere. One whose name
 * is null is the null port, the answer of every lookup that fails.
 */
class DC_EXPORT PortCache {
  public:
    PortCache();
    PortCache(const Wwn& name, unsigned short index);

    bool isNull() const;
    /** The index in the switch's list of ports. */
    uint16_t getPortIndex() const;
    /** The port's name as 16 hexadecimal digits; empty for the null port. */
    std::string getWwn() const;

    Wwn _wwn;
    uint16_t _port_index = 0;  ///< the port's number in the port list of its switch (LSDB port index)
    uint32_t _unused = 0;      ///< always 0
    std::string _unusedText;   ///< always empty
};
