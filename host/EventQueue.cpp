#include "host/EventQueue.h"

#include <chrono>
#include <cstring>
#include <exception>
#include <string>
#include <utility>

#include "datacache/event_text.h"

namespace host {

namespace {

/** A field's value in JSON; as words for a kind that this tool does not know. */
Json valueOf(const datacache::EventField& field) {
    if (const bool* const flag = field.flag()) return *flag;
    if (const uint16_t* const number = field.number()) return *number;
    if (const std::string* const text = field.text()) return *text;
    if (const auto* const list = field.list()) return *list;
    return field.words();
}

}  // namespace

EventQueue& EventQueue::instance() {
    static auto* const queue = new EventQueue;
    return *queue;
}

void EventQueue::callback(DataCacheEvent* event) {
    try {
        HostEvent copy{report::now(), datacache::eventText(*event), {{"type", event->type}}};
        copy.fields["class"] = datacache::eventName(event->type);
        datacache::visitFields(*event, [&copy](const datacache::EventField& field) {
            copy.fields[field.label()] = valueOf(field);
        });
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

void printEvent(std::ostream& out, const HostEvent& event, bool json) {
    const std::string time = report::localTime(event.time);
    if (json) {
        Json line{{"time", time}};
        line.update(event.fields);
        out << jsonLine(line) << std::endl;
    } else {
        out << time.substr(std::strlen("2026-11-21T"), std::strlen("08:33:54.134")) << "  " << event.text
            << std::endl;
    }
}

}  // namespace host
