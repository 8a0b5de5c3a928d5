#include "host/edits.h"

#include <iostream>

namespace host {

namespace {

/** What is left undone of the statements from `index` on, of which the first may have been `begun`. */
std::string restFrom(const std::vector<Statement>& statements, size_t index, bool begun) {
    if (index == statements.size()) return "";
    const std::string first = plainText(Json(statements[index].text));
    const size_t after = statements.size() - index - 1;
    return first + (begun ? " (begun; what the switch made of it is not known)" : "") +
           (after == 0 ? "" : ", and " + std::to_string(after) + " more");
}

}  // namespace

bool carryOut(Session& session, const HostRequest& request,
              const std::function<Outcome(const Statement&)>& carryOutOne) {
    bool all = true;
    for (size_t i = 0; i < request.statements.size(); ++i) {
        const Statement& statement = request.statements[i];
        session.setUndone(restFrom(request.statements, i, false));
        if (session.interrupted()) return false;
        session.setUndone(restFrom(request.statements, i, true));
        const Outcome outcome = carryOutOne(statement);
        printOutcome(statement.text, outcome, request.json);
        all = all && outcome.done;
        session.setUndone(restFrom(request.statements, i + 1, false));
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

}  // namespace host
