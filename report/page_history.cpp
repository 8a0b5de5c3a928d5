#include <algorithm>
#include <cstdio>

#include "report/page_parts.h"

namespace report {

namespace {

constexpr size_t kDate = 10;   // of 2026-11-21T16:47:31.123+01:00
constexpr size_t kClock = 11;  // to where the time of day begins
constexpr size_t kClockSize = 12;

std::string leftOut(const Json& list, const std::string& what) {
    const size_t count = list.value("leftOut", size_t{0});
    return count == 0 ? "" : "; " + counted(count, "earlier " + what) + " left out";
}

Markup detail(std::string_view text) {
    return Markup::element("span", {{"class", "detail"}}, Markup(text));
}

Markup passText(const Json& entry) {
    const bool complete = entry["complete"] == true;
    std::string text = duration(entry["milliseconds"]) + ", " + counted(entry["calls"], "call");
    if (entry["failed"] != 0) text += ", " + valueText(entry["failed"]) + " failed";
    Markup made =
        badge(complete ? Tone::Good : Tone::Warning, complete ? "all up to date" : "not all up to date") +
        detail(text);
    if (entry.contains("slowest")) {
        const Json& slowest = entry["slowest"];
        const std::string key = slowest["key"];
        made += detail("slowest: " + valueText(slowest["function"]) + (key.empty() ? "" : " " + key) + ", " +
                       duration(slowest["milliseconds"]));
    }
    return made;
}

Markup textOf(const Json& entry) {
    const std::string kind = entry["kind"];
    if (kind == "pass") return passText(entry);
    if (kind == "switch event") {
        return Markup::element("b", valueText(entry["code"]) + ' ' + valueText(entry["name"])) +
               detail(valueText(entry["text"]));
    }
    Markup made = Markup::element("b", valueText(entry["class"]));
    for (const auto& field : entry["fields"].items()) {
        made += detail(wordsOf(field.key()) + ' ' + valueText(field.value()));
    }
    return made;
}

/** "switch event" as a class. */
std::string classOfKind(std::string kind) {
    std::replace(kind.begin(), kind.end(), ' ', '-');
    return kind;
}

/** A part of the whole as a bar. */
Markup bar(const Json& part, const Json& whole) {
    const double all = whole.get<double>();
    char width[32];
    std::snprintf(width, sizeof width, "%.1f", all > 0 ? 100 * part.get<double>() / all : 0);
    return Markup::element(
        "td", {{"class", "bar"}},
        Markup::element("svg",
                        {{"viewBox", "0 0 100 8"}, {"preserveAspectRatio", "none"}, {"aria-hidden", "true"}},
                        Markup::element("rect", {{"width", width}, {"height", "8"}})));
}

Markup costTable(const Json& rows, const std::vector<std::string>& columns, const Json& whole) {
    Markup body;
    for (const Json& one : rows) {
        Markup cells;
        for (const std::string& column : columns) {
            const Json& value = one[column];
            const bool time = column == "milliseconds" || column == "longest";
            cells +=
                time ? Markup::element("td", {{"class", "number"}}, Markup(duration(value))) : cell(value);
            if (column == "milliseconds") cells += bar(value, whole);
        }
        body += row(cells);
    }
    std::vector<std::string> headings;
    for (const std::string& column : columns) {
        if (column == "milliseconds") {
            headings.insert(headings.end(), {">time", ""});
        } else {
            headings.push_back((column == "count" || column == "failed" || column == "longest" ? ">" : "") +
                               column);
        }
    }
    return table(headings, body);
}

}  // namespace

Markup timelineSection(const Json& facts) {
    const Json& timeline = facts["timeline"];
    Markup rows;
    std::string day;
    for (const Json& entry : timeline["entries"]) {
        const std::string time = entry["time"];
        if (time.substr(0, kDate) != day) {
            day = time.substr(0, kDate);
            std::string title = day + ", UTC";
            if (time.size() > kClock + kClockSize) title.append(time, kClock + kClockSize);
            rows += Markup::element("tr", {{"class", "day"}},
                                    Markup::element("th", {{"colspan", "3"}}, Markup(title)));
        }
        const std::string kind = entry["kind"];
        rows += Markup::element(
            "tr", {{"data-row", ""}, {"class", classOfKind(kind)}},
            Markup::element("td",
                            Markup::element("time", {{"datetime", time}},
                                            Markup(time.substr(std::min(kClock, time.size()), kClockSize)))) +
                Markup::element("td", kind) + Markup::element("td", textOf(entry)));
    }
    const std::string hint = counted(timeline["entries"].size(), "entry") + leftOut(timeline, "entry");
    return section({"timeline", "Timeline", hint, true},
                   rows.empty() ? paragraph("Nothing happened.") : table({"time", "what", ""}, rows));
}

Markup callsSection(const Json& facts) {
    const Json& calls = facts["calls"];
    const std::string hint = counted(calls["count"], "call") + " in " + duration(calls["milliseconds"]) +
                             (calls["failed"] == 0 ? "" : ", " + valueText(calls["failed"]) + " failed");
    return section(
        {"calls", "Calls of the switch library", hint},
        costTable(calls["functions"], {"function", "count", "failed", "milliseconds", "longest", "of"},
                  calls["milliseconds"]) +
            part(
                "slowest keys and names",
                costTable(calls["slowest"], {"key", "function", "count", "failed", "milliseconds", "longest"},
                          calls["milliseconds"])));
}

Markup logSection(const Json& facts) {
    const Json& log = facts["log"];
    Markup lines;
    for (const Json& line : log["lines"]) {
        Markup text = Markup::element("time", valueText(line["time"])) +
                      Markup::element("small", valueText(line["thread"])) +
                      Markup::element("span", valueText(line["text"]));
        if (line.contains("times")) {
            text += Markup::element("b", {{"title", "until " + valueText(line["until"])}},
                                    Markup("\u00d7" + valueText(line["times"])));
        }
        lines += Markup::element("li", text);
    }
    return section({"log", "Log", valueText(log["file"]) + leftOut(log, "line")},
                   lines.empty() ? paragraph("No line of this process.") : Markup::element("ol", lines));
}

}  // namespace report
