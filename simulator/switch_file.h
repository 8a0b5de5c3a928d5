#pragma once

#include "simulator/Switch.h"
#include "simulator/toml_reader.h"

namespace vexsim {

/** Builds a switch from a switch file. Throws InputError. */
Switch readSwitch(TableReader document);

}  // namespace vexsim
