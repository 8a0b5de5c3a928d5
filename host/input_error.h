#pragma once

#include <stdexcept>

/** A wrong command line or a file that cannot be used; what() is one line for the user. */
struct HostInputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
