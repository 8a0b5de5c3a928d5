#include "datacache/TextScan.h"

#include "common/number_text.h"

namespace datacache {

namespace {

bool isBlank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

/** Skips blanks. False when the scan has ended, or ends here with the text. */
bool TextScan::startItem() {
    while (!_ended && isBlank(peek())) ++_at;
    if (!_ended && _at == _text.size()) {
        _ended = true;
        if (_items == 0) _items = -1;
    }
    return !_ended;
}

TextScan& TextScan::number(int32_t& value) {
    if (!startItem()) return *this;
    const size_t start = _at;
    if (peek() == '-' || peek() == '+') ++_at;
    if (!isDigit(peek())) {
        _ended = true;
        return *this;
    }
    while (isDigit(peek())) ++_at;
    value = toInt(_text.substr(start, _at - start));
    ++_items;
    return *this;
}

TextScan& TextScan::word(std::string& value, size_t most) {
    if (!startItem()) return *this;
    const size_t start = _at;
    while (_at < _text.size() && _at - start < most && !isBlank(_text[_at])) ++_at;
    value = _text.substr(start, _at - start);
    ++_items;
    return *this;
}

TextScan& TextScan::literal(char character) {
    if (_ended) return *this;
    if (peek() == character) {
        ++_at;
    } else {
        _ended = true;
    }
    return *this;
}

}  // namespace datacache
