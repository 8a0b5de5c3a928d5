#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace vexsim {

/**
 * The line (from 1) on which TOML text nests its tables and lists too deeply, by brackets or by dots; nullopt
 * for text that a parser can take.
 *
 * A parser calls itself for every level of nesting, so text from outside could use up its stack. No file of
 * ours needs more than a handful of levels.
 */
std::optional<size_t> tooDeepLine(std::string_view text);

}  // namespace vexsim
