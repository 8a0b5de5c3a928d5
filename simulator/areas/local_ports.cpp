#include <algorithm>
#include <cstdio>

#include "simulator/areas/Fabric.h"
#include "simulator/areas/key_step.h"
#include "simulator/areas/keys.h"
#include "simulator/areas/transceiver.h"
#include "simulator/event_codes.h"

namespace vexsim {
namespace {

constexpr int64_t kMostLocalPorts = 256;

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

constexpr Words kPortStates{"Online", "Offline",      "Diagnostics", "Isolated", "Down",
                            "Downed", "NotInstalled", "PoweredOff",  "Unknown"};

constexpr Words kPortAdminStates{"Online", "Offline", "Diagnostics", "Down", "Downed"};

constexpr Words kPortTypes{"G", "GL", "E", "F", "FL", "Donor", "TH", "TF", "TR", "PT", "Unknown"};

constexpr Words kHardwareTypes{"GL", "EXG", "Unknown"};

/** The fields that a table has, over those of `made`. */
Port readPort(TableReader& table, Port made) {
    if (table.has("state")) made.state = table.word("state", kPortStates);
    if (table.has("admin")) made.admin = table.word("admin", kPortAdminStates);
    if (table.has("type")) made.type = table.word("type", kPortTypes);
    if (table.has("hardware")) made.hardware = table.word("hardware", kHardwareTypes);
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
void setPortDefaults(Switch& target) {
    setPortCount(target, 1);
    setPort(target, 0, Port());
}

void loadPorts(TableReader& table, Switch& target) {
    const auto count = static_cast<unsigned>(table.integer("count", 1, kMostLocalPorts));
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
    return static_cast<unsigned>(table.integer("port", 0, kMostLocalPorts - 1));
}

void needPort(const Switch& target, unsigned port) {
    if (port >= portCount(target)) throw StepError("the switch has no port " + std::to_string(port));
}

constexpr const char* kOperState = "Oper.UserPort.0.{port}.OperState";
constexpr const char* kAdminState = "Oper.UserPort.0.{port}.AdminState";

/** A step that changes a port; the third word of the event's source is the port's number. */
StepKind portStep(const char* name, std::vector<StepField> fields,
                  std::vector<std::pair<const char*, const char*>> keys,
                  int32_t code = VEX_EVENT_PORT_ATTR_CHANGE,
                  const char* text =
                      "Port {port} [Oper.UserPort.0.{port}.OperState], set "
                      "[Oper.UserPort.0.{port}.AdminState]") {
    fields.push_back(numberField("port", 0, kMostLocalPorts - 1));
    return keyStep({name,
                    std::move(fields),
                    std::move(keys),
                    code,
                    text,
                    {nullptr, nullptr, "port"},
                    [](const Switch& target, const StepValues& values) {
                        needPort(target, static_cast<unsigned>(std::stoul(values.at("port"))));
                    }});
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
        target.raise(kMediaInserted,
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
        target.raise(kMediaRemoved, "0;0;0;" + std::to_string(port), {{0, 0, static_cast<int32_t>(port)}});
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
        portStep("port_online", {}, {{kOperState, "Online"}, {kAdminState, "Online"}}),
        portStep("port_offline", {}, {{kOperState, "Offline"}}),
        portStep("port_state",
                 {optional(wordField("state", kPortStates)), optional(wordField("admin", kPortAdminStates))},
                 {{kOperState, "{state}"}, {kAdminState, "{admin}"}}),
        portStep(
            "port_type",
            {optional(wordField("type", kPortTypes)), optional(wordField("hardware", kHardwareTypes))},
            {{"Config.UserPort.0.{port}.Type", "{type}"}, {"Oper.UserPort.0.{port}.HWType", "{hardware}"}},
            VEX_EVENT_PORT_CFG_CHANGE, "Port {port} type [Config.UserPort.0.{port}.Type]"),
        // A port module is put in or taken out.
        portStep("port_added", {orElse(wordField("state", kPortStates), "Offline")},
                 {{kOperState, "{state}"}}),
        portStep("port_removed", {}, {{kOperState, "NotInstalled"}}),
        {"transceiver_plugged", readPlugged},
        {"transceiver_pulled", readPulled},
    };
    made.defaults = setPortDefaults;
    made.read = readName;
    return made;
}

}  // namespace vexsim
