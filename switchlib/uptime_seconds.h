#pragma once

#include "vexlib/vexlib.h"

namespace datacache {

/** Seconds since the system started. */
inline long uptimeSeconds() {
    long seconds = 0;
    uptime(&seconds);
    return seconds;
}

}  // namespace datacache
