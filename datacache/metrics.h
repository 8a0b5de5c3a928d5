#pragma once

#include <string>

#include "common/export.h"
#include "datacache/Health.h"

namespace datacache {

/**
 * The whole of a Health as OpenMetrics text, for a monitoring system: a line for every field, and
 * `datacache_well` and `datacache_problems`, which sum them up. Asks for nothing and changes nothing. Throws
 * std::bad_alloc alone.
 *
 * Names begin with `datacache_`. Times are seconds of the Unix epoch, 0 for never; durations are seconds;
 * flags are 0 or 1. What counts since the process began ends in `_total`, wraps at 2^32, and is a counter;
 * the rest are gauges. Words are labels of a metric that ends in `_info` and is always 1; there everything
 * but printable ASCII is written as `\x1b`, as texts from the switch hold any bytes. The metrics and their
 * order stay the same from one call to the next, but for the refused event codes and the calls that have not
 * returned, of which there is one line each.
 *
 * The type of a counter is given under its full name, with `_total`, as the readers of Prometheus's text
 * format ask for it (the text file collector, `promtool check metrics`).
 */
DC_EXPORT std::string metricsText(const Health& health);

}  // namespace datacache
