#pragma once

#include "common/Wwn.h"
#include "common/export.h"

class DC_EXPORT FabricCache {
  public:
    Wwn getFabricWorldWideName() const { return _fabric_name; }
    Wwn _fabric_name;
};
