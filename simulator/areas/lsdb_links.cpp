#include <map>

#include "simulator/areas/Area.h"
#include "simulator/areas/Fabric.h"
#include "simulator/areas/keys.h"

namespace vexsim {
namespace {

/** One link of a record: the port that it starts at, and the domain that it leads to. */
struct Link {
    std::string localPort;
    std::string neighbor;
};
using Links = std::vector<Link>;

/** Links as the switch file or a step describes them, by domain. */
struct DescribedLinks {
    std::map<unsigned, Links> records;
};

/** Hops from the simulated switch, itself included; nullopt for a domain that the fabric does not have. */
std::optional<unsigned> hopsTo(Switch& target, unsigned domain) {
    if (hasLocalSwitch(target) && domain == localDomain(target)) return 0;
    const auto& switches = target.part<Fabric>().switches;
    const auto found = switches.find(domain);
    if (found == switches.end()) return std::nullopt;
    return found->second.hops;
}

/** The lowest domain that is so many hops away. */
std::optional<unsigned> firstAt(Switch& target, unsigned hops) {
    if (hops == 0) return localDomain(target);
    for (const auto& [domain, member] : target.part<Fabric>().switches) {
        if (member.hops == hops) return domain;
    }
    return std::nullopt;
}

/** Where a switch hangs in the tree that explains all distances; nullopt for the root, and out of reach. */
std::optional<unsigned> parentOf(Switch& target, unsigned domain) {
    const std::optional<unsigned> hops = hopsTo(target, domain);
    if (!hops || *hops == 0 || *hops == kUnreachable) return std::nullopt;
    return firstAt(target, *hops - 1);
}

/** The links of a record that nobody described: to the switch nearer by, then to those farther off. */
Links impliedLinks(Switch& target, unsigned domain) {
    std::vector<unsigned> neighbors;
    if (const auto parent = parentOf(target, domain)) neighbors.push_back(*parent);
    for (const auto& entry : target.part<Fabric>().switches) {
        if (parentOf(target, entry.first) == domain) neighbors.push_back(entry.first);
    }
    Links links;
    for (const unsigned neighbor : neighbors) {
        links.push_back({std::to_string(links.size()), std::to_string(neighbor)});
    }
    return links;
}

Links linksOf(Switch& target, unsigned domain) {
    const auto& records = target.part<DescribedLinks>().records;
    const auto found = records.find(domain);
    return found == records.end() ? impliedLinks(target, domain) : found->second;
}

Reading readLink(const Links& links, const std::string& number, std::string Link::*end) {
    const std::optional<uint16_t> index = keyNumber(number);
    if (!index || *index >= links.size()) return {EndOfList, {}};
    return {Ok, links[*index].*end};
}

/** "DOMAIN.NumberOfLinks", "DOMAIN.Link.NUMBER.LocalPort" and "DOMAIN.Link.NUMBER.Neighbor". */
std::optional<Reading> readLinks(Switch& target, const std::string& key) {
    const std::optional<std::string> tail = keyTail(key, "Oper.Eport.LsdbRecord.");
    if (!tail) return std::nullopt;
    const size_t dot = tail->find('.');
    if (dot == std::string::npos) return std::nullopt;
    const std::string field = tail->substr(dot + 1);
    const std::optional<std::string> local = keyMiddle(field, "Link.", ".LocalPort");
    const std::optional<std::string> remote = keyMiddle(field, "Link.", ".Neighbor");
    if (field != "NumberOfLinks" && !local && !remote) return std::nullopt;

    const std::optional<uint16_t> domain = keyNumber(tail->substr(0, dot));
    if (!domain || !hopsTo(target, *domain)) return Reading{EndOfList, {}};
    const Links links = linksOf(target, *domain);
    if (local) return readLink(links, *local, &Link::localPort);
    if (remote) return readLink(links, *remote, &Link::neighbor);
    return Reading{Ok, std::to_string(links.size())};
}

unsigned domainOf(TableReader& table) {
    return static_cast<unsigned>(table.integer("domain", 1, kHighestDomain));
}

Links describedLinks(TableReader& table) {
    Links links;
    for (TableReader& link : table.tables("links")) {
        link.rename("a link");
        links.push_back({link.value("local_port"), link.value("neighbor")});
        link.finish();
    }
    return links;
}

void loadRecord(TableReader& table, Switch& target) {
    const unsigned domain = domainOf(table);
    if (!target.part<DescribedLinks>().records.emplace(domain, describedLinks(table)).second) {
        table.fail("domain", "the links of domain " + std::to_string(domain) + " are described twice");
    }
}

/** Names all links of a record: what it does not name is gone. */
Action readLinkChange(TableReader& table) {
    return [domain = domainOf(table), links = describedLinks(table)](Switch& target) {
        if (!hopsTo(target, domain)) throw StepError("the fabric has no domain " + std::to_string(domain));
        target.part<DescribedLinks>().records[domain] = links;
        target.raise(VEX_EVENT_LSDB_CHANGE, "Links of domain " + std::to_string(domain));
    };
}

}  // namespace

Area lsdbLinksArea() {
    Area made;
    made.name = "links";
    made.sections = {{"lsdb", true, loadRecord}};
    made.steps = {{"lsdb_links", readLinkChange}};
    made.read = readLinks;
    return made;
}

}  // namespace vexsim
