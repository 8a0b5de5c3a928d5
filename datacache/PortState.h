#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <string>

#include "common/Wwn.h"

/** Rows of the tables of local ports; ports are counted from 0. */
constexpr unsigned kPortRows = 256;

/** What the cache knows of the local ports, less their transceivers; a failed scan puts the earlier state
 * back. */
struct PortState {
    bool portsLoaded = false;  ///< scanned completely at least once
    uint16_t portCount = 0;    ///< ports that are scanned, at most 128
    std::bitset<kPortRows> localPortsPresent;
    std::array<uint16_t, kPortRows> portStatus{};  ///< first CIM OperationalStatus value
    std::array<uint16_t, kPortRows> portType{};    ///< CIM port type
    std::array<uint16_t, kPortRows> portHWType{};  ///< CIM hardware type
    Wwn port0Wwn;                                  ///< the name from which all local port names are derived
};

/** The transceivers of the local ports, written by the port scan and by media events. */
struct TransceiverState {
    TransceiverState() {
        mediaFormat.fill(2);
        mediaVendorOUI.fill("000000");
        mediaVendorSN.fill("0000000000000000");
    }
    std::array<bool, kPortRows> mediaPresent{};    ///< present, with digital diagnostics (SFF-8472)
    std::array<uint8_t, kPortRows> mediaFormat{};  ///< 0 SFP, 1 another known form, 2 unknown
    std::array<std::string, kPortRows> mediaVendorOUI;
    std::array<std::string, kPortRows> mediaVendorSN;
};
