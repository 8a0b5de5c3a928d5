#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vexsim {

/** "VEX_EVENT_FABRIC_CHANGE" for 1; "-" for a code without a name. */
const char* eventName(int32_t code);

/** The code of such a name; nullopt for a text that names none. */
std::optional<int32_t> eventCode(std::string_view name);

}  // namespace vexsim
