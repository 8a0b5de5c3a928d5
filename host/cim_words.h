#pragma once

#include <cstdint>
#include <vector>

#include "host/json_text.h"

/**
 * A CIM OperationalStatus value with its word (DMTF CIM schema, CIM_ManagedSystemElement; 32768 and 32769 are
 * this system's own): {"code": 2, "text": "OK"}.
 */
Json operationalStatus(uint16_t value);

/** A switch's list of such values. It ends with places for faults, in which 0 stands for none. */
Json switchStatus(const std::vector<uint16_t>& values);

/** The state of a fan or a power supply (HardwareStatus) with its word. */
Json hardwareStatus(uint16_t value);

/** A port's CIM type with its letters, as the switch calls it. */
Json portType(uint16_t value);

/** A port's hardware type with its letters. */
Json portHardwareType(uint16_t value);

/** The form of a transceiver with its word. */
Json transceiverFormat(uint16_t value);
