#include "report/page_parts.h"

namespace report {

namespace {

/** The colours of a port, by its CIM status; its word says more. */
Tone toneOfPort(const Json& status) {
    const Json code = status.value("code", Json());
    if (code == 2) return Tone::Good;
    if (code == 6) return Tone::Bad;
    return code == 10 ? Tone::Off : Tone::Warning;
}

/** A tile goes with its row, which has all that can be searched for. */
Markup portTile(const Json& port, size_t row) {
    return Markup::element(
        "li", {{"data-follows", std::to_string(row)}},
        Markup::element("b", valueText(port["index"])) +
            badge(toneOfPort(port["operationalStatus"]), valueText(port["operationalStatus"]["text"])) +
            Markup::element("small", valueText(port["type"]["text"])));
}

Markup portRow(const Json& port) {
    Markup cells;
    for (const auto& field : port.items()) {
        cells += field.key() == "operationalStatus"
                     ? Markup::element("td", badge(toneOfPort(field.value()), valueText(field.value())))
                     : cell(field.value());
    }
    return searchedRow(cells);
}

}  // namespace

Markup portsSection(const Json& facts) {
    const Json& area = areaOf(facts, "ports");
    Markup tiles;
    Markup rows;
    size_t online = 0;
    size_t number = 0;
    for (const Json& port : area["ports"]) {
        if (toneOfPort(port["operationalStatus"]) == Tone::Good) ++online;
        tiles += portTile(port, number++);
        rows += portRow(port);
    }
    Markup content = fieldList(area, {"area", "upToDate", "ports"});
    if (!rows.empty()) {
        std::vector<std::string> headings;
        for (const std::string& column : columnsOf(area["ports"])) headings.push_back(wordsOf(column));
        headings.front() = ">port";
        content +=
            Markup::element("ul", {{"class", "panel"}}, tiles) + part("every port", table(headings, rows));
    }
    return section(
        {"ports", "Ports", std::to_string(online) + " of " + std::to_string(area["ports"].size()) + " OK",
         true, area["upToDate"]},
        content);
}

}  // namespace report
