#include "common/number_text.h"
#include "common/wwn_text.h"
#include "datacache/DataCache.h"
#include "datacache/reports.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

bool DataCache::_getFabricInfo() {
    return _load_fabric_info() && _load_switch_domain_list() && _load_mserver_ports();
}

bool DataCache::_load_fabric_info() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _load_fabric_info()\n");
    const bool transparent = isTransparentSwitch();  // such a switch is no member of a fabric of its own
    SmlBatch batch;
    if (!transparent) batch.add("Oper.Switch.WhoIsPrincipal");
    const size_t wwnKey = batch.add("Oper.Switch.WWN");
    if (!transparent) batch.add("Oper.Switch.DomainID");
    if (!batch.read(_handle)) {
        logUpdateFailed("_load_fabric_info", 1981);
        return false;
    }

    _origFabricName = _fabric._fabric_name;
    _origFabric.clear();
    const auto* element = _fabric._switches.get_first();
    for (; element != nullptr; element = element->get_next()) {
        const Wwn& name = element->item()->_wwn;
        cim_log(CIM_LOG_TRACE, "DCACHE: Initializing _origFabric with %s\n", name.tostring().c_str());
        _origFabric.push_back(name);
    }

    _fabric._local_switch_wwn = parseWwn(batch.text(wwnKey));
    _fabric._fabric_name = transparent ? Wwn() : parseWwn(batch.text(wwnKey - 1));
    _fabric._local_domain_id = transparent ? uint8_t{0} : toUint8(batch.text(wwnKey + 1));
    _fabric._operating_mode = 0;
    _fabric._unused16[0] = 0;
    _fabric._unused16[1] = 0;
    return true;
}

FabricCache* DataCache::getFabric(unsigned short number) {
    const AccessGuard guard;
    return number == 1 ? &_fabric : nullptr;
}

unsigned char DataCache::getRootSwitchDomainID() const {
    const AccessGuard guard;
    return _fabric._local_domain_id;
}
