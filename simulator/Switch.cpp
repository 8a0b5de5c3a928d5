#include "simulator/Switch.h"

#include <cstdlib>

#include "simulator/areas/Area.h"

namespace vexsim {

Reading Switch::read(const std::string& key) {
    const auto found = _store.find(key);
    if (found != _store.end()) return {Ok, found->second};
    for (const Area& area : areas()) {
        if (area.read == nullptr) continue;
        if (const std::optional<Reading> reading = area.read(*this, key)) return *reading;
    }
    return {UnknownKey, {}};
}

std::string Switch::value(const std::string& key, const std::string& fallback) const {
    const auto found = _store.find(key);
    return found == _store.end() ? fallback : found->second;
}

int64_t Switch::number(const std::string& key) const {
    return std::strtoll(value(key).c_str(), nullptr, 10);
}

}  // namespace vexsim
