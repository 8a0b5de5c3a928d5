#include "common/bounded_text.h"
#include "datacache/DataCache.h"
#include "datacache/event_texts.h"
#include "datacache/reports.h"
#include "datacache/transceivers.h"

using namespace datacache;

namespace {

/** Codes that the library has no names for. */
enum UnnamedCode : int32_t {
    EVENT_VOLTAGE_HIGH = 74,
    EVENT_VOLTAGE_LOW = 75,
    EVENT_MEDIA_INSERTED = 76,
    EVENT_MEDIA_REMOVED = 77,
};

/** Marks what the event touches for the areas' loads. */
void markAreas(DataCache& cache, int32_t code, int32_t port) {
    switch (code) {
        case VEX_EVENT_FABRIC_CHANGE:
        case VEX_EVENT_LSDB_CHANGE:
            cache.updateFabric();
            break;
        case VEX_EVENT_ZONE_CHANGE:
            cache.updateZoning();
            break;
        case VEX_EVENT_PORT_ATTR_CHANGE:
        case VEX_EVENT_PORT_CFG_CHANGE:
            if (port < 0 || port >= int32_t{cache.getMaxRootPorts()}) break;
            cache.localPortRefreshSet(port);
            cache.updatePorts();
            break;
        case VEX_EVENT_BLADE_INSERTED:
        case VEX_EVENT_BLADE_REMOVED:
        case VEX_EVENT_BLADE_STATE_CHANGE:
            cache.localPortRefreshSet();
            cache.updateBlades();
            cache.updatePorts();
            break;
        case VEX_EVENT_SWITCH_STATE_CHANGE:
            cache.updateSwitch();
            break;
        case VEX_EVENT_CHASSIS_OPERCHANGE:
            cache.updateChassis();
            break;
        case VEX_EVENT_USER_ACL_CHANGE:
            cache.updateAccounts();  // counts as work to do; the accounts are loaded when the host asks
            break;
        case VEX_EVENT_FEATURE_CHANGE:
        case VEX_EVENT_SERVICES_CFG_CHANGE:
            cache.localPortRefreshSet();
            cache.updateChassis();
            cache.updateSwitch();
            cache.updatePorts();
            break;
        case VEX_EVENT_SWITCH_FAULT_CHANGE:
            cache.updateSwitch();
            cache.updateBlades();
            break;
        default:
            break;
    }
}

/** Sends one event a name-server entry, in the entries' order. */
template <class Event>
void sendNameServerEvents(DataCacheCallback host, const FabricCache& fabric, const std::string& text) {
    size_t position = 0;
    std::string portName;
    while (nextNameServerEntry(text, position, portName)) {
        notify(host, Event(fabric.getFabricWorldWideName(), Wwn(portName), true));
    }
}

/** Sends what the event says itself; `name` is the local switch's. */
void sendEvents(DataCacheCallback host, const Wwn& name, const FabricCache& fabric, int32_t code,
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

void DataCache::_vexlibNotificationCB(vex_event_s* event) {
    const std::string text(boundedText(event->text));
    const int32_t(&source)[3] = event->source.word;
    cim_log(CIM_LOG_TRACE, "DCACHE: dequeueing VEX_EVENT_T[%d:%d:%d] (%d) %s : %s\n", source[0], source[1],
            source[2], event->code, _tagToString(event->code), text.c_str());
    markAreas(*this, event->code, source[2]);
    if (event->code == EVENT_MEDIA_INSERTED) mediaInserted(_transceivers, text);
    if (event->code == EVENT_MEDIA_REMOVED) mediaRemoved(_transceivers, text);
    sendEvents(_callback, _switchState.switchWwn, _fabric, event->code, text);
    if (workToDo()) wakeEvaluation();
}
