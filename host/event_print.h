#pragma once

#include <ostream>

#include "host/event_queue.h"

/** Prints an event on one line and flushes: as text with the local time, or as JSON with "time" in front. */
void printEvent(std::ostream& out, const HostEvent& event, bool json);
