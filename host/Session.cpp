#include "host/Session.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <thread>

#include "datacache/DataCache.h"
#include "host/areas.h"
#include "host/controls.h"
#include "host/request.h"

namespace host {

SimulatedSwitch::SimulatedSwitch(void* provider) {
    find(_loadSwitch, provider, "vexsim_load_switch");
    find(_loadScenario, provider, "vexsim_load_scenario");
    find(_startScenario, provider, "vexsim_start_scenario");
    find(_waitScenario, provider, "vexsim_wait_scenario");
    find(_writeTranscript, provider, "vexsim_write_transcript");
    const bool complete = _loadScenario && _startScenario && _waitScenario && _writeTranscript;
    if (_loadSwitch && !complete) {
        throw HostInputError("datacache-host: this simulated switch is of another version");
    }
}

void SimulatedSwitch::loadSwitch(const std::string& path) const {
    control(_loadSwitch, path.c_str());
}

void SimulatedSwitch::loadScenario(const std::string& path) const {
    control(_loadScenario, path.c_str());
}

void SimulatedSwitch::writeTranscript(const std::string& path) const {
    control(_writeTranscript, path.c_str());
}

bool SimulatedSwitch::scenarioOver() const {
    return control(_waitScenario, 0) == 1;
}

namespace {

constexpr int kRetrySeconds = 10;  ///< the cache's own

sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

double secondsSince(Session::Clock::time_point time) {
    return std::chrono::duration<double>(Session::Clock::now() - time).count();
}

}  // namespace

Session::Session(void* provider, const HostRequest& request) : _simulator(provider), _replay(provider) {
    if (!request.replay.empty()) {
        const bool editing = request.command == HostRequest::Zone || request.command == HostRequest::Config;
        const bool running = request.command == HostRequest::Run;
        const bool following = running || request.command == HostRequest::Report;
        const int32_t strict = !request.strict ? VEXREPLAY_LENIENT
                               : editing       ? VEXREPLAY_STRICT
                                               : VEXREPLAY_STRICT_CACHE;
        _replay.open(request.replay, strict, request.speed.value_or(running ? 1 : 0), !editing && !following);
    }
    if (!_simulator.available()) {
        for (const auto& [name, file] : {std::pair("--switch", request.switchFile),
                                         {"--scenario", request.scenario},
                                         {"--transcript", request.transcript}}) {
            if (file.empty()) continue;
            throw HostInputError(std::string("datacache-host: ") + name +
                                 " is for the simulated switch, and this vexlib is none");
        }
        return;
    }
    if (request.switchFile.empty()) {
        throw HostInputError("datacache-host: the simulated switch needs --switch FILE");
    }
    _simulator.loadSwitch(request.switchFile);
    if (!request.scenario.empty()) _simulator.loadScenario(request.scenario);
    if (!request.transcript.empty()) _simulator.writeTranscript(request.transcript);
}

void Session::start() {
    // Every thread from now on inherits the mask, so that one thread alone sees the signals.
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    setUndone("connecting to the switch");
    std::thread([this] { watchSignals(); }).detach();
    _begin = Clock::now();
    std::thread([this] {
        DataCache::init();
        _queue.setStarted();  // before the first event, which may be the reason for an interrupt
        DataCache::start(EventQueue::callback);
    }).detach();
    if (_replay.available()) _replay.start();
}

void Session::watchSignals() {
    constexpr timespec kGrace{0, 500'000'000};
    const sigset_t signals = endingSignals();
    int signal = 0;
    while (sigwait(&signals, &signal) != 0) {
    }
    _queue.interrupt(signal);
    while (sigtimedwait(&signals, nullptr, &kGrace) == -1 && (_finishing || errno == EINTR)) {
    }
    if (_leaving.test_and_set()) return;
    leaveInterrupted();
}

void Session::reportConnection() {
    if (_reported) return;
    const double seconds = secondsSince(_begin);
    const int whole = static_cast<int>(seconds);
    if (started()) {
        _reported = true;
        if (_notices > 0) std::cerr << "datacache-host: connected after " << whole << " s" << std::endl;
    } else if (seconds > 1 + kRetrySeconds * _notices) {
        std::cerr << "datacache-host: no connection to the switch "
                  << (_notices == 0 ? "yet; trying every 10 seconds"
                                    : "for " + std::to_string(whole) + " s; still trying every 10 seconds")
                  << std::endl;
        ++_notices;
    }
}

std::vector<HostEvent> Session::wait(int milliseconds) {
    std::vector<HostEvent> events = _queue.wait(milliseconds);
    if (_observer) {
        for (const HostEvent& event : events) _observer(event);
    }
    reportConnection();
    return events;
}

bool Session::waitConnected(double seconds) {
    const Clock::time_point begin = Clock::now();
    while (!started() && !interrupted()) {
        wait();
        if (!started() && _replay.available() && _replay.over()) {
            wait();  // the last attempt may have been the one that was answered
            if (started()) continue;
            std::cerr << "datacache-host: the switch did not answer in this recording" << std::endl;
            return false;
        }
        if (started() || secondsSince(begin) < seconds) continue;
        std::cerr << "datacache-host: the switch was not reached in " << seconds
                  << " s (see /tmp/cim.crit.out)" << std::endl;
        return false;
    }
    return !interrupted();
}

bool Session::waitRead(double seconds) {
    const Clock::time_point begin = Clock::now();
    if (!waitConnected(seconds)) return false;
    setUndone("reading the switch");
    constexpr uint32_t kGlance = 50;  // after which an interrupt is looked for
    while (!interrupted()) {
        const bool quiet = DataCache::waitIdle(kGlance);
        if (quiet && (!_replay.available() || _replay.rests())) return true;
        if (secondsSince(begin) > seconds) {
            if (state().passed) return true;
            std::cerr << "datacache-host: the switch is still being read after " << seconds
                      << " s; wait longer with --timeout" << std::endl;
            return false;
        }
        wait(quiet ? 100 : 0);
    }
    return false;
}

Session::State Session::state() {
    const datacache::Health health = DataCache::health();
    State state;
    state.passed = health.passes().count != 0;
    state.quiet = DataCache::idle();
    if (state.passed) state.stale = staleAreas(health);
    return state;
}

void Session::setUndone(const std::string& what) {
    const std::lock_guard<std::mutex> guard(_mutex);
    _undone = what;
}

void Session::setHeld(const std::string& what) {
    const std::lock_guard<std::mutex> guard(_mutex);
    _held = what;
}

void Session::leaveInterrupted() {
    const std::lock_guard<std::mutex> guard(_mutex);
    std::cerr << "datacache-host: interrupted" << (_undone.empty() ? "" : "; left undone: " + _undone)
              << (_held.empty() ? "" : "; the switch may still hold " + _held) << std::endl;
    // Every line of output was flushed as it was printed, and every line of a transcript.
    _exit(128 + _queue.interrupted());
}

void Session::leave(int status) {
    finish();
    errno = 0;
    if (!std::cout.flush()) {
        std::cerr << "datacache-host: standard output cannot be written"
                  << (errno == 0 ? "" : std::string(": ") + std::strerror(errno)) << std::endl;
        if (status == EXIT_DONE) status = EXIT_NOT_DONE;
    }
    try {
        if (_simulator.available()) _simulator.writeTranscript("");
    } catch (const HostInputError& error) {
        std::cerr << error.what() << std::endl;
        if (status == EXIT_DONE) status = EXIT_NOT_DONE;
    }
    if (_leaving.test_and_set()) {
        for (;;) pause();
    }
    if (interrupted()) leaveInterrupted();
    _exit(status);
}

}  // namespace host
