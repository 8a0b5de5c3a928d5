#pragma once

#include <set>
#include <string>

#include "vexlib/vexlib.h"

namespace vexsim {

/**
 * Domain IDs as the switch lists them: in one value, which has 255 characters of room. The list ends with the
 * last domain that fits whole, the 88th of those that count from 1; nobody is told of the others.
 */
inline std::string domainList(const std::set<unsigned>& domains) {
    constexpr size_t kRoom = VEX_SML_VALUE_SIZE - 1;
    std::string list;
    for (const unsigned domain : domains) {
        const std::string next = (list.empty() ? "" : ",") + std::to_string(domain);
        if (list.size() + next.size() > kRoom) break;
        list += next;
    }
    return list;
}

}  // namespace vexsim
