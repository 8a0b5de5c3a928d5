#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/event_queue.h"
#include "host/request.h"
#include "host/simulated_switch.h"

/**
 * The cache, run as a host runs it, and the main thread's view of it.
 *
 * The cache connects on a thread of its own, because that can take for ever; the main thread waits in wait(),
 * says on standard error what it is waiting for, and hands out the events as they come. The cache cannot be
 * stopped, so a program with a session ends by leave().
 */
class Session {
  public:
    using Clock = std::chrono::steady_clock;

    /** Gives the simulated switch its files; throws HostInputError, with nothing started. */
    Session(void* provider, const HostRequest& request);

    /** Starts the cache and returns at once. Once. */
    void start();

    /** Waits up to a tenth of a second for something to happen, and returns the events that came. */
    std::vector<HostEvent> wait();

    /** Waits until every area of the cache is up to date. False when the time is up, which it then reports,
     * or the user interrupted. Events that come meanwhile are dropped. */
    bool waitReady(double seconds);

    /** Waits until nothing is left to be done, at most 5 seconds: an area that cannot be read stays marked.
     */
    void waitSettled();

    /** The user asked for the end. */
    bool interrupted() const { return _queue.interrupted(); }
    bool started() const { return _queue.started(); }

    /** What the cache says when nothing is using it; all false while a pass runs. */
    struct State {
        bool passed = false;   ///< the first pass is over, whatever came of it
        bool ready = false;    ///< the last pass found every area up to date
        bool quiet = false;    ///< no event and no wake-up waits to be taken up
        bool settled = false;  ///< quiet, and no area is marked for update
    };
    State state() const;

    const SimulatedSwitch& simulator() const { return _simulator; }

    /** Completes the transcript and ends the process, without running destructors: the cache's threads are
     * still there. */
    [[noreturn]] void leave(int status) const;

  private:
    void reportConnection();

    SimulatedSwitch _simulator;
    EventQueue& _queue = EventQueue::instance();
    Clock::time_point _begin;
    int _notices = 0;  ///< times that the user was told that there is no connection
    bool _reported = false;
};

/** Names of the areas that are not up to date, with commas. Takes the access lock. */
std::string staleAreas();
