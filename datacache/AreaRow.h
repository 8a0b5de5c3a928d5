#pragma once

#include "datacache/DataCache.h"

/** What the pass does with an area, the flags that say how it stands, and what the log calls it. */
struct DataCache::AreaRow {
    /** A loader, of which some give an int and some a bool. */
    template <auto Load>
    static bool good(DataCache& cache) DC_REQUIRES(access_lock) {
        return static_cast<bool>((cache.*Load)());
    }

    datacache::CacheArea area;
    bool DataCache::*update;   ///< marked for the next pass
    bool DataCache::*ok;       ///< the last read was good
    bool (*load)(DataCache&);  ///< reads the area; null for the accounts, which no pass reads
    const char* begins;        ///< logged before the read
    const char* ends;          ///< logged after it, whatever came of it; null for no line
    const char* failed;        ///< logged at the end of a pass that finds the area not read
};
