#pragma once

#include <cstddef>
#include <cstring>
#include <string>

/**
 * The text in a fixed field that somebody outside filled: up to its terminator, or the whole field when it
 * has none.
 */
template <size_t Size>
std::string boundedText(const char (&field)[Size]) {
    return std::string(field, strnlen(field, Size));
}
