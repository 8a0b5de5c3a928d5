#pragma once

#include <string>

#include "report/fields.h"

namespace report {

/**
 * The page that shows these facts, and nothing else: one HTML file that needs no other and reaches for no
 * network. `nonce` is a word that nobody can guess; style and script that do not bear it are not obeyed.
 */
std::string page(const Json& facts, const std::string& nonce);

}  // namespace report
