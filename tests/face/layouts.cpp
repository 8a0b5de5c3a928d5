// Layouts that hosts and the imported library share, on every platform.
#include <cstddef>
#include <type_traits>

#include "datacache/DataCache.h"

// On 32 bits: a message group is one block of three words. On 64 bits the pointer is wider.
static_assert(sizeof(vex_smlmsggroup_s) == 8 + sizeof(void*));
static_assert(offsetof(vex_smlmsggroup_s, capacity) == 4 && offsetof(vex_smlmsggroup_s, records) == 8);
static_assert(std::is_standard_layout_v<Wwn> && std::is_trivially_copyable_v<Wwn> && sizeof(Wwn) == 8);
static_assert(std::has_virtual_destructor_v<DataCache> && std::has_virtual_destructor_v<DataCacheEvent>);
static_assert(sizeof(HardwareStatus) == 2 && sizeof(hSwitch) == 4 && sizeof(eval_ready) == 4);
static_assert(std::is_same_v<decltype(DataCacheEvent::type), int32_t>);
// Hosts that were built earlier know the events by these numbers.
static_assert(DCEventFabricAdd::TYPE == 1 && DCEventFabricRemove::TYPE == 2 &&
              DCEventFabricChange::TYPE == 3 && DCEventSwitchAdd::TYPE == 4 &&
              DCEventSwitchRemove::TYPE == 5 && DCEventSwitchStatusChange::TYPE == 6 &&
              DCEventBladeAdd::TYPE == 7 && DCEventBladeRemove::TYPE == 8 && DCEventPortAdd::TYPE == 10 &&
              DCEventPortRemove::TYPE == 11 && DCEventPortStatusChange::TYPE == 12 &&
              DCEventFanAdd::TYPE == 16 && DCEventFanRemove::TYPE == 17 &&
              DCEventPowerSupplyAdd::TYPE == 19 && DCEventPowerSupplyRemove::TYPE == 20 &&
              DCEventPowerSupplyFail::TYPE == 21 && DCEventCPUAdd::TYPE == 22 &&
              DCEventCPURemove::TYPE == 23 && DCEventUserAcctAdd::TYPE == 25 &&
              DCEventUserAcctRemove::TYPE == 26 && DCEventActiveZonesetChange::TYPE == 27 &&
              DCEventZoningDBChange::TYPE == 28 && DCEventUserPasswdChg::TYPE == 29 &&
              DCEventUserLoginFailure::TYPE == 30 && DCEventEnvEvent::TYPE == 31 &&
              DCEventCIMChange::TYPE == 32 && DCEventDataCacheUpdateComplete::TYPE == 33);
