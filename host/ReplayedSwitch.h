#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "replayer/vexreplay.h"

namespace host {

/**
 * The controls of the replayer, where the provider of vexlib has them; without them only available() may be
 * called. It plays a recording along with the cache: a thread delivers the notifications when the cache is
 * quiet and their place has come, so that each pass takes up the notifications that the recorded pass took
 * up.
 */
class ReplayedSwitch {
  public:
    /** Looks the controls up in the loaded library `provider`, which stays loaded. */
    explicit ReplayedSwitch(void* provider);

    bool available() const { return _open != nullptr; }

    /** A recording that is damaged throws HostInputError with "FILE:LINE: message". `speed`: 0 for no
     * waiting. `strict`: a word of vexreplay.h. `toItsEnd`: calls of the recorded main thread that are due
     * are not waited for. */
    void open(const std::string& path, int32_t strict, double speed, bool toItsEnd);
    /** Starts the thread. The object must live as long as the process. */
    void start();

    /** Stops the lines about calls that were never recorded. */
    void mute() const { _mute(); }

    /** The recording is over. */
    bool over() const { return _next(nullptr) == VEXREPLAY_OVER; }
    /** Nothing happens until the main thread makes a call; or it is over. */
    bool rests() const;
    /** Tells how many calls differed from the recorded ones. */
    void finish() const { _finish(); }
    /** Runs `turn` on the calling thread, which must be the main thread, for each of its calls that is due
     * and mentions `text`. Skips its other calls. True when the recording is over. */
    bool takeTurns(const char* text, const std::function<void()>& turn) const;

  private:
    void play() const;
    void step(int& quiet) const;

    decltype(&vexreplay_open) _open;
    decltype(&vexreplay_next) _next;
    decltype(&vexreplay_mentions) _mentions;
    decltype(&vexreplay_deliver) _deliver;
    decltype(&vexreplay_skip) _skip;
    decltype(&vexreplay_mute) _mute;
    decltype(&vexreplay_guard) _guard;
    decltype(&vexreplay_finish) _finish;
    bool _strict = false;
    bool _toItsEnd = false;
};

}  // namespace host
