#include <iostream>

#include "host/EventQueue.h"
#include "host/areas.h"
#include "host/commands.h"
#include "host/follow.h"
#include "host/request.h"

namespace host {

namespace {

/** False when nobody reads them. */
bool printEvents(Session& session, const HostRequest& request) {
    for (const HostEvent& event : session.wait()) printEvent(std::cout, event, request.json);
    return static_cast<bool>(std::cout);
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
        follow(session, request, readiness, [&] { return printEvents(session, request); });
    } catch (const HostInputError& error) {  // a step of the scenario that the switch could not carry out
        std::cerr << error.what() << std::endl;
        status = EXIT_WRONG_INPUT;
    }
    if (session.replay().available()) session.replay().finish();
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
