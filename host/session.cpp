#include "host/session.h"

#include <unistd.h>

#include <csignal>
#include <iostream>
#include <thread>

#include "host/cache_reader.h"
#include "host/input_error.h"

namespace {

constexpr int retrySeconds = 10;  ///< the cache's own

sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

/** Wake-ups of the evaluation thread that it has not taken up. */
bool wakeUpsPending() DC_NO_THREAD_SAFETY_ANALYSIS {
    pthread_mutex_lock(&eval_mutex);
    const bool pending = eval_ready != 0;
    pthread_mutex_unlock(&eval_mutex);
    return pending;
}

double secondsSince(Session::Clock::time_point time) {
    return std::chrono::duration<double>(Session::Clock::now() - time).count();
}

}  // namespace

Session::Session(void* provider, const HostRequest& request) : _simulator(provider) {
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
    std::thread([this, signals] {
        for (int signal = 0;;) {
            if (sigwait(&signals, &signal) == 0) _queue.interrupt();
        }
    }).detach();
    _begin = Clock::now();
    std::thread([this] {
        DataCache::init();
        _queue.setStarted();  // before the first event, which may be the reason for an interrupt
        DataCache::start(EventQueue::callback);
    }).detach();
}

void Session::reportConnection() {
    if (_reported) return;
    const double seconds = secondsSince(_begin);
    const int whole = static_cast<int>(seconds);
    if (started()) {
        _reported = true;
        if (_notices > 0) std::cerr << "datacache-host: connected after " << whole << " s" << std::endl;
    } else if (seconds > 1 + retrySeconds * _notices) {
        std::cerr << "datacache-host: no connection to the switch "
                  << (_notices == 0 ? "yet; trying every 10 seconds"
                                    : "for " + std::to_string(whole) + " s; still trying every 10 seconds")
                  << std::endl;
        ++_notices;
    }
}

std::vector<HostEvent> Session::wait() {
    std::vector<HostEvent> events = _queue.wait(100);
    reportConnection();
    return events;
}

bool Session::waitReady(double seconds) {
    while (!interrupted()) {
        wait();
        if (state().ready) return true;
        if (secondsSince(_begin) < seconds) continue;
        std::cerr << "datacache-host: the cache was not ready in " << seconds << " s; "
                  << (started() ? "not up to date: " + staleAreas() : "the switch was not reached")
                  << " (see /tmp/cim.crit.out)" << std::endl;
        return false;
    }
    return false;
}

void Session::waitSettled() {
    const Clock::time_point begin = Clock::now();
    while (!state().settled && secondsSince(begin) < 5 && !interrupted()) wait();
}

Session::State Session::state() const {
    State state;
    // A pass can take long, and the main thread has events to print and an interrupt to see.
    if (!started() || pthread_mutex_trylock(&access_mutex) != 0) return state;
    {
        const CacheReader cache;
        state.passed = cache->_accountsOK;  // the one result that every pass sets
        state.ready = cache->isCacheReady();
        state.quiet = cache->_eventQueue.empty() && !wakeUpsPending();
        state.settled = state.quiet && !cache->workToDo();
    }
    pthread_mutex_unlock(&access_mutex);
    return state;
}

void Session::leave(int status) const {
    if (_simulator.available()) _simulator.writeTranscript("");
    std::cerr.flush();
    if (!std::cout.flush() && status == EXIT_DONE) status = EXIT_NOT_DONE;
    _exit(status);
}

std::string staleAreas() {
    const CacheReader cache;
    const std::pair<const char*, bool> areas[] = {
        {"switch", cache->_switchOK}, {"chassis", cache->_chassisOK}, {"blades", cache->_bladesOK},
        {"ports", cache->_portsOK},   {"fabric", cache->_fabricOK},   {"zoning", cache->_zoningOK},
    };
    std::string names;
    for (const auto& [name, good] : areas) {
        if (!good) names += (names.empty() ? "" : ", ") + std::string(name);
    }
    return names.empty() ? "none" : names;
}
