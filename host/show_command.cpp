#include "host/commands.h"

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <set>

#include "datacache/CacheReader.h"
#include "host/areas.h"

namespace host {

using namespace datacache;

namespace {

Json portsOf(const CacheReader& cache, const SwitchCache& owner) {
    Json ports = Json::array();
    PortCache port = owner.getFirstPort();
    for (unsigned row = 0; row < owner.getPortCount(); ++row, port = owner.getNextPort(port)) {
        const uint16_t index = port.getPortIndex();
        Json one{{"index", index}};
        if (owner.isLocal()) one["status"] = cache.ports().portStatus[index % kPortRows];
        ports.push_back(one);
    }
    return ports;
}

/** A number that the switch tells as text; 0 for anything else. */
int numberOf(const Json& text) {
    return static_cast<int>(std::strtol(text.get<std::string>().c_str(), nullptr, 10));
}

/** Links between switches of the fabric. Each switch reports its own end: the one of the lower domain counts,
 * the other where that is missing. */
Json linksOf(const Json& lsdb, const std::set<int>& domains) {
    std::set<std::pair<int, int>> reported;
    Json links = Json::array();
    for (const bool upward : {true, false}) {
        for (const Json& link : lsdb["links"]) {
            const int from = numberOf(link["record"]);
            const int to = numberOf(link["neighbor"]);
            if ((from < to) != upward || domains.count(from) == 0 || domains.count(to) == 0) continue;
            if (upward) {
                reported.emplace(from, to);
            } else if (reported.count({to, from}) != 0) {
                continue;
            }
            const int port = numberOf(link["localPort"]);
            links.push_back({{"from", from}, {"to", to}, {"port", port}});
        }
    }
    return links;
}

const char* colourOf(const Json& port) {
    if (!port.contains("status")) return "#ffffff";
    switch (port["status"].get<int>()) {
        case 2:
            return "#b7e1b0";  // OK
        case 6:
            return "#f4a6a0";  // Error
        case 10:
            return "#dddddd";  // Stopped
        default:
            return "#fbe6a2";
    }
}

void writePorts(std::ostream& out, const Json& ports) {
    const size_t columns = ports.size() > 64 ? 16 : 10;
    for (size_t i = 0; i < ports.size(); ++i) {
        if (i % columns == 0) out << (i == 0 ? "<tr>" : "</tr><tr>");
        out << "<td width=\"22\" bgcolor=\"" << colourOf(ports[i]) << "\">" << ports[i]["index"] << "</td>";
    }
    out << "</tr>";
}

void writeSwitch(std::ostream& out, const Json& one) {
    const bool local = one["local"];
    const bool principal = one["principal"];
    std::string marks = local ? "local switch" : "";
    if (principal) marks += local ? ", principal" : "principal switch";
    out << "  d" << one["domain"] << " [label=<<table border=\"" << (principal ? 3 : 1)
        << "\" cellborder=\"0\" cellspacing=\"0\" cellpadding=\"4\">"
        << "<tr><td bgcolor=\"" << (local ? "#2f5d8a" : "#e8edf2") << "\"><font color=\""
        << (local ? "#ffffff" : "#222222") << "\"><b>domain " << one["domain"] << "</b><br/>"
        << one["wwn"].get<std::string>() << (marks.empty() ? "" : "<br/><i>" + marks + "</i>")
        << "</font></td></tr>";
    if (!one["ports"].empty()) {
        out << "<tr><td><table border=\"0\" cellborder=\"1\" cellspacing=\"2\" cellpadding=\"2\">";
        writePorts(out, one["ports"]);
        out << "</table></td></tr>";
    }
    out << "</table>>];\n";
}

/** What the heading says of a fabric that may look different. */
std::string doubts(const Json& graph) {
    std::string text;
    if (!graph["notUpToDate"].empty()) text += "<br/>not up to date: " + plainText(graph["notUpToDate"]);
    if (!graph["complete"]) text += "<br/>not complete: the list of domains is full";
    return text;
}

/**
 * The fabric as a graph: its "name", its "switches" with "domain", "wwn", "local", "principal" and "ports"
 * (each an "index" and, on the local switch, a CIM "status"), its "links" between domains ("from", "to",
 * "port"), and how far to trust it: the areas of the cache that are "notUpToDate", and whether it is
 * "complete". Takes the access lock and reads the links from the switch.
 */
Json fabricGraph() {
    const Json lsdb = lsdbArea();
    const CacheReader cache;
    std::set<int> domains;
    const Json switches = switchesOf(cache.fabric(), [&](Json& fields, const SwitchCache& one) {
        fields["ports"] = portsOf(cache, one);
        domains.insert(one.getDomainID());
    });
    Json stale = Json::array();
    for (const CacheArea area : {CacheArea::Ports, CacheArea::Fabric}) {
        if (!upToDate(area)) stale.push_back(cacheAreaName(area));
    }
    return {{"name", cache.fabric().getFabricWwn()},
            {"notUpToDate", stale},
            {"complete", !DataCache::health().capacity.domainListFull},
            {"switches", switches},
            {"links", linksOf(lsdb, domains)}};
}

/** Writes such a graph as Graphviz DOT, for `dot`. */
void writeDot(std::ostream& out, const Json& graph) {
    out << "graph fabric {\n"
        << "  graph [fontname=\"Helvetica\", labelloc=t, nodesep=0.6, ranksep=1.0,\n"
        << "    label=<Fabric <b>" << graph["name"].get<std::string>() << "</b>" << doubts(graph)
        << "<br/><font point-size=\"10\">"
        << "local ports: green OK, grey stopped, red in error, yellow other; white: other "
           "switches</font>>];\n"
        << "  node [shape=plain, fontname=\"Helvetica\", fontsize=11];\n"
        << "  edge [fontname=\"Helvetica\", fontsize=10, color=\"#555555\"];\n";
    for (const Json& one : graph["switches"]) writeSwitch(out, one);
    for (const Json& link : graph["links"]) {
        out << "  d" << link["from"] << " -- d" << link["to"] << " [taillabel=\" " << link["port"]
            << " \"];\n";
    }
    out << "}\n";
}

}  // namespace

int showCommand(Session& session, const HostRequest& request) {
    const bool health = request.area == "health";  // which is shown in any case: it says what is wrong
    const bool wait = health || !isLive(request.area);
    const bool read = wait ? session.waitRead(request.timeout) : session.waitConnected(request.timeout);
    if (session.interrupted() || (!read && !health)) return EXIT_NOT_DONE;
    session.setUndone("showing " + request.area);
    if (request.area == "accounts" || request.area == "all") readAccounts();
    const std::vector<Json> areas = readAreas(request.area);
    session.finish();
    const bool good = printAreas(std::cout, areas, request.json);
    session.setUndone("");
    return good ? EXIT_DONE : EXIT_NOT_DONE;
}

int graphCommand(Session& session, const HostRequest& request) {
    if (!session.waitRead(request.timeout)) return EXIT_NOT_DONE;
    session.setUndone("writing the graph");
    warnOfCapacity();
    const Json graph = fabricGraph();
    session.finish();
    if (request.json) {
        std::cout << jsonLine(graph) << '\n';
    } else {
        writeDot(std::cout, graph);
    }
    session.setUndone("");
    for (const Json& area : graph["notUpToDate"]) reportStale(area);
    return graph["notUpToDate"].empty() ? EXIT_DONE : EXIT_NOT_DONE;
}

}  // namespace host
