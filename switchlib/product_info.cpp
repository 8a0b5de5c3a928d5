#include "switchlib/NORV_Vex_Lib.h"

namespace {

int32_t read(const char* key, char** value) {
    uint32_t extra = 0;
    return vex_smlGetV(hSwitch, value, &extra, "%s", key);
}

/** Releases a text and forgets it. A success without a text left nothing to release: that counts as released.
 */
int32_t release(char** text) {
    if (*text == nullptr) return 0;
    const int32_t result = vex_libFreeMemory(*text);
    *text = nullptr;
    return result;
}

}  // namespace

int get_Product_Info(char** description, char** symbolicName, char** serialNumber, char** brand) {
    // A success may come without a text, and what a caller's variable held before is not ours to release.
    *description = *symbolicName = *serialNumber = *brand = nullptr;
    int32_t result = read("Config.Snmp.SysDescr", description);
    if (result != 0) return result;
    result = read("Config.Switch.SymName", symbolicName);
    if (result != 0) return result;
    // Required: from here on a failure gives the result of a release, and keeps the description; callers
    // release the description themselves and look at the texts.
    if (read("Config.Mfg.ChassisSerialNum", serialNumber) != 0) return release(symbolicName);
    if (read("Config.Mfg.BrandName", brand) != 0) {
        release(symbolicName);
        return release(serialNumber);
    }
    return 0;
}
