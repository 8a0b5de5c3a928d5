#include "datacache/AreaRow.h"
#include "datacache/HealthMonitor.h"
#include "datacache/bit_sets.h"
#include "datacache/wake_ups.h"

using namespace datacache;

bool DataCache::workToDo() {
    const AccessGuard guard;
    for (const CacheArea area : kAllCacheAreas) {
        if (this->*_rowOf(area).update) return true;
    }
    return false;
}

void DataCache::updateAll() {
    const AccessGuard guard;
    for (const CacheArea area : kAllCacheAreas) _markArea(area, {});
}

void DataCache::updateSwitch() {
    const AccessGuard guard;
    _markArea(CacheArea::Switch, {});
}

void DataCache::updateChassis() {
    const AccessGuard guard;
    _markArea(CacheArea::Chassis, {});
}

void DataCache::updateBlades() {
    const AccessGuard guard;
    _markArea(CacheArea::Blades, {});
}

void DataCache::updatePorts() {
    const AccessGuard guard;
    _markArea(CacheArea::Ports, {});
}

void DataCache::updateFabric() {
    const AccessGuard guard;
    _markArea(CacheArea::Fabric, {});
}

void DataCache::updateAccounts() {
    const AccessGuard guard;
    _markArea(CacheArea::Accounts, {});
}

void DataCache::updateZoning() {
    const AccessGuard guard;
    _markArea(CacheArea::Zoning, {});
}

void DataCache::reloadZoning() {
    const AccessGuard guard;
    _zoningCache._markForReload();
    updateZoning();
    wakeEvaluation();
}

void DataCache::localPortRefreshSet() {
    const AccessGuard guard;
    _localPortRefresh.set();
}

void DataCache::localPortRefreshSet(int port) {
    const AccessGuard guard;
    bitSet(_localPortRefresh, static_cast<size_t>(port));
}

void DataCache::refreshNow() {
    const AccessGuard guard;
    if (instance == nullptr) return;
    instance->updateAll();
    instance->localPortRefreshSet();
    instance->_zoningCache._wantMissingActive();
    wakeEvaluation();
}

void DataCache::setRetryInterval(uint32_t seconds) {
    setEvaluationRetry(seconds);
}

void DataCache::setRefreshInterval(uint32_t seconds) {
    setEvaluationRefresh(seconds);
}
