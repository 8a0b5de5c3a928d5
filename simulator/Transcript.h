#pragma once

#include <chrono>
#include <fstream>
#include <string>
#include <vector>

#include "simulator/Mutex.h"
#include "simulator/Simulator.h"

namespace vexsim {

/** A call's keys, separated by ",". */
std::string joined(const std::vector<std::string>& keys);

/**
 * What happened between the library and the switch, in order.
 *
 * Calls and notes are kept in memory where somebody asked for that and, where a file was named, written there
 * one line each with the seconds since the file was opened. Notifications and scenario steps go to the file
 * only.
 */
class Transcript {
  public:
    /** `keys`, joined, are the call's detail. */
    void call(const char* function, const std::vector<std::string>& keys, int64_t result, uint32_t handle)
        DC_EXCLUDES(_mutex);
    void note(const std::string& text) DC_EXCLUDES(_mutex);
    /** Only to the file: what the switch did by itself. */
    void remark(const std::string& kind, const std::string& text) DC_EXCLUDES(_mutex);

    std::vector<Call> calls() const DC_EXCLUDES(_mutex);
    void clear() DC_EXCLUDES(_mutex);
    /** Keeps calls in memory from now on, or not. */
    void keep(bool on) DC_EXCLUDES(_mutex);
    /** Opens the file to append to, or closes it for an empty path. Throws std::runtime_error. */
    void writeTo(const std::string& path) DC_EXCLUDES(_mutex);

  private:
    void writeLine(const std::string& kind, const std::string& text) DC_REQUIRES(_mutex);

    mutable Mutex _mutex;
    std::vector<Call> _calls DC_GUARDED_BY(_mutex);
    bool _keep DC_GUARDED_BY(_mutex) = false;
    std::ofstream _file DC_GUARDED_BY(_mutex);
    std::string _path DC_GUARDED_BY(_mutex);
    std::chrono::steady_clock::time_point _opened DC_GUARDED_BY(_mutex);
};

}  // namespace vexsim
