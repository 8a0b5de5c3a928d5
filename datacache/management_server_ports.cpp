#include "common/number_text.h"
#include "common/wwn_text.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/reports.h"
#include "switchlib/SmlBatch.h"
#include "switchlib/uptime_seconds.h"

using namespace datacache;

namespace {

/** A management server that answers with a failure after this time has timed out. */
constexpr long kPatience_s = 10;

/** Fills the port table of one remote switch; false when the load has failed. */
bool loadPorts(uint32_t handle, SwitchCache& remote, long& requestTime) {
    SmlBatch batch;  // again and again
    const size_t countKey = batch.add("Oper.TopologyAll.%u.PortEntries", remote._domain_id);
    requestTime = uptimeSeconds();
    if (!batch.get(handle)) {
        logUpdateFailed("_load_mserver_ports", 2380);
        return false;
    }
    if (batch.status(countKey) != 0) {
        if (uptimeSeconds() - requestTime <= kPatience_s) {
            ++remote._mserver_errors;
        } else {
            remote._mserver_timeout = true;
            HealthMonitor::instance().switchGivenUp();
        }
        return true;
    }
    remote._mserver_errors = 0;
    const unsigned entries = toUint16(batch.text(countKey));
    if (entries == 0) return true;
    remote._port_count = 0;
    // Entries behind a full table cannot be represented; they are not asked for.
    unsigned entry = 0;
    for (; entry < entries && remote._port_count < SwitchCache::kMaxPorts; ++entry) {
        batch.clear();
        const size_t nameKey = batch.add("Oper.TopologyAll.%u.Entry.%u.PortWwn", remote._domain_id, entry);
        if (!batch.get(handle)) {
            logUpdateFailed("_load_mserver_ports", 2400);
            return false;
        }
        if (batch.errors()) continue;
        const Wwn name = parseWwn(batch.text(nameKey));
        unsigned portField = SwitchCache::kNoPortField;
        name.Get_Port(portField);
        if (name.isNull() || portField >= SwitchCache::kNoPortField) continue;
        remote._port_base_wwn = name;
        remote.addPort(portField, entry);
    }
    HealthMonitor::instance().portEntriesBeyond(entries - entry);
    return true;
}

}  // namespace

bool DataCache::_load_mserver_ports() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _load_mserver_ports()\n");
    if (_portState.port0Wwn.isNull() || isTransparentSwitch()) return true;
    bool loaded = true;
    _mserverSwitch = _fabric._switches.get_first();
    for (; loaded && _mserverSwitch != nullptr; _mserverSwitch = _mserverSwitch->get_next()) {
        SwitchCache& current = *_mserverSwitch->item();
        if (current._mserver_timeout) {
            cim_log(CIM_LOG_TRACE, "DCACHE: _load_mserver_ports - skip %s due to mserver err timeout\n",
                    current.getWwn().c_str());
            HealthMonitor::instance().switchGivenUp();
        } else if (current._local) {
            cim_log(CIM_LOG_TRACE, "DCACHE: _load_mserver_ports - skip local %s\n", current.getWwn().c_str());
        } else {
            loaded = loadPorts(_handle, current, _mserverRequestTime);
        }
    }
    _mserverSwitch = nullptr;
    return loaded;
}
