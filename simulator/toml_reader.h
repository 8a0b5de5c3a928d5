#pragma once

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vexsim {

/** The words that a field may hold; a constant, as a list in braces lives only for one call. */
using Words = std::initializer_list<const char*>;

/**
 * One table of a TOML document, read strictly: a field of the wrong type, a value out of its range and, at
 * finish(), a field that nobody asked for are errors. Every error is an InputError "FILE:LINE: message".
 *
 * Each method that takes a field's name marks the field as known. A reader is cheap to copy and keeps its
 * document alive; copies share what is known.
 */
class TableReader {
  public:
    /** Parses a whole document; `name` stands for the file in messages. */
    static TableReader parse(const std::string& text, const std::string& name);
    static TableReader parseFile(const std::string& path);

    bool has(const std::string& field) const;

    /** Required fields. */
    std::string text(const std::string& field);
    int64_t integer(const std::string& field, int64_t low, int64_t high);
    bool flag(const std::string& field);
    /** Seconds as a number, or a text such as "500ms" or "2s"; at most a day. */
    std::chrono::milliseconds duration(const std::string& field);
    /** One of the given words. */
    std::string word(const std::string& field, Words words);
    /** A world wide name, "10:00:00:11:22:33:44:55" or 16 hexadecimal digits; as 16 digits in lower case. */
    std::string wwn(const std::string& field);
    /** An IP address as text, of version 4 or 6. */
    std::string address(const std::string& field, int version);
    /** A value for a key of the switch: a text as it is, a number in decimal, a boolean as "True" or "False".
     */
    std::string value(const std::string& field);

    /** Lists; empty where the field is missing. */
    std::vector<std::string> texts(const std::string& field);
    std::vector<std::string> words(const std::string& field, Words words);
    std::vector<int64_t> integers(const std::string& field, int64_t low, int64_t high);
    /** Ports or domains, none of them twice. */
    std::set<unsigned> numbers(const std::string& field, unsigned low, unsigned high);
    std::vector<std::string> wwns(const std::string& field);

    /** A table inside this one; nullopt where it is missing. */
    std::optional<TableReader> table(const std::string& field);
    /** An array of tables inside this one; empty where it is missing. */
    std::vector<TableReader> tables(const std::string& field);

    /** For a field that may have several types. */
    bool isInteger(const std::string& field) const;
    bool isTable(const std::string& field) const;

    /** Every field that is not known yet, in the order of the file, without marking it. */
    std::vector<std::string> unknownFields() const;

    /** How messages call this table: "[switch]", "step \"fan\"". */
    void rename(const std::string& title);
    /** "FILE:LINE" of the table itself. */
    std::string where() const;
    /** Throws for the table itself, or for one of its fields. */
    [[noreturn]] void fail(const std::string& message) const;
    [[noreturn]] void fail(const std::string& field, const std::string& message) const;

    /** Throws for the first field that nobody asked for. */
    void finish() const;

  private:
    struct Impl;
    explicit TableReader(std::shared_ptr<Impl> impl) : _impl(std::move(impl)) {}
    std::shared_ptr<Impl> _impl;
};

}  // namespace vexsim
