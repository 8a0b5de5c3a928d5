#include "simulator/areas/Area.h"
#include "simulator/areas/fields.h"
#include "simulator/areas/key_step.h"

namespace vexsim {
namespace {

constexpr const char* kIpv4Address = "Oper.System.Eth.0.IPv4Address";
constexpr const char* kIpv6Address = "Oper.System.Eth.0.IPv6Address.0";

const Fields& services() {
    static const Fields fields{{
        {"telnet", "Config.Services.TelnetEnable", Field::Flag, "False"},
        {"ssh", "Config.Services.SSHEnable", Field::Flag, "True"},
        {"embedded_gui", "Config.Services.EmbeddedGUIEnable", Field::Flag, "True"},
        {"ssl", "Config.Services.SSLEnable", Field::Flag, "True"},
        {"snmp", "Config.Services.SNMPEnable", Field::Flag, "True"},
    }};
    return fields;
}

const Fields& snmp() {
    static const Fields fields{{
        {"read_community", "Config.Snmp.ReadComm", Field::Text, "public"},
        {"description", "Config.Snmp.SysDescr", Field::Text, "Fibre Channel switch module"},
    }};
    return fields;
}

/** Addresses from the ranges that are set aside for documentation (RFC 5737, RFC 3849). */
const Fields& network() {
    static const Fields fields{{
        {"ipv4", "Config.System.IPv4Enable", Field::Flag, "True"},
        {"ipv4_address", kIpv4Address, Field::IPv4, "192.0.2.10"},
        {"ipv6", "Config.System.IPv6Enable", Field::Flag, "False"},
        {"ipv6_address", kIpv6Address, Field::IPv6, "2001:db8::10"},
    }};
    return fields;
}

void setPropertyDefaults(Switch& target) {
    for (const Fields* fields : {&services(), &snmp(), &network()}) fields->setDefaults(target);
}

Action readAddress(TableReader& table) {
    const bool six = table.integer("version", 4, 6) == 6;
    if (!six && table.integer("version", 4, 6) != 4) table.fail("version", "\"version\" must be 4 or 6");
    return [six, address = table.address("address", six ? 6 : 4)](Switch& target) {
        target.set(six ? kIpv6Address : kIpv4Address, address);
        target.raise(six ? VEX_EVENT_IPV6_ADDRESS_CHANGE : VEX_EVENT_IP_ADDRESS_CHANGE, address);
    };
}

}  // namespace

Area propertiesArea() {
    Area made;
    made.name = "properties";
    made.sections = {{"services", false, loadFields<services>, services},
                     {"snmp", false, loadFields<snmp>, snmp},
                     {"network", false, loadFields<network>, network}};
    made.steps = {
        {"ip_address", readAddress},
        // A setting that somebody else changes, past the edit session.
        keyStep({"service",
                 {keyOfField("name", services()), {"enabled", StepField::Flag}},
                 {{"{name.key}", "{enabled}"}},
                 VEX_EVENT_SERVICES_CFG_CHANGE,
                 "{name}"}),
    };
    made.defaults = setPropertyDefaults;
    return made;
}

}  // namespace vexsim
