// The one source file that compiles toml++; all others only declare it.
#define TOML_IMPLEMENTATION
#include "simulator/toml.h"
