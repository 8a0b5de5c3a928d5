#include "host/ReplayedSwitch.h"

#include <chrono>
#include <thread>

#include "datacache/DataCache.h"
#include "host/controls.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kStep{1};
constexpr int kStrictPatience = 5000;  ///< steps without any activity after which a call is missing

}  // namespace

ReplayedSwitch::ReplayedSwitch(void* provider) {
    find(_open, provider, "vexreplay_open");
    find(_next, provider, "vexreplay_next");
    find(_mentions, provider, "vexreplay_mentions");
    find(_deliver, provider, "vexreplay_deliver");
    find(_skip, provider, "vexreplay_skip");
    find(_mute, provider, "vexreplay_mute");
    find(_guard, provider, "vexreplay_guard");
    find(_finish, provider, "vexreplay_finish");
    if (_open && !(_next && _mentions && _deliver && _skip && _mute && _guard && _finish)) {
        throw HostInputError("datacache-host: this replayer is of another version");
    }
}

void ReplayedSwitch::open(const std::string& path, int32_t strict, double speed, bool toItsEnd) {
    control(_open, path.c_str(), strict, speed);
    // Keeps the cache from going to work between notifications that came together.
    _guard([]() DC_NO_THREAD_SAFETY_ANALYSIS { DataCache::getInstance(); },
           []() DC_NO_THREAD_SAFETY_ANALYSIS { DataCache::releaseInstance(); });
    _strict = strict != VEXREPLAY_LENIENT;
    _toItsEnd = toItsEnd && strict != VEXREPLAY_STRICT;
}

void ReplayedSwitch::start() {
    std::thread([this] { play(); }).detach();
}

bool ReplayedSwitch::rests() const {
    const int32_t next = _next(nullptr);
    return next == VEXREPLAY_OVER || (next == VEXREPLAY_MAIN && !_toItsEnd);
}

bool ReplayedSwitch::takeTurns(const char* text, const std::function<void()>& turn) const {
    for (;;) {
        uint64_t place = 0;
        const int32_t next = _next(&place);
        if (next != VEXREPLAY_MAIN) return next == VEXREPLAY_OVER;
        // An idle cache has taken up all notifications delivered so far; the lock keeps the next ones
        // waiting.
        if (!DataCache::idle()) return false;
        DataCache::getInstance();
        _deliver();
        if (_mentions(place, text) != 0) turn();
        DataCache::releaseInstance();
        _skip(place);
    }
}

void ReplayedSwitch::play() const {
    for (int quiet = 0; _next(nullptr) != VEXREPLAY_OVER; std::this_thread::sleep_for(kStep)) step(quiet);
}

/** `quiet`: the steps since something last happened. */
void ReplayedSwitch::step(int& quiet) const {
    uint64_t place = 0;
    const int32_t next = _next(&place);
    if (!DataCache::idle()) {
        quiet = 0;
    } else if (next == VEXREPLAY_NOTIFICATION) {
        quiet = 0;
        _deliver();
    } else if (next == VEXREPLAY_ASIDE || (next == VEXREPLAY_MAIN && _toItsEnd)) {
        if (next == VEXREPLAY_MAIN) _deliver();
        _skip(place);
    } else if (next == VEXREPLAY_CALL) {
        // The cache is quiet, so the call will not come.
        if (!_strict || ++quiet > kStrictPatience) _skip(place);
    }
}

}  // namespace host
