#pragma once

#include "common/AccessLock.h"

namespace datacache {

/** Whom to tell that readiness was lost or regained; null for nobody. One for the process. */
void setReadinessTarget(void (*callback)(bool ready, void* context), void* context) DC_REQUIRES(access_lock);

void tellReadiness(bool ready) DC_REQUIRES(access_lock);

}  // namespace datacache
