#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/cim_words.h"
#include "host/staleness.h"

Json switchArea() {
    const CacheReader cache;
    const SwitchState& state = cache->_switchState;
    return {
        {"area", "switch"},
        {"upToDate", upToDate(*cache, "switch")},
        {"wwn", state.switchWwn.tostring()},
        {"domain", cache->getRootSwitchDomainID()},
        {"operationalStatus", switchStatus(state.operationalStatus)},
        {"transparent", state.transparent},
        {"fcoe", state.fcoe},
        {"ethernetPassthrough", state.ethernetPassthrough},
    };
}
