#include "common/LockUse.h"

#include <utility>

#include "common/Mutex.h"
#include "common/bounded_text.h"
#include "common/changes.h"

namespace datacache {

namespace {

struct CurrentUse {
    Mutex mutex;
    LockUse::Now now DC_GUARDED_BY(mutex);
};

CurrentUse& currentUse() {
    static CurrentUse use;
    return use;
}

}  // namespace

LockUse::LockUse(LockHolder holder, const char* step) {
    Now inner;
    inner.holder = holder;
    copyBounded(inner.step, step);
    CurrentUse& use = currentUse();
    const Lock guard(use.mutex);
    _outer = std::exchange(use.now, inner);
}

LockUse::~LockUse() {
    CurrentUse& use = currentUse();
    {
        const Lock guard(use.mutex);
        use.now = _outer;
    }
    announceChange();
}

LockUse::Now LockUse::now() {
    CurrentUse& use = currentUse();
    const Lock guard(use.mutex);
    return use.now;
}

}  // namespace datacache
