#include "capture/Document.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace capture {

namespace {

const char* const kHead =
    "# A switch as it was captured. What no section has words for stands under [sml], and what the switch\n"
    "# refused to tell is a [[fault]].\n";

/** The length of the character that begins here; 0 where no UTF-8 does. */
size_t characterAt(const std::string& text, size_t at) {
    const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const unsigned first = byte(at);
    if (first < 0x80) return 1;
    const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    uint32_t code = first & (0xFFU >> (length + 1));
    for (size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0U) != 0x80) return 0;
        code = (code << 6) | (byte(at + i) & 0x3FU);
    }
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool good = first >= 0xC2 && first < 0xF5 && code >= kLeast[length] && code <= 0x10FFFF &&
                      (code < 0xD800 || code > 0xDFFF);
    return good ? length : 0;
}

}  // namespace

bool isUtf8(const std::string& text) {
    for (size_t at = 0; at < text.size();) {
        const size_t length = characterAt(text, at);
        if (length == 0) return false;
        at += length;
    }
    return true;
}

std::string quoted(const std::string& text) {
    std::string toml = "\"";
    for (size_t at = 0; at < text.size();) {
        const size_t length = characterAt(text, at);
        const auto c = static_cast<unsigned char>(text[at]);
        if (length == 0) {
            toml += '?';
        } else if (length > 1) {
            toml += text.substr(at, length);
        } else if (c < ' ' || c == 0x7F) {
            char code[8];
            std::snprintf(code, sizeof code, "\\u%04X", unsigned{c});
            toml += code;
        } else {
            if (c == '"' || c == '\\') toml += '\\';
            toml += text[at];
        }
        at += std::max<size_t>(length, 1);
    }
    return toml + '"';
}

std::string commented(const std::string& text) {
    const std::string toml = quoted(text);
    std::string plain;
    for (size_t i = 1; i + 1 < toml.size(); ++i) {
        if (toml[i] == '\\' && (toml[i + 1] == '"' || toml[i + 1] == '\\')) ++i;
        plain += toml[i];
    }
    return "# " + plain;
}

std::string listOf(const std::vector<std::string>& items) {
    std::string toml;
    for (const std::string& item : items) toml += (toml.empty() ? "" : ", ") + item;
    return '[' + toml + ']';
}

std::string quotedList(const std::vector<std::string>& texts) {
    std::vector<std::string> items;
    items.reserve(texts.size());
    for (const std::string& text : texts) items.push_back(quoted(text));
    return listOf(items);
}

std::string Document::text() const {
    std::string text = kHead;
    for (const std::string& remark : remarks) text += commented("Not captured: " + remark) + '\n';
    for (const Table& table : tables) {
        text += '\n';
        text += table.heading + '\n';
        for (const std::string& line : table.lines) text += line + '\n';
    }
    return text;
}

std::string Document::drop(size_t line) {
    const std::string head = Document{{}, remarks}.text();
    size_t next = 1 + static_cast<size_t>(std::count(head.begin(), head.end(), '\n'));
    for (auto table = tables.begin(); table != tables.end(); ++table) {
        const size_t heading = next + 1;  // below a blank line
        next = heading + 1 + table->lines.size();
        if (line < heading || line >= next) continue;
        std::string dropped = table->heading;
        if (line == heading) {
            tables.erase(table);
        } else {
            const auto field = table->lines.begin() + static_cast<std::ptrdiff_t>(line - heading - 1);
            dropped += ' ' + *field;
            table->lines.erase(field);
        }
        return dropped;
    }
    return {};
}

}  // namespace capture
