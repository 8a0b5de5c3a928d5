#include "simulator/Core.h"

#include <cassert>
#include <chrono>
#include <thread>
#include <utility>

#include "simulator/event_codes.h"

namespace vexsim {
namespace {

thread_local bool inCall = false;

/** From here on the thread is inside a call, and what it does is the switch's. */
Core& enter() {
    inCall = true;
    return Core::instance();
}

std::vector<std::string> copyOf(std::initializer_list<const char*> texts) {
    std::vector<std::string> copies;
    for (const char* text : texts) copies.emplace_back(text == nullptr ? "" : text);
    return copies;
}

}  // namespace

Core& Core::instance() {
    // Never destroyed: threads of the library and of the simulator run until the process is gone.
    static Core* const core = new Core;
    return *core;
}

void Core::perform(const Action& action) {
    const Lock lock(mutex);
    try {
        action(device);
    } catch (const StepError&) {
        sendOutbox();
        throw;
    }
    sendOutbox();
}

void Core::sendOutbox() {
    Switch::Outbox outbox = device.takeOutbox();
    for (const std::string& note : outbox.notes) transcript.note(note);
    for (Event& event : outbox.events) send(std::move(event));
    for (const std::string& function : outbox.releases) hanging.release(function);
}

void Core::send(Event event) {
    if (notifier.isWanted(event)) {  // faults count what would arrive
        const Effect effect =
            device.faults.hit(kNotification, {std::to_string(event.code), eventName(event.code)}).onCall();
        event.lost = effect.lost;
        event.late = std::chrono::milliseconds(effect.delayMs);
    }
    notifier.raise(std::move(event));
}

ApiCall::ApiCall(const char* function, std::vector<std::string> keys,
                 std::optional<uint32_t> handle) DC_NO_THREAD_SAFETY_ANALYSIS
    : _core(enter()),
      _lock(_core.mutex),
      _function(function),
      _keys(std::move(keys)),
      _hits(_core.device.faults.hit(function, _keys)),
      _effect(_hits.onCall()),
      _handle(handle.value_or(0)) {
    assert(isFunction(_function));  // or no fault rule could name it
    _core.device.clockOffset += static_cast<long>(_effect.uptimeSeconds);
    if (handle && _core.handles.count(*handle) == 0) countMisuse(BadHandle);
    if (_effect.delayMs > 0 || _effect.hang) linger();
}

ApiCall::ApiCall(const char* function, std::initializer_list<const char*> texts,
                 std::optional<uint32_t> handle)
    : ApiCall(function, (enter(), copyOf(texts)), handle) {}

ApiCall::~ApiCall() {
    inCall = false;
}

void ApiCall::begin() {
    enter();
}

bool ApiCall::serving() {
    return inCall;
}

uint32_t ApiCall::connect() DC_NO_THREAD_SAFETY_ANALYSIS {
    uint32_t& next = _core.nextHandle;
    while (!_effect.handle && _core.handles.count(next) != 0) ++next;
    const uint32_t handle = _effect.handle ? *_effect.handle : next++;
    if (handle != 0) _core.handles.insert(handle);
    return handle;
}

void ApiCall::countMisuse(Status status) DC_NO_THREAD_SAFETY_ANALYSIS {
    ++_core.misuse;
    if (!_effect.result) _effect.result = static_cast<int32_t>(status);
    _effect.carriedOut = false;
}

void ApiCall::linger() DC_NO_THREAD_SAFETY_ANALYSIS {
    std::optional<HangingCalls::Place> place;
    if (_effect.hang) {
        Call call{_function, joined(_keys), 0, _handle};
        _core.transcript.remark("hang", call.function + ' ' + call.detail);
        place = _core.hanging.enter(std::move(call));
    }
    _lock.unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(_effect.delayMs));
    if (place) _core.hanging.wait(*place);
    _lock.lock();
}

int32_t ApiCall::done(int32_t result) DC_NO_THREAD_SAFETY_ANALYSIS {
    result = _effect.result.value_or(result);
    _core.transcript.call(_function, _keys, result, _handle);
    _core.sendOutbox();
    return result;
}

void* ApiCall::doneHandle(void* handle) DC_NO_THREAD_SAFETY_ANALYSIS {
    _core.transcript.call(_function, _keys, handle == nullptr ? 1 : 0, _handle);
    _core.sendOutbox();
    return handle;
}

}  // namespace vexsim
