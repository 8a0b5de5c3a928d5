#include "recording/Json.h"

#include <algorithm>

namespace recording {

namespace {

constexpr unsigned kDeepest = 16;  ///< records have 5 levels
constexpr size_t kLongest = UINT32_MAX / 2;

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isHexDigit(char character) {
    return isDigit(character) || (character >= 'a' && character <= 'f') ||
           (character >= 'A' && character <= 'F');
}

}  // namespace

size_t Json::size() const {
    size_t count = 0;
    for (auto entry = begin(); entry != end(); ++entry) ++count;
    return count;
}

std::string_view Json::rawText() const {
    const char* const begin = _text + _places[_index].begin + 1;
    const char* end = begin;
    for (; *end != '"'; ++end) {
        if (*end == '\\') ++end;
    }
    return {begin, static_cast<size_t>(end - begin)};
}

std::string_view Json::rawNumber() const {
    // A number of a record never ends its line: its object does.
    const char* const begin = _text + _places[_index].begin;
    const char* end = begin;
    while (isDigit(*end) || *end == '-' || *end == '+' || *end == '.' || *end == 'e' || *end == 'E') ++end;
    return {begin, static_cast<size_t>(end - begin)};
}

bool JsonLine::parse(std::string_view text) {
    _text = text;
    _at = 0;
    _places.clear();
    space();
    // An object, so that behind each of its values there is a character more.
    if (text.size() > kLongest || _at == text.size() || text[_at] != '{' || !value(0)) return false;
    space();
    return _at == text.size();
}

void JsonLine::space() {
    while (_at < _text.size() && (_text[_at] == ' ' || _text[_at] == '\t' || _text[_at] == '\r')) ++_at;
}

bool JsonLine::skip(char character) {
    space();
    if (_at == _text.size() || _text[_at] != character) return false;
    ++_at;
    return true;
}

bool JsonLine::value(unsigned depth) {
    space();
    if (_at == _text.size() || depth > kDeepest) return false;
    const size_t index = _places.size();
    _places.push_back({static_cast<uint32_t>(_at), 0});
    bool good = false;
    switch (_text[_at]) {
        case '{':
            good = list(depth, '}');
            break;
        case '[':
            good = list(depth, ']');
            break;
        case '"':
            good = text();
            break;
        case 't':
            good = word("true");
            break;
        case 'f':
            good = word("false");
            break;
        case 'n':
            good = word("null");
            break;
        default:
            good = number();
    }
    _places[index].next = static_cast<uint32_t>(_places.size());
    return good;
}

/** The entries of a list, or the names and values of an object. */
bool JsonLine::list(unsigned depth, char close) {
    ++_at;
    if (skip(close)) return true;
    do {
        if (close == '}') {
            space();
            if (_at == _text.size() || _text[_at] != '"' || !value(depth + 1) || !skip(':')) return false;
        }
        if (!value(depth + 1)) return false;
    } while (skip(','));
    return skip(close);
}

bool JsonLine::text() {
    for (++_at; _at < _text.size(); ++_at) {
        const char character = _text[_at];
        if (character == '"') {
            ++_at;
            return true;
        }
        if (static_cast<unsigned char>(character) < ' ') return false;
        if (character != '\\') continue;
        if (++_at == _text.size()) return false;
        if (_text[_at] == 'u') {
            if (_text.size() - _at < 5 || !std::all_of(&_text[_at + 1], &_text[_at + 5], isHexDigit))
                return false;
            _at += 4;
        } else if (std::string_view("\"\\/bfnrt").find(_text[_at]) == std::string_view::npos) {
            return false;
        }
    }
    return false;
}

bool JsonLine::digits() {
    const size_t begin = _at;
    while (_at < _text.size() && isDigit(_text[_at])) ++_at;
    return _at != begin;
}

bool JsonLine::number() {
    if (_text[_at] == '-') ++_at;
    const size_t begin = _at;
    if (!digits() || (_text[begin] == '0' && _at - begin > 1)) return false;
    if (_at < _text.size() && _text[_at] == '.') {
        ++_at;
        if (!digits()) return false;
    }
    if (_at < _text.size() && (_text[_at] == 'e' || _text[_at] == 'E')) {
        ++_at;
        if (_at < _text.size() && (_text[_at] == '+' || _text[_at] == '-')) ++_at;
        return digits();
    }
    return true;
}

bool JsonLine::word(std::string_view word) {
    if (_text.substr(_at, word.size()) != word) return false;
    _at += word.size();
    return true;
}

}  // namespace recording
