#include "report/layout.h"

#include <cmath>
#include <iomanip>
#include <sstream>
#include <vector>

namespace report {

namespace {

constexpr size_t kMostPoints = 1000;  // of a curve
constexpr int kLabelDigits = 5;       // about as wide as the label in the picture
constexpr double kLargest = 1e5;      // inches

/** Names that are given out: n and l with the number of the switch or link. */
bool readIndex(std::istream& words, char kind, size_t count, size_t& index) {
    char letter = 0;
    return words >> letter && letter == kind && words >> index && index < count;
}

bool readNumber(std::istream& words, double& number) {
    return words >> number && std::isfinite(number) && std::fabs(number) < kLargest;
}

/** "node NAME X Y ..." */
bool readSwitch(std::istream& words, double height, Json& switches) {
    size_t index = 0;
    double x = 0;
    double y = 0;
    if (!readIndex(words, 'n', switches.size(), index) || !readNumber(words, x) || !readNumber(words, y))
        return false;
    switches[index] = {{"x", x}, {"y", height - y}};
    return true;
}

/** "edge TAIL HEAD COUNT X Y ... LABEL X Y ..." */
bool readLink(std::istream& words, double height, size_t switches, Json& links) {
    size_t tail = 0;
    size_t head = 0;
    size_t count = 0;
    if (!readIndex(words, 'n', switches, tail) || !readIndex(words, 'n', switches, head) ||
        !(words >> count) || count < 4 || count > kMostPoints || count % 3 != 1)
        return false;
    Json points = Json::array();
    double x = 0;
    double y = 0;
    for (size_t i = 0; i < count; ++i) {
        if (!readNumber(words, x) || !readNumber(words, y)) return false;
        points.push_back(x);
        points.push_back(height - y);
    }
    size_t index = 0;
    if (!readIndex(words, 'l', links.size(), index) || !readNumber(words, x) || !readNumber(words, y))
        return false;
    links[index] = {{"points", points}, {"x", x}, {"y", height - y}};
    return true;
}

bool allPlaced(const Json& list) {
    for (const Json& one : list) {
        if (one.is_null()) return false;
    }
    return true;
}

}  // namespace

std::string layoutInput(const Json& graph) {
    std::ostringstream text;
    std::vector<std::pair<int, size_t>> domains;
    text << "graph fabric {\n  graph [nodesep=0.5, ranksep=0.8]\n  edge [fontsize=14]\n  node [shape=box, "
            "fixedsize=true, label=\"\", width="
         << kSwitchWidth << ", height=" << kSwitchHeight << "]\n";
    for (const Json& one : graph["switches"]) {
        text << "  n" << domains.size() << '\n';
        domains.emplace_back(one["domain"].get<int>(), domains.size());
    }
    const auto indexOf = [&](const Json& domain) {
        for (const auto& [number, index] : domains) {
            if (domain == number) return index;
        }
        return domains.size();
    };
    size_t index = 0;
    for (const Json& link : graph["links"]) {
        text << "  n" << indexOf(link["from"]) << " -- n" << indexOf(link["to"]) << " [label=\"l"
             << std::setfill('0') << std::setw(kLabelDigits) << index++ << "\"]\n";
    }
    text << "}\n";
    return text.str();
}

Json layoutOf(const Json& graph, const std::string& answer) {
    Json switches(graph["switches"].size(), Json());
    Json links(graph["links"].size(), Json());
    double width = 0;
    double height = 0;
    std::istringstream lines(answer);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string kind;
        double scale = 0;
        words >> kind;
        if (kind == "graph") {
            if (!(words >> scale) || !readNumber(words, width) || !readNumber(words, height)) return {};
        } else if (kind == "node") {
            if (!readSwitch(words, height, switches)) return {};
        } else if (kind == "edge") {
            if (!readLink(words, height, switches.size(), links)) return {};
        } else if (kind == "stop") {
            if (!allPlaced(switches) || !allPlaced(links)) return {};
            return {{"width", width}, {"height", height}, {"switches", switches}, {"links", links}};
        } else {
            return {};
        }
    }
    return {};
}

}  // namespace report
