#pragma once

#include <string>

#include "simulator/Switch.h"
#include "simulator/toml_reader.h"

namespace vexsim {

/** A port's transceiver, as far as the switch tells of it. */
struct Transceiver {
    unsigned identifier = 3; /**< SFF-8472 byte 0: 3 is an SFP */
    unsigned oui = 0x001122; /**< the vendor's company identifier, 24 bits */
    std::string serial;      /**< empty: made from the port's number, 16 characters */
    bool ddm = true;         /**< digital diagnostics */
    bool installed = true;   /**< without one the port's data are all zero */
};

/** Reads the fields that a table has over those that are given. */
Transceiver readTransceiver(TableReader& table, Transceiver made);

/** The serial number of the transceiver in this port. */
std::string serialOf(const Transceiver& transceiver, unsigned port);

/** Sets the port's keys. */
void setTransceiver(Switch& target, unsigned port, const Transceiver& transceiver);

/** Bytes 0 to 63 of its data (SFF-8472 base fields, checksum included), or 32 of them from `first` on, in
 * hexadecimal. */
std::string transceiverData(const Transceiver& transceiver, size_t first);

/** What a notification says of the form: 0 SFP, 1 another, 2 unknown. */
int transceiverFormat(const Transceiver& transceiver);

}  // namespace vexsim
