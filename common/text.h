/*
 * Small text functions that the library exports with unmangled names. Valid C and C++.
 */
#ifndef DC_COMMON_TEXT_H
#define DC_COMMON_TEXT_H

#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "common/export.h"

DC_BEGIN_C

/** "true" or "false", as a static text. */
DC_EXPORT const char* booltostr(bool value);

/**
 * Writes the 8 raw bytes at `wwn`, byte 0 first, as 16 upper-case hexadecimal digits and a terminator into
 * `dst` (17 bytes). Returns `dst`.
 */
DC_EXPORT char* VEX_WWNToStr(char* dst, const unsigned char* wwn);

/**
 * Writes `count` bytes as two upper-case hexadecimal digits each, then one terminator, into `dst` (2 * count
 * + 1 bytes). For a count below 1 it writes nothing, not even a terminator. Returns `dst`.
 */
DC_EXPORT char* byteToStr(char* dst, const unsigned char* bytes, int count);

/** Converts a terminated text in place to upper case and returns it; null and empty texts come back
 * unchanged. */
DC_EXPORT char* toUpper(char* text);

DC_END_C

#endif
