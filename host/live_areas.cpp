#include "host/areas.h"

#include <algorithm>
#include <cstdlib>
#include <set>

#include "datacache/CacheReader.h"
#include "switchlib/NORV_Vex_Lib.h"
#include "vexlib/vexlib.h"

namespace host {

using namespace datacache;

std::optional<std::string> readKey(const std::string& key) {
    char* value = nullptr;
    uint32_t extra = 0;
    if (vex_smlGetV(hSwitch, &value, &extra, "%s", key.c_str()) != 0 || value == nullptr) return std::nullopt;
    std::string text = value;
    vex_libFreeMemory(value);
    return text;
}

void readAccounts() {
    CacheReader()->readAccounts();
}

Json accountsArea() {
    const CacheReader cache;
    Json names = Json::array();
    for (const std::string& name : cache.accounts()) names.push_back({{"name", name}});
    return {{"area", "accounts"}, {"upToDate", upToDate(CacheArea::Accounts)}, {"accounts", names}};
}

namespace {

constexpr struct {
    const char* name;
    char* (*get)();
} kProperties[] = {
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
    for (const auto& property : kProperties) area[property.name] = takeText(property.get());
    return area;
}

namespace {

/** Walks are driven by what the switch answers, so they need an end of their own. */
constexpr int kLongestWalk = 4096;

using Value = char[VEX_SML_VALUE_SIZE];

Json linksOf(const std::string& record) {
    Json links = Json::array();
    const int count = get_lsdb_record_link_count(record.c_str());
    for (int i = 0; i < count && i < kLongestWalk; ++i) {
        const std::string number = std::to_string(i);
        Value local{};
        Value remote{};
        const bool known = get_lsdb_record_link_local_information(record.c_str(), number.c_str(), local) &&
                           get_lsdb_record_link_remote_information(record.c_str(), number.c_str(), remote);
        if (!known) break;
        links.push_back({{"record", record}, {"link", i}, {"localPort", local}, {"neighbor", remote}});
    }
    return links;
}

int portCount() {
    const std::string text = readKey("Oper.Switch.MaxPorts").value_or("");
    return static_cast<int>(std::clamp(std::strtol(text.c_str(), nullptr, 10), 0L, 256L));
}

void append(Json& rows, const Json& more) {
    for (const Json& row : more) rows.push_back(row);
}

}  // namespace

Json lsdbArea() {
    Json records = Json::array();
    Json links = Json::array();
    std::set<std::string> seen;  // a walk that comes back to where it was ends there
    Value value{};
    for (bool more = get_first_lsdb_record(value) != nullptr; more && seen.size() < kLongestWalk;) {
        const std::string record = value;
        if (!seen.insert(record).second) break;
        const Json own = linksOf(record);
        records.push_back({{"record", record}, {"links", own.size()}});
        append(links, own);
        more = get_next_lsdb_record(record.c_str(), value) != nullptr;
    }

    Json devices = Json::array();
    for (int number = 0, count = portCount(); number < count; ++number) {
        const std::string port = std::to_string(number);
        seen.clear();
        bool more = get_first_attached_port(port.c_str(), value) != nullptr;
        while (more && seen.size() < kLongestWalk) {
            const std::string entry = value;
            if (!seen.insert(entry).second) break;
            devices.push_back({{"port", port}, {"device", entry}});
            more = get_next_attached_port(port.c_str(), entry.c_str(), value) != nullptr;
        }
    }
    return {{"area", "lsdb"}, {"records", records}, {"links", links}, {"attachedDevices", devices}};
}

}  // namespace host
