#pragma once

#include <cstdint>
#include <string>

#include "common/Wwn.h"
#include "common/export.h"
#include "common/list_t.h"
#include "datacache/SwitchCache.h"

/** The library's own: elements that a host makes take their ids from the same counter. */
extern template uint16_t Element<SwitchCache>::nextid;

/**
 * The fabric: its name, the local switch's place in it, and one record for each of its switches, in the order
 * in which they were first seen.
 *
 * It owns the records. The fabric load makes and deletes those of the remote switches; the local switch's
 * comes from the scan of the local ports and stays. The access lock guards the cache's own, so a pointer from
 * a lookup in it is good until the lock is released; a snapshot's copy is never changed. Lookups return null
 * for what they do not find.
 */
class DC_EXPORT FabricCache {
  public:
    FabricCache();
    ~FabricCache();

    /** The fabric's name, which is the principal switch's; null on a transparent switch. */
    Wwn getFabricWorldWideName() const;
    /** The same as 16 hexadecimal digits. */
    std::string getFabricWwn() const;
    uint32_t getOperatingMode() const;
    uint16_t getSwitchCount() const;

    // What is found in a const fabric is const as well.

    /** Walks the switches. The one after a switch that is not in the fabric is null. */
    const SwitchCache* getFirstSwitch() const;
    SwitchCache* getFirstSwitch();
    const SwitchCache* getNextSwitch(const SwitchCache* current) const;
    SwitchCache* getNextSwitch(const SwitchCache* current);
    /** `domain` is a decimal number, of which the low 8 bits count. */
    const SwitchCache* getSwitchByDomainID(const std::string& domain) const;
    SwitchCache* getSwitchByDomainID(const std::string& domain);
    /** By the switch's name as 16 hexadecimal digits. */
    const SwitchCache* getSwitchByWwn(const std::string& name) const;
    SwitchCache* getSwitchByWwn(const std::string& name);
    /** The first switch that has a port of this name. */
    const SwitchCache* getSwitchByPortWwn(const std::string& portName) const;
    SwitchCache* getSwitchByPortWwn(const std::string& portName);

    /** The first list element whose switch has this domain ID or this name. */
    const Element<SwitchCache>* findSwitchCacheElement(unsigned char domain) const;
    Element<SwitchCache>* findSwitchCacheElement(unsigned char domain);
    const Element<SwitchCache>* findSwitchCacheElement(const Wwn& name) const;
    Element<SwitchCache>* findSwitchCacheElement(const Wwn& name);

    Wwn _fabric_name;
    Wwn _local_switch_wwn;
    uint8_t _local_domain_id = 0;  ///< 0 on a transparent switch
    uint32_t _operating_mode = 0;
    uint16_t _unused16[2] = {0, 0};
    List<Element<SwitchCache>> _switches;
    uint32_t _unused32 = 0;
};
