#pragma once

#include <string>

namespace host {

enum class Readers { Owner, Everybody };

/** Writes a file whole or not at all in place of one that is there. Throws HostInputError with one line for
 * the user, and leaves what was there. */
void replaceFile(const std::string& path, const std::string& text, Readers readers = Readers::Owner);

}  // namespace host
