#include "common/number_text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <limits>

namespace datacache {

int32_t toInt(std::string_view text) {
    constexpr int64_t kMagnitude = int64_t{1} << 31;
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    const bool negative = !text.empty() && text.front() == '-';
    if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
    int64_t value = 0;
    for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1)) {
        value = std::min(value * 10 + (text.front() - '0'), kMagnitude);
    }
    return static_cast<int32_t>(negative ? -value : std::min(value, kMagnitude - 1));
}

uint16_t toUint16(std::string_view text) {
    return static_cast<uint16_t>(toInt(text));
}

uint8_t toUint8(std::string_view text) {
    return static_cast<uint8_t>(toInt(text));
}

uint32_t strtoul32(const std::string& text, int base) {
    constexpr uint32_t kOverflow = std::numeric_limits<uint32_t>::max();
    const size_t start = text.find_first_not_of(" \t\n\v\f\r");
    if (start == std::string::npos) return 0;
    const bool negative = text[start] == '-';
    const size_t digits = start + (negative || text[start] == '+' ? 1 : 0);
    // A second sign is no number; strtoull would take it.
    if (std::isalnum(static_cast<unsigned char>(text[digits])) == 0) return 0;
    const unsigned long long magnitude = std::strtoull(text.c_str() + digits, nullptr, base);
    if (magnitude > kOverflow) return kOverflow;
    const auto value = static_cast<uint32_t>(magnitude);
    return negative ? 0U - value : value;
}

}  // namespace datacache
