#include "host/areas.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>
#include <vector>

#include "host/request.h"

using namespace datacache;

namespace {

/** Areas that the passes read. */
constexpr CacheArea passAreas[] = {CacheArea::Switch, CacheArea::Chassis, CacheArea::Blades,
                                   CacheArea::Ports,  CacheArea::Fabric,  CacheArea::Zoning};

std::optional<CacheArea> areaOf(const std::string& name) {
    for (size_t i = 0; i < kCacheAreas; ++i) {
        if (name == cacheAreaName(static_cast<CacheArea>(i))) return static_cast<CacheArea>(i);
    }
    return std::nullopt;
}

std::string hexadecimal(int32_t status) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%x", static_cast<unsigned>(status));
    return text;
}

}  // namespace

bool upToDate(CacheArea area) {
    return DataCache::health()[area].upToDate;
}

std::vector<std::string> staleAreas(const Health& health) {
    std::vector<std::string> names;
    for (const CacheArea area : passAreas) {
        if (health[area].reads == 0 || health[area].failuresInARow != 0)
            names.emplace_back(cacheAreaName(area));
    }
    return names;
}

std::string failureText(const ReadFailure& failure) {
    const std::string place = failure.line == 0 ? ""
                                                : std::string(", log line ") + failure.function + ':' +
                                                      std::to_string(failure.line);
    const std::string call = failure.call;
    const std::string key = failure.key;
    const std::string about = key.empty() ? call : key;
    switch (failure.fault) {
        case ReadFault::None:
            return "";
        case ReadFault::CallFailed: {
            const std::string more =
                failure.keys > 1 ? " and " + std::to_string(failure.keys - 1) + " more keys" : "";
            return call + (key.empty() ? "" : " of " + key + more) + " failed with " +
                   hexadecimal(failure.status) + place;
        }
        case ReadFault::KeyFailed:
            return key + " has status " + hexadecimal(failure.status) + place;
        case ReadFault::BadValue:
            return about + " gave a value that cannot be used" + place;
        case ReadFault::NoEnd:
            return "the list has no end at " + about + place;
        case ReadFault::Exception:
            return "left by an exception" + (key.empty() ? "" : ": " + key);
    }
    return "";
}

std::string staleReason(const std::string& name) {
    const std::optional<CacheArea> area = areaOf(name);
    const Health health = DataCache::health();
    std::string reason = name + " is not up to date";
    if (!area) return reason;
    const AreaHealth& state = health[*area];
    if (state.failuresInARow != 0) return reason + ": " + failureText(state.lastFailure);
    if (state.reads == 0) return reason + ": it was not read yet";
    return reason + ": it changed since it was read";
}

void warnOfCapacity() {
    static bool told[5];
    const CapacityHealth capacity = DataCache::health().capacity;
    const auto warn = [](bool& known, bool now, const std::string& text) {
        if (now && !known) std::cerr << "datacache-host: " << text << std::endl;
        known = now;
    };
    warn(
        told[0], capacity.domainListFull,
        "the fabric may be larger than what is shown: the switch's list of domains fills its 255 characters, "
        "and its last number may be cut");
    warn(told[1], capacity.portEntriesBeyond != 0,
         std::to_string(capacity.portEntriesBeyond) +
             " ports of other switches are not shown: the cache holds 256 a switch");
    warn(told[2], capacity.localPortsBeyond != 0,
         std::to_string(capacity.localPortsBeyond) + " local ports are not shown: the cache holds 128");
    warn(told[4], capacity.switchesGivenUp != 0,
         "the ports of " + std::to_string(capacity.switchesGivenUp) +
             " switches are not read any more: their management server kept failing");
    warn(told[3], capacity.slotsBeyond != 0,
         std::to_string(capacity.slotsBeyond) + " slots are not shown: the cache holds 32");
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
constexpr Area allAreas[] = {{switchArea},     {chassisArea},     {bladesArea}, {portsArea},
                             {fabricArea},     {accountsArea},    {zoningArea}, {propertiesArea, true},
                             {lsdbArea, true}, {healthArea, true}};
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
    warnOfCapacity();
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
            (name == "zoning" ? printZoning : name == "health" ? printHealth : printArea)(out, area);
        }
        if (area.value("upToDate", true)) continue;
        good = false;
        if (name != "health") reportStale(name);  // which names the areas itself
    }
    out.flush();
    return good;
}

void reportStale(const std::string& area) {
    std::cerr << "datacache-host: " << staleReason(area) << std::endl;
}
