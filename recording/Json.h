/*
 * One line of JSON, read in place: the line's text stays where it is, and a value costs 8 bytes beside it,
 * whatever it is. So a hostile line costs no more than a few times its length.
 */
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace recording {

/** Where a value begins in the line, and which value follows behind it and all that it holds. */
struct JsonPlace {
    uint32_t begin;
    uint32_t next;
};

/** A value of a line; good as long as its JsonLine is neither parsed anew nor gone. */
class Json {
  public:
    Json(std::string_view text, const std::vector<JsonPlace>& places, uint32_t index)
        : _text(text.data()), _places(places.data()), _index(index) {}

    bool isObject() const { return first() == '{'; }
    bool isList() const { return first() == '['; }
    bool isText() const { return first() == '"'; }
    bool isNull() const { return first() == 'n'; }
    bool isTrue() const { return first() == 't'; }
    bool isNumber() const { return first() == '-' || (first() >= '0' && first() <= '9'); }

    /** The entries of a list; the names and values of an object, in turns. */
    class Iterator;
    Iterator begin() const;
    Iterator end() const;
    size_t size() const;

    /** The text as it stands in the line, without its quotes and with its escapes. */
    std::string_view rawText() const;
    /** The number as it stands in the line. */
    std::string_view rawNumber() const;

  private:
    char first() const { return _text[_places[_index].begin]; }

    const char* _text;
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

/** Takes lines apart, one after the other, in the same memory. */
class JsonLine {
  public:
    /** False for what is no JSON, or is nested deeper than any record. The text must stay. */
    bool parse(std::string_view text);
    Json root() const { return {_text, _places, 0}; }

  private:
    bool value(unsigned depth);
    bool list(unsigned depth, char close);
    bool text();
    bool number();
    bool word(std::string_view word);
    bool digits();
    void space();
    bool skip(char character);

    std::string_view _text;
    size_t _at = 0;
    std::vector<JsonPlace> _places;
};

}  // namespace recording
