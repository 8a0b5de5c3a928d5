#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <thread>

#include "simulator/Mutex.h"
#include "simulator/Simulator.h"
#include "simulator/Transcript.h"
#include "vexlib/vexlib.h"

namespace vexsim {

/** A notification on its way. */
struct Event {
    int32_t code = 0;
    vex_eventsource_s source{};
    std::string text;          /**< longer than the field: cut to fill it whole, without a terminator */
    bool unterminated = false; /**< the rest of the field is filled up, without a terminator */
    bool forced = false;       /**< delivered although its code was not registered */
    bool lost = false;         /**< never delivered */
    std::chrono::milliseconds late{0}; /**< delivered so much later; others pass it by */
};

/**
 * Delivers notifications to the registered callback, one at a time and in the order in which they are due.
 *
 * The callback is called with none of the simulator's locks held, so it may wait for any lock of the library.
 * The record that it gets is spoiled and freed when it returns: a library that keeps the pointer is caught.
 */
class Notifier {
  public:
    explicit Notifier(Transcript& transcript) : _transcript(transcript) {}

    /** Adds codes where the same callback is registered with the same context; any other is replaced. */
    void registerCallback(vex_notification_cb callback, void* context, std::set<int32_t> codes)
        DC_EXCLUDES(_mutex);
    void setDelivery(Delivery delivery) DC_EXCLUDES(_mutex);
    /** Whether somebody registered for its code, or it goes without. */
    bool isWanted(const Event& event) const DC_EXCLUDES(_mutex);
    /** Queues an event, or drops it when it is not wanted or lost. */
    void raise(Event event) DC_EXCLUDES(_mutex);
    size_t deliverPending() DC_EXCLUDES(_mutex);
    void waitDelivered() DC_EXCLUDES(_mutex);
    /** No registration, empty queue, thread delivery; returns when no callback runs any more. */
    void reset() DC_EXCLUDES(_mutex);

  private:
    void run() DC_EXCLUDES(_mutex);
    void startThread() DC_REQUIRES(_mutex);
    bool hasReceiver(const Event& event) const DC_REQUIRES(_mutex);
    bool claim(Event& event) DC_REQUIRES(_mutex);
    void call(const Event& event) DC_EXCLUDES(_mutex);

    Transcript& _transcript;
    mutable Mutex _mutex;
    std::condition_variable _changed;
    Delivery _delivery DC_GUARDED_BY(_mutex) = Delivery::Thread;
    vex_notification_cb _callback DC_GUARDED_BY(_mutex) = nullptr;
    void* _context DC_GUARDED_BY(_mutex) = nullptr;
    std::set<int32_t> _codes DC_GUARDED_BY(_mutex);
    std::multimap<std::chrono::steady_clock::time_point, Event> _queue
        DC_GUARDED_BY(_mutex); /**< by due time */
    bool _delivering DC_GUARDED_BY(_mutex) = false;
    bool _threadStarted DC_GUARDED_BY(_mutex) = false;
};

}  // namespace vexsim
