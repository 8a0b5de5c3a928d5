#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zoning/ZoningOutcome.h"

namespace datacache {

/** What a limit is called, in the log and for people. */
struct ZoningLimitNames {
    const char* log;
    const char* words;
};
const ZoningLimitNames& namesOf(ZoningLimit limit);

// Nothing below throws: where memory is short a text stays empty, as nothing may then be lost but the reason.

/** A call or a command that failed. */
ZoningFailure failureOf(std::string_view call, int64_t result = 0) noexcept;
/** The same, for what it was about. */
ZoningFailure failureAbout(ZoningObject object, std::string_view name, std::string_view call = {},
                           int64_t result = 0) noexcept;
/** A read that failed, for the key or the name that it asked for. */
ZoningFailure failureOfRead(std::string_view call, std::string_view key, int64_t result = 0) noexcept;
/** Notes the command by which lock or admin rights should have been given back. */
void noteHeld(ZoningFailure& failure, std::string_view command, int64_t result) noexcept;

inline bool isControl(char c) {
    return (static_cast<unsigned char>(c) < 0x20) || c == 0x7F;
}
/** A text with "?" for each control character. */
std::string shown(std::string_view text);

/** How a function of the zoning ended, and what stopped it. */
struct ZoningReport {
    ZoningStatus status = ZoningStatus::Done;
    uint32_t code = 0;  ///< the ZoningResult of an edit
    ZoningFailure failure = {};

    bool done() const { return status == ZoningStatus::Done; }
};

/** What a ZoningOutcome points to. */
struct ZoningOutcomeDetail {
    std::string step;
    ZoningFailure failure;
    std::vector<ZoningBrought> brought;
};

}  // namespace datacache
