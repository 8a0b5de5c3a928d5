#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "datacache/ChassisState.h"

namespace datacache {

/**
 * The translations of the switch's state words into CIM values: pure functions, words compared exactly.
 */

/** CIM OperationalStatus (DMTF CIM schema, CIM_ManagedSystemElement), and this system's values from the
 * vendor range. */
enum CimStatus : uint16_t {
    CIM_UNKNOWN = 0,
    CIM_OK = 2,
    CIM_DEGRADED = 3,
    CIM_PREDICTIVE_FAILURE = 5,
    CIM_ERROR = 6,
    CIM_STARTING = 8,
    CIM_STOPPING = 9,
    CIM_STOPPED = 10,
    CIM_IN_SERVICE = 11,
    CIM_DORMANT = 15,
    CIM_SELF_TEST_FAILED = 0x8000,        ///< firmware power-on self test failed
    CIM_MANAGEMENT_ACCESS_FAULT = 0x8001  ///< management processor access fault
};

using StatusList = std::vector<unsigned short>;

/** The switch's status, its faults appended. */
StatusList cimSwitchStatus(std::string_view operState, const StatusList& faults);

/** A blade's status: one value, or two where the blade is also in a transition. */
StatusList cimBladeStatus(std::string_view operState, std::string_view adminState,
                          std::string_view diagStatus);

/** A port's status, which is always one value. */
uint16_t cimPortStatus(std::string_view operState, std::string_view adminState);

/** Port type; 0 for an unknown word. */
uint16_t cimPortType(std::string_view type);

/** Port hardware type; 0 for an unknown word. */
uint16_t cimPortHardwareType(std::string_view type);

HardwareStatus hardwareStatus(std::string_view state);

}  // namespace datacache
