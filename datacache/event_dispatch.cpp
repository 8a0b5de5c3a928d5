#include "common/bounded_text.h"
#include "datacache/DataCache.h"
#include "datacache/event_texts.h"

namespace {

/** Codes that the library has no names for. */
enum UnnamedCode : int32_t {
    EVENT_VOLTAGE_HIGH = 74,
    EVENT_VOLTAGE_LOW = 75,
    EVENT_MEDIA_INSERTED = 76,
    EVENT_MEDIA_REMOVED = 77,
};

}  // namespace

void DataCache::_vexlibNotificationCB(vex_event_s* event) {
    const std::string text(boundedText(event->text));
    const int32_t(&source)[3] = event->source.word;
    cim_log(CIM_LOG_TRACE, "DCACHE: dequeueing VEX_EVENT_T[%d:%d:%d] (%d) %s : %s\n", source[0], source[1],
            source[2], event->code, _tagToString(event->code), text.c_str());
    _markAreas(event->code, source[2]);
    _actOnEvent(event->code, text);
    if (workToDo()) wakeEvaluation();
}

void DataCache::_markAreas(int32_t code, int32_t port) {
    switch (code) {
        case VEX_EVENT_FABRIC_CHANGE:
        case VEX_EVENT_LSDB_CHANGE:
            updateFabric();
            break;
        case VEX_EVENT_ZONE_CHANGE:
            updateZoning();
            break;
        case VEX_EVENT_PORT_ATTR_CHANGE:
        case VEX_EVENT_PORT_CFG_CHANGE:
            if (port < 0 || port >= int32_t{getMaxRootPorts()}) break;  // a negative number is no port either
            localPortRefreshSet(port);
            updatePorts();
            break;
        case VEX_EVENT_BLADE_INSERTED:
        case VEX_EVENT_BLADE_REMOVED:
        case VEX_EVENT_BLADE_STATE_CHANGE:
            localPortRefreshSet();
            updateBlades();
            updatePorts();
            break;
        case VEX_EVENT_SWITCH_STATE_CHANGE:
            updateSwitch();
            break;
        case VEX_EVENT_CHASSIS_OPERCHANGE:
            updateChassis();
            break;
        case VEX_EVENT_USER_ACL_CHANGE:
            updateAccounts();  // counts as work to do; the accounts are loaded when the host asks
            break;
        case VEX_EVENT_FEATURE_CHANGE:
        case VEX_EVENT_SERVICES_CFG_CHANGE:
            localPortRefreshSet();
            updateChassis();
            updateSwitch();
            updatePorts();
            break;
        case VEX_EVENT_SWITCH_FAULT_CHANGE:
            updateSwitch();
            updateBlades();
            break;
        default:
            break;
    }
}

void DataCache::_actOnEvent(int32_t code, const std::string& text) {
    switch (code) {
        case VEX_EVENT_OVERHEAT_ALARM:
            _sendEnvEvent("temperature", "overtemp", overheatDescription(text));
            break;
        case EVENT_VOLTAGE_HIGH:
            _sendEnvEvent("power supply", "voltage high", voltageDescription(text, true));
            break;
        case EVENT_VOLTAGE_LOW:
            _sendEnvEvent("power supply", "voltage low", voltageDescription(text, false));
            break;
        case VEX_EVENT_USER_PASSWORD_CHANGED: {
            DCEventUserPasswdChg event(getRootSwitchWorldWideName(), text);
            _notifyHost(event);
            break;
        }
        case VEX_EVENT_USER_LOGIN_FAILURE: {
            DCEventUserLoginFailure event(getRootSwitchWorldWideName(), text);
            _notifyHost(event);
            break;
        }
        case EVENT_MEDIA_INSERTED:
            _mediaInserted(text);
            break;
        case EVENT_MEDIA_REMOVED:
            _mediaRemoved(text);
            break;
        case VEX_EVENT_CIM_CFG_CHANGE: {
            DCEventCIMChange event;
            _notifyHost(event);
            break;
        }
        case VEX_EVENT_NS_ENTRYADDED:
            _sendNameServerEvents<DCEventPortAdd>(text);
            break;
        case VEX_EVENT_NS_ENTRYDELETED:
            _sendNameServerEvents<DCEventPortRemove>(text);
            break;
        default:
            break;
    }
}

void DataCache::_sendEnvEvent(const char* component, const char* condition, const std::string& description) {
    DCEventEnvEvent event(getRootSwitchWorldWideName(), component, condition, description);
    _notifyHost(event);
}

template <class Event>
void DataCache::_sendNameServerEvents(const std::string& text) {
    size_t position = 0;
    std::string portName;
    while (nextNameServerEntry(text, position, portName)) {
        Event event(getFabric(1)->getFabricWorldWideName(), Wwn(portName), true);
        _notifyHost(event);
    }
}
