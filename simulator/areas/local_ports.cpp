#include <algorithm>
#include <cstdio>

#include "simulator/areas/Area.h"
#include "simulator/areas/Fabric.h"
#include "simulator/areas/keys.h"
#include "simulator/areas/transceiver.h"

namespace vexsim {
namespace {

constexpr int64_t most_ports = 256;

/** Codes of the media notifications, for which the library has no names. */
constexpr int32_t media_inserted = 76;
constexpr int32_t media_removed = 77;

std::string operKey(unsigned port, const char* field) {
    return "Oper.UserPort.0." + std::to_string(port) + '.' + field;
}

std::string typeKey(unsigned port) {
    return "Config.UserPort.0." + std::to_string(port) + ".Type";
}

/** What a port is like; the [ports] section has one for all, each [[ports.port]] one of its own. */
struct Port {
    std::string state = "Online";
    std::string admin = "Online";
    std::string type = "F";
    std::string hardware = "GL";
    Transceiver transceiver{3, 0x001122, {}, true, false};
};

std::string readOperState(TableReader& table, const char* field) {
    return table.word(field, {"Online", "Offline", "Diagnostics", "Isolated", "Down", "Downed",
                              "NotInstalled", "PoweredOff", "Unknown"});
}

std::string readAdminState(TableReader& table, const char* field) {
    return table.word(field, {"Online", "Offline", "Diagnostics", "Down", "Downed"});
}

std::string readType(TableReader& table, const char* field) {
    return table.word(field, {"G", "GL", "E", "F", "FL", "Donor", "TH", "TF", "TR", "PT", "Unknown"});
}

std::string readHardware(TableReader& table, const char* field) {
    return table.word(field, {"GL", "EXG", "Unknown"});
}

/** The fields that a table has, over those of `made`. */
Port readPort(TableReader& table, Port made) {
    if (table.has("state")) made.state = readOperState(table, "state");
    if (table.has("admin")) made.admin = readAdminState(table, "admin");
    if (table.has("type")) made.type = readType(table, "type");
    if (table.has("hardware")) made.hardware = readHardware(table, "hardware");
    if (std::optional<TableReader> part = table.table("transceiver")) {
        made.transceiver = readTransceiver(*part, made.transceiver);
        part->finish();
    }
    return made;
}

void setPort(Switch& target, unsigned number, const Port& port) {
    target.set(operKey(number, "OperState"), port.state);
    target.set(operKey(number, "AdminState"), port.admin);
    target.set(typeKey(number), port.type);
    target.set(operKey(number, "HWType"), port.hardware);
    setTransceiver(target, number, port.transceiver);
}

int64_t portCount(const Switch& target) {
    return target.number("Oper.Switch.MaxPorts");
}

void setPortCount(Switch& target, int64_t count) {
    target.set("Oper.Switch.MaxPorts", std::to_string(count));
}

/** The smallest switch that there is: one port, without a transceiver. */
void setDefaults(Switch& target) {
    setPortCount(target, 1);
    setPort(target, 0, Port());
}

void loadPorts(TableReader& table, Switch& target) {
    const auto count = static_cast<unsigned>(table.integer("count", 1, most_ports));
    const Port common = readPort(table, Port());
    setPortCount(target, count);
    for (unsigned number = 0; number < count; ++number) setPort(target, number, common);
    std::set<unsigned> described;
    for (TableReader& entry : table.tables("port")) {
        entry.rename("[[ports.port]]");
        const std::set<unsigned> numbers = entry.numbers("numbers", 0, count - 1);
        if (numbers.empty()) entry.fail("\"numbers\" must name ports");
        const Port port = readPort(entry, common);
        entry.finish();
        for (const unsigned number : numbers) {
            if (!described.insert(number).second)
                entry.fail("numbers", "port " + std::to_string(number) + " is described twice");
            setPort(target, number, port);
        }
    }
}

unsigned readNumber(TableReader& table) {
    return static_cast<unsigned>(table.integer("port", 0, most_ports - 1));
}

void needPort(const Switch& target, unsigned port) {
    if (port >= portCount(target)) throw StepError("the switch has no port " + std::to_string(port));
}

/** The third word of the source is the port's number. */
void raisePort(Switch& target, int32_t code, unsigned port, const std::string& what) {
    target.raise(code, "Port " + std::to_string(port) + ' ' + what, {{0, 0, static_cast<int32_t>(port)}});
}

Action stateStep(unsigned port, const std::optional<std::string>& oper,
                 const std::optional<std::string>& admin) {
    return [port, oper, admin](Switch& target) {
        needPort(target, port);
        if (oper) target.set(operKey(port, "OperState"), *oper);
        if (admin) target.set(operKey(port, "AdminState"), *admin);
        raisePort(
            target, VEX_EVENT_PORT_ATTR_CHANGE, port,
            target.value(operKey(port, "OperState")) + ", set " + target.value(operKey(port, "AdminState")));
    };
}

Action readOnline(TableReader& table) {
    return stateStep(readNumber(table), "Online", "Online");
}

Action readOffline(TableReader& table) {
    return stateStep(readNumber(table), "Offline", std::nullopt);
}

Action readState(TableReader& table) {
    const unsigned port = readNumber(table);
    std::optional<std::string> oper;
    std::optional<std::string> admin;
    if (table.has("state")) oper = readOperState(table, "state");
    if (table.has("admin")) admin = readAdminState(table, "admin");
    if (!oper && !admin) table.fail("step \"port_state\" needs \"state\" or \"admin\"");
    return stateStep(port, oper, admin);
}

/** A port module is put in or taken out. */
Action readAdded(TableReader& table) {
    const unsigned port = readNumber(table);
    return stateStep(port, table.has("state") ? readOperState(table, "state") : "Offline", std::nullopt);
}

Action readRemoved(TableReader& table) {
    return stateStep(readNumber(table), "NotInstalled", std::nullopt);
}

Action readTypeChange(TableReader& table) {
    const unsigned port = readNumber(table);
    std::optional<std::string> type;
    std::optional<std::string> hardware;
    if (table.has("type")) type = readType(table, "type");
    if (table.has("hardware")) hardware = readHardware(table, "hardware");
    if (!type && !hardware) table.fail("step \"port_type\" needs \"type\" or \"hardware\"");
    return [port, type, hardware](Switch& target) {
        needPort(target, port);
        if (type) target.set(typeKey(port), *type);
        if (hardware) target.set(operKey(port, "HWType"), *hardware);
        raisePort(target, VEX_EVENT_PORT_CFG_CHANGE, port, "type " + target.value(typeKey(port)));
    };
}

/** The serial number is set to 16 characters, and only one that fills them can be read back. */
Action readPlugged(TableReader& table) {
    const unsigned port = readNumber(table);
    const Transceiver transceiver = readTransceiver(table, Transceiver());
    return [port, transceiver](Switch& target) {
        needPort(target, port);
        setTransceiver(target, port, transceiver);
        char head[64];
        std::snprintf(head, sizeof head, "0;0;0;%u;1;%u;", port, transceiver.oui);
        const std::string serial = serialOf(transceiver, port);
        const std::string padding(16 - std::min<size_t>(serial.size(), 16), ' ');
        target.raise(media_inserted,
                     head + padding + serial + ';' + std::to_string(transceiverFormat(transceiver)),
                     {{0, 0, static_cast<int32_t>(port)}});
    };
}

Action readPulled(TableReader& table) {
    return [port = readNumber(table)](Switch& target) {
        needPort(target, port);
        Transceiver none;
        none.installed = false;
        setTransceiver(target, port, none);
        target.raise(media_removed, "0;0;0;" + std::to_string(port), {{0, 0, static_cast<int32_t>(port)}});
    };
}

/** A port's name is made from the switch's, so it follows when that changes. */
std::optional<Reading> readName(Switch& target, const std::string& key) {
    const std::optional<std::string> digits = keyMiddle(key, "Oper.UserPort.0.", ".WWN");
    const std::optional<uint16_t> port = digits ? keyNumber(*digits) : std::nullopt;
    if (!port || *port >= portCount(target)) return std::nullopt;
    return Reading{Ok, portName(Wwn(target.value("Oper.Switch.WWN")), *port).tostring()};
}

}  // namespace

Area localPortsArea() {
    Area made;
    made.name = "local ports";
    made.sections = {{"ports", false, loadPorts}};
    made.steps = {
        {"port_online", readOnline},
        {"port_offline", readOffline},
        {"port_state", readState},
        {"port_type", readTypeChange},
        {"port_added", readAdded},
        {"port_removed", readRemoved},
        {"transceiver_plugged", readPlugged},
        {"transceiver_pulled", readPulled},
    };
    made.defaults = setDefaults;
    made.read = readName;
    return made;
}

}  // namespace vexsim
