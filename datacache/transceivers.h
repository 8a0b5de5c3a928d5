#pragma once

#include <string>
#include <string_view>

#include "datacache/PortState.h"

namespace datacache {

/**
 * What the switch's media events say, written into the tables of transceivers until the next scan of the
 * port. A text with too few items is logged and changes nothing; nor does a port that the tables have no row
 * for.
 */
void mediaInserted(TransceiverState& transceivers, const std::string& text);
void mediaRemoved(TransceiverState& transceivers, const std::string& text);

// What a transceiver says of itself, brought into the form that hosts get: pure functions.

/** The form that byte 0 of the transceiver's data names (SFF-8472 identifier); `data` is in hexadecimal. */
MediaFormat mediaFormatOf(std::string_view data0to31);

/** The vendor's company identifier, bytes 37 to 39 (SFF-8472), as its 6 digits in `data`. */
std::string vendorOUIOf(std::string_view data32to63);

/**
 * A serial number without trailing spaces and without runs of spaces: the second and every further space of a
 * run becomes '_'. At most 17 characters of it count; a longer one keeps the spaces that the cut leaves last.
 */
std::string sanitizedSerial(std::string_view serial);

}  // namespace datacache
