#include "report/log_lines.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <vector>

namespace report {

namespace {

/** "MM/DD hh:mm:ss.mmm PROCESS/THREAD TEXT" */
struct LogLine {
    std::string_view time;
    long process = 0;
    std::string_view thread;
    std::string_view text;
};

constexpr std::string_view kTimeForm = "00/00 00:00:00.000";

bool hasForm(std::string_view text, std::string_view form) {
    if (text.size() < form.size()) return false;
    for (size_t i = 0; i < form.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (form[i] == '0' ? !digit : text[i] != form[i]) return false;
    }
    return true;
}

/** Nothing for a line that has no such prefix. */
std::optional<LogLine> parse(std::string_view line) {
    if (!hasForm(line, kTimeForm)) return std::nullopt;
    LogLine parsed;
    parsed.time = line.substr(0, kTimeForm.size());
    line.remove_prefix(kTimeForm.size());
    if (line.substr(0, 1) != " ") return std::nullopt;
    const char* const end = line.data() + line.size();
    const auto number = std::from_chars(line.data() + 1, end, parsed.process);
    if (number.ec != std::errc() || number.ptr == end || *number.ptr != '/') return std::nullopt;
    line.remove_prefix(static_cast<size_t>(number.ptr + 1 - line.data()));
    const size_t blank = line.find(' ');
    if (blank == std::string_view::npos) return std::nullopt;
    parsed.thread = line.substr(0, blank);
    parsed.text = line.substr(blank + 1);
    return parsed;
}

}  // namespace

Json foldedLog(std::string_view text, long process, size_t most, const Secrets& secrets) {
    struct Folded {
        LogLine first;
        std::string text;  // with the lines that go with it
        size_t times = 1;
        std::string_view until;
    };
    std::vector<Folded> whole;
    bool own = false;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        const std::string_view bytes = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::optional<LogLine> line = parse(bytes);
        if (line) own = line->process == process;
        if (own && line) whole.push_back({*line, std::string(line->text), 1, line->time});
        if (own && !line) whole.back().text.append("\n").append(bytes);
    }
    std::vector<Folded> folded;
    for (Folded& one : whole) {
        if (folded.empty() || folded.back().text != one.text) {
            folded.push_back(std::move(one));
        } else {
            ++folded.back().times;
            folded.back().until = one.until;
        }
    }
    const size_t leftOut = folded.size() - std::min(most, folded.size());
    Json lines = Json::array();
    for (size_t i = leftOut; i < folded.size(); ++i) {
        const Folded& one = folded[i];
        Json line{{"time", one.first.time}, {"thread", one.first.thread}, {"text", secrets.text(one.text)}};
        if (one.times > 1) line.update({{"times", one.times}, {"until", one.until}});
        lines.push_back(std::move(line));
    }
    return {{"leftOut", leftOut}, {"lines", lines}};
}

}  // namespace report
