#include <array>
#include <cstdio>

#include "capture/sections.h"
#include "simulator/areas/transceiver.h"

namespace capture {

namespace {

using vexsim::Transceiver;

constexpr int64_t kMostPorts = 256;

constexpr struct {
    const char* field;
    const char* stem;
    const char* key;
} kWords[] = {
    {"state", "Oper.UserPort.0.", ".OperState"},
    {"admin", "Oper.UserPort.0.", ".AdminState"},
    {"type", "Config.UserPort.0.", ".Type"},
    {"hardware", "Oper.UserPort.0.", ".HWType"},
};

/** A port as the file describes one; empty words for what was not read. */
struct Port {
    std::array<std::string, std::size(kWords)> words;
    Transceiver transceiver;
};

/** A number in the transceiver's data, which are hexadecimal. */
unsigned dataNumber(const std::string& data, size_t byte, size_t bytes) {
    return static_cast<unsigned>(std::stoul(data.substr(2 * byte, 2 * bytes), nullptr, 16));
}

Port readPort(const Answers& answers, unsigned number) {
    Port port;
    const std::string digits = std::to_string(number);
    for (size_t i = 0; i < port.words.size(); ++i) {
        const std::string* const word = answers.value(kWords[i].stem + digits + kWords[i].key);
        if (word != nullptr) port.words[i] = *word;
    }
    const std::string stem = "Oper.UserPort.0." + digits + '.';
    std::string data;
    for (const char* half : {"SFPData0_31", "SFPData32_63"}) {
        if (const std::string* const bytes = answers.value(stem + half)) data += *bytes;
    }
    const bool readable =
        data.size() == 128 && data.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    port.transceiver.installed = readable && data.find_first_not_of('0') != std::string::npos;
    if (!port.transceiver.installed) return port;
    port.transceiver.identifier = dataNumber(data, 0, 1);
    port.transceiver.oui = dataNumber(data, 37, 3);
    const std::string* const ddm = answers.value(stem + "DDM.Supported");
    port.transceiver.ddm = ddm == nullptr || *ddm == "True";
    const std::string* const serial = answers.value(stem + "SFPSerialNumber");
    if (serial != nullptr && *serial != serialOf(Transceiver(), number)) port.transceiver.serial = *serial;
    return port;
}

/** What most have, the first of those that are equally frequent; null for nothing to choose from. */
template <typename Value, typename Get>
Value most(const std::vector<Port>& ports, Value fallback, Get get) {
    std::vector<std::pair<Value, size_t>> counts;
    for (const Port& port : ports) {
        const std::optional<Value> value = get(port);
        if (!value) continue;
        auto found = counts.begin();
        while (found != counts.end() && found->first != *value) ++found;
        if (found == counts.end()) found = counts.insert(found, {*value, 0});
        ++found->second;
    }
    size_t best = 0;
    for (const auto& [value, count] : counts) {
        if (count <= best) continue;
        fallback = value;
        best = count;
    }
    return fallback;
}

Port commonPort(const std::vector<Port>& ports) {
    Port common;
    for (size_t i = 0; i < common.words.size(); ++i) {
        common.words[i] = most(ports, std::string(), [i](const Port& port) {
            return port.words[i].empty() ? std::nullopt : std::optional(port.words[i]);
        });
    }
    const auto ofInstalled = [&](auto field, auto fallback) {
        return most(ports, fallback, [field](const Port& port) {
            return port.transceiver.installed ? std::optional(port.transceiver.*field) : std::nullopt;
        });
    };
    common.transceiver.installed =
        most(ports, false, [](const Port& port) { return std::optional(port.transceiver.installed); });
    if (!common.transceiver.installed) return common;  // each that is there says all of itself
    common.transceiver.identifier = ofInstalled(&Transceiver::identifier, 3U);
    common.transceiver.oui = ofInstalled(&Transceiver::oui, 0U);
    common.transceiver.ddm = ofInstalled(&Transceiver::ddm, true);
    return common;
}

std::string hexOui(unsigned oui) {
    char text[12];
    std::snprintf(text, sizeof text, "0x%06X", oui);
    return text;
}

/** The fields in which a transceiver differs from another, and one at least, as there is one. */
Table transceiverFields(const Transceiver& transceiver, const Transceiver& common) {
    Table fields;
    if (transceiver.identifier != common.identifier) fields.add("identifier", transceiver.identifier);
    if (transceiver.oui != common.oui) fields.add("oui", hexOui(transceiver.oui));
    if (!transceiver.serial.empty()) fields.add("serial", quoted(transceiver.serial));
    if (transceiver.ddm != common.ddm) fields.add("ddm", transceiver.ddm ? "true" : "false");
    if (fields.lines.empty()) fields.add("oui", hexOui(transceiver.oui));
    return fields;
}

std::string inlineTransceiver(const Transceiver& transceiver, const Transceiver& common) {
    if (!transceiver.installed) return common.installed ? "{present = false}" : "";
    const bool same = transceiver.identifier == common.identifier && transceiver.oui == common.oui &&
                      transceiver.serial.empty() && transceiver.ddm == common.ddm;
    if (same && common.installed) return "";
    std::string text;
    for (const std::string& line : transceiverFields(transceiver, common).lines)
        text += (text.empty() ? "" : ", ") + line;
    return '{' + text + '}';
}

/** The lines of a [[ports.port]] table, less the numbers. */
std::vector<std::string> differences(const Port& port, const Port& common) {
    Table table;
    for (size_t i = 0; i < port.words.size(); ++i) {
        if (!port.words[i].empty() && port.words[i] != common.words[i])
            table.add(kWords[i].field, quoted(port.words[i]));
    }
    const std::string transceiver = inlineTransceiver(port.transceiver, common.transceiver);
    if (!transceiver.empty()) table.add("transceiver", transceiver);
    return table.lines;
}

}  // namespace

void describePorts(const Answers& answers, Document& document) {
    const std::optional<int64_t> count = answers.number("Oper.Switch.MaxPorts");
    if (!count || *count < 1 || *count > kMostPorts) return;
    std::vector<Port> ports;
    for (unsigned number = 0; number < *count; ++number) ports.push_back(readPort(answers, number));
    const Port common = commonPort(ports);

    Table& section = document.add("[ports]");
    section.add("count", *count);
    for (size_t i = 0; i < common.words.size(); ++i) {
        if (!common.words[i].empty()) section.add(kWords[i].field, quoted(common.words[i]));
    }
    if (common.transceiver.installed) {
        document.add("[ports.transceiver]").lines =
            transceiverFields(common.transceiver, Transceiver()).lines;
    }
    std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> groups;  // lines, numbers
    for (unsigned number = 0; number < ports.size(); ++number) {
        const std::vector<std::string> lines = differences(ports[number], common);
        if (lines.empty()) continue;
        auto group = groups.begin();
        while (group != groups.end() && group->first != lines) ++group;
        if (group == groups.end()) group = groups.insert(group, {lines, {}});
        group->second.push_back(std::to_string(number));
    }
    for (const auto& [lines, numbers] : groups) {
        Table& port = document.add("[[ports.port]]");
        port.add("numbers", listOf(numbers));
        port.lines.insert(port.lines.end(), lines.begin(), lines.end());
    }
}

}  // namespace capture
