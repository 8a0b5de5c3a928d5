#pragma once

#include <chrono>
#include <condition_variable>
#include <list>
#include <string>
#include <vector>

#include "simulator/Mutex.h"
#include "simulator/Simulator.h"

namespace vexsim {

/** The calls that a fault keeps from returning, until somebody lets them go. */
class HangingCalls {
  public:
    struct Held {
        Call call;
        bool released = false;
    };
    using Place = std::list<Held>::iterator;

    /** Notes that a call hangs. Whoever is then asked to let it go does so, even before it waits. */
    Place enter(Call call) DC_EXCLUDES(_mutex);
    /** Returns when the call has been let go, and forgets it. */
    void wait(Place place) DC_EXCLUDES(_mutex);

    /** Those that nobody has let go yet, oldest first. */
    std::vector<Call> list() const DC_EXCLUDES(_mutex);
    /** Waits until a call of the function ("*": any) hangs; false when time is up first. */
    bool waitFor(const std::string& function, std::chrono::steady_clock::time_point until)
        DC_EXCLUDES(_mutex);
    /** Lets the hanging calls of the function go; "*": of every function. */
    void release(const std::string& function) DC_EXCLUDES(_mutex);
    /** While calls may not hang, those that do are let go, and so is each that comes. */
    void allow(bool allowed) DC_EXCLUDES(_mutex);

  private:
    bool isHanging(const std::string& function) const DC_REQUIRES(_mutex);
    void letGo(const std::string& function) DC_REQUIRES(_mutex);

    mutable Mutex _mutex;
    std::condition_variable _changed;
    std::list<Held> _held DC_GUARDED_BY(_mutex);
    bool _allowed DC_GUARDED_BY(_mutex) = true;
};

}  // namespace vexsim
