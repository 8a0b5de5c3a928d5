#include <iostream>
#include <optional>

#include "host/areas.h"
#include "host/cache_reader.h"
#include "host/commands.h"
#include "host/event_print.h"
#include "host/input_error.h"

namespace {

void printEvents(Session& session, const HostRequest& request) {
    for (const HostEvent& event : session.wait()) printEvent(std::cout, event, request.json);
}

/** Reads the accounts, which the cache does only for its host, and so has their events sent. */
void readAccounts() {
    const CacheReader cache;
    cache->_getAcctInfo();
}

/** Prints events until the end that the user chose; returns whether the cache was ever ready. */
bool follow(Session& session, const HostRequest& request) {
    const Session::Clock::time_point begin = Session::Clock::now();
    bool ready = false;
    bool scenarioRuns = false;
    bool scenarioOver = false;
    std::optional<Session::Clock::time_point> accountsRead;
    while (!session.interrupted()) {
        printEvents(session, request);
        const Session::State state = session.state();
        ready = ready || state.ready;
        const Session::Clock::time_point now = Session::Clock::now();
        if (state.passed && (!accountsRead || now - *accountsRead > std::chrono::seconds(1))) {
            readAccounts();
            accountsRead = now;
        }
        // Looked at once more after the scenario's end, for what its last step still caused.
        if (scenarioOver && state.quiet) break;
        if (scenarioRuns) {
            scenarioOver = session.simulator().scenarioOver();
        } else if (!request.scenario.empty() && state.passed) {
            session.simulator().startScenario();
            scenarioRuns = true;
        }
        if (request.seconds > 0 && now - begin > std::chrono::duration<double>(request.seconds)) break;
    }
    if (session.started()) {
        readAccounts();
        ready = ready || CacheReader()->isCacheReady();  // the loop may have ended in the middle of a pass
    }
    printEvents(session, request);
    return ready;
}

}  // namespace

int runCommand(Session& session, const HostRequest& request) {
    int status = EXIT_NOT_DONE;
    try {
        if (follow(session, request)) status = EXIT_DONE;
    } catch (const HostInputError& error) {  // a step of the scenario that the switch could not carry out
        std::cerr << error.what() << std::endl;
        status = EXIT_WRONG_INPUT;
    }
    if (session.started()) showCachedState(std::cout, request.json);
    if (status == EXIT_NOT_DONE) {
        std::cerr << "datacache-host: the cache never became ready; "
                  << (session.started() ? "not up to date: " + staleAreas() : "the switch was not reached")
                  << std::endl;
    }
    return status;
}
