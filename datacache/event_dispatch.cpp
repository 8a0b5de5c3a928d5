#include "common/bounded_text.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/SnapshotPublisher.h"
#include "datacache/event_codes.h"
#include "datacache/event_marks.h"
#include "datacache/event_texts.h"
#include "datacache/reports.h"
#include "datacache/transceivers.h"
#include "datacache/wake_ups.h"

using namespace datacache;

namespace {

/** Sends one event a name-server entry, in the entries' order. */
template <class Event>
void sendNameServerEvents(const DataCacheCallback& host, const FabricCache& fabric, const std::string& text) {
    size_t position = 0;
    std::string portName;
    while (nextNameServerEntry(text, position, portName)) {
        notify(host, Event(fabric.getFabricWorldWideName(), Wwn(portName), true));
    }
}

/** Sends what the event says itself; `name` is the local switch's. */
void sendEvents(const DataCacheCallback& host, const Wwn& name, const FabricCache& fabric, int32_t code,
                const std::string& text) {
    switch (code) {
        case VEX_EVENT_OVERHEAT_ALARM:
            return notify(host, DCEventEnvEvent(name, "temperature", "overtemp", overheatDescription(text)));
        case EVENT_VOLTAGE_HIGH:
            return notify(
                host, DCEventEnvEvent(name, "power supply", "voltage high", voltageDescription(text, true)));
        case EVENT_VOLTAGE_LOW:
            return notify(
                host, DCEventEnvEvent(name, "power supply", "voltage low", voltageDescription(text, false)));
        case VEX_EVENT_USER_PASSWORD_CHANGED:
            return notify(host, DCEventUserPasswdChg(name, text));
        case VEX_EVENT_USER_LOGIN_FAILURE:
            return notify(host, DCEventUserLoginFailure(name, text));
        case VEX_EVENT_CIM_CFG_CHANGE:
            return notify(host, DCEventCIMChange());
        case VEX_EVENT_NS_ENTRYADDED:
            return sendNameServerEvents<DCEventPortAdd>(host, fabric, text);
        case VEX_EVENT_NS_ENTRYDELETED:
            return sendNameServerEvents<DCEventPortRemove>(host, fabric, text);
        default:
            return;
    }
}

}  // namespace

void DataCache::_markFor(const vex_event_s& event, const EventMarks& marks) {
    if (marks.port >= 0 && marks.port < int32_t{_portState.portCount}) {
        localPortRefreshSet(marks.port);
    } else if (marks.has(CacheArea::Ports) && !marks.allPorts) {
        return;  // a port that is not scanned
    }
    if (marks.allPorts) localPortRefreshSet();
    for (const CacheArea area : kAllCacheAreas) {
        if (marks.has(area)) _markArea(area, {MarkCause::Event, event.code});
    }
}

void DataCache::_vexlibNotificationCB(vex_event_s* event) {
    const std::string text(boundedText(event->text));
    const int32_t(&source)[3] = event->source.word;
    cim_log(CIM_LOG_TRACE, "DCACHE: dequeueing VEX_EVENT_T[%d:%d:%d] (%d) %s : %s\n", source[0], source[1],
            source[2], event->code, _tagToString(event->code), text.c_str());
    const EventMarks marks = marksOf(*event);
    HealthMonitor::instance().announced(marks);
    _markFor(*event, marks);
    if (event->code == EVENT_MEDIA_INSERTED || event->code == EVENT_MEDIA_REMOVED)
        SnapshotPublisher::instance().touchTransceivers();
    if (event->code == EVENT_MEDIA_INSERTED) mediaInserted(_transceivers, text);
    if (event->code == EVENT_MEDIA_REMOVED) mediaRemoved(_transceivers, text);
    sendEvents(_callback, _switchState.switchWwn, _fabric, event->code, text);
    if (workToDo()) wakeEvaluation();
}
