#include "host/areas.h"
#include "host/cim_words.h"

Json switchArea(DataCache& cache) {
    const SwitchState& state = cache._switchState;
    return {
        {"area", "switch"},
        {"upToDate", cache._switchOK && !cache._switchUpdate},
        {"wwn", state.switchWwn.tostring()},
        {"domain", cache.getRootSwitchDomainID()},
        {"operationalStatus", operationalStatusList(state.operationalStatus)},
        {"transparent", state.transparent},
        {"fcoe", state.fcoe},
        {"ethernetPassthrough", state.ethernetPassthrough},
    };
}
