#pragma once

#include <string_view>

namespace vexsim {

/**
 * True for a name that a zone, alias or zoneset may have: 1 to 64 letters, digits and "$-^_", beginning with
 * a letter (the zoning name format of FC-GS).
 */
bool isZoningName(std::string_view name);

/** The name under which a copy of a zone is made before it gets its own; no name of a user. */
bool isTemporaryName(std::string_view name);

}  // namespace vexsim
