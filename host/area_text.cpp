#include "host/area_text.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace {

/** The fields that rows have, in the order in which they first come up. */
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

bool isTable(const Json& value) {
    return value.is_array() && !value.empty() && value[0].is_object() && !value[0].contains("code");
}

std::string padded(const std::string& text, size_t width, bool right) {
    const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
    return right ? blanks + text : text + blanks;
}

/** Prints rows under their headings; columns of numbers are aligned to the right. */
void printTable(std::ostream& out, const Json& rows, const std::string& indent) {
    const std::vector<std::string> columns = columnsOf(rows);
    std::vector<std::string> lines(rows.size() + 1, indent);
    for (const std::string& column : columns) {
        std::vector<std::string> cells{wordsOf(column)};
        bool numbers = true;
        for (const Json& row : rows) {
            const Json value = row.value(column, Json());
            numbers = numbers && value.is_number();
            cells.push_back(plainText(value));
        }
        size_t width = 0;
        for (const std::string& cell : cells) width = std::max(width, cell.size());
        for (size_t i = 0; i < lines.size(); ++i) lines[i] += padded(cells[i], width, numbers) + "  ";
    }
    for (std::string& line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

}  // namespace

std::string wordsOf(const std::string& name) {
    std::string words;
    for (const char letter : name) {
        const auto code = static_cast<unsigned char>(letter);
        if (std::isupper(code) != 0 && !words.empty()) words += ' ';
        words += static_cast<char>(std::tolower(code));
    }
    return words;
}

void printArea(std::ostream& out, const Json& area) {
    std::string heading = plainText(area.value("area", Json()));
    heading[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(heading[0])));
    out << heading << '\n';
    size_t width = 0;
    for (const auto& field : area.items()) {
        if (!isTable(field.value())) width = std::max(width, wordsOf(field.key()).size());
    }
    for (const auto& field : area.items()) {
        if (field.key() == "area") continue;
        if (isTable(field.value())) {
            out << "  " << wordsOf(field.key()) << '\n';
            printTable(out, field.value(), "    ");
        } else {
            out << "  " << padded(wordsOf(field.key()), width, false) << "  " << plainText(field.value())
                << '\n';
        }
    }
}
