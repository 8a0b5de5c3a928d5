#pragma once

#include "datacache/Health.h"

namespace datacache {

/** All that a Health shows. Hosts see it through Health alone, so it may change at any time. */
struct HealthRecord {
    static constexpr size_t kMostCalls = 8;

    WallTime time{};
    ConnectionHealth connection;
    RegistrationHealth registration;
    LimitsHealth limits;
    std::array<AreaHealth, kCacheAreas> areas;
    PassHealth passes;
    EventHealth events;
    CapacityHealth capacity;
    LockHealth lock;
    uint32_t pendingCalls = 0;
    std::array<PendingCall, kMostCalls> calls;

    const AreaHealth& operator[](CacheArea area) const { return areas[static_cast<size_t>(area)]; }
    AreaHealth& operator[](CacheArea area) { return areas[static_cast<size_t>(area)]; }
};

}  // namespace datacache
