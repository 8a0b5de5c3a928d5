/* The library's one export macro and the compiler attributes that C and C++ code share. */
#ifndef COMMON_EXPORT_H
#define COMMON_EXPORT_H

/** Marks what hosts may link against; everything else is hidden. */
#define DC_EXPORT __attribute__((visibility("default")))

/** Hides a member of an exported class again. */
#define DC_HIDDEN __attribute__((visibility("hidden")))

/** Checks printf-style arguments: position of the format and of its first argument, counted from 1. */
#define DC_PRINTF(text, first) __attribute__((__format__(__printf__, text, first)))

#ifdef __cplusplus
#define DC_BEGIN_C extern "C" {
#define DC_END_C }
#else
#define DC_BEGIN_C
#define DC_END_C
#endif

#endif
