/*
 * What every public header begins with: the language that it needs, the one export macro, and the compiler
 * attributes that C and C++ code share.
 */
#ifndef DC_COMMON_EXPORT_H
#define DC_COMMON_EXPORT_H

#if defined(__cplusplus) && __cplusplus < 201703L
#error "libdatacache needs C++17 or later: compile with -std=c++17"
#endif

/** Marks what hosts may link against; everything else is hidden. */
#define DC_EXPORT __attribute__((visibility("default")))

/** Hides a member of an exported class again. */
#define DC_HIDDEN __attribute__((visibility("hidden")))

/** Checks printf-style arguments: position of the format and of its first argument, counted from 1. */
#define DC_PRINTF(text, first) __attribute__((__format__(__printf__, text, first)))

#ifdef __cplusplus
#define DC_BEGIN_C extern "C" {
#define DC_END_C }
#define DC_NODISCARD [[nodiscard]]
/** Exports a class of results that nobody may ignore: GCC takes no mixture of attributes there. */
#define DC_EXPORT_RESULT [[nodiscard, gnu::visibility("default")]]
#else
#define DC_BEGIN_C
#define DC_END_C
/** Warns whoever ignores a function's result. */
#define DC_NODISCARD __attribute__((warn_unused_result))
#endif

#endif
