#include "simulator/toml_depth.h"

#include <algorithm>
#include <vector>

namespace vexsim {
namespace {

constexpr size_t kDeepest = 32;

/** Where the string that begins at `at` ends: the index behind it. What is malformed ends with the line.
 */
size_t skipString(std::string_view text, size_t at) {
    const char quote = text[at];
    const std::string_view three = text.substr(at, 3);
    const bool multiline = three.size() == 3 && three.find_first_not_of(quote) == std::string_view::npos;
    const std::string_view closing = multiline ? three : text.substr(at, 1);
    for (at += closing.size(); at < text.size(); ++at) {
        if (!multiline && text[at] == '\n') return at;
        if (text[at] == '\\' && quote == '"') {
            ++at;
        } else if (text.substr(at, closing.size()) == closing) {
            at += closing.size();
            while (multiline && at < text.size() && text[at] == quote) ++at;  // quotes may end the text
            return at;
        }
    }
    return text.size();
}

}  // namespace

std::optional<size_t> tooDeepLine(std::string_view text) {
    size_t line = 1;
    size_t counted = 0;         // how far lines are counted
    std::vector<size_t> outer;  // the depth outside each bracket that is open
    size_t depth = 0;           // open brackets, and the dots of the key in hand and of those around it
    for (size_t at = 0; at < text.size();) {
        const char c = text[at];
        if (c == '"' || c == '\'') {
            at = skipString(text, at);
            continue;
        }
        if (c == '#') {
            at = std::min(text.find('\n', at), text.size());
            continue;
        }
        if (c == '.') {
            ++depth;
        } else if (c == '[' || c == '{') {
            outer.push_back(depth++);
        } else if ((c == ']' || c == '}') && !outer.empty()) {
            depth = outer.back();
            outer.pop_back();
        } else if (c == ',' || (c == '\n' && outer.empty())) {
            depth = outer.empty() ? 0 : outer.back() + 1;
        }
        ++at;
        if (depth <= kDeepest) continue;
        for (; counted < at; ++counted) line += text[counted] == '\n' ? 1 : 0;
        return line;
    }
    return std::nullopt;
}

}  // namespace vexsim
