#pragma once

#include <cstdint>
#include <vector>

#include "common/Wwn.h"

/** What the cache knows of the local switch itself. Held twice: as read last, and as read before that. */
struct SwitchState {
    bool loaded = false;  ///< read completely at least once
    Wwn switchWwn;
    std::vector<unsigned short> operationalStatus;  ///< CIM OperationalStatus
    bool transparent = false;                       ///< the switch runs in transparent mode
    bool fcoe = false;
    bool ethernetPassthrough = false;
    // New fields are added here, at the end.
};
