#include "common/changes.h"

#include <chrono>
#include <condition_variable>
#include <new>

#include "common/Mutex.h"

namespace datacache {

namespace {

struct Changes {
    Mutex mutex;
    std::condition_variable announced;
    uint32_t count DC_GUARDED_BY(mutex) = 0;
};

/** Never destroyed: a process that ends while a thread waits would otherwise wait for that thread. */
Changes& changes() {
    alignas(Changes) static unsigned char room[sizeof(Changes)];
    static Changes& all = *new (room) Changes;
    return all;
}

uint32_t changesUntilNow() {
    const Lock guard(changes().mutex);
    return changes().count;
}

}  // namespace

void announceChange() {
    Changes& all = changes();
    const Lock guard(all.mutex);
    ++all.count;
    all.announced.notify_all();
}

bool awaitChange(uint32_t milliseconds, const std::function<bool()>& holds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    Changes& all = changes();
    for (;;) {
        const uint32_t before = changesUntilNow();
        if (holds()) return true;
        Lock guard(all.mutex);
        while (all.count == before) {
            if (guard.waitUntil(all.announced, end) == std::cv_status::timeout && all.count == before) {
                guard.unlock();
                return holds();
            }
        }
    }
}

}  // namespace datacache
