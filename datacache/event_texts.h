#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace datacache {

/**
 * What the payloads of switch events say: pure functions of the text, up to 1400 bytes of anything.
 *
 * The texts are made for people and differ by firmware, so the rules that find a sensor's name in them go by
 * position and are exact to the character. The rules that take a piece of the text throw
 * std::out_of_range("basic_string::substr") where the piece would begin beyond the text's end.
 */

/** The sensor of a temperature alarm as "NAME sensor", or "unknown". */
std::string overheatDescription(const std::string& text);

/** The sensor of a power supply's voltage alarm as "NAME sensor", or "unknown". */
std::string voltageDescription(const std::string& text, bool tooHigh);

/** A transceiver was plugged: "%d;%d;%d;%d;%d;%d;%16s;%d". */
struct MediaInserted {
    static constexpr int kItems = 8;
    int items = 0;  ///< converted, or -1 for a text that ends before the first: good only if kItems
    int32_t port = 0;
    int32_t presence = 0;  ///< 0: there is none after all
    int32_t vendorOUI = 0;
    std::string vendorSN;  ///< at most 16 characters
    int32_t format = 0;
};
MediaInserted parseMediaInserted(const std::string& text);

/** A transceiver was pulled: "%d;%d;%d;%d". */
struct MediaRemoved {
    static constexpr int kItems = 4;
    int items = 0;  ///< as above
    int32_t port = 0;
};
MediaRemoved parseMediaRemoved(const std::string& text);

/**
 * Takes the next entry "FIELD,FIELD,PORTNAME;" of a name server's list, from `position` on, and moves
 * `position` behind it. False at the end of the list and at an entry with fewer fields, which ends it.
 */
bool nextNameServerEntry(const std::string& text, size_t& position, std::string& portName);

}  // namespace datacache
