#pragma once

#include <optional>
#include <string>

#include "host/request.h"

/** The command line, understood. */
struct CommandLine {
    HostRequest request;
    std::string vexlib;  ///< path of the provider; empty for the simulated switch
};

/**
 * Reads the command line. Where there is nothing to run (help, or a mistake, which it has reported) it
 * returns nothing and sets `status`. A mistake in a script throws HostInputError.
 */
std::optional<CommandLine> readCommandLine(int argc, char** argv, int& status);
