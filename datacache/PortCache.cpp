#include "datacache/PortCache.h"

PortCache::PortCache() = default;

PortCache::PortCache(const Wwn& name, unsigned short index) : _wwn(name), _port_index(index) {}

bool PortCache::isNull() const {
    return _wwn.isNull();
}

uint16_t PortCache::getPortIndex() const {
    return _port_index;
}

std::string PortCache::getWwn() const {
    return isNull() ? std::string() : _wwn.tostring();
}
