#include <cstdlib>
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

}  // namespace

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
            {"complete", !DataCache::health().capacity().domainListFull},
            {"switches", switches},
            {"links", linksOf(lsdb, domains)}};
}

}  // namespace host
