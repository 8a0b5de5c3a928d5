#include <algorithm>
#include <cstring>

#include "simulator/zoning/api.h"

namespace vexsim {

void writeName(const std::string& name, bool unterminated, char* field) {
    constexpr size_t size = VEX_ZONING_NAME_SIZE;
    std::memset(field, unterminated ? '#' : '\0', size);
    std::copy_n(name.data(), std::min(name.size(), unterminated ? size : size - 1), field);
}

int32_t giveName(ApiCall& call, const std::string& name, char* field) {
    if (field == nullptr) return call.done(BadArgument);
    const Effect effect = call.faultless() ? Effect() : call.onKey(name);
    writeName(effect.value.value_or(name), effect.unterminated, field);
    return call.done(Ok);
}

}  // namespace vexsim
