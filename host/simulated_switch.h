#pragma once

#include <string>

#include "simulator/vexsim.h"

/**
 * The controls of the simulated switch, where the provider of vexlib has them. A real library has none, and
 * then only available() may be called.
 */
class SimulatedSwitch {
  public:
    /** Looks the controls up in the loaded library `provider`, which stays loaded. */
    explicit SimulatedSwitch(void* provider);

    bool available() const { return _loadSwitch != nullptr; }

    /** A file that is malformed throws HostInputError with "FILE:LINE: message", and changes nothing. */
    void loadSwitch(const std::string& path) const;
    void loadScenario(const std::string& path) const;
    /** Writes the transcript of all calls to a file from now on; with an empty path, completes it. */
    void writeTranscript(const std::string& path) const;

    void startScenario() const { _startScenario(); }
    /** Whether the scenario is over and its notifications are delivered. Throws HostInputError for a step
     * that could not be carried out. */
    bool scenarioOver() const;

  private:
    decltype(&vexsim_load_switch) _loadSwitch;
    decltype(&vexsim_load_scenario) _loadScenario;
    decltype(&vexsim_start_scenario) _startScenario;
    decltype(&vexsim_wait_scenario) _waitScenario;
    decltype(&vexsim_write_transcript) _writeTranscript;
};
