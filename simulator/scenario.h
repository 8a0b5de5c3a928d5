#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "simulator/areas/Area.h"
#include "simulator/toml_reader.h"

namespace vexsim {

/** One step of a scenario, read and checked. */
struct Step {
    std::chrono::milliseconds after{0}; /**< pause before it, counted from the step before */
    std::string name;
    std::string where; /**< "FILE:LINE" */
    Action action;
};

/** Reads every [[step]] of a document, or a document that is one bare step. Throws InputError. */
std::vector<Step> readSteps(TableReader document);

}  // namespace vexsim
