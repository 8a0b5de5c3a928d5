#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "host/EventQueue.h"
#include "host/ReplayedSwitch.h"
#include "host/request.h"
#include "simulator/vexsim.h"

namespace host {

/**
 * The controls of the simulated switch, where the provider of vexlib has them. A real library has none, and
 * then only available() may be called.
 */
class SimulatedSwitch {
  public:
    /** Looks the controls up in the loaded library `provider`, which stays loaded. */
    explicit SimulatedSwitch(void* provider);

    bool available() const { return _loadSwitch != nullptr; }

    /** A file that is malformed throws HostInputError with "FILE:LINE: message", and changes nothing. */
    void loadSwitch(const std::string& path) const;
    void loadScenario(const std::string& path) const;
    /** Writes the transcript of all calls to a file from now on; with an empty path, completes it. */
    void writeTranscript(const std::string& path) const;

    void startScenario() const { _startScenario(); }
    /** Whether the scenario is over and its notifications are delivered. Throws HostInputError for a step
     * that could not be carried out. */
    bool scenarioOver() const;

  private:
    decltype(&vexsim_load_switch) _loadSwitch;
    decltype(&vexsim_load_scenario) _loadScenario;
    decltype(&vexsim_start_scenario) _startScenario;
    decltype(&vexsim_wait_scenario) _waitScenario;
    decltype(&vexsim_write_transcript) _writeTranscript;
};

/**
 * The cache, run as a host runs it, and the main thread's view of it.
 *
 * The cache connects on a thread of its own, because that can take for ever; the main thread waits in wait(),
 * says on standard error what it is waiting for, and hands out the events as they come. The cache cannot be
 * stopped, so a program with a session ends by leave().
 *
 * Ctrl-C is answered at once, whatever the main thread is doing: it has half a second to come to an end by
 * itself, as it does unless it waits for the switch or for a pass that has the cache locked; then the thread
 * that waits for signals ends the process. Either way the user is told what was left undone.
 */
class Session {
  public:
    using Clock = std::chrono::steady_clock;

    /** Gives the simulated switch or the replayer its files; throws HostInputError, with nothing started. */
    Session(void* provider, const HostRequest& request);

    /** Starts the cache and returns at once. Once. */
    void start();

    /** Waits so long at most for something to happen, and returns the events that came. */
    std::vector<HostEvent> wait(int milliseconds = 100);

    /** Sees every event that wait() returns, also where nobody looks at them. */
    void observe(std::function<void(const HostEvent&)> observer) { _observer = std::move(observer); }

    /** Waits until the switch is connected. False when the time is up, which it then reports, or the user
     * interrupted. Events that come meanwhile are dropped. */
    bool waitConnected(double seconds);

    /** Waits until a pass has read the switch and nothing waits to be taken up: an area that is not up to
     * date then stays so until a switch event comes. A recording is played until it is over, or waits for
     * the main thread. Otherwise as waitConnected(). */
    bool waitRead(double seconds);

    /** The user asked for the end. */
    bool interrupted() const { return _queue.interrupted() != 0; }
    bool started() const { return _queue.started(); }

    /** What the cache says of itself; also while a pass runs. */
    struct State {
        bool passed = false;             ///< the first pass is over, whatever came of it
        bool quiet = false;              ///< nothing waits to be taken up, and no pass runs
        std::vector<std::string> stale;  ///< the areas whose last read failed
    };
    static State state();

    /** What the user is told was left undone, and what the switch still holds for this process, if an
     * interrupt ends it now; empty for nothing. */
    void setUndone(const std::string& what);
    void setHeld(const std::string& what);

    /** From here on the main thread waits for nobody, and an interrupt lets it finish. */
    void finish() { _finishing = true; }

    const SimulatedSwitch& simulator() const { return _simulator; }
    const ReplayedSwitch& replay() const { return _replay; }

    /** Completes what was written and ends the process, without running destructors: the cache's threads are
     * still there. After an interrupt the exit status tells of that. */
    [[noreturn]] void leave(int status);

  private:
    void watchSignals();
    [[noreturn]] void leaveInterrupted();
    void reportConnection();

    SimulatedSwitch _simulator;
    ReplayedSwitch _replay;
    EventQueue& _queue = EventQueue::instance();
    std::function<void(const HostEvent&)> _observer;
    Clock::time_point _begin;
    int _notices = 0;  ///< times that the user was told that there is no connection
    bool _reported = false;

    std::mutex _mutex;  ///< guards the two texts, which two threads use
    std::string _undone;
    std::string _held;
    std::atomic<bool> _finishing{false};
    std::atomic_flag _leaving = ATOMIC_FLAG_INIT;  ///< one thread ends the process
};

}  // namespace host
