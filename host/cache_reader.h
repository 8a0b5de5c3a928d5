#pragma once

#include "datacache/DataCache.h"

/** Brackets reads of the cache, as every host must. Only after DataCache::init() has returned. */
class DC_SCOPED_CAPABILITY CacheReader {
  public:
    CacheReader() DC_ACQUIRE(access_lock) : _cache(*DataCache::getInstance()) {}
    ~CacheReader() DC_RELEASE() { DataCache::releaseInstance(); }
    CacheReader(const CacheReader&) = delete;
    CacheReader& operator=(const CacheReader&) = delete;

    DataCache* operator->() const { return &_cache; }
    DataCache& operator*() const { return _cache; }

  private:
    DataCache& _cache;
};
