#pragma once

#include <chrono>

namespace datacache {

/** How long a thread has held the lock, to some milliseconds; negative while nobody does. Takes no lock. Of
 * no use for a host that locks `access_mutex` itself: that is not noted. */
std::chrono::milliseconds accessHeldFor();
/** Whether this thread holds the lock. */
bool holdsAccess();

}  // namespace datacache
