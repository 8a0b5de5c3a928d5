#include <algorithm>

#include "host/areas.h"
#include "host/cim_words.h"

Json bladesArea(DataCache& cache) {
    static constexpr const char* kinds[] = {"-", "fan", "power supply", "CPU blade", "I/O blade"};
    const BladeState& state = cache._bladeState;
    Json slots = Json::array();
    for (uint16_t slot = 0; slot < std::min(state.slotCount, kMaxSlots); ++slot) {
        const uint16_t kind = state.kind[slot];
        slots.push_back({
            {"slot", slot},
            {"kind", kind < std::size(kinds) ? kinds[kind] : "?"},
            {"operationalStatus", operationalStatus(state.operStatus[slot])},
            {"temperatureSensors", state.tempSensors[slot]},
            {"voltageSensors", state.voltageSensors[slot]},
        });
    }
    return {
        {"area", "blades"},
        {"upToDate", cache._bladesOK && !cache._bladesUpdate},
        {"slotCount", state.slotCount},
        {"slots", slots},
    };
}
