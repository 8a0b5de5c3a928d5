#pragma once

#include "datacache/FabricCache.h"

namespace datacache {

/** Appends a new switch of this name, known to be remote, and gives its record, which the fabric owns. */
SwitchCache& addSwitch(FabricCache& fabric, const Wwn& name);

/** Makes an empty fabric a copy of another, with switches of its own under the same ids. */
void copyFabric(const FabricCache& from, FabricCache& to);

}  // namespace datacache
