#pragma once

#include <ostream>
#include <string>

#include "host/json_text.h"

/**
 * Prints an area of the cache for a person.
 *
 * An area is an object: its "area" is the heading; a list of objects becomes a table whose columns are the
 * fields of its rows, and every other field a line of name and value. Names in camelCase are printed as
 * words.
 */
void printArea(std::ostream& out, const Json& area);

/** A name in camelCase as words: "powerSupplies" becomes "power supplies". */
std::string wordsOf(const std::string& name);
