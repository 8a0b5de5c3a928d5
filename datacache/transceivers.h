#pragma once

#include <string>

#include "datacache/PortState.h"

/**
 * What the switch's media events say, written into the tables of transceivers until the next scan of the
 * port. A text with too few items is logged and changes nothing; nor does a port that the tables have no row
 * for.
 */
void mediaInserted(TransceiverState& transceivers, const std::string& text);
void mediaRemoved(TransceiverState& transceivers, const std::string& text);
