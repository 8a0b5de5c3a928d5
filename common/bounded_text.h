#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace datacache {

/**
 * The text in a fixed field that somebody outside filled: up to its terminator, or the whole field when it
 * has none. It stands in the field, and is good for as long as that is.
 */
template <size_t Size>
std::string_view boundedText(const char (&field)[Size]) {
    return {field, strnlen(field, Size)};
}

}  // namespace datacache
