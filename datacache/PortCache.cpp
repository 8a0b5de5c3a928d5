#include "datacache/PortCache.h"

std::string PortCache::getWwn() const {
    return isNull() ? std::string() : _wwn.tostring();
}
