#pragma once

#include <stdexcept>
#include <string>

namespace host {

/** Why there is no picture, for a person. */
struct NoPicture : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** What `dot -Tplain` makes of this input. Throws NoPicture where it is not installed, fails, takes too long
 * or answers too much. */
std::string runDot(const std::string& input);

}  // namespace host
