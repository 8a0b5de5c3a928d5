#include "host/areas.h"
#include "switchlib/NORV_Vex_Lib.h"

namespace {

constexpr struct {
    const char* name;
    char* (*get)();
} properties[] = {
    {"type", get_Switch_Type},
    {"brandName", get_Switch_Brand_Name},
    {"activeVersion", get_Switch_ActiveVer},
    {"oemActiveVersion", get_Switch_OemActiveVer},
    {"chassisSerialNumber", get_Switch_ChassisSerialNum},
    {"chassisPartNumber", get_Switch_ChassisPartNum},
    {"planarPartNumber", get_Switch_PlanarPartNum},
    {"localSwitch", get_Local_Switch_World_Wide_Name},
    {"principalSwitch", get_Principal_Switch_World_Wide_Name},
    {"domainId", get_Switch_Domain_ID},
    {"telnetEnabled", get_Switch_Telnet_Enabled},
    {"sshEnabled", get_Switch_SSH_Enabled},
    {"embeddedGuiEnabled", get_Switch_EmbeddedGUI_Enabled},
    {"sslEnabled", is_Switch_SSLEnabled},
    {"snmpEnabled", is_Switch_SNMP_Enabled},
    {"snmpReadCommunity", get_Switch_SNMPReadCommunity},
    {"ipv4Feature", get_Switch_IPv4Feature},
    {"ipv4Enabled", get_Switch_IPv4Enable},
    {"ipv4Address", get_Switch_IPv4Address},
    {"ipv6Feature", get_Switch_IPv6Feature},
    {"ipv6Enabled", get_Switch_IPv6Enable},
    {"ipv6Address", get_Switch_IPv6Address},
};

/** A text that the switch handed over, as JSON; releases it. */
Json takeText(char* text) {
    if (text == nullptr) return Json();
    Json value = std::string(text);
    vex_libFreeMemory(text);
    return value;
}

}  // namespace

Json propertiesArea() {
    Json area{{"area", "properties"}};
    char* description = nullptr;
    char* symbolicName = nullptr;
    char* serialNumber = nullptr;
    char* brand = nullptr;
    get_Product_Info(&description, &symbolicName, &serialNumber, &brand);  // what failed stays null
    area["systemDescription"] = takeText(description);
    area["symbolicName"] = takeText(symbolicName);
    takeText(serialNumber);  // these two come again below
    takeText(brand);
    for (const auto& property : properties) area[property.name] = takeText(property.get());
    return area;
}
