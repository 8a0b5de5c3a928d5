#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/export.h"

/**
 * The simulated switch, as tests and benchmarks drive it.
 *
 * One simulated switch lives in the process; it stands behind every vex_* function and behind uptime(). Its
 * state is a store of SML keys and values, which a switch file fills and scenario steps change; areas with
 * objects of their own (zoning) hang off it. Everything a test can do here a scenario file can do too: run()
 * takes the same steps. docs/simulator.md describes the files.
 *
 * All members may be called from any thread. None may be called from inside a notification, and reset(),
 * waitDelivered() and waitScenario() wait for callbacks, so not while holding a lock that a callback takes.
 */
namespace vexsim {

/** A switch file, a scenario or a step that cannot be understood; what() is one line "FILE:LINE: message". */
struct DC_EXPORT InputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** One call that the library under test made, or a scenario's note (function "note"). */
struct Call {
    std::string function; /**< "vex_smlGetBatch" */
    std::string detail;   /**< arguments in short: keys joined by "," for SML calls, names for zoning calls */
    int64_t result = 0;   /**< status returned; for calls that return a handle 0 for a handle, 1 for null */
    uint32_t handle = 0;  /**< the connection that the caller named; 0 for calls that name none */
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
    /** Calls that would bring a real library down: a null that the interface does not allow, a slot for what
     * is handed out that is not null, a connection that is none, a zoning handle that is none, an object
     * given or destroyed twice, memory released that nobody handed out. Always an error. */
    size_t misuse = 0;
};

class DC_EXPORT Simulator {
  public:
    /** The one simulated switch of the process. */
    static Simulator& instance();

    /**
     * Back to an empty switch: no keys, no faults, no connection, no registration, an empty transcript, no
     * scenario, thread delivery, clock offset 0, all counts 0. Whether a transcript is kept stays as it is.
     * Calls that hang are let go.
     */
    void reset();

    /**
     * Replaces the state (keys, faults, sessions, limits) by a switch file's. Connections, registration,
     * transcript and clock stay; calls that hang are let go. Throws InputError and changes nothing when the
     * file is malformed. A file must name the switch, and a principal that is in the fabric; a text may leave
     * out all that it is not about.
     */
    void loadSwitchFile(const std::string& path);
    void loadSwitchText(const std::string& toml, const std::string& name = "switch");

    /** One SML key, as vex_smlGet would read it (without faults); nullopt when that would fail. */
    std::optional<std::string> get(const std::string& key) const;
    /** Sets or removes one key, without raising an event. */
    void set(const std::string& key, const std::string& value);
    void erase(const std::string& key);

    /**
     * Runs scenario steps at once, in order and without their waits: [[step]] tables, or the fields of a
     * single step. Throws InputError: before the first step for text that is malformed, in the middle for a
     * step that the switch as it stands cannot carry out.
     */
    void run(const std::string& steps, const std::string& name = "steps");

    /**
     * Loads a scenario; start runs it with its waits on a thread of its own; wait returns at its end, when
     * its notifications have been delivered. A step that cannot be carried out ends it; wait then throws
     * InputError.
     */
    void loadScenarioFile(const std::string& path);
    void loadScenarioText(const std::string& toml, const std::string& name = "scenario");
    void startScenario();
    void waitScenario();
    /** As waitScenario, but gives up after that time; true when the scenario has ended. */
    bool waitScenario(int32_t timeoutMs);
    bool scenarioDone() const;

    void setDelivery(Delivery delivery);
    /** Queues a notification, unless a fault loses it. Codes that nobody registered for are dropped unless
     * `forced`. A text of 1400 bytes or more fills its field whole, without a terminator. */
    void raise(int32_t code, const int32_t (&source)[3], const std::string& text, bool forced = false);
    /** Manual delivery: calls the callback for every queued notification; returns how many. It waits for
     * none: those that a fault makes late come last. */
    size_t deliverPending();
    /** Thread delivery: returns when every queued notification has been delivered. */
    void waitDelivered();

    /** Keeps calls in memory from now on, or not (the default): in a long run they would only fill it. */
    void keepTranscript(bool on);
    /** What was kept. */
    std::vector<Call> transcript() const;
    void clearTranscript();
    /** Every call, event and step from now on is also appended to this file, one line each; an empty path
     * ends that. Throws std::runtime_error when the file cannot be opened. */
    void writeTranscript(const std::string& path);

    /** The calls that a fault makes hang, with their arguments, oldest first. */
    std::vector<Call> hanging() const;
    /** Waits until a call of this function hangs ("*": any); false when none did in that time. */
    bool waitHanging(const std::string& function = "*", int32_t timeoutMs = 60'000) const;
    /** Lets those that hang now go on, all or those of one function. A fault that is in force still makes
     * later calls hang. */
    void release(const std::string& function = "*");

    Live live() const;

    /** Whether the calling thread is inside a call of vexlib: what happens there is not the library under
     * test's. */
    static bool serving();

    /** Moves uptime() forward. */
    void advanceClock(long seconds);

  private:
    Simulator() = default;
};

}  // namespace vexsim
