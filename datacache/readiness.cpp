#include "datacache/readiness.h"

namespace datacache {

namespace {

struct Target {
    void (*callback)(bool ready, void* context) = nullptr;
    void* context = nullptr;
};

Target target DC_GUARDED_BY(access_lock);

}  // namespace

void setReadinessTarget(void (*callback)(bool ready, void* context), void* context) {
    target = {callback, context};
}

void tellReadiness(bool ready) {
    const Target told = target;  // the callback may set another
    if (told.callback != nullptr) told.callback(ready, told.context);
}

}  // namespace datacache
