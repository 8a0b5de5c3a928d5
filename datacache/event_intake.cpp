#include <cstdio>
#include <memory>

#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/event_codes.h"
#include "datacache/event_marks.h"
#include "datacache/registration.h"
#include "datacache/wake_ups.h"

using namespace datacache;

namespace {

/** Required: four bytes less than the text field holds, so a longer text loses its end. */
constexpr size_t kKickTextBytes = 1396;

/** One notification of the switch library: dropped, unless it is told that it was queued. */
class Arrival {
  public:
    Arrival() { HealthMonitor::instance().received(); }
    ~Arrival() {
        if (!_accepted) HealthMonitor::instance().dropped();
    }
    Arrival(const Arrival&) = delete;
    Arrival& operator=(const Arrival&) = delete;

    void accept() {
        _accepted = true;
        HealthMonitor::instance().accepted();
    }

  private:
    bool _accepted = false;
};

}  // namespace

const char* DataCache::_tagToString(int code) {
    return eventCodeName(code);
}

bool DataCache::startEventMonitor(DataCacheCallback callback) {
    {
        const AccessGuard guard;
        _callback = callback;
    }
    registerForEvents(_handle);
    return true;
}

void DataCache::vexlibNotificationCB(void*, vex_event_s* event, void*) {
    Arrival arrival;
    if (event == nullptr) return;
    HealthMonitor::instance().announced(marksOf(*event));
    const AccessGuard guard;
    if (instance == nullptr) return;
    const int32_t(&source)[3] = event->source.word;
    if (!isQueuedEvent(event->code)) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Unhandled event, VEX_EVENT_T[%d:%d:%d] (%d)%s : %.*s\n", source[0],
                source[1], source[2], event->code, _tagToString(event->code), VEX_EVENT_TEXT_SIZE,
                event->text);
        return;
    }
    auto copy = std::make_unique<vex_event_s>(*event);
    cim_log(CIM_LOG_TRACE, "DCACHE: queueing VEX_EVENT_T[%d:%d:%d] (%d)%s : %.*s\n", source[0], source[1],
            source[2], event->code, _tagToString(event->code), VEX_EVENT_TEXT_SIZE, event->text);
    instance->queueVexlibEvent(copy.get());
    static_cast<void>(copy.release());  // the queue's now
    arrival.accept();
    wakeEvaluation();
}

void DataCache::queueVexlibEvent(vex_event_s* event) {
    const AccessGuard guard;
    _eventQueue.push_back(event);
    HealthMonitor::instance().queued();
}

void DataCache::vexlibEventKick(vex_eventcode_e code, vex_eventsource_s* source, char* text) {
    auto event = std::make_unique<vex_event_s>();
    event->code = code;
    if (source != nullptr) event->source = *source;
    if (text != nullptr) std::snprintf(event->text, kKickTextBytes, "%s", text);
    const int32_t(&words)[3] = event->source.word;
    cim_log(CIM_LOG_TRACE, "DCACHE: queueing - kick - VEX_EVENT_T[%d:%d:%d] (%d)%s : %s\n", words[0],
            words[1], words[2], event->code, _tagToString(event->code), event->text);
    queueVexlibEvent(event.get());
    static_cast<void>(event.release());
}
