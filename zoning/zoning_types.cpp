#include "zoning/ZoningCache.h"

using namespace datacache;

vex_fzs_zonemember_type_e ZoningCache::CIMMemberTypeToVexlib(int type) {
    const AccessGuard guard;
    switch (type) {
        case 2:
            return VEX_ZMT_WWN;
        case 3:
            return VEX_ZMT_FCID;
        case 4:
            return VEX_ZMT_DOMAIN_PORT;
        default:
            return VEX_ZMT_UNKNOWN;
    }
}

const char* ZoningCache::vex_smlCnvFromVEXZoneType(vex_fzs_zone_type_e type) {
    const AccessGuard guard;
    switch (type) {
        case VEX_ZT_SOFT:
            return "Soft";
        case VEX_ZT_HARD_VPF:
            return "HardVPF";
        case VEX_ZT_HARD_ACL:
            return "HardACL";
        default:
            return "Invalid";
    }
}

vex_fzs_zone_type_e ZoningCache::cnvCIMZoneTypeToVEX(int type) {
    const AccessGuard guard;
    switch (type) {
        case 1:
            return VEX_ZT_HARD_ACL;
        case 2:
            return VEX_ZT_SOFT;
        default:
            return vex_fzs_zone_type_e{};
    }
}
