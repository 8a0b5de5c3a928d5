#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <string>

#include "common/Wwn.h"

namespace datacache {

/** Rows of the tables of local ports; ports are counted from 0. */
constexpr unsigned kPortRows = 256;

/** What the cache knows of the local ports, less their transceivers; a failed scan puts the earlier state
 * back. */
struct PortState {
    bool portsLoaded = false;  ///< scanned completely at least once
    uint16_t portCount = 0;    ///< ports that are scanned, at most 128; 0 for a negative number of the switch
    std::bitset<kPortRows> localPortsPresent;
    std::array<uint16_t, kPortRows> portStatus{};  ///< first CIM OperationalStatus value
    std::array<uint16_t, kPortRows> portType{};    ///< CIM port type
    std::array<uint16_t, kPortRows> portHWType{};  ///< CIM hardware type
    Wwn port0Wwn;                                  ///< the name from which all local port names are derived
    // New fields are added here, at the end.
};

constexpr uint16_t kPortTypeDonor = 16000;        ///< a port lent to another use: no port of the fabric
constexpr uint16_t kPortTypePassThrough = 16004;  ///< a port that walks leave out

/** Vendor OUI, serial number and format of a port without a transceiver. */
constexpr const char* kNoVendorOUI = "000000";
constexpr const char* kNoVendorSN = "0000000000000000";

enum MediaFormat : uint8_t { MEDIA_SFP = 0, MEDIA_OTHER = 1, MEDIA_UNKNOWN = 2 };

/** The transceivers of the local ports, written by the port scan and by media events. */
struct TransceiverState {
    TransceiverState() {
        for (unsigned port = 0; port < kPortRows; ++port) clear(port);
    }
    /** No transceiver, or nothing known of it. */
    void clear(size_t port) {
        mediaPresent[port] = false;
        mediaFormat[port] = MEDIA_UNKNOWN;
        mediaVendorOUI[port] = kNoVendorOUI;
        mediaVendorSN[port] = kNoVendorSN;
    }
    std::array<bool, kPortRows> mediaPresent{};    ///< present, with digital diagnostics (SFF-8472)
    std::array<uint8_t, kPortRows> mediaFormat{};  ///< a MediaFormat, or what a media event said
    std::array<std::string, kPortRows> mediaVendorOUI;
    std::array<std::string, kPortRows> mediaVendorSN;
    // New fields are added here, at the end.
};

}  // namespace datacache
