#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace report {

/** JSON whose fields keep the order in which they were added. */
using Json = nlohmann::ordered_json;

/** A name in camelCase as words: "powerSupplies" becomes "power supplies". */
std::string wordsOf(const std::string& name);

/** Whether a value is a list of rows, each an object. */
bool isTable(const Json& value);

/** The fields that rows have, in the order in which they first come up. */
std::vector<std::string> columnsOf(const Json& rows);

}  // namespace report
