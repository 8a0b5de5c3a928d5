#include <algorithm>

#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/fabric_compare.h"
#include "datacache/update_failed.h"
#include "switchlib/SmlBatch.h"

bool DataCache::_load_switch_domain_list() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _load_switch_domain_list()\n");
    if (isTransparentSwitch()) return true;
    SmlBatch batch(1);
    const size_t listKey = batch.add("Oper.Eport.LsdbRecordList.255");
    if (!batch.get(_handle)) {
        logUpdateFailed("_load_switch_domain_list", 2038);
        _fabric._fabric_name = _origFabricName;  // so that the next load compares with the same old state
        return false;
    }
    if (batch.status(listKey) != 0) {
        cim_log(CIM_LOG_TRACE, "DCACHE: smlerror = %d\n", static_cast<int>(batch.status(listKey)));
    }
    const std::string list(batch.text(listKey));
    cim_log(CIM_LOG_TRACE, "DCACHE: LsdbRecordList: %s\n", list.c_str());
    const std::vector<std::string> domains = _parseSMLList(list);
    if (domains.empty()) {
        cim_log(CIM_LOG_CRITICAL, "DCACHE: _load_switch_domain_list - no domains reported\n");
        _fabric._fabric_name = _origFabricName;
        return true;
    }

    List<Element<SwitchCache>>& switches = _fabric._switches;
    for (auto* element = switches.get_first(); element != nullptr; element = element->get_next()) {
        if (!element->item()->_local) element->item()->_stale = true;
    }
    for (const std::string& domain : domains) {
        if (_loadDomain(domain)) continue;
        _fabric._fabric_name = _origFabricName;
        return false;
    }
    std::vector<Wwn> members;
    members.reserve(switches.size());
    for (auto* element = switches.get_first(); element != nullptr;) {
        auto* const next = element->get_next();
        const Wwn name = element->item()->_wwn;
        if (element->item()->_stale) {
            cim_log(CIM_LOG_TRACE, "DCACHE: _load_switch_domain_list() - delete %s\n",
                    name.tostring().c_str());
            switches.remove(element);
            delete element;
        } else {
            members.push_back(name);
        }
        element = next;
    }

    if (_fabricInitialized != 0) {  // the first complete load reports nothing
        cim_log(CIM_LOG_TRACE, "DCACHE: _fabricInitialized = true\n");
        compareFabrics({_origFabricName, _origFabric}, {_fabric._fabric_name, members},
                       [this](const FabricStep& step) DC_REQUIRES(access_lock) { _reportFabricStep(step); });
    }
    _fabricInitialized = 1;
    return true;
}

bool DataCache::_loadDomain(const std::string& domain) {
    cim_log(CIM_LOG_TRACE, "DCACHE: Validating domainID %s\n", domain.c_str());
    SmlBatch batch(2);
    const size_t wwnKey = batch.add("Oper.Eport.LsdbRecord.%s.WWN", domain.c_str());
    const size_t hopsKey = batch.add("Oper.Eport.LsdbRecord.%s.Hops", domain.c_str());
    if (!batch.read(_handle)) {
        logUpdateFailed("_load_switch_domain_list", 2074);
        return false;
    }
    const std::string text(batch.text(wwnKey));
    const std::string_view hops = batch.text(hopsKey);
    if (hops == "255") {  // unreachable; a switch that was known keeps its mark and goes
        cim_log(CIM_LOG_TRACE, "DCACHE: _load_switch_domain_list() - skip stale switch, %s\n", text.c_str());
        return true;
    }
    if (hops == "0") {  // its record comes from the scan of the local ports
        cim_log(CIM_LOG_TRACE, "DCACHE: _load_switch_domain_list() - skip local switch %s\n", text.c_str());
        return true;
    }
    const Wwn name(text);
    if (name.isNull()) {
        cim_log(CIM_LOG_TRACE, "DCACHE: _load_switch_domain_list() - skip bad wwn %s\n", text.c_str());
        return true;
    }

    const Element<SwitchCache>* element = _fabric.findSwitchCacheElement(name);
    const bool known = element != nullptr;
    cim_log(CIM_LOG_TRACE, "DCACHE: _load_switch_domain_list() - %s %s\n", known ? "found" : "add",
            text.c_str());
    // What the management server did to a known switch stays: one that timed out is not asked again.
    SwitchCache& remote = known ? *element->item() : addSwitch(_fabric, name);
    remote._domain_id = toUint8(domain);
    remote._port_count = 0;
    remote._stale = false;
    return true;
}

void DataCache::_reportFabricStep(const FabricStep& step) {
    const auto send = [this](DataCacheEvent&& event) DC_REQUIRES(access_lock) { _notifyHost(event); };
    switch (step.kind) {
        case FabricStep::FabricAdd:
            return send(DCEventFabricAdd(step.fabric));
        case FabricStep::FabricRemove:
            return send(DCEventFabricRemove(step.fabric));
        case FabricStep::FabricGrown:
            return send(DCEventFabricChange(step.fabric, true));
        case FabricStep::FabricShrunk:
            return send(DCEventFabricChange(step.fabric, false));
        case FabricStep::SwitchAdd:
            return send(DCEventSwitchAdd(step.fabric, step.member));
        case FabricStep::SwitchRemove:
            return send(DCEventSwitchRemove(step.fabric, step.member));
        case FabricStep::LogText:
            return cim_log(CIM_LOG_TRACE, "%s", step.text);
        case FabricStep::LogChecking:
            return cim_log(CIM_LOG_TRACE, "DCACHE: Checking %s\n", step.member.tostring().c_str());
        case FabricStep::LogEvaluating:
            cim_log(CIM_LOG_TRACE, "DCACHE: Evaluating switch %s for deletion\n",
                    step.member.tostring().c_str());
            return cim_log(CIM_LOG_TRACE, "DCACHE: _origFabric[i] = %s\n", step.original.tostring().c_str());
    }
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value, as callers know it
std::vector<std::string> DataCache::_parseSMLList(std::string list) {
    std::vector<std::string> fields;
    if (list.empty()) return fields;
    size_t start = 0;
    for (size_t comma = list.find(','); comma != std::string::npos; comma = list.find(',', start)) {
        if (comma > start) fields.push_back(list.substr(start, comma - start));
        start = comma + 1;
    }
    fields.push_back(list.substr(start));  // even when it is empty, and nobody filters it: as is meant
    return fields;
}

bool DataCache::_fabricContainsWWN(std::vector<Wwn> names, Wwn name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}
