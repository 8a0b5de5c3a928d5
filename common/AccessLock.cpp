#include "common/AccessLock.h"
#include "common/access_holder.h"

#include <atomic>
#include <cstdint>
#include <ctime>

pthread_mutex_t access_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
pthread_mutexattr_t access_mutex_attr;

namespace datacache {

namespace {

/** When the lock was taken, 0 while it is free. 32 bits wrap after 49 days, but 64 are no atomic on PowerPC.
 */
std::atomic<uint32_t> heldSince{0};
thread_local uint32_t depth = 0;

uint32_t milliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<uint32_t>(now.tv_sec) * 1000U + static_cast<uint32_t>(now.tv_nsec / 1'000'000);
}

}  // namespace

void lockAccess() DC_NO_THREAD_SAFETY_ANALYSIS {
    pthread_mutex_lock(&access_mutex);
    if (++depth == 1) heldSince.store(milliseconds() | 1U, std::memory_order_relaxed);
}

void unlockAccess() DC_NO_THREAD_SAFETY_ANALYSIS {
    if (depth != 0 && --depth == 0) heldSince.store(0, std::memory_order_relaxed);
    pthread_mutex_unlock(&access_mutex);
}

std::chrono::milliseconds accessHeldFor() {
    const uint32_t since = heldSince.load(std::memory_order_relaxed);
    if (since == 0) return std::chrono::milliseconds(-1);
    // Two readings of a coarse clock may differ by the bit that marks the lock as held.
    const auto age = static_cast<int32_t>(milliseconds() - since);
    return std::chrono::milliseconds(age < 0 ? 0 : age);
}

bool holdsAccess() {
    return depth != 0;
}

}  // namespace datacache
