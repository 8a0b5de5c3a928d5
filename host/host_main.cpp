#include <iostream>

#include "host/commands.h"
#include "host/input_error.h"

int hostMain(void* provider, const HostRequest& request) {
    try {
        Session session(provider, request);
        session.start();
        switch (request.command) {
            case HostRequest::Run:
                session.leave(runCommand(session, request));
            case HostRequest::Show:
                session.leave(showCommand(session, request));
        }
    } catch (const HostInputError& error) {  // with nothing started
        std::cerr << error.what() << std::endl;
    }
    return EXIT_WRONG_INPUT;
}
