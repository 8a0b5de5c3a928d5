#include "switchlib/NORV_Vex_Lib.h"

namespace {

struct Property {
    const char* function;
    const char* key;
    const char* label;                 ///< what the log calls the value, up to the value
    char* (*finish)(char*) = nullptr;  ///< changes the value in place
    int failureLine = 0;               ///< where a failure gets a line of its own: its number
};

char* read(const Property& property) {
    char* value = nullptr;
    uint32_t extra = 0;
    const int32_t result = vex_smlGetV(hSwitch, &value, &extra, "%s", property.key);
    if (result != 0) {
        if (property.failureLine != 0) {
            cim_log(CIM_LOG_CRITICAL, "CRIT:%s:%s[%d] vex_smlGet returned error code = %d\n", "NORV_Vex_Lib",
                    property.function, property.failureLine, result);
        }
        return nullptr;
    }
    if (value == nullptr) return nullptr;  // success without a text: nothing to log or to hand over
    if (property.finish != nullptr) property.finish(value);
    cim_log(CIM_LOG_TRACE, "DCACHE: %s%s\n", property.label, value);
    return value;
}

int32_t readText(const char* key, char** value) {
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

/*
 * All properties: function, key, label, and for some what is done to the value and about a failure. The
 * uneven blanks before "=" are required: tools read these lines.
 */
// clang-format off
#define PROPERTIES(ROW)                                                                                       \
    ROW(get_Switch_Telnet_Enabled, "Config.Services.TelnetEnable", "TelnetEnable = ")                         \
    ROW(get_Switch_SSH_Enabled, "Config.Services.SSHEnable", "SSHEnable = ")                                  \
    ROW(get_Switch_EmbeddedGUI_Enabled, "Config.Services.EmbeddedGUIEnable", "EmbeddedGUIEnable= ")           \
    ROW(get_Switch_SNMPReadCommunity, "Config.Snmp.ReadComm", "SNMP ReadComm = ")                             \
    ROW(is_Switch_SSLEnabled, "Config.Services.SSLEnable", "SSLEnable = ")                                    \
    ROW(is_Switch_SNMP_Enabled, "Config.Services.SNMPEnable", "SNMPEnable = ")                                \
    ROW(get_Switch_IPv6Address, "Oper.System.Eth.0.IPv6Address.0", "IPv6Address = ")                          \
    ROW(get_Switch_IPv6Feature, "Oper.Switch.IPv6Feature", "IPv6Feature= ")                                   \
    ROW(get_Switch_IPv6Enable, "Config.System.IPv6Enable", "IPv6Enable= ")                                    \
    ROW(get_Switch_IPv4Address, "Oper.System.Eth.0.IPv4Address", "IPv4Address= ")                             \
    ROW(get_Switch_IPv4Feature, "Oper.Switch.IPv4Feature", "IPv4Feature= ")                                   \
    ROW(get_Switch_IPv4Enable, "Config.System.IPv4Enable", "IPv4Enable= ")                                    \
    ROW(get_Switch_PlanarPartNum, "Config.Mfg.PlanarPartNum", "PlanarPartNum = ")                             \
    ROW(get_Switch_ChassisSerialNum, "Config.Mfg.ChassisSerialNum", "ChassisSerialNum = ")                    \
    ROW(get_Switch_ChassisPartNum, "Config.Mfg.ChassisPartNum", "ChassisPartNum = ")                          \
    ROW(get_Switch_ActiveVer, "Oper.Switch.ActiveVer", "ActiveVersion = ")                                    \
    ROW(get_Switch_OemActiveVer, "Oper.Switch.OemActiveVer", "OemActiveVer = ")                               \
    ROW(get_Switch_Brand_Name, "Config.Mfg.BrandName", "BrandName = ")                                        \
    ROW(get_Switch_Type, "Oper.Switch.Type", "Switch Type = ")                                                \
    ROW(get_Switch_Domain_ID, "Oper.Switch.DomainID", "DomainID = ")                                          \
    ROW(get_Principal_Switch_World_Wide_Name, "Oper.Switch.WhoIsPrincipal",                                   \
        "Principal_switch_world_wide_name = ", toUpper)                                                       \
    ROW(get_Local_Switch_World_Wide_Name, "Oper.Switch.WWN",                                                  \
        "local_switch_world_wide_name = ", toUpper, 294)
// clang-format on

#define DEFINE_GETTER(function, ...)           \
    char* function() {                         \
        return read({#function, __VA_ARGS__}); \
    }
PROPERTIES(DEFINE_GETTER)
#undef DEFINE_GETTER
#undef PROPERTIES

int get_Product_Info(char** description, char** symbolicName, char** serialNumber, char** brand) {
    // A success may come without a text, and what a caller's variable held before is not ours to release.
    *description = *symbolicName = *serialNumber = *brand = nullptr;
    int32_t result = readText("Config.Snmp.SysDescr", description);
    if (result != 0) return result;
    result = readText("Config.Switch.SymName", symbolicName);
    if (result != 0) return result;
    // Required: from here on a failure gives the result of a release, and keeps the description; callers
    // release the description themselves and look at the texts.
    if (readText("Config.Mfg.ChassisSerialNum", serialNumber) != 0) return release(symbolicName);
    if (readText("Config.Mfg.BrandName", brand) != 0) {
        release(symbolicName);
        return release(serialNumber);
    }
    return 0;
}
