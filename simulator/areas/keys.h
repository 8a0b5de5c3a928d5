#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vexsim {

/** What follows `prefix` in a key; nullopt for a key that does not begin so. */
inline std::optional<std::string> keyTail(const std::string& key, const std::string& prefix) {
    if (key.compare(0, prefix.size(), prefix) != 0) return std::nullopt;
    return key.substr(prefix.size());
}

/** What stands between `prefix` and `suffix` of a key; nullopt for a key of another shape. */
inline std::optional<std::string> keyMiddle(const std::string& key, const std::string& prefix,
                                            const std::string& suffix) {
    if (key.size() < prefix.size() + suffix.size()) return std::nullopt;
    if (key.compare(key.size() - suffix.size(), suffix.size(), suffix) != 0) return std::nullopt;
    return keyTail(key.substr(0, key.size() - suffix.size()), prefix);
}

/** A number of a key: decimal digits without leading zeros; nullopt for anything else. */
inline std::optional<uint16_t> keyNumber(const std::string& text) {
    if (text.empty() || text.size() > 5 || (text.size() > 1 && text[0] == '0')) return std::nullopt;
    if (text.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    const unsigned long number = std::stoul(text);
    if (number > UINT16_MAX) return std::nullopt;
    return static_cast<uint16_t>(number);
}

}  // namespace vexsim
