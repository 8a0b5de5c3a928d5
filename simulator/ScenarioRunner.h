#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "simulator/Mutex.h"
#include "simulator/scenario.h"

namespace vexsim {

/** Runs the steps of one scenario in their time on a thread of its own. */
class ScenarioRunner {
  public:
    using Perform = std::function<void(const Step&)>;

    ~ScenarioRunner() { stop(); }

    /** Replaces the scenario; one that is running is stopped first. */
    void load(std::vector<Step> steps) DC_EXCLUDES(_control);
    /**
     * Starts from the first step; a scenario that is running goes on instead. `perform` carries out one step,
     * `atEnd` runs after the last; a message that either throws as a std::exception ends the scenario.
     */
    void start(Perform perform, std::function<void()> atEnd) DC_EXCLUDES(_control);
    /** True when no scenario is running (before its start too). */
    bool done() const DC_EXCLUDES(_mutex);
    /** Waits for the end, at most until then; false when time is up. Throws InputError for what ended it
     * early. */
    bool wait(std::chrono::steady_clock::time_point until) DC_EXCLUDES(_mutex);
    /** Ends it between two steps and forgets it. */
    void stop() DC_EXCLUDES(_control);

  private:
    void run(const Perform& perform, const std::function<void()>& atEnd) DC_EXCLUDES(_mutex);
    void end() DC_REQUIRES(_control);
    bool sleep(std::chrono::steady_clock::time_point until) DC_EXCLUDES(_mutex);

    mutable Mutex _mutex;
    std::condition_variable _changed;
    std::vector<Step> _steps DC_GUARDED_BY(_mutex);
    bool _running DC_GUARDED_BY(_mutex) = false;
    bool _stop DC_GUARDED_BY(_mutex) = false;
    std::string _error DC_GUARDED_BY(_mutex);

    Mutex _control; /**< held by start and stop, before _mutex */
    std::thread _thread DC_GUARDED_BY(_control);
};

}  // namespace vexsim
