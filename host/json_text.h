#pragma once

#include <string>

#include "report/fields.h"

namespace host {

using report::Json;

/**
 * A value as JSON on one line, in ASCII: texts from the switch may hold any bytes, so control characters and
 * all else that a terminal could take for a command are escaped, and what is not UTF-8 is replaced.
 */
std::string jsonLine(const Json& value);

/**
 * A value for a person: texts without quotes but escaped as in JSON, "yes" and "no", "-" for nothing, lists
 * with commas, and an object of "code" and "text" as "2 OK".
 */
std::string plainText(const Json& value);

}  // namespace host
