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

/** Copies a text, null for none, into a fixed field, cut to it and terminated. */
template <size_t Size>
void copyBounded(char (&field)[Size], const char* text) {
    const size_t length = text == nullptr ? 0 : strnlen(text, Size - 1);
    if (length != 0) std::memcpy(field, text, length);
    field[length] = '\0';
}

}  // namespace datacache
