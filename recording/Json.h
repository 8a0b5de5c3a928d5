/*
 * One line of JSON, parsed by the JSON library into a few bytes a value, in memory that the next line uses
 * again. So a hostile line costs no more than a few times its length.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace recording {

/** Where the bytes of a value begin, and the index of the value that follows it and all values in it. */
struct JsonPlace {
    uint32_t begin;
    uint32_t next;
};

/** A value of a line; good as long as its JsonLine is neither parsed anew nor gone. */
class Json {
  public:
    Json(const std::string& words, const std::vector<JsonPlace>& places, uint32_t index)
        : _words(words.data()), _places(places.data()), _index(index) {}

    bool isObject() const { return kind() == '{'; }
    bool isList() const { return kind() == '['; }
    bool isText() const { return kind() == '"'; }
    bool isNull() const { return kind() == 'n'; }
    bool isTrue() const { return kind() == 't'; }
    bool isNumber() const { return kind() == '0'; }

    /** The entries of a list; the names and values of an object, in turns. */
    class Iterator;
    Iterator begin() const;
    Iterator end() const;
    size_t size() const;

    /** A text in UTF-8, its escapes resolved. */
    std::string_view text() const { return words(); }
    /** A number's digits. */
    std::string_view digits() const { return words(); }

  private:
    char kind() const { return _words[_places[_index].begin]; }
    std::string_view words() const;

    const char* _words;
    const JsonPlace* _places;
    uint32_t _index;
};

class Json::Iterator {
  public:
    Iterator(const Json& list, uint32_t index) : _at(list) { _at._index = index; }
    const Json& operator*() const { return _at; }
    const Json* operator->() const { return &_at; }
    Iterator& operator++() {
        _at._index = _at._places[_at._index].next;
        return *this;
    }
    bool operator!=(const Iterator& other) const { return _at._index != other._at._index; }

  private:
    Json _at;
};

inline Json::Iterator Json::begin() const {
    return {*this, _index + 1};
}

inline Json::Iterator Json::end() const {
    return {*this, _places[_index].next};
}

/** Parses lines, one after the other, into the same memory. */
class JsonLine {
  public:
    /** False for what is no JSON object, or is nested deeper than any record. */
    bool parse(std::string_view text);
    Json root() const { return {_words, _places, 0}; }

  private:
    std::string _words;  ///< of each value: its kind, and of a text or a number its length and bytes
    std::vector<JsonPlace> _places;
};

}  // namespace recording
