/*
 * The version of the library. Valid C and C++.
 *
 * The macros are that of the headers that a host is compiled against, the function that of the library that
 * it runs with: the same one, or a later one with the same MAJOR. The build takes its version from here.
 */
#ifndef DC_COMMON_VERSION_H
#define DC_COMMON_VERSION_H

#include "common/export.h"

#define DATACACHE_VERSION_MAJOR 1
#define DATACACHE_VERSION_MINOR 0
#define DATACACHE_VERSION_PATCH 0

/** A version as one number, to compare with DATACACHE_VERSION: 1.2.3 is 10203. */
#define DATACACHE_MAKE_VERSION(major, minor, patch) ((major)*10000 + (minor)*100 + (patch))

/** The version of these headers: #if DATACACHE_VERSION >= DATACACHE_MAKE_VERSION(1, 2, 0). */
#define DATACACHE_VERSION \
    DATACACHE_MAKE_VERSION(DATACACHE_VERSION_MAJOR, DATACACHE_VERSION_MINOR, DATACACHE_VERSION_PATCH)

DC_BEGIN_C

/** The version of the library that runs, as DATACACHE_VERSION writes it. */
DC_EXPORT int datacacheVersion(void);

DC_END_C

#endif
