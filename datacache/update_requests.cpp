#include "datacache/DataCache.h"
#include "datacache/bit_sets.h"

bool DataCache::workToDo() {
    const AccessGuard guard;
    return _switchUpdate || _chassisUpdate || _bladesUpdate || _portsUpdate || _fabricUpdate ||
           _accountsUpdate || _zoningUpdate;
}

void DataCache::updateAll() {
    const AccessGuard guard;
    _switchUpdate = true;
    _chassisUpdate = true;
    _bladesUpdate = true;
    _portsUpdate = true;
    _fabricUpdate = true;
    _accountsUpdate = true;
    _zoningUpdate = true;
}

void DataCache::updateSwitch() {
    const AccessGuard guard;
    _switchUpdate = true;
}

void DataCache::updateChassis() {
    const AccessGuard guard;
    _chassisUpdate = true;
}

void DataCache::updateBlades() {
    const AccessGuard guard;
    _bladesUpdate = true;
}

void DataCache::updatePorts() {
    const AccessGuard guard;
    _portsUpdate = true;
}

void DataCache::updateFabric() {
    const AccessGuard guard;
    _fabricUpdate = true;
}

void DataCache::updateAccounts() {
    const AccessGuard guard;
    _accountsUpdate = true;
}

void DataCache::updateZoning() {
    const AccessGuard guard;
    _zoningUpdate = true;
}

void DataCache::reloadZoning() {
    const AccessGuard guard;
    // The checksum alone would not force it: the switch may come to report this very number.
    _zoningCache._prevInactiveChecksum = _zoningCache._inactiveChecksum + 1;
    _zoningCache._configuredDue = true;
    updateZoning();
    wakeEvaluation();
}

bool DataCache::isCacheReady() {
    const AccessGuard guard;
    return _cacheReady;
}

void DataCache::localPortRefreshSet() {
    const AccessGuard guard;
    _localPortRefresh.set();
}

void DataCache::localPortRefreshSet(int port) {
    const AccessGuard guard;
    bitSet(_localPortRefresh, static_cast<size_t>(port));
}
