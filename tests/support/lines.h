#pragma once

#include <sstream>
#include <string>
#include <vector>

/** Lines of text, as tests compare them. */
using Lines = std::vector<std::string>;

template <typename... Parts>
std::string line(const Parts&... parts) {
    std::ostringstream made;
    const char* blank = "";
    ((made << blank << parts, blank = " "), ...);
    return made.str();
}

template <typename... Parts>
void addLine(Lines& lines, const Parts&... parts) {
    lines.push_back(line(parts...));
}

inline std::string joined(const Lines& all, const char* separator) {
    std::string text;
    for (const std::string& one : all) text += (text.empty() ? "" : separator) + one;
    return text;
}
