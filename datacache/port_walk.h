#pragma once

#include "datacache/PortState.h"

namespace datacache {

/** The first port from `from` on that exists and is no pass-through port, or kPortRows. */
unsigned nextRootPort(const PortState& ports, unsigned from);

}  // namespace datacache
