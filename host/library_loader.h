#pragma once

#include <string>

/** Loads the shared object that provides vexlib, for all to use: `path`, or the simulated switch for an empty
 * path. Returns dlopen's handle; throws HostInputError. */
void* loadProvider(const std::string& path);

/** Loads the tool's own second half; see hostMain(). */
void* loadHostCore();
