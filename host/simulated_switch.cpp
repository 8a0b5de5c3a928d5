#include "host/simulated_switch.h"

#include <dlfcn.h>

#include "host/input_error.h"

namespace {

template <typename Function>
void find(Function*& function, void* provider, const char* name) {
    function = reinterpret_cast<Function*>(dlsym(provider, name));
}

/** Calls a control, whose last two arguments take its message. */
template <typename Function, typename... Arguments>
int32_t control(Function* function, Arguments... arguments) {
    char message[1024] = "";
    const int32_t result = function(arguments..., message, sizeof message);
    if (result < 0) throw HostInputError(message);
    return result;
}

}  // namespace

SimulatedSwitch::SimulatedSwitch(void* provider) {
    find(_loadSwitch, provider, "vexsim_load_switch");
    find(_loadScenario, provider, "vexsim_load_scenario");
    find(_startScenario, provider, "vexsim_start_scenario");
    find(_waitScenario, provider, "vexsim_wait_scenario");
    find(_writeTranscript, provider, "vexsim_write_transcript");
    const bool complete = _loadScenario && _startScenario && _waitScenario && _writeTranscript;
    if (_loadSwitch && !complete) {
        throw HostInputError("datacache-host: this simulated switch is of another version");
    }
}

void SimulatedSwitch::loadSwitch(const std::string& path) const {
    control(_loadSwitch, path.c_str());
}

void SimulatedSwitch::loadScenario(const std::string& path) const {
    control(_loadScenario, path.c_str());
}

void SimulatedSwitch::writeTranscript(const std::string& path) const {
    control(_writeTranscript, path.c_str());
}

bool SimulatedSwitch::scenarioOver() const {
    return control(_waitScenario, 0) == 1;
}
