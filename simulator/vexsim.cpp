#include "simulator/vexsim.h"

#include <cstdio>
#include <exception>
#include <string>

#include "simulator/Simulator.h"

namespace {

vexsim::Simulator& simulator() {
    return vexsim::Simulator::instance();
}

std::string pathOf(const char* path) {
    return path == nullptr ? "" : path;
}

/** Runs `work`; what it throws must not cross into C. */
template <class Work>
int32_t guarded(char* error, size_t size, Work work) {
    try {
        return work();
    } catch (const std::exception& failure) {
        if (error != nullptr && size > 0) std::snprintf(error, size, "%s", failure.what());
        return -1;
    }
}

}  // namespace

int32_t vexsim_load_switch(const char* path, char* error, size_t size) {
    return guarded(error, size, [&] {
        simulator().loadSwitchFile(pathOf(path));
        return 0;
    });
}

int32_t vexsim_load_scenario(const char* path, char* error, size_t size) {
    return guarded(error, size, [&] {
        simulator().loadScenarioFile(pathOf(path));
        return 0;
    });
}

void vexsim_start_scenario(void) {
    simulator().startScenario();
}

int32_t vexsim_scenario_done(void) {
    return simulator().scenarioDone() ? 1 : 0;
}

int32_t vexsim_wait_scenario(int32_t timeoutMs, char* error, size_t size) {
    return guarded(error, size, [timeoutMs] { return simulator().waitScenario(timeoutMs) ? 1 : 0; });
}

int32_t vexsim_write_transcript(const char* path, char* error, size_t size) {
    return guarded(error, size, [&] {
        simulator().writeTranscript(pathOf(path));
        return 0;
    });
}
