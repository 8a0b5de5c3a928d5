#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/domain_list.h"
#include "host/staleness.h"

Json fabricArea() {
    const CacheReader cache;
    const FabricCache& fabric = cache->_fabric;
    const Wwn principal = fabric.getFabricWorldWideName();
    Json switches = Json::array();
    for (const SwitchCache* one = fabric.getFirstSwitch(); one; one = fabric.getNextSwitch(one)) {
        switches.push_back({
            {"domain", one->getDomainID()},
            {"wwn", one->getWwn()},
            {"local", one->isLocal()},
            {"principal", !principal.isNull() && one->getWorldWideName() == principal},
            {"ports", one->_port_count},
            {"managementServerErrors", one->_mserver_errors},
            {"managementServerGivenUp", one->_mserver_timeout},
        });
    }
    return {
        {"area", "fabric"},
        {"upToDate", upToDate(*cache, "fabric")},
        {"complete", !domainListFilled()},
        {"name", principal.tostring()},
        {"localSwitch", fabric._local_switch_wwn.tostring()},
        {"switches", switches},
    };
}
