#include <algorithm>
#include <iostream>
#include <optional>

#include "host/EventQueue.h"
#include "host/areas.h"
#include "host/commands.h"
#include "host/request.h"

namespace host {

namespace {

using Time = Session::Clock::time_point;

/** Tells on standard error which areas are lost and which are back. */
class Readiness {
  public:
    void see(const Session::State& state) {
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

    bool passed() const { return _passed; }
    bool ready() const { return _ever && _stale.empty(); }

    /** Why not, at the end. */
    std::string reason() const {
        return (_ever ? "the cache is not ready" : "the cache never became ready") +
               (_stale.empty() ? "; no reading of the switch was complete"
                               : "; not up to date: " + listed(_stale));
    }

  private:
    static bool contains(const std::vector<std::string>& names, const std::string& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    }

    bool _passed = false;
    bool _ever = false;
    std::vector<std::string> _stale;
};

void printEvents(Session& session, const HostRequest& request) {
    for (const HostEvent& event : session.wait()) printEvent(std::cout, event, request.json);
}

/** What an interrupt leaves undone before the end that the user chose. */
std::string remaining(const HostRequest& request) {
    if (!request.scenario.empty()) return "the rest of the scenario";
    if (!request.replay.empty()) return "the rest of the recording";
    return request.seconds > 0 ? "the rest of the time" : "";
}

/** Prints events until the end that the user chose. */
void follow(Session& session, const HostRequest& request, Readiness& readiness) {
    const Time begin = Session::Clock::now();
    bool scenarioRuns = false;
    bool over = false;
    std::optional<Time> accountsRead;
    while (!session.interrupted() && std::cout) {
        printEvents(session, request);
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
        // Looked at once more after the end, for what the last step still caused.
        if (over && state.quiet) break;
        if (replay && state.passed) {
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

/** Prints the events that are left, and the cached state. */
void showEnd(Session& session, const HostRequest& request, Readiness& readiness) {
    if (!session.started()) return;
    std::string undone = readiness.passed() ? remaining(request) : "reading the switch";
    session.setUndone(undone + (undone.empty() ? "" : ", and ") + "showing the state");
    if (!session.interrupted() && !session.replay().available()) readAccounts();
    const std::vector<Json> areas = readAreas("cached");
    printEvents(session, request);    // the accounts' among them
    readiness.see(Session::state());  // the loop may have ended in the middle of a pass
    session.finish();
    session.setUndone(readiness.passed() ? remaining(request) : undone);
    printAreas(std::cout, areas, request.json);
}

}  // namespace

int runCommand(Session& session, const HostRequest& request) {
    Readiness readiness;
    int status = EXIT_DONE;
    try {
        follow(session, request, readiness);
    } catch (const HostInputError& error) {  // a step of the scenario that the switch could not carry out
        std::cerr << error.what() << std::endl;
        status = EXIT_WRONG_INPUT;
    }
    if (std::cout) showEnd(session, request, readiness);
    if (status == EXIT_DONE && !readiness.ready() && !session.interrupted()) {
        status = EXIT_NOT_DONE;
        std::cerr << "datacache-host: "
                  << (session.started() ? readiness.reason()
                                        : "the cache never became ready; the switch was not reached")
                  << std::endl;
    }
    return status;
}

}  // namespace host
