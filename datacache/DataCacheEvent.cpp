#include "datacache/DataCacheEvent.h"

// Out of line, so that the classes' tables live in the library and nowhere else.
DataCacheEvent::~DataCacheEvent() = default;
DCEventFabricAdd::~DCEventFabricAdd() = default;
DCEventFabricRemove::~DCEventFabricRemove() = default;
DCEventFabricChange::~DCEventFabricChange() = default;
DCEventSwitchAdd::~DCEventSwitchAdd() = default;
DCEventSwitchRemove::~DCEventSwitchRemove() = default;
DCEventSwitchStatusChange::~DCEventSwitchStatusChange() = default;
DCEventBladeAdd::~DCEventBladeAdd() = default;
DCEventBladeRemove::~DCEventBladeRemove() = default;
DCEventPortAdd::~DCEventPortAdd() = default;
DCEventPortRemove::~DCEventPortRemove() = default;
DCEventPortStatusChange::~DCEventPortStatusChange() = default;
DCEventFanAdd::~DCEventFanAdd() = default;
DCEventFanRemove::~DCEventFanRemove() = default;
DCEventPowerSupplyAdd::~DCEventPowerSupplyAdd() = default;
DCEventPowerSupplyRemove::~DCEventPowerSupplyRemove() = default;
DCEventPowerSupplyFail::~DCEventPowerSupplyFail() = default;
DCEventCPUAdd::~DCEventCPUAdd() = default;
DCEventCPURemove::~DCEventCPURemove() = default;
DCEventUserAcctAdd::~DCEventUserAcctAdd() = default;
DCEventUserAcctRemove::~DCEventUserAcctRemove() = default;
DCEventActiveZonesetChange::~DCEventActiveZonesetChange() = default;
DCEventZoningDBChange::~DCEventZoningDBChange() = default;
DCEventUserPasswdChg::~DCEventUserPasswdChg() = default;
DCEventUserLoginFailure::~DCEventUserLoginFailure() = default;
DCEventEnvEvent::~DCEventEnvEvent() = default;
DCEventCIMChange::~DCEventCIMChange() = default;
DCEventDataCacheUpdateComplete::~DCEventDataCacheUpdateComplete() = default;
