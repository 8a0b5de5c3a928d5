#include "host/json_text.h"

namespace host {

std::string jsonLine(const Json& value) {
    return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

std::string plainText(const Json& value) {
    if (value.is_null() || (value.empty() && value.is_structured())) return "-";
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value.is_string()) {
        const std::string quoted = jsonLine(value);
        return quoted.size() == 2 ? "-" : quoted.substr(1, quoted.size() - 2);
    }
    if (value.is_object() && value.contains("code")) {
        return plainText(value["code"]) + ' ' + plainText(value["text"]);
    }
    if (!value.is_array()) return jsonLine(value);
    std::string list;
    for (const Json& element : value) list += (list.empty() ? "" : ", ") + plainText(element);
    return list;
}

}  // namespace host
