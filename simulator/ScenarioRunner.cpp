#include "simulator/ScenarioRunner.h"

#include <utility>

#include "simulator/Simulator.h"

namespace vexsim {

void ScenarioRunner::load(std::vector<Step> steps) {
    const Lock control(_control);
    end();
    const Lock lock(_mutex);
    _steps = std::move(steps);
}

void ScenarioRunner::start(Perform perform, std::function<void()> atEnd) {
    const Lock control(_control);
    if (_thread.joinable()) {
        if (!done()) return;
        _thread.join();
    }
    {
        const Lock lock(_mutex);
        _running = true;
        _stop = false;
        _error.clear();
    }
    _thread =
        std::thread([this, perform = std::move(perform), atEnd = std::move(atEnd)] { run(perform, atEnd); });
}

bool ScenarioRunner::done() const {
    const Lock lock(_mutex);
    return !_running;
}

bool ScenarioRunner::wait(std::chrono::steady_clock::time_point until) {
    std::string error;
    {
        Lock lock(_mutex);
        while (_running) {
            if (lock.waitUntil(_changed, until) == std::cv_status::timeout && _running) return false;
        }
        error = _error;
    }
    {
        const Lock control(_control);
        if (_thread.joinable() && done()) _thread.join();  // a run that is over leaves no thread behind
    }
    if (!error.empty()) throw InputError(error);
    return true;
}

void ScenarioRunner::stop() {
    const Lock control(_control);
    end();
}

void ScenarioRunner::end() {
    {
        const Lock lock(_mutex);
        _stop = true;
        _changed.notify_all();
    }
    if (_thread.joinable()) _thread.join();
    const Lock lock(_mutex);
    _steps.clear();
    _error.clear();
}

void ScenarioRunner::run(const Perform& perform, const std::function<void()>& atEnd) {
    std::vector<Step> steps;
    {
        const Lock lock(_mutex);
        steps = _steps;
    }
    std::string error;
    try {
        // Each step's time counts from when the last one was due, so that slow steps do not add up.
        auto due = std::chrono::steady_clock::now();
        bool stopped = false;
        for (const Step& step : steps) {
            due += step.after;
            stopped = sleep(due);
            if (stopped) break;
            perform(step);
        }
        if (!stopped) atEnd();
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    const Lock lock(_mutex);
    _error = error;
    _running = false;
    _changed.notify_all();
}

bool ScenarioRunner::sleep(std::chrono::steady_clock::time_point until) {
    Lock lock(_mutex);
    while (!_stop && std::chrono::steady_clock::now() < until) lock.waitUntil(_changed, until);
    return _stop;
}

}  // namespace vexsim
