#include "host/commands.h"

#include <iostream>

#include "host/areas.h"

namespace host {

namespace {

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

/** Writes a fabricGraph() as Graphviz DOT, for `dot`. */
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
