#include "report/page_parts.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace report {

namespace {

/** The classes of the style, which gives each its colour and shape. */
const char* classOf(Tone tone) {
    switch (tone) {
        case Tone::Good:
            return "badge good";
        case Tone::Off:
            return "badge off";
        case Tone::Warning:
            return "badge warning";
        case Tone::Bad:
            break;
    }
    return "badge bad";
}

bool isNumeric(const Json& rows, const std::string& column) {
    return std::all_of(rows.begin(), rows.end(),
                       [&](const Json& one) { return one.value(column, Json()).is_number(); });
}

}  // namespace

Markup badge(Tone tone, std::string_view text) {
    return Markup::element("span", {{"class", classOf(tone)}}, Markup(text));
}

std::string valueText(const Json& value) {
    if (value.is_null() || (value.empty() && value.is_structured())) return "-";
    if (value.is_boolean()) return value.get<bool>() ? "yes" : "no";
    if (value.is_string())
        return value.get_ref<const std::string&>().empty() ? "-" : value.get<std::string>();
    if (value.is_object())
        return valueText(value.value("code", Json())) + ' ' + valueText(value.value("text", Json()));
    if (!value.is_array()) return value.dump();
    std::string list;
    for (const Json& element : value) list += (list.empty() ? "" : ", ") + valueText(element);
    return list;
}

Markup fieldList(const Json& object, const std::vector<std::string>& without) {
    Markup list;
    Markup tables;
    for (const auto& field : object.items()) {
        if (std::find(without.begin(), without.end(), field.key()) != without.end()) continue;
        if (isTable(field.value())) {
            tables += part(wordsOf(field.key()), table(field.value()));
        } else if (field.value().is_object() && !field.value().contains("code")) {
            tables += part(wordsOf(field.key()), fieldList(field.value()));
        } else {
            list += Markup::element("div", Markup::element("dt", wordsOf(field.key())) +
                                               Markup::element("dd", valueText(field.value())));
        }
    }
    return (list.empty() ? list : Markup::element("dl", list)) + tables;
}

Markup table(const Json& rows) {
    const std::vector<std::string> columns = columnsOf(rows);
    Markup body;
    for (const Json& one : rows) {
        Markup cells;
        for (const std::string& column : columns) cells += cell(one.value(column, Json()));
        body += row(cells);
    }
    std::vector<std::string> headings;
    headings.reserve(columns.size());
    for (const std::string& column : columns)
        headings.push_back((isNumeric(rows, column) ? ">" : "") + wordsOf(column));
    return table(headings, body);
}

Markup table(const std::vector<std::string>& headings, const Markup& rows) {
    Markup head;
    for (const std::string& heading : headings) {
        const bool number = heading.compare(0, 1, ">") == 0;
        head += number ? Markup::element("th", {{"class", "number"}}, Markup(heading.substr(1)))
                       : Markup::element("th", heading);
    }
    return Markup::element(
        "div", {{"class", "scroll"}},
        Markup::element("table", Markup::element("thead", row(head)) + Markup::element("tbody", rows)));
}

std::string momentText(const Json& time) {
    std::string text = valueText(time).substr(0, std::strlen("2026-11-21T08:33:54"));
    std::replace(text.begin(), text.end(), 'T', ' ');
    return text;
}

Markup momentCell(const Json& time) {
    return Markup::element("td", {{"class", "moment"}}, Markup(momentText(time)));
}

Markup cell(const Json& value) {
    if (value.is_number()) return Markup::element("td", {{"class", "number"}}, Markup(valueText(value)));
    return Markup::element("td", valueText(value));
}

Markup row(const Markup& cells) {
    return Markup::element("tr", cells);
}

Markup searchedRow(const Markup& cells) {
    return Markup::element("tr", {{"data-row", ""}}, cells);
}

Markup section(const Section& head, const Markup& content) {
    Markup body;
    if (head.searched) {
        const std::string what = std::string("Search ") + wordsOf(head.title);
        // Shown by the script, without which it would do nothing.
        body += Markup::element(
            "p", {{"class", "search"}, {"hidden", ""}},
            Markup::element("input", {{"type", "search"}, {"placeholder", what}, {"aria-label", what}}) +
                Markup::element("output", Markup()));
    }
    Markup title = Markup::element("h2", head.title);
    if (!head.hint.empty()) title += Markup::element("span", {{"class", "hint"}}, Markup(head.hint));
    if (!head.upToDate) title += badge(Tone::Bad, "not up to date");
    return Markup::element(
        "section", {{"id", head.id}},
        Markup::element("details", {{"open", ""}}, Markup::element("summary", title) + body + content));
}

Markup part(std::string_view title, const Markup& content, bool open) {
    const Markup inside = Markup::element("summary", Markup::element("h3", title)) + content;
    return open ? Markup::element("details", {{"class", "part"}, {"open", ""}}, inside)
                : Markup::element("details", {{"class", "part"}}, inside);
}

Markup paragraph(std::string_view text) {
    return Markup::element("p", text);
}

std::string counted(size_t count, std::string what) {
    if (count != 1) {
        if (what.back() == 'y') what.replace(what.size() - 1, 1, "ie");
        if (what.back() == 'h' || what.back() == 's') what += 'e';
        what += 's';
    }
    return std::to_string(count) + ' ' + what;
}

std::string duration(const Json& milliseconds) {
    char text[64];
    const double number = milliseconds.is_number() ? milliseconds.get<double>() : 0;
    if (number < 1) {
        std::snprintf(text, sizeof text, "%.0f \u00b5s", number * 1000);
    } else {
        std::snprintf(text, sizeof text,
                      number < 10     ? "%.2f ms"
                      : number < 1000 ? "%.1f ms"
                                      : "%.0f ms",
                      number);
    }
    return text;
}

const Json& areaOf(const Json& facts, const char* name) {
    static const Json none = Json::object();
    for (const Json& area : facts["areas"]) {
        if (area["area"] == name) return area;
    }
    return none;
}

}  // namespace report
