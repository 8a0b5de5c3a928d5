#pragma once

#include <string_view>

#include "common/Wwn.h"

namespace datacache {

/** The name that a text tells, by the rules of Wwn's constructor from a text. */
Wwn parseWwn(std::string_view text);

}  // namespace datacache
