#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/**
 * The simulated switch, as tests and benchmarks drive it.
 *
 * One simulated switch lives in the process; it stands behind every vex_* function and behind uptime(). Its state is
 * a store of SML keys and values, which a switch file fills and scenario steps change; areas with objects of their
 * own (zoning) hang off it. Everything a test can do here a scenario file can do too: run() takes the same steps.
 *
 * All members may be called from any thread. None may be called from inside a notification.
 */
namespace vexsim {

/** A switch file, a scenario or a step that cannot be understood; what() is "FILE:LINE: message". */
struct InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** One call that the library under test made. */
struct Call {
    std::string function; /**< "vex_smlGetBatch" */
    std::string detail;   /**< arguments in short: keys joined by "," for SML calls, names for zoning calls */
    int64_t result = 0;   /**< status returned; for calls that return a handle 0 for a handle, 1 for null */
};

/** How notifications reach the registered callback. */
enum class Delivery {
    Thread, /**< on a thread of the simulator, at once (what a real switch does) */
    Manual, /**< only inside deliverPending(), on the caller's thread (deterministic tests) */
};

/** What the library holds of the memory that vexlib handed out. */
struct Live {
    size_t texts = 0;
    size_t zonesets = 0;
    size_t zones = 0;
    size_t aliases = 0;
    size_t members = 0;
};

class Simulator {
  public:
    /** The one simulated switch of the process. */
    static Simulator& instance();

    /** Back to an empty switch: no keys, no faults, no registration, no transcript, thread delivery, clock offset 0. */
    void reset();

    /** Replaces the state by a switch file's. Throws InputError and changes nothing when the file is malformed. */
    void loadSwitchFile(const std::string& path);
    void loadSwitchText(const std::string& toml, const std::string& name = "switch");

    /** One SML key, as vex_smlGet would read it (without faults); nullopt when the switch does not know the key. */
    std::optional<std::string> get(const std::string& key) const;
    /** Sets or removes one key, without raising an event. */
    void set(const std::string& key, const std::string& value);
    void erase(const std::string& key);

    /** Runs scenario steps at once, in order, without their waits. Throws InputError. */
    void run(const std::string& steps);

    /** Loads a scenario; start runs it with its waits on a thread of its own; wait returns at its end. */
    void loadScenarioFile(const std::string& path);
    void startScenario();
    void waitScenario();
    bool scenarioDone() const;

    void setDelivery(Delivery delivery);
    /** Queues a notification. Codes that nobody registered for are dropped unless `forced`. */
    void raise(int32_t code, const int32_t (&source)[3], const std::string& text, bool forced = false);
    /** Manual delivery: calls the callback for every queued notification; returns how many. */
    size_t deliverPending();
    /** Thread delivery: returns when every queued notification has been delivered. */
    void waitDelivered();

    std::vector<Call> transcript() const;
    void clearTranscript();
    /** Every call from now on is also appended to this file, one line each; an empty path ends that. */
    void writeTranscript(const std::string& path);

    Live live() const;

    /** Moves uptime() forward. */
    void advanceClock(long seconds);

  private:
    Simulator();
    ~Simulator();
    struct Impl;
    std::unique_ptr<Impl> _impl;
};

}  // namespace vexsim
