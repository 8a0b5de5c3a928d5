#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vexsim {

/** Codes for which the library has no names. */
constexpr int32_t kVoltageTooHigh = 74;
constexpr int32_t kVoltageTooLow = 75;
constexpr int32_t kMediaInserted = 76;
constexpr int32_t kMediaRemoved = 77;

/** "VEX_EVENT_FABRIC_CHANGE" for 1; "-" for a code without a name. */
const char* eventName(int32_t code);

/** The code of such a name; nullopt for a text that names none. */
std::optional<int32_t> eventCode(std::string_view name);

}  // namespace vexsim
