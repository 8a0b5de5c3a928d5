#pragma once

#include "simulator/Switch.h"
#include "simulator/toml_reader.h"

namespace vexsim {

/** Builds a switch from what a document says of it. Throws InputError. */
Switch readSwitch(TableReader document);
/** The same for a document that must describe a whole switch: with its name, and a principal that is there.
 */
Switch readWholeSwitch(TableReader document);

}  // namespace vexsim
