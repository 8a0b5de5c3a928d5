#include "simulator/scenario.h"

namespace vexsim {

std::vector<Step> readSteps(TableReader document) {
    std::vector<Step> steps;
    for (TableReader& table : document.tables("step")) {
        table.rename("[[step]]");
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
        steps.push_back(std::move(step));
    }
    document.finish();
    return steps;
}

}  // namespace vexsim
