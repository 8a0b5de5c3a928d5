#pragma once

#include <cstring>
#include <functional>
#include <optional>
#include <string>

#include "vexlib/vexlib.h"

namespace vexsim {

/** A zone or alias member. Only the bytes that its type uses count; the others are zero. */
struct MemberId {
    vex_fzs_zonemember_type_e type = VEX_ZMT_UNKNOWN;
    vex_memberid_u id;

    MemberId() { std::memset(&id, 0, sizeof id); }  // "= {}" promises zeros in its first member alone

    bool operator==(const MemberId& other) const;
    std::string alias() const { return std::string(id.alias); } /**< of type VEX_ZMT_ALIAS */
};

/** Takes over what a caller gives: nullopt for an unknown type and for an alias name that is none. */
std::optional<MemberId> makeMember(vex_fzs_zonemember_type_e type, const vex_memberid_u& given);

/**
 * Reads a member's text of a given type; nullopt when it is malformed.
 *
 * World wide and node name: 16 hexadecimal digits, or 8 pairs with colons. FC address: 6 hexadecimal digits.
 * Domain and port: two decimal numbers with a comma or a colon (domain 0 to 255, port up to 32 bits), or 4 to
 * 10 hexadecimal digits, the first two of which are the domain. Alias: its name.
 */
std::optional<MemberId> parseMember(const std::string& text, vex_fzs_zonemember_type_e type);

/**
 * Reads a member's text without its type, as commands and switch files carry it. The text tells the type:
 *
 * - the name of an alias that `isAlias` knows: that alias, even where the name could be a number in
 * hexadecimal;
 * - 16 digits, or pairs with colons: a world wide name;
 * - 6 digits: an FC address; so a port of 4096 to 65535 must be written in decimal, with a comma or a colon;
 * - any other form of domain and port: these.
 */
std::optional<MemberId> inferMember(const std::string& text,
                                    const std::function<bool(const std::string&)>& isAlias);

/** A text that names the member alone among all; for checksums and messages. */
std::string memberText(const MemberId& member);

}  // namespace vexsim
