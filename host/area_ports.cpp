#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/cim_words.h"
#include "host/staleness.h"

Json portsArea() {
    const CacheReader cache;
    const PortState& state = cache->_portState;
    const TransceiverState& media = cache->_transceivers;
    const Wwn local = cache->getRootSwitchWorldWideName();
    Json ports = Json::array();
    for (uint16_t port = 0; port < kPortRows; ++port) {
        if (!state.localPortsPresent.test(port)) continue;
        const bool readable = media.mediaPresent[port];
        ports.push_back({
            {"index", port},
            {"wwn", cache->calcPortWorldWideName(local, port).tostring()},
            {"operationalStatus", operationalStatus(state.portStatus[port])},
            {"type", portType(state.portType[port])},
            {"hardwareType", portHardwareType(state.portHWType[port])},
            {"transceiver", readable ? transceiverFormat(media.mediaFormat[port]) : Json()},
            {"vendorOui", readable ? Json(media.mediaVendorOUI[port]) : Json()},
            {"serialNumber", readable ? Json(media.mediaVendorSN[port]) : Json()},
        });
    }
    return {
        {"area", "ports"},
        {"upToDate", upToDate(*cache, "ports")},
        {"portCount", state.portCount},
        {"ports", ports},
    };
}
