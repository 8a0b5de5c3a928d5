#include "simulator/scenario.h"

namespace vexsim {

namespace {

Step readStep(TableReader& table) {
    Step step;
    step.name = table.text("do");
    step.where = table.where();
    const StepKind* const kind = findStep(step.name);
    if (kind == nullptr) table.fail("do", "unknown step \"" + step.name + '"');
    table.rename("step \"" + step.name + '"');
    if (table.has("after")) step.after = table.duration("after");
    if (step.name == "wait") step.after += table.duration("for");
    step.action = kind->read(table);
    table.finish();
    return step;
}

}  // namespace

std::vector<Step> readSteps(TableReader document) {
    if (document.has("do")) return {readStep(document)};
    std::vector<Step> steps;
    for (TableReader& table : document.tables("step")) {
        table.rename("[[step]]");
        steps.push_back(readStep(table));
    }
    document.finish();
    return steps;
}

}  // namespace vexsim
