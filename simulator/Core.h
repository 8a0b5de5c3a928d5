#pragma once

#include <set>
#include <string>
#include <vector>

#include "simulator/HangingCalls.h"
#include "simulator/Mutex.h"
#include "simulator/Notifier.h"
#include "simulator/ScenarioRunner.h"
#include "simulator/Simulator.h"
#include "simulator/Switch.h"
#include "simulator/TextHeap.h"
#include "simulator/Transcript.h"
#include "simulator/zoning/Objects.h"

namespace vexsim {

/**
 * What the one simulated switch of the process consists of.
 *
 * `mutex` guards the switch. Notifier, transcript, texts, scenario and the list of hanging calls guard
 * themselves with locks that are taken after it, and call nothing of the switch while they hold them.
 */
struct Core {
    static Core& instance();

    /** Runs one action and sends off what it gave off. Throws StepError. */
    void perform(const Action& action) DC_EXCLUDES(mutex);
    void sendOutbox() DC_REQUIRES(mutex);
    /** Sends a notification, if faults let it through. */
    void send(Event event) DC_REQUIRES(mutex);

    Mutex mutex;
    Switch device DC_GUARDED_BY(mutex);
    std::set<uint32_t> handles DC_GUARDED_BY(mutex);       /**< connections handed out */
    uint32_t nextHandle DC_GUARDED_BY(mutex) = 0x5e000001; /**< never one that was handed out before */
    size_t misuse DC_GUARDED_BY(mutex) = 0;                /**< see Live */
    ZoningObjects zoning DC_GUARDED_BY(mutex){misuse};

    Transcript transcript;
    HangingCalls hanging;
    Notifier notifier{transcript};
    TextHeap texts;
    ScenarioRunner scenario;

  private:
    Core() = default;
};

/**
 * One call of the library, from entry to return: takes the lock, waits (without it) as long as faults delay
 * it, says what faults do to it, and records it.
 *
 *     ApiCall call("vex_fzsGetZoneset", {name}, handle);
 *     if (call.misused(name == nullptr)) return call.refusal();
 *     ... call.device() ...
 *     return call.done(0);
 */
class DC_SCOPED_CAPABILITY ApiCall {
  public:
    /** `keys` are what fault rules match with their key pattern; joined by "," they are the recorded detail.
     * A `handle` that no connection has is a misuse, and refused. */
    ApiCall(const char* function, std::vector<std::string> keys, std::optional<uint32_t> handle = {})
        DC_ACQUIRE(Core::instance().mutex);
    /** The same for texts of the caller's; a null counts as an empty one. */
    ApiCall(const char* function, std::initializer_list<const char*> texts,
            std::optional<uint32_t> handle = {}) DC_ACQUIRE(Core::instance().mutex);
    ~ApiCall() DC_RELEASE();
    ApiCall(const ApiCall&) = delete;
    ApiCall& operator=(const ApiCall&) = delete;

    /** True when the call has its result already, from a fault or a misuse; refusal() records and returns it.
     */
    bool refused() const { return _effect.result.has_value() && !_effect.carriedOut; }
    /** The same; counts a misuse first where the caller gave what would bring a real library down. */
    bool misused(bool wrong) {
        if (wrong) countMisuse();
        return wrong || refused();
    }
    int32_t refusal() { return done(*_effect.result); }

    /** True when a fault makes the call return no handle or no text; ask before making one. */
    bool nulled() const { return _effect.null; }
    /** Faults on one of the keys; with faultless() there are none on any. */
    Effect onKey(const std::string& key) const { return _hits.onKey(key); }
    bool faultless() const { return _hits.none(); }

    const std::vector<std::string>& keys() const { return _keys; }
    Switch& device() { return _core.device; }
    /** Takes a new connection's handle, or the one that a fault gives it; 0 stands for none. */
    uint32_t connect();
    ZoningObjects& zoning() { return _core.zoning; }

    /** Adds to what is recorded; for what is known only inside the call, so faults do not match it. */
    void about(const std::string& text) { _keys.push_back(text); }

    /** Records the call with this result and returns it; or with a fault's, where that lies about a call that
     * was carried out. */
    int32_t done(int32_t result);
    int32_t done(Status status) { return done(static_cast<int32_t>(status)); }
    /** The same for a call that returns a handle. */
    void* doneHandle(void* handle);

    /** Whether the thread is inside a call. */
    static bool serving();
    /** The thread is inside a call from here on, for what is copied before its ApiCall is made. */
    static void begin();

  private:
    void countMisuse(Status status = BadArgument);
    void linger();

    Core& _core;
    Lock _lock;
    const char* _function;
    std::vector<std::string> _keys;
    Hits _hits;
    Effect _effect;
    uint32_t _handle; /**< the connection, 0 for calls that name none */
};

/** A slot for what is handed out must be there, and null: what it held would be lost. */
template <class Memory>
bool notEmpty(Memory** slot) {
    return slot == nullptr || *slot != nullptr;
}

}  // namespace vexsim
