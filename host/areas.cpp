#include "host/areas.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <vector>

#include "host/request.h"

namespace {

constexpr struct {
    const char* name;
    bool DataCache::*good;
    bool DataCache::*marked;
} areaFlags[] = {
    {"switch", &DataCache::_switchOK, &DataCache::_switchUpdate},
    {"chassis", &DataCache::_chassisOK, &DataCache::_chassisUpdate},
    {"blades", &DataCache::_bladesOK, &DataCache::_bladesUpdate},
    {"ports", &DataCache::_portsOK, &DataCache::_portsUpdate},
    {"fabric", &DataCache::_fabricOK, &DataCache::_fabricUpdate},
    {"zoning", &DataCache::_zoningOK, &DataCache::_zoningUpdate},
};

}  // namespace

bool upToDate(const DataCache& cache, const std::string& area) {
    for (const auto& row : areaFlags) {
        if (area == row.name) return cache.*row.good && !(cache.*row.marked);
    }
    return true;
}

std::vector<std::string> staleAreas(const DataCache& cache) {
    std::vector<std::string> names;
    for (const auto& row : areaFlags) {
        if (!(cache.*row.good)) names.emplace_back(row.name);
    }
    return names;
}

std::string staleReason(const std::string& area) {
    return area + " is not up to date (see /tmp/cim.out)";
}

std::string listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}

namespace {

/** The fields that rows have, in the order in which they first come up. */
std::vector<std::string> columnsOf(const Json& rows) {
    std::vector<std::string> columns;
    for (const Json& row : rows) {
        for (const auto& field : row.items()) {
            if (std::find(columns.begin(), columns.end(), field.key()) == columns.end()) {
                columns.push_back(field.key());
            }
        }
    }
    return columns;
}

bool isTable(const Json& value) {
    return value.is_array() && !value.empty() && value[0].is_object() && !value[0].contains("code");
}

std::string padded(const std::string& text, size_t width, bool right) {
    const std::string blanks(width > text.size() ? width - text.size() : 0, ' ');
    return right ? blanks + text : text + blanks;
}

/** Prints rows under their headings; columns of numbers are aligned to the right. */
void printTable(std::ostream& out, const Json& rows, const std::string& indent) {
    const std::vector<std::string> columns = columnsOf(rows);
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

std::string wordsOf(const std::string& name) {
    std::string words;
    for (const char letter : name) {
        const auto code = static_cast<unsigned char>(letter);
        if (std::isupper(code) != 0 && !words.empty()) words += ' ';
        words += static_cast<char>(std::tolower(code));
    }
    return words;
}

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

/** The areas, in the order of areaNames. */
constexpr Area allAreas[] = {{switchArea}, {chassisArea},          {bladesArea},
                             {portsArea},  {fabricArea},           {accountsArea},
                             {zoningArea}, {propertiesArea, true}, {lsdbArea, true}};
static_assert(std::size(allAreas) == std::size(areaNames), "each area has its name");

}  // namespace

bool isLive(const std::string& area) {
    for (size_t i = 0; i < std::size(allAreas); ++i) {
        if (area == areaNames[i]) return allAreas[i].live;
    }
    return false;
}

std::vector<Json> readAreas(const std::string& names) {
    std::vector<Json> areas;
    for (size_t i = 0; i < std::size(allAreas); ++i) {
        const bool wanted =
            names == areaNames[i] || names == "all" || (names == "cached" && !allAreas[i].live);
        if (wanted) areas.push_back(allAreas[i].read());
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
            (name == "zoning" ? printZoning : printArea)(out, area);
        }
        if (area.value("upToDate", true)) continue;
        good = false;
        reportStale(name);
    }
    out.flush();
    return good;
}

void reportStale(const std::string& area) {
    std::cerr << "datacache-host: " << staleReason(area) << std::endl;
}
