#include "capture/Mask.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace capture {

namespace {

bool isHex(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
}

/** The digits of pairs that this character separates; empty for any other text. */
std::string pairs(const std::string& text, char separator, size_t count) {
    if (text.size() != 3 * count - 1) return {};
    std::string digits;
    for (size_t i = 0; i < text.size(); ++i) {
        if (i % 3 != 2) {
            digits += text[i];
        } else if (text[i] != separator) {
            return {};
        }
    }
    return isHex(digits) ? digits : "";
}

/** A world wide name in either form. */
std::optional<uint64_t> wwnOf(const std::string& text) {
    const std::string digits = text.size() == 16 && isHex(text) ? text : pairs(text, ':', 8);
    if (digits.empty()) return std::nullopt;
    const uint64_t name = std::strtoull(digits.c_str(), nullptr, 16);
    const unsigned naa = static_cast<unsigned>(name >> 60);
    if (naa != 1 && naa != 2 && naa != 3 && naa != 5) return std::nullopt;
    return name;
}

/** The bits that number a maker's names: behind the company identifier, or, of names that have the port's
 * number where it stood, all that a switch and its ports share. */
uint64_t serialBits(uint64_t name) {
    const unsigned naa = static_cast<unsigned>(name >> 60);
    return naa == 3 || naa == 5 ? 0xFFFFFFFFFU : 0xFFFFFFU;
}

std::string numbered(const std::string& kind, unsigned number) {
    return kind + '-' + std::to_string(number);
}

std::string longSerial(const std::string& original, unsigned number) {
    const std::string digits = std::to_string(number);
    const size_t blank = original.size() > digits.size() ? original.size() - digits.size() - 1 : 0;
    return 'S' + std::string(blank, '0') + digits;
}

/** Of the ranges for documentation; then of the one for measurements, which is larger. */
std::string ipv4(const std::string&, unsigned number) {
    constexpr const char* kDocumented[] = {"192.0.2.", "198.51.100.", "203.0.113."};
    const unsigned range = (number - 1) / 254;
    if (range < std::size(kDocumented)) return kDocumented[range] + std::to_string((number - 1) % 254 + 1);
    return "198.18." + std::to_string(number / 256 % 256) + '.' + std::to_string(number % 256);
}

std::string ipv6(const std::string&, unsigned number) {
    return "2001:db8::" + std::to_string(number);
}

std::string mac(const std::string&, unsigned number) {
    char text[24];
    std::snprintf(text, sizeof text, "02:00:00:%02u:%02u:%02u", number / 10000 % 100, number / 100 % 100,
                  number % 100);
    return text;
}

/** Whether it says where a host is, and not a mask of a network, this host, or none. */
bool tellsOfHost(const std::string& address) {
    return address != "0.0.0.0" && address != "::" && address != "::1" &&
           address.compare(0, 4, "255.") != 0 && address.compare(0, 4, "127.") != 0;
}

bool isWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.' || c == ':' || c == '-' || c == '_' ||
           c == '$' || c == '^' || (c & 0x80) != 0;
}

/** Calls `take` with each word of a text and what stands before it. */
template <typename Take>
void splitWords(const std::string& text, Take take) {
    for (size_t at = 0; at < text.size();) {
        size_t begin = at;
        while (begin < text.size() && !isWordCharacter(text[begin])) ++begin;
        size_t end = begin;
        while (end < text.size() && isWordCharacter(text[end])) ++end;
        size_t last = end;  // a full stop or a colon ends the sentence, not the word
        while (last > begin && (text[last - 1] == '.' || text[last - 1] == ':')) --last;
        take(text.substr(at, begin - at), text.substr(begin, last - begin), text.substr(last, end - last));
        at = end;
    }
}

}  // namespace

void Mask::see(const std::string& original) {
    _originals.insert(original);
    splitWords(original, [&](const std::string&, const std::string& word, const std::string&) {
        _originals.insert(word);
        if (const std::optional<uint64_t> name = wwnOf(word))
            _originalSerials.insert(*name & serialBits(*name));
    });
}

std::string Mask::next(const std::string& text, std::string (*make)(const std::string&, unsigned),
                       const std::string& how) {
    std::string& made = _masks[text];
    if (!made.empty()) return made;
    do {
        made = make(how, ++_counts[how]);
    } while (!_originals.insert(made).second);  // nor is any mask given twice
    return made;
}

std::string Mask::name(const std::string& kind, const std::string& text) {
    return text.empty() ? text : next(text, numbered, kind);
}

std::string Mask::serial(const std::string& text) {
    return text.empty() ? text : next(text, longSerial, std::string(text.size(), '#'));
}

uint64_t Mask::wwn(uint64_t name) {
    const uint64_t bits = serialBits(name);
    uint64_t& made = _serials[name & bits];
    while (made == 0 || _originalSerials.count(made) != 0) {
        // Decimal, so that upper and lower case are one.
        made = std::strtoull(std::to_string(++_lastSerial).c_str(), nullptr, 16);
    }
    return (name & ~bits) | (made & bits);
}

std::string Mask::wwn(const std::string& text) {
    const std::optional<uint64_t> name = wwnOf(text);
    if (!name) return text;
    char digits[24];
    std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(wwn(*name)));
    std::string masked = text;
    const size_t step = text.size() == 16 ? 2 : 3;
    for (size_t i = 0; i < 16; ++i) {
        char& c = masked[i / 2 * step + i % 2];
        if (std::tolower(static_cast<unsigned char>(c)) != digits[i]) c = digits[i];
    }
    return masked;
}

std::string Mask::word(const std::string& word, Words words) {
    if (wwnOf(word)) return wwn(word);
    in6_addr bytes{};
    char address[INET6_ADDRSTRLEN];
    for (const auto& [family, make] : {std::pair(AF_INET, &ipv4), {AF_INET6, &ipv6}}) {
        if (!words.addresses || inet_pton(family, word.c_str(), &bytes) != 1) continue;
        inet_ntop(family, &bytes, address, sizeof address);
        return tellsOfHost(address) ? next(address, make, family == AF_INET ? "ipv4" : "ipv6") : word;
    }
    for (const char separator : {':', '-'}) {
        std::string digits = words.addresses ? pairs(word, separator, 6) : "";
        if (digits.empty()) continue;
        for (char& c : digits) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        std::string made = next("mac " + digits, mac, "mac");
        std::replace(made.begin(), made.end(), ':', separator);
        return made;
    }
    const bool number = word.find_first_not_of("0123456789") == std::string::npos;
    const auto known = words.names && !number ? _masks.find(word) : _masks.end();
    return known == _masks.end() ? word : known->second;
}

std::string Mask::text(const std::string& text, Words words) {
    std::string made;
    splitWords(text, [&](const std::string& before, const std::string& one, const std::string& after) {
        made += before + word(one, words) + after;
    });
    return made;
}

}  // namespace capture
