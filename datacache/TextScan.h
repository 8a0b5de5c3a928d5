#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace datacache {

/**
 * Reads a text item by item as sscanf does, in the C locale, with a defined result for a number that is too
 * large: it saturates. The first item that does not match ends the scan; what follows changes nothing.
 *
 *     TextScan scan(text);
 *     scan.number(a).literal(';').word(b, 16);   // "%d;%16s"
 *     if (scan.items() == 2) ...
 */
class TextScan {
  public:
    explicit TextScan(const std::string& text) : _text(text) {}

    /** "%d": blanks, a sign, digits. */
    TextScan& number(int32_t& value);
    /** "%Ns": blanks, then at least one and at most `most` characters that are not blank. */
    TextScan& word(std::string& value, size_t most);
    /** The character itself, with no blanks in front of it. */
    TextScan& literal(char character);

    /** Items converted; -1 when the text ended before the first item could be tried. */
    int items() const { return _items; }

  private:
    bool startItem();
    /** The next character; at the end the terminator. */
    char peek() const { return _text[_at]; }

    const std::string& _text;
    size_t _at = 0;
    int _items = 0;
    bool _ended = false;
};

}  // namespace datacache
