#pragma once

#include <string_view>

#include "zoning/ZoningOutcome.h"

namespace datacache {

/** What a limit is called, in the log and for people. */
struct ZoningLimitNames {
    const char* log;
    const char* words;
};
const ZoningLimitNames& namesOf(ZoningLimit limit);

/** A call or a command that failed; empty when there is no memory for its text, as nothing may then be lost
 * but the reason. */
ZoningFailure failureOf(std::string_view call, int64_t result = 0) noexcept;

}  // namespace datacache
