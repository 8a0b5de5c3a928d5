#pragma once

#include <functional>

#include "host/Session.h"
#include "host/json_text.h"
#include "host/request.h"

namespace host {

/** What came of one statement. */
struct Outcome {
    bool done;
    Json fields;  ///< "result", and "code" and others where there are any
};

/**
 * Carries out the request's statements, printing what came of each; ends at the first that was not done,
 * unless the user wants to go on, and at an interrupt. Returns whether all were done.
 */
bool carryOut(Session& session, const HostRequest& request,
              const std::function<Outcome(const Statement&)>& carryOutOne);

/** Prints an outcome on one line: "create zone z1: exists already (code 3)", or as JSON with "statement". */
void printOutcome(const std::string& statement, const Outcome& outcome, bool json);

}  // namespace host
