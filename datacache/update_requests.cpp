#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/bit_sets.h"

using namespace datacache;

bool DataCache::workToDo() {
    const AccessGuard guard;
    return _switchUpdate || _chassisUpdate || _bladesUpdate || _portsUpdate || _fabricUpdate ||
           _accountsUpdate || _zoningUpdate;
}

void DataCache::_mark(bool& flag, CacheArea area) {
    flag = true;
    HealthMonitor::instance().mark(area);
}

void DataCache::updateAll() {
    const AccessGuard guard;
    updateSwitch();
    updateChassis();
    updateBlades();
    updatePorts();
    updateFabric();
    updateAccounts();
    updateZoning();
}

void DataCache::updateSwitch() {
    const AccessGuard guard;
    _mark(_switchUpdate, CacheArea::Switch);
}

void DataCache::updateChassis() {
    const AccessGuard guard;
    _mark(_chassisUpdate, CacheArea::Chassis);
}

void DataCache::updateBlades() {
    const AccessGuard guard;
    _mark(_bladesUpdate, CacheArea::Blades);
}

void DataCache::updatePorts() {
    const AccessGuard guard;
    _mark(_portsUpdate, CacheArea::Ports);
}

void DataCache::updateFabric() {
    const AccessGuard guard;
    _mark(_fabricUpdate, CacheArea::Fabric);
}

void DataCache::updateAccounts() {
    const AccessGuard guard;
    _mark(_accountsUpdate, CacheArea::Accounts);
}

void DataCache::updateZoning() {
    const AccessGuard guard;
    _mark(_zoningUpdate, CacheArea::Zoning);
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
    wakeEvaluation();
}

void DataCache::setRetryInterval(uint32_t seconds) {
    setEvaluationRetry(seconds);
}
