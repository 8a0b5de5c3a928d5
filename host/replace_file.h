#pragma once

#include <string>

namespace host {

/** Writes a file whole or not at all, readable by its owner alone, in place of one that is there. Throws
 * HostInputError with one line for the user, and leaves what was there. */
void replaceFile(const std::string& path, const std::string& text);

}  // namespace host
