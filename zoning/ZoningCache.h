#pragma once

#include <cstdint>

#include "common/export.h"

class DC_EXPORT ZoningCache {
  public:
    bool initZoningLimits();
    uint32_t _inactiveChecksum = 0;
    uint32_t _prevInactiveChecksum = 1;
};
