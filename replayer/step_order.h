#pragma once

#include <cstdint>
#include <vector>

#include "replayer/Script.h"

namespace vexreplay {

/**
 * The order in which steps are replayed, as indexes into `steps`; `locked` as in Script's constructor. Sets
 * `inside` of the notifications, as an index too.
 */
std::vector<uint32_t> orderOfSteps(std::vector<Script::Step>& steps, bool locked);

}  // namespace vexreplay
