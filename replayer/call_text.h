#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "recording/Reader.h"

namespace vexreplay {

/** A call as text: the function and what it is given, less what differs from process to process. */
std::string describeCall(const char* function, const std::vector<recording::Value>& given);

/** A text as a number that is never 0. Two texts with the same number are taken for the same, which does no
 * harm. */
uint64_t numberOfText(const std::string& text);

/**
 * The number of a call in which each object is replaced by the call that made the object, so an object that
 * was read again gives the same number. It is never the number of a describeCall().
 *
 * `origins`: for each object, by its number, the originOf() the call that made it.
 */
uint64_t originOf(const char* function, const std::vector<recording::Value>& given,
                  const std::vector<uint64_t>& origins);

}  // namespace vexreplay
