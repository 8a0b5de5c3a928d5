#include "common/Wwn.h"
#include "common/wwn_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>

using namespace datacache;

namespace {

/** What a switch name keeps when the port field is masked out, by NAA. */
constexpr uint32_t kNaa2Base = 0xF000FFFFU;
/** Required: wider than the port field, so names of NAA 3 lose the low nibble of byte 0 and byte 1 as well.
 */
constexpr uint32_t kNaa3Base = 0xF000000FU;

uint32_t wordOf(std::string_view digits) {
    uint32_t word = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), word, 16);
    return word;
}

}  // namespace

Wwn::Wwn(const std::string& text) : Wwn(parseWwn(text)) {}

Wwn datacache::parseWwn(std::string_view text) {
    const auto isHexDigit = [](unsigned char c) { return std::isxdigit(c) != 0; };
    if (text.size() != 16 || !std::all_of(text.begin(), text.end(), isHexDigit)) return {};
    return {wordOf(text.substr(0, 8)), wordOf(text.substr(8))};
}

std::string Wwn::tostring() const {
    constexpr char kDigits[] = "0123456789ABCDEF";  // by hand: loads log names by the thousand
    std::string text(16, '0');
    for (unsigned i = 0; i < 8; ++i) {
        text[i] = kDigits[(_high >> (28 - 4 * i)) & 0xFU];
        text[8 + i] = kDigits[(_low >> (28 - 4 * i)) & 0xFU];
    }
    return text;
}

bool Wwn::isMcDATA() const {
    return (_high & 0xFFFFU) == 0x0800U && (_low >> 24) == 0x88U;
}

bool Wwn::isCisco() const {
    return (_high & 0xFFFFU) == 0x000DU && (_low >> 24) == 0xECU;
}

void Wwn::Set_Port(unsigned int port) {
    Set_Port(port >> 6, port);
}

void Wwn::Set_Port(unsigned int upper, unsigned int lower) {
    if (naa() == 2) {
        _high = ((upper << 22) & 0x0FC00000U) | (_high & kNaa2Base) | ((lower << 16) & 0x003F0000U);
    } else if (naa() == 3) {
        _high = ((upper << 10) & 0x0000FC00U) | (_high & kNaa3Base) | ((lower << 4) & 0x000003F0U);
    }
}

void Wwn::Get_Port(unsigned int& port) const {
    unsigned int upper = 0;
    unsigned int lower = 0;
    if (naa() != 2 && naa() != 3) return;
    Get_Port(upper, lower);
    port = (upper << 6) | lower;
}

void Wwn::Get_Port(unsigned int& upper, unsigned int& lower) const {
    if (naa() == 2) {
        upper = (_high >> 22) & 63U;
        lower = (_high >> 16) & 63U;
    } else if (naa() == 3) {
        upper = (_high >> 10) & 63U;
        lower = (_high >> 4) & 63U;
    }
}

bool Wwn::Same_Base(Wwn other) const {
    uint32_t mask = 0;
    switch (naa()) {
        case 1:
        case 2:
            mask = kNaa2Base;
            break;
        case 3:
        case 5:
            mask = kNaa3Base;
            break;
        default:
            return false;
    }
    return (_high & mask) == (other._high & mask) && _low == other._low;
}

Wwn& Wwn::convertToSwitchName() {
    if (naa() == 2) {
        Set_Port(0, 0);
        setNaa(isCisco() ? 2 : 1);  // a Cisco switch's own name keeps NAA 2, with an empty port field
    } else if (naa() == 3) {
        Set_Port(0, 0);
        setNaa(5);
    }
    return *this;
}

int Wwn::Make_Fabric_Port_Wwn(unsigned int upper, unsigned int lower) {
    if (naa() != 1 && naa() != 2) return 0;
    setNaa(2);
    Set_Port(upper, lower);
    return 1;
}

int Wwn::Make_Fabric_Port_Wwn_Null_Mac(unsigned int upper, unsigned int lower) {
    _high = 0x2000FFFFU;
    _low = 0xFFFFFFFFU;
    return Make_Fabric_Port_Wwn(upper, lower);
}
