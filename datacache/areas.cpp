#include "datacache/AreaPrints.h"
#include "datacache/AreaRow.h"
#include "datacache/HealthMonitor.h"
#include "datacache/SnapshotPublisher.h"

using namespace datacache;

const DataCache::AreaRow& DataCache::_rowOf(CacheArea area) {
    static constexpr AreaRow kRows[kCacheAreas] = {
        {CacheArea::Switch, &DataCache::_switchUpdate, &DataCache::_switchOK,
         AreaRow::good<&DataCache::_getSwitchInfo>, "DCACHE: Updating switch cache\n", nullptr,
         "DCACHE: _switchOK = false\n"},
        {CacheArea::Chassis, &DataCache::_chassisUpdate, &DataCache::_chassisOK,
         AreaRow::good<&DataCache::_getChassisInfo>, "DCACHE: Updating chassis cache\n", nullptr,
         "DCACHE: _chassisOK = false\n"},
        {CacheArea::Blades, &DataCache::_bladesUpdate, &DataCache::_bladesOK,
         AreaRow::good<&DataCache::_getBladeInfo>, "DCACHE: Updating blades cache\n", nullptr,
         "DCACHE: _bladesOK = false\n"},
        {CacheArea::Ports, &DataCache::_portsUpdate, &DataCache::_portsOK,
         AreaRow::good<&DataCache::_getPortInfo>, "DCACHE: Updating ports cache\n", nullptr,
         "DCACHE: _portsOK = false\n"},
        {CacheArea::Accounts, &DataCache::_accountsUpdate, &DataCache::_accountsOK, nullptr, nullptr, nullptr,
         "DCACHE: _accountsOK = false\n"},
        {CacheArea::Fabric, &DataCache::_fabricUpdate, &DataCache::_fabricOK,
         AreaRow::good<&DataCache::_getFabricInfo>, "DCACHE: Updating fabric cache\n", nullptr,
         "DCACHE: _fabricOK = false\n"},
        {CacheArea::Zoning, &DataCache::_zoningUpdate, &DataCache::_zoningOK,
         AreaRow::good<&DataCache::_getZoningInfo>, "DCACHE: Updating zoning cache\n",
         "DCACHE: Updating zoning cache (Done)\n", "DCACHE: _zoningOK = false\n"},
    };
    return kRows[static_cast<size_t>(area)];
}

void DataCache::_readArea(CacheArea area) {
    const AreaRow& row = _rowOf(area);
    if (row.load == nullptr) {
        // Required: the accounts count as read though no pass reads them, since only the host asks for them.
        this->*row.ok = true;
        this->*row.update = false;
        return;
    }
    if (!(this->*row.update)) return;
    cim_log(CIM_LOG_TRACE, "%s", row.begins);
    const PortSet portsRead = _portState.portsLoaded ? _localPortRefresh : PortSet().set();
    const SnapshotRead snapshot(*this, area);
    AreaRead read(area, true);
    try {
        this->*row.ok = read.done(row.load(*this));
    } catch (const char* message) {
        ReadTrace::failed(ReadFault::Exception, "", message, 0, 0);
        read.done(false);
        throw;
    }
    if (this->*row.ok) {
        this->*row.update = false;
        _compareArea(area, portsRead);
    }
    if (row.ends != nullptr) cim_log(CIM_LOG_TRACE, "%s", row.ends);
}

void DataCache::_markArea(CacheArea area, const MarkReason& reason) {
    this->*_rowOf(area).update = true;
    HealthMonitor::instance().mark(area, reason);
}

void DataCache::_markAll(const MarkReason& reason) {
    for (const CacheArea area : kAllCacheAreas) {
        if (_rowOf(area).load != nullptr) _markArea(area, reason);
    }
    localPortRefreshSet();
    _zoningCache._wantMissingActive();
}

void DataCache::_compareArea(CacheArea area, const PortSet& portsRead) {
    const auto compared = [&]() DC_NO_THREAD_SAFETY_ANALYSIS -> Difference {
        switch (area) {
            case CacheArea::Switch:
                return _prints->compare(_switchState, _chassisState.switchFaults);
            case CacheArea::Chassis:
                return _prints->compare(_chassisState);
            case CacheArea::Blades:
                return _prints->compare(_bladeState);
            case CacheArea::Ports:
                return _prints->compare(_portState, _transceivers, portsRead);
            case CacheArea::Accounts:
                return _prints->compare(_accounts);
            case CacheArea::Fabric:
                return _prints->compare(_fabric);
            case CacheArea::Zoning:
                return _prints->compare(ZoningPrint{printOf(_zoningCache._activeZonesetName),
                                                    _zoningCache._activeChecksum,
                                                    _zoningCache._inactiveChecksum});
        }
        return {};
    };
    HealthMonitor::instance().found(area, compared());
}
