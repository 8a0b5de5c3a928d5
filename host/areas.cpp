#include "host/areas.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <vector>

#include "host/request.h"
#include "report/fields.h"

namespace host {

using report::isTable;
using report::wordsOf;

std::string listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}

namespace {

std::string padded(const std::string& text, size_t width, bool right) {
    const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
    return right ? blanks + text : text + blanks;
}

/** Prints rows under their headings; columns of numbers are aligned to the right. */
void printTable(std::ostream& out, const Json& rows, const std::string& indent) {
    const std::vector<std::string> columns = report::columnsOf(rows);
    std::vector<std::string> lines(rows.size() + 1, indent);
    for (const std::string& column : columns) {
        std::vector<std::string> cells{wordsOf(column)};
        bool numbers = true;
        for (const Json& row : rows) {
            const Json value = row.value(column, Json());
            numbers = numbers && value.is_number();
            cells.push_back(plainText(value));
        }
        size_t width = 0;
        for (const std::string& cell : cells) width = std::max(width, cell.size());
        for (size_t i = 0; i < lines.size(); ++i) lines[i] += padded(cells[i], width, numbers) + "  ";
    }
    for (std::string& line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
        out << line << '\n';
    }
}

}  // namespace

void printArea(std::ostream& out, const Json& area) {
    std::string heading = plainText(area.value("area", Json()));
    heading[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(heading[0])));
    out << heading << '\n';
    size_t width = 0;
    for (const auto& field : area.items()) {
        if (!isTable(field.value())) width = std::max(width, wordsOf(field.key()).size());
    }
    for (const auto& field : area.items()) {
        if (field.key() == "area") continue;
        if (isTable(field.value())) {
            out << "  " << wordsOf(field.key()) << '\n';
            printTable(out, field.value(), "    ");
        } else {
            out << "  " << padded(wordsOf(field.key()), width, false) << "  " << plainText(field.value())
                << '\n';
        }
    }
}

namespace {

struct Area {
    Json (*read)();
    bool live = false;
};

/** The areas, in the order of kAreaNames. */
constexpr Area kAreas[] = {{switchArea},     {chassisArea},     {bladesArea}, {portsArea},
                           {fabricArea},     {accountsArea},    {zoningArea}, {propertiesArea, true},
                           {lsdbArea, true}, {healthArea, true}};
static_assert(std::size(kAreas) == std::size(kAreaNames), "each area has its name");

}  // namespace

bool isLive(const std::string& area) {
    for (size_t i = 0; i < std::size(kAreas); ++i) {
        if (area == kAreaNames[i]) return kAreas[i].live;
    }
    return false;
}

std::vector<Json> readAreas(const std::string& names) {
    std::vector<Json> areas;
    warnOfCapacity();
    for (size_t i = 0; i < std::size(kAreas); ++i) {
        const bool wanted =
            names == kAreaNames[i] || names == "all" || (names == "cached" && !kAreas[i].live);
        if (wanted) areas.push_back(kAreas[i].read());
    }
    return areas;
}

bool printAreas(std::ostream& out, const std::vector<Json>& areas, bool json) {
    bool good = true;
    for (const Json& area : areas) {
        const std::string name = area["area"];
        if (json) {
            out << jsonLine(area) << '\n';
        } else {
            (name == "zoning" ? printZoning : name == "health" ? printHealth : printArea)(out, area);
        }
        good = good && area.value("well", true);
        if (area.value("upToDate", true)) continue;
        good = false;
        reportStale(name);
    }
    out.flush();
    return good;
}

}  // namespace host
