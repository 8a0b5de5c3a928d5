#pragma once

#include <string>

namespace host {

/** Writes a file whole or not at all: into one beside it, which then takes its name. Throws HostInputError
 * with one line for the user, and leaves what was there. */
void replaceFile(const std::string& path, const std::string& text);

}  // namespace host
