#include "switchlib/NORV_Vex_Lib.h"
#include "zoning/ZoningCache.h"

bool ZoningCache::initZoningLimits() {
    vex_fzs_limits_s limits{};
    return vex_fzsGetZoningLimitations(hSwitch, &limits) == 0;
}
