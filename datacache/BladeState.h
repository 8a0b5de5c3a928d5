#pragma once

#include <array>
#include <bitset>
#include <cstdint>

#include "common/export.h"

namespace datacache {

/** Slots of a chassis that have entries here; slots are counted from 0. */
constexpr uint16_t kMaxSlots = 32;

}  // namespace datacache

/** What the cache knows of the blades. Held twice: as read last, and as read before that. */
struct BladeState {
    bool loaded = false;  ///< several slots were read completely at least once
    uint16_t slotCount = 0;
    std::bitset<datacache::kMaxSlots> ioBlades;
    std::bitset<datacache::kMaxSlots> cpuBlades;
    std::array<uint16_t, datacache::kMaxSlots> operStatus{};  ///< first CIM OperationalStatus value
    std::array<uint16_t, datacache::kMaxSlots>
        kind{};  ///< 0 none, 1 fan, 2 power supply, 3 CPU blade, 4 I/O blade
    std::array<uint16_t, datacache::kMaxSlots> tempSensors{};
    std::array<uint16_t, datacache::kMaxSlots> voltageSensors{};
    // New fields are added here, at the end.
};
