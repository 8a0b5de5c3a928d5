#include "report/page.h"

#include "report/page_parts.h"

namespace report {

namespace {

/** Whether there is more than the health. */
bool isRead(const Json& facts) {
    return !areaOf(facts, "ports").empty();
}

/** The state of an area of the cache. */
Markup stateOf(const Json& area) {
    if (area["upToDate"] == true) return badge(Tone::Good, "up to date");
    if (area["inARow"] != 0) return badge(Tone::Bad, "failed");
    return area["reads"] == 0 ? badge(Tone::Off, "not read") : badge(Tone::Warning, "changed since");
}

/** A failure or gap, with its time. */
Markup failureOf(const Json& failure) {
    if (failure.is_null()) return cell(Json());
    return Markup::element(
        "td", Markup(valueText(failure["text"])) + Markup::element("small", momentText(failure["time"])));
}

Markup healthSection(const Json& facts) {
    const Json& health = areaOf(facts, "health");
    Markup rows;
    size_t good = 0;
    for (const Json& area : health["areas"]) {
        if (area["upToDate"] == true) ++good;
        Markup cells = Markup::element("th", valueText(area["name"])) + Markup::element("td", stateOf(area));
        cells += momentCell(area["lastGoodRead"]);
        for (const char* field : {"reads", "failures", "inARow", "gaps"}) cells += cell(area[field]);
        rows += row(cells + failureOf(area["lastFailure"]) + failureOf(area["firstGap"]));
    }
    const Markup areas = table({"area", "state", "last good read", ">reads", ">failures", ">in a row",
                                ">gaps", "last failure", "first gap"},
                               rows);
    return section(
        {"health", "Health",
         std::to_string(good) + " of " + std::to_string(health["areas"].size()) + " areas up to date"},
        areas + fieldList(health, {"area", "areas"}));
}

Markup switchSection(const Json& facts) {
    const Json& area = areaOf(facts, "switch");
    Markup names;
    const Json accounts = areaOf(facts, "accounts").value("accounts", Json());
    for (const Json& account : accounts) names += Markup::element("li", valueText(account["name"]));
    const Markup properties = fieldList(areaOf(facts, "properties"), {"area"});
    return section({"switch", "Switch", valueText(area["wwn"]), false, area["upToDate"]},
                   fieldList(area, {"area", "upToDate"}) +
                       part("properties", properties.empty() ? paragraph("not read") : properties) +
                       part("accounts", names.empty() ? paragraph(accounts.is_null() ? "not read" : "none")
                                                      : Markup::element("ul", {{"class", "units"}}, names)));
}

Tone toneOfPart(const Json& status) {
    const Json code = status.value("code", Json());
    if (code == 1) return Tone::Good;
    return code == 2 ? Tone::Bad : code == 3 ? Tone::Off : Tone::Warning;
}

/** Power supplies or fans, each in its colour. */
Markup unitsOf(const Json& units, const char* name) {
    Markup tiles;
    for (const Json& unit : units) {
        tiles +=
            Markup::element("li", Markup::element("b", name + valueText(unit["index"])) +
                                      badge(toneOfPart(unit["status"]), valueText(unit["status"]["text"])));
    }
    return Markup::element("ul", {{"class", "units"}}, tiles);
}

Markup chassisSection(const Json& facts) {
    const Json& chassis = areaOf(facts, "chassis");
    const Json& blades = areaOf(facts, "blades");
    Json taken = Json::array();
    for (const Json& slot : blades["slots"]) {
        if (!slot["operationalStatus"].is_null()) taken.push_back(slot);
    }
    const Markup slots =
        part(counted(blades["slotCount"], "slot") + ", " + counted(taken.size(), "blade") + " known",
             taken.empty() ? Markup() : table(taken));
    return section({"chassis", "Chassis and blades",
                    counted(chassis["powerSupplies"].size(), "power supply") + ", " +
                        counted(chassis["fans"].size(), "fan"),
                    false, chassis["upToDate"] == true && blades["upToDate"] == true},
                   fieldList(chassis, {"area", "upToDate", "powerSupplies", "fans"}) +
                       unitsOf(chassis["powerSupplies"], "power supply ") + unitsOf(chassis["fans"], "fan ") +
                       slots);
}

Markup recordingNote(const Json& recording) {
    const std::string what =
        "This is a recording, of " + valueText(recording["platform"]) + " (" +
        valueText(recording["wordSize"]) + ", " + valueText(recording["byteOrder"]) + "), begun " +
        valueText(recording["begun"]) +
        ". Timeline and calls are as recorded; the state of the switch is that at the recording's "
        "end; health and log are those of its replay.";
    return Markup::element(
        "div", {{"class", "notes"}},
        Markup::element("p", what) + fieldList(recording, {"platform", "wordSize", "byteOrder", "begun"}));
}

/** What the report is about, and whether all is well. */
Markup heading(const Json& facts) {
    const Json& outcome = facts["outcome"];
    const bool good = outcome["good"] == true;
    Markup head = Markup::element("h1", valueText(facts["title"])) +
                  Markup::element("p", {{"class", "verdict"}},
                                  badge(good ? Tone::Good : Tone::Bad, valueText(outcome["text"])));
    Markup notes;
    for (const Json& note : facts["notes"]) notes += Markup::element("li", valueText(note));
    if (!notes.empty()) head += Markup::element("ul", {{"class", "notes"}}, notes);
    if (!facts["recording"].is_null()) head += recordingNote(facts["recording"]);
    Json made = facts["made"];
    made["reportMade"] = momentText(made["reportMade"]);
    return Markup::element("header", head + fieldList(made));
}

Markup navigation(const Json& facts) {
    const bool areas = isRead(facts);
    Markup links;
    const auto link = [&](const char* id, const char* title) {
        links += Markup::element("a", {{"href", std::string("#") + id}}, Markup(title));
    };
    link("health", "Health");
    if (areas) {
        link("switch", "Switch");
        link("chassis", "Chassis");
        link("ports", "Ports");
        link("fabric", "Fabric");
        link("zoning", "Zoning");
    }
    link("timeline", "Timeline");
    link("calls", "Calls");
    link("log", "Log");
    const auto button = [](const char* what, const char* title) {
        return Markup::element("button", {{"type", "button"}, {"data-fold", what}, {"hidden", ""}},
                               Markup(title));
    };
    return Markup::element("nav", links + button("close", "Fold all") + button("open", "Unfold all"));
}

}  // namespace

std::string page(const Json& facts, const std::string& nonce) {
    Markup body = heading(facts) + navigation(facts) + healthSection(facts);
    if (isRead(facts)) {
        body += switchSection(facts) + chassisSection(facts) + portsSection(facts) + fabricSection(facts) +
                zoningSection(facts);
    }
    body += timelineSection(facts) + callsSection(facts) + logSection(facts);
    const Markup head =
        Markup::element("meta", {{"charset", "utf-8"}}) +
        Markup::element(
            "meta", {{"http-equiv", "Content-Security-Policy"},
                     {"content", "default-src 'none'; style-src 'nonce-" + nonce + "'; script-src 'nonce-" +
                                     nonce + "'; base-uri 'none'; form-action 'none'"}}) +
        Markup::element("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}}) +
        Markup::element("meta", {{"name", "color-scheme"}, {"content", "light dark"}}) +
        Markup::element("title", valueText(facts["title"]));
    return "<!DOCTYPE html>\n<html lang=\"en\"><head>" + head.html() + "<style nonce=\"" + nonce + "\">" +
           kPageStyle + "</style></head><body>" + body.html() + "<script nonce=\"" + nonce + "\">" +
           kPageScript + "</script></body></html>\n";
}

}  // namespace report
