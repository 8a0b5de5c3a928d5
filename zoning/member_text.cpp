#include "zoning/member_text.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "common/cim_log.h"
#include "common/text.h"
#include "switchlib/CallWatch.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "zoning/library_calls.h"

namespace {

/** Copies a name of at most 64 characters, whether or not its field is terminated. */
void copyName(char* out, const void* field) {
    const auto* text = static_cast<const char*>(field);
    const size_t length = strnlen(text, VEX_ZONING_NAME_SIZE - 1);
    std::memcpy(out, text, length);
    out[length] = '\0';
}

}  // namespace

int ZoneMemberToString(char* out, void* member) {
    constexpr size_t size = VEX_ZONING_NAME_SIZE;
    vex_fzs_zonemember_type_e type = VEX_ZMT_UNKNOWN;
    vex_memberid_u id{};
    if (member == nullptr || vex_MemberGetAttr(member, &type, &id) != 0) type = VEX_ZMT_UNKNOWN;
    switch (type) {
        case VEX_ZMT_WWN:
            byteToStr(out, id.wwn, sizeof id.wwn);
            return 1;
        case VEX_ZMT_DOMAIN_PORT:
            // Hexadecimal and without a separator, unlike formatMemberId(): commands take this form.
            std::snprintf(out, size, "%2.2x%2.2x", unsigned{id.domain_port.domain},
                          unsigned{id.domain_port.port});
            return 1;
        case VEX_ZMT_FCID:
            byteToStr(out, id.fcid, sizeof id.fcid);
            return 1;
        case VEX_ZMT_ALIAS:
            copyName(out, id.alias);
            return 1;
        default:
            std::snprintf(out, size, "Invalid");
            return 0;
    }
}

void formatMemberId(int* type, unsigned char* id, char* out) {
    constexpr size_t size = VEX_ZONING_NAME_SIZE;
    switch (*type) {
        case VEX_ZMT_UNKNOWN:
            cim_log(CIM_LOG_TRACE, "DCACHE: Type is VEX_ZMT_UNKNOWN\n");
            break;
        case VEX_ZMT_WWN:
            std::snprintf(out, size, "%2.2X%2.2X%2.2X%2.2X%2.2X%2.2X%2.2X%2.2X", id[0], id[1], id[2], id[3],
                          id[4], id[5], id[6], id[7]);
            break;
        case VEX_ZMT_DOMAIN_PORT: {
            int32_t port = 0;
            std::memcpy(&port, id + offsetof(vex_memberid_u, domain_port.port), sizeof port);
            // Decimal and with a colon, unlike ZoneMemberToString(): people read this form.
            std::snprintf(out, size, "%2.2d:%2.2d", id[0], port);
            break;
        }
        case VEX_ZMT_FCID:
            std::snprintf(out, size, "%2.2x%2.2x%2.2x", id[0], id[1], id[2]);
            break;
        case VEX_ZMT_NODENAME:
            cim_log(CIM_LOG_TRACE, "DCACHE: Type is VEX_ZMT_NODENAME\n");
            break;
        case VEX_ZMT_ALIAS:
            copyName(out, id);
            break;
        default:
            break;
    }
}

int32_t get_Active_ZoneSet(char* name) {
    name[0] = '\0';
    char field[datacache::kNameRoom] = {};
    const datacache::CallWatch watch("vex_fzsGetActiveZonesetName");
    const int32_t result = vex_fzsGetActiveZonesetName(hSwitch, field);
    if (result == 0) {
        copyName(name, field);
    } else {
        cim_log(CIM_LOG_CRITICAL, "CRIT:%s:%s[%d] vex_fzsGetActiveZonesetName Failed\n", "NORV_Vex_Lib",
                "get_Active_ZoneSet", __LINE__);
    }
    return result;
}
