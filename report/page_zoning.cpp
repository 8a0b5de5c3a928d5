#include "report/page_parts.h"

namespace report {

namespace {

Markup membersOf(const Json& owner) {
    Markup list;
    for (const Json& member : owner["members"]) {
        list += Markup::element("li", Markup::element("small", valueText(member["type"])) +
                                          Markup::element("code", valueText(member["member"])));
    }
    return list.empty() ? paragraph("no members") : Markup::element("ul", {{"class", "members"}}, list);
}

/** A zone or alias. */
Markup holderOf(const Json& owner, const char* kind) {
    const std::string type = owner.contains("type") ? ", " + valueText(owner["type"]) : "";
    const Markup title =
        Markup::element("b", valueText(owner["name"])) +
        Markup::element("span", {{"class", "hint"}},
                        Markup(kind + type + ", " + counted(owner["members"].size(), "member")));
    return Markup::element("details", {{"class", "leaf"}, {"open", ""}, {"data-row", ""}},
                           Markup::element("summary", title) + membersOf(owner));
}

Markup groupOf(const std::string& name, const std::string& hint, const Markup& content) {
    const Markup title =
        Markup::element("h3", name) + Markup::element("span", {{"class", "hint"}}, Markup(hint));
    return Markup::element(
        "details", {{"class", "part"}, {"open", ""}, {"data-group", ""}},
        Markup::element("summary", title) +
            (content.empty() ? paragraph("none") : Markup::element("div", {{"class", "tree"}}, content)));
}

}  // namespace

Markup zoningSection(const Json& facts) {
    const Json& area = areaOf(facts, "zoning");
    Markup tree;
    const auto zones = [](const Json& list, const char* kind) {
        Markup all;
        for (const Json& one : list) all += holderOf(one, kind);
        return all;
    };
    for (const Json& zoneset : area["zonesets"]) {
        tree += groupOf(
            valueText(zoneset["name"]),
            "zoneset, " + valueText(zoneset["type"]) + ", " + counted(zoneset["zones"].size(), "zone"),
            zones(zoneset["zones"], "zone"));
    }
    if (area["loaded"] == true) {
        tree +=
            groupOf("All zones and aliases",
                    counted(area["zones"].size(), "zone") + ", " + counted(area["aliases"].size(), "alias"),
                    zones(area["zones"], "zone") + zones(area["aliases"], "alias"));
    } else {
        tree += paragraph("The configured zoning is not loaded.");
    }
    return section(
        {"zoning", "Zoning", "active: " + valueText(area["activeZoneset"]), true, area["upToDate"]},
        fieldList(area, {"area", "upToDate", "zonesets", "zones", "aliases"}) + tree);
}

}  // namespace report
