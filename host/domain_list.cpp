#include "host/domain_list.h"

#include <atomic>
#include <iostream>

#include "host/switch_key.h"
#include "vexlib/vexlib.h"

namespace {

std::atomic<bool> filled{false};

}  // namespace

void checkDomainList() {
    // A list is full when a comma and three digits more would not have fitted before the terminator.
    constexpr size_t full = VEX_SML_VALUE_SIZE - 1 - 3;
    const bool now = readKey("Oper.Eport.LsdbRecordList.255").value_or("").size() >= full;
    if (filled.exchange(now) || !now) return;
    std::cerr << "datacache-host: the fabric may be larger than what is shown: the switch's list of domains "
                 "fills its 255 characters, and its last number may be cut"
              << std::endl;
}

bool domainListFilled() {
    return filled;
}
