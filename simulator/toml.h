#pragma once

#include <stdexcept>

namespace vexsim {

/** The parser of TOML met text that it has no message for. */
struct TomlSurprise : std::logic_error {
    using std::logic_error::logic_error;
};

[[noreturn]] inline void tomlSurprise(const char* condition) {
    throw TomlSurprise(condition);
}

}  // namespace vexsim

// toml++ for the simulator. Its parser asserts where some malformed text brings it ("[#", "a = [}"), which
// would end the process, and without assertions takes for granted what is not so: here it throws.
#undef NDEBUG
#define TOML_ASSERT(condition) ((condition) ? static_cast<void>(0) : ::vexsim::tomlSurprise(#condition))
#include <toml++/toml.h>
