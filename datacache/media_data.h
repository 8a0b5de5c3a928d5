#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/** What a transceiver says of itself, brought into the form that hosts get: pure functions. */

/** Vendor OUI, serial number and format of a port without a transceiver. */
constexpr const char* kNoVendorOUI = "000000";
constexpr const char* kNoVendorSN = "0000000000000000";

enum MediaFormat : uint8_t { MEDIA_SFP = 0, MEDIA_OTHER = 1, MEDIA_UNKNOWN = 2 };

/** The form that byte 0 of the transceiver's data names (SFF-8472 identifier); `data` is in hexadecimal. */
MediaFormat mediaFormatOf(std::string_view data0to31);

/** The vendor's company identifier, bytes 37 to 39 (SFF-8472), as its 6 digits in `data`. */
std::string vendorOUIOf(std::string_view data32to63);

/**
 * A serial number without trailing spaces and without runs of spaces: the second and every further space of a
 * run becomes '_'. At most 17 characters of it count; a longer one keeps the spaces that the cut leaves last.
 */
std::string sanitizedSerial(std::string_view serial);
