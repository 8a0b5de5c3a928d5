#include <algorithm>
#include <cstdio>

#include "simulator/areas/Area.h"
#include "simulator/areas/Fabric.h"

namespace vexsim {
namespace {

constexpr int64_t kLastPort = 255;

/** A device that is logged in at a port of the simulated switch. */
struct Device {
    std::string wwn;
    unsigned port;
};

/** The name server's devices, in the order in which they logged in. */
struct NameServer {
    std::vector<Device> devices;
};

std::vector<Device>::iterator find(NameServer& server, const std::string& wwn) {
    return std::find_if(server.devices.begin(), server.devices.end(),
                        [&](const Device& device) { return device.wwn == wwn; });
}

unsigned readPort(TableReader& table) {
    return table.has("port") ? static_cast<unsigned>(table.integer("port", 0, kLastPort)) : 0;
}

/** One device, or several that come or go together. */
std::vector<std::string> readNames(TableReader& table) {
    std::vector<std::string> names = table.has("wwns") ? table.wwns("wwns") : std::vector{table.wwn("wwn")};
    for (std::string& name : names) name = Wwn(name).tostring();
    return names;
}

/** An entry as notifications have it: address in the fabric, kind of the port, name. */
std::string payload(const Switch& target, const Device& device) {
    char address[16];
    std::snprintf(address, sizeof address, "%02x%02x00", localDomain(target) & 0xFFU, device.port & 0xFFU);
    return address + (",N," + device.wwn);
}

/** Logs a device in that is not there yet. */
const Device& logIn(NameServer& server, const std::string& name, unsigned port) {
    if (find(server, name) != server.devices.end())
        throw StepError("the name server has " + name + " already");
    return server.devices.emplace_back(Device{name, port});
}

void loadDevice(TableReader& table, Switch& target) {
    for (const std::string& name : readNames(table)) logIn(target.part<NameServer>(), name, readPort(table));
}

Action readLogIn(TableReader& table) {
    return [names = readNames(table), port = readPort(table)](Switch& target) {
        std::string text;
        for (const std::string& name : names) {
            const Device& device = logIn(target.part<NameServer>(), name, port);
            text += (text.empty() ? "" : ";") + payload(target, device);
        }
        target.raise(VEX_EVENT_NS_ENTRYADDED, text);
    };
}

Action readLogOut(TableReader& table) {
    return [names = readNames(table)](Switch& target) {
        NameServer& server = target.part<NameServer>();
        std::string text;
        for (const std::string& name : names) {
            const auto found = find(server, name);
            if (found == server.devices.end()) throw StepError("the name server has no " + name);
            text += (text.empty() ? "" : ";") + payload(target, *found);
            server.devices.erase(found);
        }
        target.raise(VEX_EVENT_NS_ENTRYDELETED, text);
    };
}

/** The devices at one port: "FirstNsEntry", and "NextNsEntry.NAME" for the one after NAME. */
std::optional<Reading> readEntry(Switch& target, const std::string& key) {
    const std::string prefix = "Oper.NameServerAll.";
    if (key.compare(0, prefix.size(), prefix) != 0) return std::nullopt;
    const size_t dot = key.find('.', prefix.size());
    if (dot == std::string::npos) return Reading{UnknownKey, {}};
    const std::string port = key.substr(prefix.size(), dot - prefix.size());
    const std::string field = key.substr(dot + 1);
    const std::string next = "NextNsEntry.";
    const bool first = field == "FirstNsEntry";
    if (!first && field.compare(0, next.size(), next) != 0) return Reading{UnknownKey, {}};
    bool passed = first;
    for (const Device& device : target.part<NameServer>().devices) {
        if (std::to_string(device.port) != port) continue;
        if (passed) return Reading{Ok, device.wwn};
        passed = device.wwn == field.substr(next.size());
    }
    return Reading{EndOfList, {}};
}

}  // namespace

Area nameServerArea() {
    Area made;
    made.name = "name server";
    made.sections = {{"name_server", true, loadDevice}};
    made.steps = {{"name_server_add", readLogIn}, {"name_server_remove", readLogOut}};
    made.read = readEntry;
    return made;
}

}  // namespace vexsim
