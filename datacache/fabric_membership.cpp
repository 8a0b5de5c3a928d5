#include "common/number_text.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/add_switch.h"
#include "datacache/fabric_compare.h"
#include "datacache/reports.h"
#include "switchlib/SmlBatch.h"

using namespace datacache;

namespace {

/** Reads the list of domains as the switch gives it; false when the call failed. */
bool readDomains(uint32_t handle, std::string& list) {
    SmlBatch batch;
    const size_t listKey = batch.add("Oper.Eport.LsdbRecordList.255");
    if (!batch.get(handle)) {
        logUpdateFailed("_load_switch_domain_list", 2038);
        return false;
    }
    if (batch.status(listKey) != 0) {
        cim_log(CIM_LOG_TRACE, "DCACHE: smlerror = %d\n", static_cast<int>(batch.status(listKey)));
    }
    list = batch.text(listKey);
    cim_log(CIM_LOG_TRACE, "DCACHE: LsdbRecordList: %s\n", list.c_str());
    // A list is full when a comma and three digits more would not have fitted before the terminator.
    HealthMonitor::instance().domainList(list.size() + 4 >= VEX_SML_VALUE_SIZE);
    return true;
}

/** Marks every remote switch for deletion, until it is found in the list. */
void markAll(FabricCache& fabric) {
    for (auto* element = fabric._switches.get_first(); element != nullptr; element = element->get_next()) {
        if (!element->item()->_local) element->item()->_stale = true;
    }
}

/** Reads one domain of the list into its switch's record; false when the load has failed. */
bool loadDomain(uint32_t handle, FabricCache& fabric, const std::string& domain) {
    cim_log(CIM_LOG_TRACE, "DCACHE: Validating domainID %s\n", domain.c_str());
    SmlBatch batch;
    const size_t wwnKey = batch.add("Oper.Eport.LsdbRecord.%s.WWN", domain.c_str());
    const size_t hopsKey = batch.add("Oper.Eport.LsdbRecord.%s.Hops", domain.c_str());
    if (!batch.read(handle)) {
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

    Element<SwitchCache>* const element = fabric.findSwitchCacheElement(name);
    const bool known = element != nullptr;
    cim_log(CIM_LOG_TRACE, "DCACHE: _load_switch_domain_list() - %s %s\n", known ? "found" : "add",
            text.c_str());
    // What the management server did to a known switch stays: one that timed out is not asked again.
    SwitchCache& remote = known ? *element->item() : addSwitch(fabric, name);
    // Required: computed from the hops, though a domain without hops was skipped above and it is never true.
    if (!known) remote._local = hops == "0";
    remote._domain_id = toUint8(domain);
    remote._port_count = 0;
    remote._stale = false;
    return true;
}

/** Deletes the switches that are still marked, and gives the names of those that stay. */
std::vector<Wwn> sweep(FabricCache& fabric) {
    List<Element<SwitchCache>>& switches = fabric._switches;
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
    return members;
}

/** Carries out one step of the comparison: an event, or a line of the log. */
void report(const DataCacheCallback& host, const FabricStep& step) {
    switch (step.kind) {
        case FabricStep::FabricAdd:
            return notify(host, DCEventFabricAdd(step.fabric));
        case FabricStep::FabricRemove:
            return notify(host, DCEventFabricRemove(step.fabric));
        case FabricStep::FabricGrown:
            return notify(host, DCEventFabricChange(step.fabric, true));
        case FabricStep::FabricShrunk:
            return notify(host, DCEventFabricChange(step.fabric, false));
        case FabricStep::SwitchAdd:
            return notify(host, DCEventSwitchAdd(step.fabric, step.member));
        case FabricStep::SwitchRemove:
            return notify(host, DCEventSwitchRemove(step.fabric, step.member));
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

}  // namespace

bool DataCache::_load_switch_domain_list() {
    cim_log(CIM_LOG_TRACE, "DCACHE: _load_switch_domain_list()\n");
    if (isTransparentSwitch()) return true;
    std::string list;
    if (!readDomains(_handle, list)) {
        _fabric._fabric_name = _origFabricName;  // so that the next load compares with the same old state
        return false;
    }
    const std::vector<std::string> domains = _parseSMLList(list);
    if (domains.empty()) {
        cim_log(CIM_LOG_CRITICAL, "DCACHE: _load_switch_domain_list - no domains reported\n");
        _fabric._fabric_name = _origFabricName;
        return true;
    }
    markAll(_fabric);
    for (const std::string& domain : domains) {
        if (loadDomain(_handle, _fabric, domain)) continue;
        _fabric._fabric_name = _origFabricName;
        return false;
    }
    const std::vector<Wwn> members = sweep(_fabric);
    if (_fabricInitialized != 0) {  // the first complete load reports nothing
        cim_log(CIM_LOG_TRACE, "DCACHE: _fabricInitialized = true\n");
        compareFabrics({_origFabricName, _origFabric}, {_fabric._fabric_name, members},
                       [this](const FabricStep& step)
                           DC_NO_THREAD_SAFETY_ANALYSIS { report(_callback, step); });
    }
    _fabricInitialized = 1;
    return true;
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
    // Required: the last field counts even when it is empty, so a list that ends in a comma has the switch
    // asked for a domain without a number.
    fields.push_back(list.substr(start));
    return fields;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value, as callers know it
bool DataCache::_fabricContainsWWN(std::vector<Wwn> names, Wwn name) {
    return holds(names, name);
}
