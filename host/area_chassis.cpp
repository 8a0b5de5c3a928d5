#include <algorithm>

#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/cim_words.h"
#include "host/staleness.h"

namespace {

/** Units that the chassis numbers from 1. */
template <typename States>
Json unitsOf(const States& states, uint16_t count) {
    Json units = Json::array();
    for (uint16_t i = 0; i < std::min(count, kMaxChassisParts); ++i) {
        units.push_back({{"index", i + 1}, {"status", hardwareStatus(states[i])}});
    }
    return units;
}

/** The faults that are present; a fault's place holds 0 while it is not. */
Json faultsOf(const std::vector<unsigned short>& values) {
    Json faults = Json::array();
    for (const unsigned short value : values) {
        if (value != 0) faults.push_back(operationalStatus(value));
    }
    return faults;
}

}  // namespace

Json chassisArea() {
    const CacheReader cache;
    const ChassisState& state = cache->_chassisState;
    return {
        {"area", "chassis"},
        {"upToDate", upToDate(*cache, "chassis")},
        {"faults", faultsOf(state.switchFaults)},
        {"powerSupplies", unitsOf(state.powerSupplyStatus, state.powerSupplyCount)},
        {"fans", unitsOf(state.fanStatus, state.fanCount)},
    };
}
