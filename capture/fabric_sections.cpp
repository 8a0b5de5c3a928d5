#include <algorithm>

#include "capture/sections.h"
#include "simulator/areas/Fabric.h"

namespace capture {

namespace {

constexpr uint32_t kNoEntry = 24;

const Answer* find(const Answers& answers, const std::string& key) {
    const auto found = answers.keys.find(key);
    return found == answers.keys.end() ? nullptr : &found->second;
}

std::string lsdbStem(int64_t domain) {
    return "Oper.Eport.LsdbRecord." + std::to_string(domain) + '.';
}

/** What the switch's management server said of its ports. */
void addPorts(Table& table, const Answers& answers, int64_t domain, const Wwn& wwn) {
    const std::string stem = "Oper.TopologyAll." + std::to_string(domain) + '.';
    const Answer* const entries = find(answers, stem + "PortEntries");
    if (entries == nullptr) return;
    if (entries->status != 0) return table.add("management_status", entries->status);
    const std::optional<int64_t> count = wholeNumber(entries->value);
    if (!count || *count > 65535) return;
    std::vector<std::string> names;
    std::vector<std::string> offline;
    bool usual = true;     // the names follow from the switch's
    bool complete = true;  // and all of them were read
    for (int64_t port = 0; port < *count; ++port) {
        const Answer* const name = find(answers, stem + "Entry." + std::to_string(port) + ".PortWwn");
        names.push_back(vexsim::portName(wwn, static_cast<unsigned>(port)).tostring());
        complete = complete && name != nullptr && (name->status == 0 || name->status == kNoEntry);
        if (name == nullptr) continue;
        if (name->status == kNoEntry) offline.push_back(std::to_string(port));
        if (name->status != 0 || name->value == names.back()) continue;
        usual = false;
        names.back() = name->value;
    }
    if (usual || !complete) {
        table.add("ports", *count);
    } else {
        table.add("port_wwns", quotedList(names));
    }
    if (!offline.empty()) table.add("offline", listOf(offline));
}

/** The devices that are logged in at the switch's own ports. */
void describeDevices(const Answers& answers, Document& document) {
    for (unsigned port = 0; port <= 255; ++port) {
        const std::string stem = "Oper.NameServerAll." + std::to_string(port) + '.';
        std::vector<std::string> names;
        const std::string* name = answers.value(stem + "FirstNsEntry");
        for (; name != nullptr; name = answers.value(stem + "NextNsEntry." + *name)) {
            if (std::find(names.begin(), names.end(), *name) != names.end()) break;
            names.push_back(*name);
        }
        if (names.empty()) continue;
        Table& table = document.add("[[name_server]]");
        table.add("port", port);
        table.add("wwns", quotedList(names));
    }
}

}  // namespace

void describeFabric(const Answers& answers, Document& document) {
    const std::optional<int64_t> local = answers.number("Oper.Switch.DomainID");
    for (int64_t domain = 1; domain <= vexsim::kHighestDomain; ++domain) {
        const std::string* const wwn = answers.value(lsdbStem(domain) + "WWN");
        if (domain == local.value_or(1) || wwn == nullptr || Wwn(*wwn).isNull()) continue;
        Table& table = document.add("[[fabric.switch]]");
        table.add("domain", domain);
        table.add("wwn", quoted(*wwn));
        if (const std::optional<int64_t> hops = answers.number(lsdbStem(domain) + "Hops"))
            table.add("hops", *hops);
        addPorts(table, answers, domain, Wwn(*wwn));
    }
    describeDevices(answers, document);
}

void describeLinks(const Answers& answers, vexsim::Switch& loaded, Document& document) {
    for (int64_t domain = 1; domain <= vexsim::kHighestDomain; ++domain) {
        const std::optional<int64_t> count = answers.number(lsdbStem(domain) + "NumberOfLinks");
        if (!count) continue;
        bool implied = loaded.read(lsdbStem(domain) + "NumberOfLinks").value == std::to_string(*count);
        std::vector<std::string> links;
        for (int64_t link = 0; link < *count; ++link) {
            const std::string stem = lsdbStem(domain) + "Link." + std::to_string(link) + '.';
            const std::string* const port = answers.value(stem + "LocalPort");
            const std::string* const neighbor = answers.value(stem + "Neighbor");
            if (port == nullptr || neighbor == nullptr) break;
            implied = implied && loaded.read(stem + "LocalPort").value == *port &&
                      loaded.read(stem + "Neighbor").value == *neighbor;
            links.push_back("{local_port = " + quoted(*port) + ", neighbor = " + quoted(*neighbor) + '}');
        }
        if (implied || static_cast<int64_t>(links.size()) != *count) continue;
        Table& table = document.add("[[lsdb]]");
        table.add("domain", domain);
        table.add("links", listOf(links));
    }
}

}  // namespace capture
