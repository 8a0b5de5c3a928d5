#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"

using datacache::HealthMonitor;

bool DataCache::isCacheReady() {
    const AccessGuard guard;
    return _cacheReady;
}

datacache::Health DataCache::health() {
    return HealthMonitor::instance().copy();
}

bool DataCache::idle() {
    // Events are asked for before, as one that no longer waits was taken up by a pass, which still shows in
    // the second test; and after, as one may have come while that pass ended.
    HealthMonitor& health = HealthMonitor::instance();
    return health.noEventWaits() && evaluationIdle() && health.noEventWaits();
}

void DataCache::refreshNow() {
    const AccessGuard guard;
    if (instance == nullptr) return;
    instance->updateAll();
    instance->localPortRefreshSet();
    wakeEvaluation();
}

void DataCache::setRetryInterval(uint32_t seconds) {
    setEvaluationRetry(seconds);
}
