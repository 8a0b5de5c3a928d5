#pragma once

#include "common/Wwn.h"
#include "datacache/PortState.h"

namespace datacache {

/**
 * The name of a local port of the switch of this name; null where there is no such port, and for every port
 * while the name from which they are derived is not known. Throws std::out_of_range "bitset::test" above 255.
 */
Wwn localPortName(const PortState& ports, const Wwn& switchName, unsigned port);

}  // namespace datacache
