#include "host/edits.h"

#include <iostream>

bool carryOut(Session& session, const HostRequest& request,
              const std::function<Outcome(const Statement&)>& carryOutOne) {
    bool all = true;
    for (const Statement& statement : request.statements) {
        if (session.interrupted()) return false;
        const Outcome outcome = carryOutOne(statement);
        printOutcome(statement.text, outcome, request.json);
        all = all && outcome.done;
        if (!all && !request.keepGoing) return false;
    }
    return all;
}

void printOutcome(const std::string& statement, const Outcome& outcome, bool json) {
    if (json) {
        Json line{{"statement", statement}};
        line.update(outcome.fields);
        std::cout << jsonLine(line) << std::endl;
        return;
    }
    std::cout << plainText(statement) << ": " << plainText(outcome.fields["result"]);
    const Json code = outcome.fields.value("code", Json(0));
    if (code != 0) std::cout << " (code " << plainText(code) << ')';
    const Json left = outcome.fields.value("lockSeconds", Json());
    if (!left.is_null()) std::cout << " (lock: " << plainText(left) << " s left)";
    std::cout << std::endl;
}
