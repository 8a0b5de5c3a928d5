#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace datacache {

/**
 * Numbers from texts that come from outside, with the results of the 32-bit C library on every platform.
 */

/** Decimal conversion as `atoi`: leading blanks, a sign, digits; 0 without digits; saturated where atoi is
 * undefined. */
int32_t toInt(std::string_view text);

/** As toInt, cut to 16 bits (-1 is 65535). */
uint16_t toUint16(std::string_view text);

/** As toInt, cut to 8 bits. */
uint8_t toUint8(std::string_view text);

/**
 * `strtoul` with a 32-bit `unsigned long`: overflow gives 4294967295, a minus sign negates modulo 2^32.
 * `base` is 0 or 2 to 36.
 */
uint32_t strtoul32(const std::string& text, int base);

}  // namespace datacache
