// Areas that have no loader yet: they count as loaded, so that a pass completes.
#include "datacache/DataCache.h"

bool DataCache::_getPortInfo() {
    return true;
}

void DataCache::_vexlibNotificationCB(vex_event_s* event) {
    if (event->code == VEX_EVENT_SWITCH_STATE_CHANGE) updateSwitch();
    if (event->code == VEX_EVENT_CHASSIS_OPERCHANGE) updateChassis();
    if (event->code == VEX_EVENT_SWITCH_FAULT_CHANGE) updateSwitch();
    if (workToDo()) wakeEvaluation();
}
