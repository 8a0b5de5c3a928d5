#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "common/Wwn.h"
#include "simulator/Switch.h"

namespace vexsim {

constexpr unsigned kHighestDomain = 239; /**< FC-SW */
constexpr unsigned kUnreachable = 255;   /**< hops to a switch that no path leads to */

/** A switch of the fabric other than the simulated one, as the simulated one sees it. */
struct FabricSwitch {
    Wwn wwn;
    std::string name;                  /**< for people; empty: the world wide name */
    unsigned hops = 1;                 /**< or kUnreachable */
    unsigned ports = 0;                /**< named after the switch; see portName() */
    std::vector<std::string> portWwns; /**< names of the ports instead, whatever texts they are */
    std::set<unsigned> offline;        /**< ports that the management server does not name */
    uint32_t managementStatus = 0;     /**< what its management server answers; 0: properly */
    long managementSlowSeconds = 0;    /**< how much uptime the management server takes for an answer */
};

/**
 * The fabric around the simulated switch. Its keys (link state database, management server) are computed from
 * this when they are read, so a fabric of 61,000 ports costs no more to load than its switches.
 */
struct Fabric {
    std::map<unsigned, FabricSwitch> switches; /**< by domain ID; without the simulated switch */
};

/**
 * The name of a switch's port, by the habits of the switch's name: NAA 1 and 2 give port names of NAA 2, NAA
 * 3 and 5 of NAA 3, with the port's number in the port field (a Cisco switch's plus 1). A switch name of any
 * other NAA has no room for a port number, and every port bears it unchanged.
 */
Wwn portName(const Wwn& switchName, unsigned port);

/** The simulated switch's own domain ID, and whether it has a name and can be in a fabric at all. */
unsigned localDomain(const Switch& target);
bool hasLocalSwitch(const Switch& target);

/** True for the name of the simulated switch or of another one of its fabric. */
bool isInFabric(Switch& target, const Wwn& wwn);

/** Computes the keys of the link state database and the management server. */
std::optional<Reading> readFabricKey(Switch& target, const std::string& key);

}  // namespace vexsim
