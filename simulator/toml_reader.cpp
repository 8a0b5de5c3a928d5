#include "simulator/toml_reader.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>

#include "simulator/Simulator.h"
#include "simulator/toml.h"
#include "simulator/toml_depth.h"

namespace vexsim {
namespace {

constexpr double kLongestWaitMs = 24.0 * 60 * 60 * 1000;

std::string quoted(const std::string& text) {
    return '"' + text + '"';
}

[[noreturn]] void failAt(const std::string& file, size_t line, std::string message) {
    // One line, whatever names the file holds.
    std::replace_if(
        message.begin(), message.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, ' ');
    throw InputError(file + ':' + std::to_string(line == 0 ? 1 : line) + ": " + message);
}

const char* typeName(const toml::node& node) {
    switch (node.type()) {
        case toml::node_type::table:
            return "a table";
        case toml::node_type::array:
            return "a list";
        case toml::node_type::string:
            return "a text";
        case toml::node_type::integer:
            return "a number";
        case toml::node_type::floating_point:
            return "a fraction";
        case toml::node_type::boolean:
            return "true or false";
        default:
            return "a date or time";
    }
}

std::string join(Words words) {
    std::string joined;
    for (const char* word : words) joined += (joined.empty() ? "" : ", ") + quoted(word);
    return joined;
}

/** How many lines it takes, from the first, to surprise the parser; it reads in order, so the last is to
 * blame. */
size_t surprisingLine(const std::string& text) {
    size_t end = 0;
    for (size_t line = 1;; ++line) {
        end = text.find('\n', end);
        if (end == std::string::npos) return line;
        ++end;
        try {
            static_cast<void>(toml::parse(std::string_view(text).substr(0, end)));
        } catch (const toml::parse_error&) {
        } catch (const TomlSurprise&) {
            return line;
        }
    }
}

}  // namespace

struct TableReader::Impl {
    std::shared_ptr<const toml::table> document;
    const toml::table* table;
    std::string file;
    std::string title;
    std::set<std::string> known;

    Impl(std::shared_ptr<const toml::table> root, const toml::table* self, std::string name,
         std::string called)
        : document(std::move(root)), table(self), file(std::move(name)), title(std::move(called)) {}

    std::shared_ptr<Impl> child(const toml::table& inner, const std::string& called) const {
        return std::make_shared<Impl>(document, &inner, file, called);
    }

    [[noreturn]] void fail(const toml::node& node, const std::string& message) const {
        failAt(file, node.source().begin.line, message);
    }

    const toml::node& need(const std::string& field) {
        known.insert(field);
        const toml::node* node = table->get(field);
        if (node == nullptr) fail(*table, title + " needs " + quoted(field));
        return *node;
    }

    const toml::node* find(const std::string& field) {
        known.insert(field);
        return table->get(field);
    }

    std::string text(const std::string& field, const toml::node& node) const {
        const auto* value = node.as_string();
        if (value == nullptr) fail(node, quoted(field) + " must be a text, not " + typeName(node));
        return value->get();
    }

    int64_t integer(const std::string& field, const toml::node& node, int64_t low, int64_t high) const {
        const auto* value = node.as_integer();
        if (value == nullptr) fail(node, quoted(field) + " must be a number, not " + typeName(node));
        if (value->get() < low || value->get() > high) {
            fail(node,
                 quoted(field) + " must be from " + std::to_string(low) + " to " + std::to_string(high));
        }
        return value->get();
    }

    std::string word(const std::string& field, const toml::node& node, Words words) const {
        std::string value = text(field, node);
        if (std::find(words.begin(), words.end(), value) == words.end()) {
            fail(node, quoted(field) + " must be one of " + join(words));
        }
        return value;
    }

    std::string wwn(const std::string& field, const toml::node& node) const {
        const std::string given = text(field, node);
        std::string digits;
        bool good = given.size() == 16 || given.size() == 23;
        for (size_t i = 0; i < given.size(); ++i) {
            const auto c = static_cast<unsigned char>(given[i]);
            if (given.size() == 23 && i % 3 == 2) {
                good = good && c == ':';
            } else {
                good = good && std::isxdigit(c) != 0;
                digits += static_cast<char>(std::tolower(c));
            }
        }
        if (!good) fail(node, quoted(field) + " must be a world wide name like \"10:00:00:11:22:33:44:55\"");
        return digits;
    }

    const toml::array* list(const std::string& field) {
        const toml::node* node = find(field);
        if (node == nullptr) return nullptr;
        if (!node->is_array()) fail(*node, quoted(field) + " must be a list, not " + typeName(*node));
        return node->as_array();
    }
};

TableReader TableReader::parse(const std::string& text, const std::string& name) {
    if (const std::optional<size_t> line = tooDeepLine(text))
        failAt(name, *line, "tables and lists are nested too deeply");
    try {
        auto document = std::make_shared<const toml::table>(toml::parse(text, name));
        const toml::table* const root = document.get();
        return TableReader(std::make_shared<Impl>(std::move(document), root, name, "the file"));
    } catch (const toml::parse_error& error) {
        failAt(name, error.source().begin.line, std::string(error.description()));
    } catch (const TomlSurprise&) {
        failAt(name, surprisingLine(text), "this is not TOML");
    }
}

TableReader TableReader::parseFile(const std::string& path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    // A directory opens without an error and fails at the first read.
    if (file && file.peek() != std::ifstream::traits_type::eof()) text << file.rdbuf();
    if (!file.is_open() || file.bad() || (text.str().empty() && errno != 0)) {
        failAt(path, 1, std::string("cannot be read: ") + std::strerror(errno == 0 ? EIO : errno));
    }
    return parse(text.str(), path);
}

bool TableReader::has(const std::string& field) const {
    return _impl->table->contains(field);
}

std::string TableReader::text(const std::string& field) {
    return _impl->text(field, _impl->need(field));
}

int64_t TableReader::integer(const std::string& field, int64_t low, int64_t high) {
    return _impl->integer(field, _impl->need(field), low, high);
}

bool TableReader::flag(const std::string& field) {
    const toml::node& node = _impl->need(field);
    const auto* value = node.as_boolean();
    if (value == nullptr) fail(field, quoted(field) + " must be true or false, not " + typeName(node));
    return value->get();
}

std::chrono::milliseconds TableReader::duration(const std::string& field) {
    const toml::node& node = _impl->need(field);
    double amount = -1;
    double unitMs = 1000;
    if (const auto number = node.value_exact<int64_t>()) {
        amount = static_cast<double>(*number);
    } else if (const auto fraction = node.value_exact<double>()) {
        amount = *fraction;
    } else if (const auto* text = node.as_string()) {
        const char* const begin = text->get().c_str();
        char* unit = nullptr;
        if (std::isdigit(static_cast<unsigned char>(*begin)) != 0) amount = std::strtod(begin, &unit);
        if (unit != nullptr && std::strcmp(unit, "ms") == 0) {
            unitMs = 1;
        } else if (unit == nullptr || std::strcmp(unit, "s") != 0) {
            amount = -1;
        }
    }
    const double milliseconds = amount * unitMs;
    if (!(milliseconds >= 0 && milliseconds <= kLongestWaitMs)) {
        fail(field, quoted(field) + " must be seconds, or a text like \"500ms\" or \"2s\", up to a day");
    }
    return std::chrono::milliseconds(std::llround(milliseconds));
}

std::string TableReader::word(const std::string& field, Words words) {
    return _impl->word(field, _impl->need(field), words);
}

std::string TableReader::wwn(const std::string& field) {
    return _impl->wwn(field, _impl->need(field));
}

std::string TableReader::address(const std::string& field, int version) {
    std::string given = text(field);
    in6_addr bytes{};
    if (inet_pton(version == 4 ? AF_INET : AF_INET6, given.c_str(), &bytes) != 1) {
        const char* const example = version == 4 ? "192.0.2.10" : "2001:db8::10";
        fail(field, quoted(field) + " must be an IPv" + std::to_string(version) + " address like " +
                        quoted(example));
    }
    return given;
}

std::string TableReader::value(const std::string& field) {
    const toml::node& node = _impl->need(field);
    if (const auto* text = node.as_string()) return text->get();
    if (const auto* number = node.as_integer()) return std::to_string(number->get());
    if (const auto* yes = node.as_boolean()) return yes->get() ? "True" : "False";
    fail(field, quoted(field) + " must be a text, a number, true or false, not " + typeName(node));
}

std::vector<std::string> TableReader::texts(const std::string& field) {
    std::vector<std::string> values;
    if (const toml::array* list = _impl->list(field)) {
        for (const toml::node& node : *list) values.push_back(_impl->text(field, node));
    }
    return values;
}

std::vector<std::string> TableReader::words(const std::string& field, Words words) {
    std::vector<std::string> values;
    if (const toml::array* list = _impl->list(field)) {
        for (const toml::node& node : *list) values.push_back(_impl->word(field, node, words));
    }
    return values;
}

std::vector<int64_t> TableReader::integers(const std::string& field, int64_t low, int64_t high) {
    std::vector<int64_t> values;
    if (const toml::array* list = _impl->list(field)) {
        for (const toml::node& node : *list) values.push_back(_impl->integer(field, node, low, high));
    }
    return values;
}

std::set<unsigned> TableReader::numbers(const std::string& field, unsigned low, unsigned high) {
    std::set<unsigned> values;
    for (const int64_t number : integers(field, low, high)) {
        if (values.insert(static_cast<unsigned>(number)).second) continue;
        fail(field, quoted(field) + " names " + std::to_string(number) + " twice");
    }
    return values;
}

std::vector<std::string> TableReader::wwns(const std::string& field) {
    std::vector<std::string> names;
    if (const toml::array* list = _impl->list(field)) {
        for (const toml::node& node : *list) names.push_back(_impl->wwn(field, node));
    }
    return names;
}

std::optional<TableReader> TableReader::table(const std::string& field) {
    const toml::node* node = _impl->find(field);
    if (node == nullptr) return std::nullopt;
    if (!node->is_table()) fail(field, quoted(field) + " must be a table, not " + typeName(*node));
    const bool nested = !_impl->title.empty() && _impl->title.front() == '[';
    const std::string outer = nested ? _impl->title.substr(1, _impl->title.size() - 2) + '.' : "";
    return TableReader(_impl->child(*node->as_table(), '[' + outer + field + ']'));
}

std::vector<TableReader> TableReader::tables(const std::string& field) {
    std::vector<TableReader> readers;
    if (const toml::array* list = _impl->list(field)) {
        for (const toml::node& node : *list) {
            if (!node.is_table())
                _impl->fail(node, quoted(field) + " must hold tables, not " + typeName(node));
            readers.push_back(TableReader(_impl->child(*node.as_table(), "[[" + field + "]]")));
        }
    }
    return readers;
}

bool TableReader::isTable(const std::string& field) const {
    const toml::node* node = _impl->table->get(field);
    return node != nullptr && node->is_table();
}

bool TableReader::isInteger(const std::string& field) const {
    const toml::node* node = _impl->table->get(field);
    return node != nullptr && node->is_integer();
}

std::vector<std::string> TableReader::unknownFields() const {
    std::vector<std::pair<toml::source_position, std::string>> found;
    for (const auto& [key, node] : *_impl->table) {
        const std::string name(key.str());
        if (_impl->known.count(name) == 0) found.emplace_back(key.source().begin, name);
    }
    std::sort(found.begin(), found.end(),
              [](const auto& left, const auto& right) { return left.first < right.first; });
    std::vector<std::string> names;
    names.reserve(found.size());
    for (auto& entry : found) names.push_back(std::move(entry.second));
    return names;
}

void TableReader::rename(const std::string& title) {
    _impl->title = title;
}

std::string TableReader::where() const {
    const auto line = _impl->table->source().begin.line;
    return _impl->file + ':' + std::to_string(line == 0 ? 1 : line);
}

void TableReader::fail(const std::string& message) const {
    _impl->fail(*_impl->table, message);
}

void TableReader::fail(const std::string& field, const std::string& message) const {
    const auto found = _impl->table->find(field);
    if (found == _impl->table->end()) fail(message);
    failAt(_impl->file, found->first.source().begin.line, message);
}

void TableReader::finish() const {
    const std::vector<std::string> unknown = unknownFields();
    if (!unknown.empty())
        fail(unknown.front(), "unknown field " + quoted(unknown.front()) + " in " + _impl->title);
}

}  // namespace vexsim
