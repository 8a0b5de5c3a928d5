// Layouts that hosts and the imported library share, on every platform.
#include <cstddef>
#include <type_traits>

#include "datacache/CacheReader.h"

// On 32 bits: a message group is one block of three words. On 64 bits the pointer is wider.
static_assert(sizeof(vex_smlmsggroup_s) == 8 + sizeof(void*));
static_assert(offsetof(vex_smlmsggroup_s, capacity) == 4 && offsetof(vex_smlmsggroup_s, records) == 8);
static_assert(std::is_standard_layout_v<Wwn> && std::is_trivially_copyable_v<Wwn> && sizeof(Wwn) == 8);
static_assert(std::has_virtual_destructor_v<DataCache> && std::has_virtual_destructor_v<DataCacheEvent>);
// What CacheReader and snapshots show cannot be changed through them.
template <class Source>
constexpr bool kShowsConst =
    std::is_same_v<decltype(std::declval<Source>().fabric().getFirstSwitch()), const SwitchCache*>&&
        std::is_same_v<decltype(std::declval<Source>().fabric()._switches.get_first()->item()),
                       const SwitchCache*>&&
            std::is_const_v<std::remove_reference_t<decltype(std::declval<Source>().zoning())>>;
static_assert(kShowsConst<datacache::CacheReader> && kShowsConst<datacache::Snapshot>);
static_assert(sizeof(HardwareStatus) == 2 && sizeof(hSwitch) == 4 && sizeof(eval_ready) == 4);
static_assert(std::is_same_v<decltype(DataCacheEvent::type), int32_t>);
