#include "switchlib/CallWatch.h"

#include "common/Mutex.h"
#include "common/bounded_text.h"

namespace datacache {

namespace {

struct Calls {
    Mutex mutex;
    CallWatch* oldest DC_GUARDED_BY(mutex) = nullptr;
    CallWatch* newest DC_GUARDED_BY(mutex) = nullptr;
    CallResults results DC_GUARDED_BY(mutex);
};

Calls& calls() {
    static Calls all;
    return all;
}

}  // namespace

CallWatch::CallWatch(const char* call, const char* key, uint32_t keys) : _call(call), _key(key), _keys(keys) {
    Calls& all = calls();
    const Lock guard(all.mutex);
    _older = all.newest;
    (_older == nullptr ? all.oldest : _older->_newer) = this;
    all.newest = this;
}

CallWatch::~CallWatch() {
    Calls& all = calls();
    const Lock guard(all.mutex);
    (_older == nullptr ? all.oldest : _older->_newer) = _newer;
    (_newer == nullptr ? all.newest : _newer->_older) = _older;
}

int32_t CallWatch::done(int32_t result) {
    Calls& all = calls();
    const Lock guard(all.mutex);
    if (result == 0) {
        all.results = {};
        return result;
    }
    if (all.results.failuresInARow++ == 0) all.results.failingSince = std::chrono::system_clock::now();
    all.results.lastResult = result;
    return result;
}

size_t CallWatch::pending(PendingCall* out, size_t most) {
    Calls& all = calls();
    const Lock guard(all.mutex);
    size_t count = 0;
    for (const CallWatch* watch = all.oldest; watch != nullptr && count < most; watch = watch->_newer) {
        PendingCall& copy = out[count++];
        copyBounded(copy.call, watch->_call);
        copyBounded(copy.key, watch->_key);
        copy.keys = watch->_keys;
        copy.since = watch->_since;
    }
    return count;
}

CallResults CallWatch::results() {
    Calls& all = calls();
    const Lock guard(all.mutex);
    return all.results;
}

void CallWatch::reset() {
    Calls& all = calls();
    const Lock guard(all.mutex);
    all.results = {};
}

}  // namespace datacache
