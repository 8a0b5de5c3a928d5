#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "recording/Reader.h"

namespace vexreplay {

/** A call as text: the function and what it is given, less what differs from process to process. */
std::string describeCall(const char* function, const std::vector<recording::Value>& given);

/** What the switch said of one key. */
struct KeyAnswer {
    uint64_t time;
    std::string value;
    uint32_t status;
};

/**
 * A recording, made ready to be replayed.
 *
 * Addresses are replaced by numbers that are each given once: an address that was used again after its object
 * was destroyed is another number. A container takes what it holds with it when it is destroyed.
 */
class Script {
  public:
    /** Throws recording::RecordingError. */
    explicit Script(const std::string& path);

    struct Step {
        const recording::Record* record;
        std::string call; /**< describeCall(); empty for a notification */
    };

    const std::string& path() const { return _recording.path; }
    size_t tornLine() const { return _recording.tornLine; }
    const std::vector<Step>& steps() const { return _steps; }
    /** Where the steps with this call are, in order; empty for none. */
    const std::vector<size_t>& places(const std::string& call) const;
    /** Where the steps are with such a call of objects that came from the same place. */
    const std::vector<size_t>& similar(const char* function,
                                       const std::vector<recording::Value>& given) const;
    /** What was said of a key, in order of time; null for one that was never read. */
    const std::vector<KeyAnswer>* answers(const std::string& key) const;
    /** "FILE:LINE" of a step. */
    std::string where(size_t place) const;

  private:
    recording::Recording _recording;
    std::vector<Step> _steps;
    std::vector<std::string>
        _origins; /**< of the objects, by their numbers: the call that made or showed it */
    std::unordered_map<std::string, std::vector<size_t>> _places;
    std::unordered_map<std::string, std::vector<KeyAnswer>> _answers;
};

}  // namespace vexreplay
