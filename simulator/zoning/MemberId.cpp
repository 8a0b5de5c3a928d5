#include "simulator/zoning/MemberId.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "simulator/zoning/names.h"

namespace vexsim {
namespace {

constexpr const char* kHexDigits = "0123456789abcdefABCDEF";

bool isHex(const std::string& text) {
    return !text.empty() && text.find_first_not_of(kHexDigits) == std::string::npos;
}

/** Up to 8 hexadecimal digits as a number. */
uint32_t hexNumber(const std::string& digits) {
    return static_cast<uint32_t>(std::stoul(digits, nullptr, 16));
}

bool readBytes(const std::string& digits, uint8_t* bytes, size_t count) {
    if (digits.size() != 2 * count || !isHex(digits)) return false;
    for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(hexNumber(digits.substr(2 * i, 2)));
    return true;
}

/** The digits of a name in either form; empty for any other text. */
std::string nameDigits(const std::string& text) {
    if (text.size() == 16) return text;
    if (text.size() != 23) return {};
    std::string digits;
    for (size_t i = 0; i < text.size(); ++i) {
        if (i % 3 != 2) {
            digits += text[i];
        } else if (text[i] != ':') {
            return {};
        }
    }
    return digits;
}

std::optional<uint32_t> decimal(const std::string& text, uint64_t most) {
    if (text.empty() || text.size() > 10 || text.find_first_not_of("0123456789") != std::string::npos)
        return std::nullopt;
    const uint64_t number = std::stoull(text);
    if (number > most) return std::nullopt;
    return static_cast<uint32_t>(number);
}

bool readDomainPort(const std::string& text, vex_memberid_u& id) {
    std::optional<uint32_t> domain;
    std::optional<uint32_t> port;
    const size_t separator = text.find_first_of(",:");
    if (separator != std::string::npos) {
        domain = decimal(text.substr(0, separator), UINT8_MAX);
        port = decimal(text.substr(separator + 1), UINT32_MAX);
    } else if (text.size() >= 4 && text.size() <= 10 && isHex(text)) {
        domain = hexNumber(text.substr(0, 2));
        port = hexNumber(text.substr(2));
    }
    if (!domain || !port) return false;
    id.domain_port.domain = static_cast<uint8_t>(*domain);
    id.domain_port.port = *port;
    return true;
}

bool readAlias(const std::string& text, vex_memberid_u& id) {
    if (!isZoningName(text)) return false;
    std::memcpy(id.alias, text.c_str(), text.size() + 1);
    return true;
}

std::string hexText(const uint8_t* bytes, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02X", unsigned{bytes[i]});
        text += pair;
    }
    return text;
}

}  // namespace

bool MemberId::operator==(const MemberId& other) const {
    return type == other.type && std::memcmp(id.bytes, other.id.bytes, sizeof id.bytes) == 0;
}

std::optional<MemberId> makeMember(vex_fzs_zonemember_type_e type, const vex_memberid_u& given) {
    MemberId member;
    member.type = type;
    switch (type) {
        case VEX_ZMT_WWN:
        case VEX_ZMT_NODENAME:
            std::copy(std::begin(given.wwn), std::end(given.wwn), member.id.wwn);
            return member;
        case VEX_ZMT_DOMAIN_PORT:
            member.id.domain_port.domain = given.domain_port.domain;
            member.id.domain_port.port = given.domain_port.port;
            return member;
        case VEX_ZMT_FCID:
            std::copy(std::begin(given.fcid), std::end(given.fcid), member.id.fcid);
            return member;
        case VEX_ZMT_ALIAS:
            if (!readAlias({given.alias, strnlen(given.alias, sizeof given.alias)}, member.id)) break;
            return member;
        default:
            break;
    }
    return std::nullopt;
}

std::optional<MemberId> parseMember(const std::string& text, vex_fzs_zonemember_type_e type) {
    MemberId member;
    member.type = type;
    bool good = false;
    switch (type) {
        case VEX_ZMT_WWN:
        case VEX_ZMT_NODENAME:
            good = readBytes(nameDigits(text), member.id.wwn, sizeof member.id.wwn);
            break;
        case VEX_ZMT_DOMAIN_PORT:
            good = readDomainPort(text, member.id);
            break;
        case VEX_ZMT_FCID:
            good = readBytes(text, member.id.fcid, sizeof member.id.fcid);
            break;
        case VEX_ZMT_ALIAS:
            good = readAlias(text, member.id);
            break;
        default:
            break;
    }
    if (!good) return std::nullopt;
    return member;
}

std::optional<MemberId> inferMember(const std::string& text,
                                    const std::function<bool(const std::string&)>& isAlias) {
    if (isAlias(text)) return parseMember(text, VEX_ZMT_ALIAS);
    for (const vex_fzs_zonemember_type_e type : {VEX_ZMT_WWN, VEX_ZMT_FCID, VEX_ZMT_DOMAIN_PORT}) {
        if (std::optional<MemberId> member = parseMember(text, type)) return member;
    }
    return std::nullopt;
}

std::string memberText(const MemberId& member) {
    switch (member.type) {
        case VEX_ZMT_WWN:
            return hexText(member.id.wwn, sizeof member.id.wwn);
        case VEX_ZMT_NODENAME:
            return "node " + hexText(member.id.wwn, sizeof member.id.wwn);
        case VEX_ZMT_DOMAIN_PORT:
            return std::to_string(member.id.domain_port.domain) + ',' +
                   std::to_string(member.id.domain_port.port);
        case VEX_ZMT_FCID:
            return hexText(member.id.fcid, sizeof member.id.fcid);
        case VEX_ZMT_ALIAS:
            return member.alias();
        default:
            return "?";
    }
}

}  // namespace vexsim
