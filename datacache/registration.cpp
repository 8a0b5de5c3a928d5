#include "datacache/registration.h"

#include "common/cim_log.h"
#include "datacache/DataCache.h"
#include "datacache/HealthMonitor.h"
#include "datacache/event_codes.h"

namespace datacache {

namespace {

/** Registers for the first `count` codes of the list; gives how many of them were taken. */
size_t registerFor(uint32_t handle, EventRegistrations& list, size_t count) {
    const int32_t result =
        CallWatch("vex_enRegisterForEventList")
            .done(vex_enRegisterForEventList(handle, DataCache::vexlibNotificationCB, nullptr, list.data(),
                                             static_cast<int32_t>(count)));
    if (result != 0) {
        cim_log(CIM_LOG_TRACE, "DCACHE: Unable to register for events via vex_enRegisterForEvents\n");
    }
    size_t taken = 0;
    for (size_t i = 0; i < count; ++i) {
        if (list[i].result != 0) {
            cim_log(CIM_LOG_TRACE, "DCACHE: Unable to register for event %d\n", list[i].code);
        } else if (result == 0) {
            ++taken;
        }
    }
    HealthMonitor::instance().registered(result, list, count);
    return taken;
}

}  // namespace

void registerForEvents(uint32_t handle) {
    EventRegistrations list = eventRegistrations();
    registerFor(handle, list, list.size());
}

bool registerRefused(uint32_t handle) {
    EventRegistrations list{};
    const size_t count = HealthMonitor::instance().refusedCodes(list);
    return count != 0 && registerFor(handle, list, count) != 0;
}

}  // namespace datacache
