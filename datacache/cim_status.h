#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "datacache/ChassisState.h"

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
StatusList cimSwitchStatus(const std::string& operState, const StatusList& faults);

/** A blade's status: one value, or two where the blade is also in a transition. */
StatusList cimBladeStatus(const std::string& operState, const std::string& adminState,
                          const std::string& diagStatus);

/** A port's status: one value. */
StatusList cimPortStatus(const std::string& operState, const std::string& adminState);

/** Port type; 0 for an unknown word. */
uint16_t cimPortType(const std::string& type);

/** Port hardware type; 0 for an unknown word. */
uint16_t cimPortHardwareType(const std::string& type);

HardwareStatus hardwareStatus(const std::string& state);
