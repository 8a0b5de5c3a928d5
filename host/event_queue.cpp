#include "host/event_queue.h"

#include <chrono>
#include <ctime>
#include <exception>
#include <utility>

#include "host/event_fields.h"

EventQueue& EventQueue::instance() {
    static auto* const queue = new EventQueue;
    return *queue;
}

void EventQueue::callback(DataCacheEvent* event) {
    try {
        HostEvent copy{{}, eventFields(*event)};
        clock_gettime(CLOCK_REALTIME, &copy.time);
        instance().add(std::move(copy));
    } catch (const std::exception&) {
        // Without memory an event is lost; a callback must not throw.
    }
}

void EventQueue::add(HostEvent event) {
    const std::lock_guard<std::mutex> guard(_mutex);
    _events.push_back(std::move(event));
    _news = true;
    _changed.notify_one();
}

void EventQueue::setStarted() {
    const std::lock_guard<std::mutex> guard(_mutex);
    _started = _news = true;
    _changed.notify_one();
}

void EventQueue::interrupt(int signal) {
    const std::lock_guard<std::mutex> guard(_mutex);
    _interrupted = signal;
    _news = true;
    _changed.notify_one();
}

std::vector<HostEvent> EventQueue::wait(int milliseconds) {
    std::unique_lock<std::mutex> guard(_mutex);
    _changed.wait_for(guard, std::chrono::milliseconds(milliseconds), [this] { return _news; });
    _news = false;
    return std::exchange(_events, {});
}

bool EventQueue::started() const {
    const std::lock_guard<std::mutex> guard(_mutex);
    return _started;
}

int EventQueue::interrupted() const {
    const std::lock_guard<std::mutex> guard(_mutex);
    return _interrupted;
}
