#pragma once

#include <string>
#include <string_view>

#include "report/secrets.h"

namespace report {

/**
 * The last lines of a log, of which lines of other processes than `process` are left out: "lines", each with
 * "time" (as the log has it), "thread", "text", and where it came more than once in a row, "times" and
 * "until". Of these the newest `most` are kept, and how many earlier ones are "leftOut". A line without the
 * log's prefix goes with the one before.
 */
Json foldedLog(std::string_view text, long process, size_t most, const Secrets& secrets);

}  // namespace report
