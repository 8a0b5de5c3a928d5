#include <algorithm>

#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/cim_words.h"
#include "host/staleness.h"

Json bladesArea() {
    const CacheReader cache;
    static constexpr const char* kinds[] = {"-", "fan", "power supply", "CPU blade", "I/O blade"};
    const BladeState& state = cache->_bladeState;
    Json slots = Json::array();
    for (uint16_t slot = 0; slot < std::min(state.slotCount, kMaxSlots); ++slot) {
        const uint16_t kind = state.kind[slot];
        slots.push_back({
            {"slot", slot},
            {"kind", kind < std::size(kinds) ? kinds[kind] : "?"},
            {"operationalStatus", kind == 0 ? Json() : operationalStatus(state.operStatus[slot])},
            {"temperatureSensors", state.tempSensors[slot]},
            {"voltageSensors", state.voltageSensors[slot]},
        });
    }
    return {
        {"area", "blades"},
        {"upToDate", upToDate(*cache, "blades")},
        {"slotCount", state.slotCount},
        {"slots", slots},
    };
}
