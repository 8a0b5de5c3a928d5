#include "host/follow.h"

#include <algorithm>
#include <iostream>
#include <optional>

#include "host/areas.h"

namespace host {

namespace {

using Time = Session::Clock::time_point;

bool contains(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

void Readiness::see(const Session::State& state) {
    if (!state.passed) return;
    _passed = true;
    for (const std::string& area : state.stale) {
        if (!contains(_stale, area))
            std::cerr << "datacache-host: not ready: " << staleReason(area) << std::endl;
    }
    for (const std::string& area : _stale) {
        if (contains(state.stale, area)) continue;
        std::cerr << "datacache-host: " << area << " is up to date again; "
                  << (state.stale.empty() ? "ready" : "not ready: " + listed(state.stale)) << std::endl;
    }
    _stale = state.stale;
    _ever = _ever || _stale.empty();
}

std::string Readiness::reason() const {
    return (_ever ? "the cache is not ready" : "the cache never became ready") +
           (_stale.empty() ? "; no reading of the switch was complete"
                           : "; not up to date: " + listed(_stale));
}

std::string remaining(const HostRequest& request) {
    if (!request.scenario.empty()) return "the rest of the scenario";
    if (!request.replay.empty()) return "the rest of the recording";
    return request.seconds > 0 ? "the rest of the time" : "";
}

void follow(Session& session, const HostRequest& request, Readiness& readiness,
            const std::function<bool()>& wait) {
    const Time begin = Session::Clock::now();
    bool scenarioRuns = false;
    bool over = false;
    std::optional<Time> accountsRead;
    while (!session.interrupted() && wait()) {
        const Session::State state = Session::state();
        readiness.see(state);
        warnOfCapacity();
        if (!state.passed && session.started()) session.setUndone("reading the switch");
        const Time now = Session::Clock::now();
        if (state.passed) session.setUndone(remaining(request));
        const bool replay = session.replay().available();
        if (state.passed && !replay && (!accountsRead || now - *accountsRead > std::chrono::seconds(1))) {
            readAccounts();
            accountsRead = now;
        }
        // One more look after the end, for events that the last step caused.
        if (over && (state.quiet || !session.started())) break;
        if (replay && !state.passed) {
            over = session.replay().over();  // the switch never answered in this recording
        } else if (replay) {
            over = session.replay().takeTurns("FirstPotentialUser", readAccounts);
        } else if (scenarioRuns) {
            over = session.simulator().scenarioOver();
        } else if (!request.scenario.empty() && state.passed) {
            session.simulator().startScenario();
            scenarioRuns = true;
        }
        if (request.seconds > 0 && now - begin > std::chrono::duration<double>(request.seconds)) break;
    }
}

}  // namespace host
