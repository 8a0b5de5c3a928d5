#include "simulator/Notifier.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "simulator/event_codes.h"

namespace vexsim {
namespace {

void fill(vex_event_s& record, const Event& event) {
    constexpr size_t kField = VEX_EVENT_TEXT_SIZE;
    record.code = event.code;
    record.source = event.source;
    std::memset(record.text, event.unterminated ? '#' : '\0', kField);
    std::memcpy(record.text, event.text.data(), std::min(event.text.size(), kField));
}

std::string describe(const Event& event) {
    const auto& word = event.source.word;
    return std::to_string(event.code) + ' ' + eventName(event.code) + " [" + std::to_string(word[0]) + ':' +
           std::to_string(word[1]) + ':' + std::to_string(word[2]) + "] " + event.text;
}

}  // namespace

void Notifier::registerCallback(vex_notification_cb callback, void* context, std::set<int32_t> codes) {
    const Lock lock(_mutex);
    if (callback != _callback || context != _context) _codes.clear();
    _callback = callback;
    _context = context;
    _codes.merge(codes);
}

void Notifier::setDelivery(Delivery delivery) {
    const Lock lock(_mutex);
    _delivery = delivery;
    if (delivery == Delivery::Thread && !_queue.empty()) startThread();
    _changed.notify_all();
}

bool Notifier::isWanted(const Event& event) const {
    const Lock lock(_mutex);
    return hasReceiver(event);
}

void Notifier::raise(Event event) {
    const char* fate = "lost-event";
    {
        const Lock lock(_mutex);
        if (!hasReceiver(event)) {
            fate = "unregistered-event";
        } else if (!event.lost) {
            _queue.emplace(std::chrono::steady_clock::now() + event.late, std::move(event));
            if (_delivery == Delivery::Thread) startThread();
            _changed.notify_all();
            return;
        }
    }
    _transcript.remark(fate, describe(event));
}

size_t Notifier::deliverPending() {
    size_t count = 0;
    Event event;
    for (;;) {
        {
            Lock lock(_mutex);
            while (_delivering) lock.wait(_changed);
            if (!claim(event)) return count;
        }
        call(event);
        ++count;
    }
}

void Notifier::waitDelivered() {
    Lock lock(_mutex);
    while (_delivery == Delivery::Thread && (_delivering || !_queue.empty())) lock.wait(_changed);
}

void Notifier::reset() {
    Lock lock(_mutex);
    _callback = nullptr;
    _context = nullptr;
    _codes.clear();
    _queue.clear();
    _delivery = Delivery::Thread;
    while (_delivering) lock.wait(_changed);
    _changed.notify_all();
}

void Notifier::startThread() {
    if (_threadStarted) return;
    // Never joined: like the real library's thread it lives as long as the process.
    std::thread([this] { run(); }).detach();
    _threadStarted = true;
}

void Notifier::run() {
    Event event;
    for (;;) {
        {
            Lock lock(_mutex);
            for (;;) {
                const bool mayDeliver = _delivery == Delivery::Thread && !_delivering && !_queue.empty();
                if (!mayDeliver) {
                    lock.wait(_changed);
                    continue;
                }
                const auto due = _queue.begin()->first;
                if (due <= std::chrono::steady_clock::now()) break;
                lock.waitUntil(_changed, due);
            }
            claim(event);
        }
        call(event);
    }
}

bool Notifier::hasReceiver(const Event& event) const {
    return _callback != nullptr && (event.forced || _codes.count(event.code) != 0);
}

bool Notifier::claim(Event& event) {
    if (_queue.empty()) return false;
    event = std::move(_queue.begin()->second);
    _queue.erase(_queue.begin());
    _delivering = true;
    return true;
}

void Notifier::call(const Event& event) {
    vex_notification_cb callback = nullptr;
    void* context = nullptr;
    {
        const Lock lock(_mutex);
        callback = _callback;
        context = _context;
    }
    _transcript.remark("event", describe(event));
    if (callback != nullptr) {
        const auto record = std::make_unique<vex_event_s>();
        fill(*record, event);
        callback(context, record.get(), nullptr);
        std::memset(record.get(), 0xa5, sizeof *record);
    }
    const Lock lock(_mutex);
    _delivering = false;
    _changed.notify_all();
}

}  // namespace vexsim
