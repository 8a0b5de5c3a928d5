#include "report/fields.h"

#include <algorithm>
#include <cctype>

namespace report {

std::string wordsOf(const std::string& name) {
    std::string words;
    for (const char letter : name) {
        const auto code = static_cast<unsigned char>(letter);
        if (std::isupper(code) != 0 && !words.empty()) words += ' ';
        words += static_cast<char>(std::tolower(code));
    }
    return words;
}

bool isTable(const Json& value) {
    return value.is_array() && !value.empty() && value[0].is_object() && !value[0].contains("code");
}

std::vector<std::string> columnsOf(const Json& rows) {
    std::vector<std::string> columns;
    for (const Json& row : rows) {
        for (const auto& field : row.items()) {
            if (std::find(columns.begin(), columns.end(), field.key()) == columns.end()) {
                columns.push_back(field.key());
            }
        }
    }
    return columns;
}

}  // namespace report
