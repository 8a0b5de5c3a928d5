#include "simulator/areas/transceiver.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <numeric>

namespace vexsim {
namespace {

using Bytes = std::array<uint8_t, 64>;

void putText(Bytes& bytes, size_t at, const std::string& text) {
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}

/** The base fields of SFF-8472 that a short-wave 8 Gbit/s optical transceiver has. */
Bytes dataOf(const Transceiver& transceiver) {
    Bytes bytes{};
    if (!transceiver.installed) return bytes;
    bytes[0] = static_cast<uint8_t>(transceiver.identifier);
    bytes[1] = 0x04;   // extended identifier: two-wire interface
    bytes[2] = 0x07;   // connector: LC
    bytes[11] = 0x01;  // encoding: 8B/10B
    bytes[12] = 85;    // nominal rate, units of 100 Mbit/s
    putText(bytes, 20, "SIMULATED       ");
    bytes[37] = static_cast<uint8_t>(transceiver.oui >> 16);
    bytes[38] = static_cast<uint8_t>(transceiver.oui >> 8);
    bytes[39] = static_cast<uint8_t>(transceiver.oui);
    putText(bytes, 40, "SIM-8G-SW       ");
    putText(bytes, 56, "A   ");
    bytes[60] = 850 >> 8;  // wavelength, nm
    bytes[61] = 850 & 0xFF;
    bytes[63] = static_cast<uint8_t>(std::accumulate(bytes.begin(), bytes.end() - 1, 0U));
    return bytes;
}

}  // namespace

Transceiver readTransceiver(TableReader& table, Transceiver made) {
    if (table.has("identifier")) made.identifier = static_cast<unsigned>(table.integer("identifier", 0, 255));
    if (table.has("oui")) made.oui = static_cast<unsigned>(table.integer("oui", 0, 0xFFFFFF));
    if (table.has("serial")) made.serial = table.text("serial");
    if (table.has("ddm")) made.ddm = table.flag("ddm");
    made.installed = !table.has("present") || table.flag("present");
    return made;
}

std::string serialOf(const Transceiver& transceiver, unsigned port) {
    if (!transceiver.installed || !transceiver.serial.empty()) return transceiver.serial;
    char digits[24];
    std::snprintf(digits, sizeof digits, "SIM%013u", port);
    return digits;
}

std::string transceiverData(const Transceiver& transceiver, size_t first) {
    const Bytes bytes = dataOf(transceiver);
    std::string text;
    for (size_t i = first; i < first + 32; ++i) {
        char digits[4];
        std::snprintf(digits, sizeof digits, "%02X", unsigned{bytes.at(i)});
        text += digits;
    }
    return text;
}

int transceiverFormat(const Transceiver& transceiver) {
    if (!transceiver.installed || transceiver.identifier == 0) return 2;
    return transceiver.identifier == 3 ? 0 : 1;
}

void setTransceiver(Switch& target, unsigned port, const Transceiver& transceiver) {
    const std::string stem = "Oper.UserPort.0." + std::to_string(port) + '.';
    target.set(stem + "DDM.Supported", transceiver.installed && transceiver.ddm ? "True" : "False");
    target.set(stem + "SFPData0_31", transceiverData(transceiver, 0));
    target.set(stem + "SFPData32_63", transceiverData(transceiver, 32));
    target.set(stem + "SFPSerialNumber", serialOf(transceiver, port));
}

}  // namespace vexsim
