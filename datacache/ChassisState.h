#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "common/export.h"

/** State of a fan or a power supply. */
enum HardwareStatus : uint16_t {
    HARDWARE_UNKNOWN = 0,
    HARDWARE_GOOD = 1,
    HARDWARE_BAD = 2,
    HARDWARE_NOT_INSTALLED = 3,
};

namespace datacache {

/** Fans and power supplies that the cache holds; a switch that reports more is cut to the first 16. */
constexpr uint16_t kMaxChassisParts = 16;

}  // namespace datacache

/**
 * What the cache knows of the chassis. Held twice: as read last, and as read before that. Where the switch
 * reports a negative number of fans or power supplies, there are none.
 */
struct ChassisState {
    bool loaded = false;  ///< read completely at least once
    uint16_t fanCount = 0;
    std::array<HardwareStatus, datacache::kMaxChassisParts> fanStatus{};
    uint16_t powerSupplyCount = 0;
    std::array<HardwareStatus, datacache::kMaxChassisParts> powerSupplyStatus{};
    std::vector<unsigned short> switchFaults;  ///< once loaded: 0 or 32768, then 0 or 32769
    // New fields are added here, at the end.
};
