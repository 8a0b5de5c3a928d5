#include <iostream>

#include "host/commands.h"
#include "host/request.h"

namespace host {

namespace {

int run(Session& session, const HostRequest& request) {
    switch (request.command) {
        case HostRequest::Run:
            return runCommand(session, request);
        case HostRequest::Show:
            return showCommand(session, request);
        case HostRequest::Graph:
            return graphCommand(session, request);
        case HostRequest::Zone:
            return zoneCommand(session, request);
        case HostRequest::Config:
            return configCommand(session, request);
        case HostRequest::Capture:
            return captureCommand(session, request);
        case HostRequest::Report:
            return reportCommand(session, request);
        case HostRequest::Metrics:
            return metricsCommand(session, request);
        case HostRequest::Verify:
            return verifyCommand(session, request);
    }
    return EXIT_WRONG_INPUT;
}

}  // namespace

int hostMain(void* provider, const HostRequest& request) {
    try {
        if (request.command == HostRequest::Capture && !request.replay.empty())
            return captureRecording(request);
        Session session(provider, request);
        session.start();
        session.leave(run(session, request));
    } catch (const HostInputError& error) {  // with nothing started
        std::cerr << error.what() << std::endl;
    }
    return EXIT_WRONG_INPUT;
}

}  // namespace host
