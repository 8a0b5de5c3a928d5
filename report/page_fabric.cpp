#include <cstdio>

#include "report/layout.h"
#include "report/page_parts.h"

namespace report {

namespace {

constexpr double kUnit = 72;  ///< of the picture in an inch

std::string number(double inches) {
    char text[64];
    std::snprintf(text, sizeof text, "%.1f", inches * kUnit);
    return text;
}

Markup label(const char* kind, double x, double y, std::string_view text) {
    return Markup::element("text", {{"class", kind}, {"x", number(x)}, {"y", number(y)}}, Markup(text));
}

std::string marksOf(const Json& one) {
    std::string marks = one["local"] == true ? "local, " : "";
    if (one["principal"] == true) marks += "principal, ";
    return marks + counted(one["ports"].size(), "port");
}

Markup switchBox(const Json& one, const Json& place) {
    const double x = place["x"];
    const double y = place["y"];
    const Markup box = Markup::element("rect", {{"x", number(x - kSwitchWidth / 2)},
                                                {"y", number(y - kSwitchHeight / 2)},
                                                {"width", number(kSwitchWidth)},
                                                {"height", number(kSwitchHeight)},
                                                {"rx", "6"}});
    const std::string kind = std::string("node") + (one["local"] == true ? " local" : "") +
                             (one["principal"] == true ? " principal" : "");
    return Markup::element("g", {{"class", kind}},
                           box + label("title", x, y - 0.16, "domain " + valueText(one["domain"])) +
                               label("name", x, y + 0.07, valueText(one["wwn"])) +
                               label("note", x, y + 0.3, marksOf(one)));
}

Markup linkLine(const Json& link, const Json& place) {
    std::string path;
    const Json& points = place["points"];
    for (size_t i = 0; i + 1 < points.size(); i += 2) {
        path += i == 0 ? "M" : i == 2 ? "C" : " ";
        path += number(points[i]) + "," + number(points[i + 1]);
    }
    const std::string text = "port " + valueText(link["port"]);
    const std::string whole =
        text + " of domain " + valueText(link["from"]) + " to domain " + valueText(link["to"]);
    return Markup::element("g", {{"class", "link"}},
                           Markup::element("title", whole) + Markup::element("path", {{"d", path}}) +
                               label("note", place["x"], place["y"], text));
}

Markup picture(const Json& graph, const Json& layout) {
    Markup shapes;
    for (size_t i = 0; i < graph["links"].size(); ++i)
        shapes += linkLine(graph["links"][i], layout["links"][i]);
    for (size_t i = 0; i < graph["switches"].size(); ++i)
        shapes += switchBox(graph["switches"][i], layout["switches"][i]);
    const std::string width = number(layout["width"]);
    const std::string height = number(layout["height"]);
    return Markup::element(
        "div", {{"class", "scroll picture"}},
        Markup::element("svg",
                        {{"viewBox", "-4 -4 " + number(layout["width"].get<double>() + 0.12) + " " +
                                         number(layout["height"].get<double>() + 0.12)},
                         {"width", width},
                         {"height", height},
                         {"role", "img"},
                         {"aria-label", "The fabric's switches and links"}},
                        shapes));
}

}  // namespace

Markup fabricSection(const Json& facts) {
    const Json& area = areaOf(facts, "fabric");
    const Json& lsdb = areaOf(facts, "lsdb");
    const Json& graph = facts["fabric"]["graph"];
    const Json& layout = facts["fabric"]["layout"];
    Markup content = layout.is_null()
                         ? paragraph("No picture: " + valueText(facts["fabric"]["noPicture"]) + ".")
                         : picture(graph, layout);
    content += fieldList(area, {"area", "upToDate"});
    if (isTable(graph["links"])) content += part("links", table(graph["links"]));
    if (!lsdb.empty())
        content += part("link state database and attached devices", fieldList(lsdb, {"area"}), false);
    return section({"fabric", "Fabric", counted(area["switches"].size(), "switch"), false, area["upToDate"]},
                   content);
}

}  // namespace report
