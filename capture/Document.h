#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace capture {

/** Whether a text can stand in TOML, which is UTF-8. */
bool isUtf8(const std::string& text);

/** A text as TOML has it, in quotes; bytes that are no UTF-8 become question marks. */
std::string quoted(const std::string& text);

/** A text as a comment: one line, in characters that TOML allows there. */
std::string commented(const std::string& text);

/** A list of items that are TOML already. */
std::string listOf(const std::vector<std::string>& items);
/** A list of texts. */
std::string quotedList(const std::vector<std::string>& texts);

/** One table of a switch file: its heading and its fields, each on a line of its own. */
struct Table {
    std::string heading; /**< "[switch]" */
    std::vector<std::string> lines = {};

    void add(const std::string& field, const std::string& toml) { lines.push_back(field + " = " + toml); }
    void add(const std::string& field, int64_t number) { add(field, std::to_string(number)); }
};

/** A switch file in the making. */
struct Document {
    std::vector<Table> tables;
    std::vector<std::string> remarks = {}; /**< a comment each, at the head */

    Table& add(const std::string& heading) { return tables.emplace_back(Table{heading}); }
    std::string text() const;
    /** Takes out what stands on a line of the text: a field, or, of a heading, the whole table. Returns what
     * it was; empty where there is nothing to take out. */
    std::string drop(size_t line);
};

}  // namespace capture
