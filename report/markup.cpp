#include "report/markup.h"

#include <cstdint>
#include <cstdio>

namespace report {

namespace {

struct Range {
    uint32_t first, last;
};

/** Letters and signs that show what they are: ASCII, Latin, Greek, Cyrillic, Chinese, Japanese, Korean, and
 * the sign for what is no text. */
constexpr Range kShown[] = {{0x20, 0x7e},     {0xa1, 0xac},     {0xae, 0x24f},    {0x391, 0x3ce},
                            {0x400, 0x481},   {0x3041, 0x3096}, {0x30a1, 0x30fa}, {0x4e00, 0x9fff},
                            {0xac00, 0xd7a3}, {0xfffd, 0xfffd}};

bool isShown(uint32_t character) {
    for (const Range& range : kShown) {
        if (character >= range.first && character <= range.last) return true;
    }
    return false;
}

/** Takes a character from the front, a byte as U+FFFD where it begins none. */
uint32_t takeCharacter(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const size_t size = first < 0x80 ? 1 : first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    uint32_t character = first < 0x80 ? first : first & (0xffU >> (size + 1));
    bool good = first < 0x80 || (first >= 0xc2 && first < 0xf5 && size <= text.size());
    for (size_t i = 1; good && i < size; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        good = (next & 0xc0) == 0x80;
        character = character << 6 | (next & 0x3fU);
    }
    const bool longForm = (size == 3 && character < 0x800) || (size == 4 && character < 0x10000);
    good = good && !longForm && !(character >= 0xd800 && character < 0xe000) && character < 0x110000;
    text.remove_prefix(good ? size : 1);
    return good ? character : 0xfffd;
}

std::string escaped(std::string_view text) {
    std::string html;
    html.reserve(text.size());
    while (!text.empty()) {
        const std::string_view rest = text;
        const uint32_t character = takeCharacter(text);
        switch (character) {
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '&':
                html += "&amp;";
                break;
            case '"':
                html += "&quot;";
                break;
            case '\'':
                html += "&#39;";
                break;
            default:
                if (character == 0xfffd) {
                    html += "\xef\xbf\xbd";
                } else if (isShown(character)) {
                    html += rest.substr(0, rest.size() - text.size());
                } else {
                    char code[16];
                    std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(character));
                    html += code;
                }
        }
    }
    return html;
}

/** Elements without content, and so without an end. */
bool isVoid(std::string_view name) {
    return name == "meta" || name == "input";
}

}  // namespace

Markup::Markup(std::string_view text) : _html(escaped(text)) {}

Markup Markup::element(const char* name, std::initializer_list<Attribute> attributes, const Markup& content) {
    Markup made;
    made._html = std::string("<") + name;
    for (const Attribute& attribute : attributes) {
        made._html.append(" ").append(attribute.name);
        if (!attribute.value.empty()) made._html.append("=\"").append(escaped(attribute.value)).append("\"");
    }
    made._html += '>';
    if (!isVoid(name)) made._html.append(content._html).append("</").append(name).append(">");
    return made;
}

}  // namespace report
