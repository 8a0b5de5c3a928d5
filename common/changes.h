#pragma once

#include <cstdint>
#include <functional>

namespace datacache {

/** Wakes whoever waits in awaitChange(): the cache became idle, or ready, or may have. Takes a mutex of its
 * own, below all others, for a moment. */
void announceChange();

/** Waits until `holds` gives true, which it is asked after each change, or the time has passed. Gives what it
 * said last. Call it without the access lock. */
bool awaitChange(uint32_t milliseconds, const std::function<bool()>& holds);

}  // namespace datacache
