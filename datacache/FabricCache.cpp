#include "datacache/FabricCache.h"

#include <limits>
#include <memory>
#include <utility>

#include "common/cim_log.h"
#include "common/number_text.h"
#include "datacache/add_switch.h"

using namespace datacache;

template uint16_t Element<SwitchCache>::nextid;

namespace {

const SwitchCache* switchOf(const Element<SwitchCache>* element) {
    return element == nullptr ? nullptr : element->item();
}

/** For the lookups in a fabric that may be changed, which are those in a const one. */
template <typename Record>
Record* changeable(const Record* found) {
    return const_cast<Record*>(found);
}

}  // namespace

FabricCache::FabricCache() = default;

FabricCache::~FabricCache() {
    _switches.purge_list(true);
}

Wwn FabricCache::getFabricWorldWideName() const {
    return _fabric_name;
}

std::string FabricCache::getFabricWwn() const {
    return _fabric_name.tostring();
}

uint32_t FabricCache::getOperatingMode() const {
    return _operating_mode;
}

uint16_t FabricCache::getSwitchCount() const {
    return static_cast<uint16_t>(_switches.size());
}

const SwitchCache* FabricCache::getFirstSwitch() const {
    return switchOf(_switches.get_first());
}

SwitchCache* FabricCache::getFirstSwitch() {
    return changeable(std::as_const(*this).getFirstSwitch());
}

const SwitchCache* FabricCache::getNextSwitch(const SwitchCache* current) const {
    for (const auto* element = _switches.get_first(); element != nullptr; element = element->get_next()) {
        if (element->item() == current) return switchOf(element->get_next());
    }
    return nullptr;
}

SwitchCache* FabricCache::getNextSwitch(const SwitchCache* current) {
    return changeable(std::as_const(*this).getNextSwitch(current));
}

const SwitchCache* FabricCache::getSwitchByDomainID(const std::string& domain) const {
    const uint32_t value = strtoul32(domain, 10);
    if (value == std::numeric_limits<uint32_t>::max()) return nullptr;
    return switchOf(findSwitchCacheElement(static_cast<unsigned char>(value)));
}

SwitchCache* FabricCache::getSwitchByDomainID(const std::string& domain) {
    return changeable(std::as_const(*this).getSwitchByDomainID(domain));
}

const SwitchCache* FabricCache::getSwitchByWwn(const std::string& name) const {
    return switchOf(findSwitchCacheElement(Wwn(name)));
}

SwitchCache* FabricCache::getSwitchByWwn(const std::string& name) {
    return changeable(std::as_const(*this).getSwitchByWwn(name));
}

const SwitchCache* FabricCache::getSwitchByPortWwn(const std::string& portName) const {
    const Wwn port(portName);
    for (auto* element = _switches.get_first(); element != nullptr; element = element->get_next()) {
        if (!element->item()->getPortByWorldWideName(port).isNull()) return element->item();
    }
    return nullptr;
}

SwitchCache* FabricCache::getSwitchByPortWwn(const std::string& portName) {
    return changeable(std::as_const(*this).getSwitchByPortWwn(portName));
}

const Element<SwitchCache>* FabricCache::findSwitchCacheElement(unsigned char domain) const {
    for (auto* element = _switches.get_first(); element != nullptr; element = element->get_next()) {
        if (element->item()->_domain_id == domain) return element;
    }
    cim_log(CIM_LOG_TRACE, "DCACHE: findSwitchCacheElement()domain %x not found from %d elements\n", domain,
            static_cast<int>(_switches.size()));
    return nullptr;
}

Element<SwitchCache>* FabricCache::findSwitchCacheElement(unsigned char domain) {
    return changeable(std::as_const(*this).findSwitchCacheElement(domain));
}

const Element<SwitchCache>* FabricCache::findSwitchCacheElement(const Wwn& name) const {
    for (auto* element = _switches.get_first(); element != nullptr; element = element->get_next()) {
        if (element->item()->_wwn == name) return element;
    }
    return nullptr;
}

Element<SwitchCache>* FabricCache::findSwitchCacheElement(const Wwn& name) {
    return changeable(std::as_const(*this).findSwitchCacheElement(name));
}

SwitchCache& datacache::addSwitch(FabricCache& fabric, const Wwn& name) {
    auto made = std::make_unique<SwitchCache>();
    made->_wwn = name;
    auto element = std::make_unique<Element<SwitchCache>>(made.get());
    SwitchCache& record = *made.release();  // the element's now
    fabric._switches.add(element.release());
    return record;
}

void datacache::copyFabric(const FabricCache& from, FabricCache& to) {
    to._fabric_name = from._fabric_name;
    to._local_switch_wwn = from._local_switch_wwn;
    to._local_domain_id = from._local_domain_id;
    to._operating_mode = from._operating_mode;
    const Element<SwitchCache>* element = from._switches.get_first();
    for (; element != nullptr; element = element->get_next()) {
        // With the id of its original, so that copies draw none of the 65,534 that the living share.
        auto made = std::make_unique<Element<SwitchCache>>(int{element->id()});
        made->item(new SwitchCache(*element->item()));
        to._switches.add(made.release());
    }
}
