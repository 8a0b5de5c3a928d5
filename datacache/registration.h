#pragma once

#include <cstdint>

namespace datacache {

/** Registers for all events of the cache and logs the codes that the switch refuses. No lock may be needed by
 * another thread meanwhile, as the switch library may notify at once. */
void registerForEvents(uint32_t handle);

/** Registers again for the codes that were refused, and for no others. True when the switch took one. */
bool registerRefused(uint32_t handle);

}  // namespace datacache
