#include "datacache/event_codes.h"

#include <array>
#include <iterator>
#include <tuple>

namespace datacache {

namespace {

constexpr const char* kOther = "VEX_EVENT_OTHER";

struct EventCode {
    int32_t code;
    const char* name;
    uint8_t registration;  ///< position in the registration list, from 1; 0: not registered for
    bool queued;
};

/** All that the cache knows of event codes. The list of registrations has an order of its own. */
constexpr EventCode kEventCodes[] = {
    // Registered but not queued: 70, as the log of user actions does not touch the cache.
    {1, "VEX_EVENT_FABRIC_CHANGE", 26, true},
    {2, "VEX_EVENT_SWITCHTOPO_CHANGE", 0, false},
    {3, "VEX_EVENT_ZONE_CHANGE", 25, true},
    {4, "VEX_EVENT_ZONE_MODE_CHANGE", 0, false},
    {5, "VEX_EVENT_ZONEDB_MERGE", 0, false},
    {6, "VEX_EVENT_NS_CHANGE", 0, false},
    {7, "VEX_EVENT_LSDB_CHANGE", 27, true},
    {8, "VEX_EVENT_SWITCH_ATTR_CHANGE", 0, false},
    {9, "VEX_EVENT_SWITCH_CFG_CHANGE", 0, false},
    {10, "VEX_EVENT_SWITCH_RESET", 0, false},
    {11, "VEX_EVENT_CHASSIS_ATTR_CHANGE", 0, false},
    {12, "VEX_EVENT_BLADE_ATTR_CHANGE", 0, false},
    {13, "VEX_EVENT_PORT_STATE_CHANGE", 0, false},
    {14, "VEX_EVENT_PORT_ATTR_CHANGE", 9, true},
    {15, "VEX_EVENT_PORT_CFG_CHANGE", 10, true},
    {16, "VEX_EVENT_NETWORK_CFG_CHANGE", 20, true},
    {17, "VEX_EVENT_SNMP_CFG_CHANGE", 0, false},
    {19, "VEX_EVENT_PORT_TEST_COMPLETE", 0, false},
    {20, "VEX_EVENT_PORT_TOPO_CHANGE", 0, false},
    {21, "VEX_EVENT_ZONEDB_MERGE_FAILED", 0, false},
    {22, "VEX_EVENT_EPORT_CONVERGE_ALARM", 0, false},
    {23, "VEX_EVENT_SWITCH_ACCESS_ALARM", 0, false},
    {24, "VEX_EVENT_FABRIC_NS_CHANGE", 0, false},
    {25, "VEX_EVENT_GENERIC_ALARM", 0, false},
    {26, "VEX_EVENT_GENERIC_USER_EVENT", 0, false},
    {27, "VEX_EVENT_BLADE_CFG_CHANGE", 0, false},
    {28, "VEX_EVENT_BLADE_INSERTED", 4, true},
    {29, "VEX_EVENT_BLADE_REMOVED", 6, true},
    {30, "VEX_EVENT_PORT_COUNTERS_ZERO", 0, false},
    {31, "VEX_EVENT_SWITCH_OPERCHANGE", 0, false},
    {32, "VEX_EVENT_SWITCH_STATE_CHANGE", 1, true},
    {33, "VEX_EVENT_CHASSIS_OPERCHANGE", 13, true},
    {34, "VEX_EVENT_PWR_SPLY_BAD_ALARM", 0, false},
    {35, "VEX_EVENT_PWR_SPLY_OK_ALARM", 0, false},
    {36, "VEX_EVENT_FAN_BAD_ALARM", 0, false},
    {37, "VEX_EVENT_FAN_OK_ALARM", 0, false},
    {38, "VEX_EVENT_BLADE_OPERCHANGE", 0, false},
    {39, "VEX_EVENT_BLADE_STATE_CHANGE", 5, true},
    {40, "VEX_EVENT_OVERHEAT_ALARM", 14, true},
    {41, "VEX_EVENT_OVERWARM_ALARM", 0, false},
    {42, "VEX_EVENT_TEMP_OK_ALARM", 0, false},
    {43, "VEX_EVENT_SECURITY_CHANGE", 0, false},
    {44, "VEX_EVENT_SECURITY_CFG_CHANGE", 0, false},
    {45, "VEX_EVENT_FDMI_CLEARED", 0, false},
    {46, "VEX_EVENT_FDMI_HBA_ADD", 0, false},
    {47, "VEX_EVENT_FDMI_HBA_MODIFY", 0, false},
    {48, "VEX_EVENT_FDMI_HBA_DELETE", 0, false},
    {49, "VEX_EVENT_DOMAINID_CHANGE", 0, false},
    {50, "VEX_EVENT_USER_ACL_CHANGE", 8, true},
    {51, "VEX_EVENT_TIMEZONE_CHANGE", 0, false},
    {52, "VEX_EVENT_FEATURE_CHANGE", 2, true},
    {53, "VEX_EVENT_CLI_COMMAND_DONE", 0, false},
    {54, "VEX_EVENT_CREATE_SUPPORT_DONE", 0, false},
    {55, "VEX_EVENT_MEDIA_SPEED_ALARM", 0, false},
    {56, "VEX_EVENT_RADIUS_CFG_CHANGE", 0, false},
    {57, "VEX_EVENT_SERVICES_CFG_CHANGE", 3, true},
    {60, "VEX_EVENT_PORT_TEST_COMPLETE_2", 0, false},
    {61, "VEX_EVENT_BLADE_TEST_COMPLETE", 0, false},
    {62, "VEX_EVENT_SWITCH_TEST_COMPLETE", 0, false},
    {66, "VEX_EVENT_CPU_SWITCHOVER", 0, false},
    {67, "VEX_EVENT_SWITCH_FAULT", 0, false},
    {68, "VEX_EVENT_IP_ADDRESS_CHANGE", 21, true},
    {69, "VEX_EVENT_IPV6_ADDRESS_CHANGE", 22, true},
    {70, "VEX_EVENT_USERLOG_UPDATE", 28, false},
    {72, "VEX_EVENT_USER_PASSWORD_CHANGED", 11, true},
    {73, "VEX_EVENT_USER_LOGIN_FAILURE", 12, true},
    {74, kOther, 15, true},
    {75, kOther, 16, true},
    {76, kOther, 17, true},
    {77, kOther, 18, true},
    {78, "VEX_EVENT_CIM_CFG_CHANGE", 19, true},
    {79, "VEX_EVENT_NS_ENTRYADDED", 23, true},
    {80, "VEX_EVENT_NS_ENTRYDELETED", 24, true},
    {81, "VEX_EVENT_BLADE_STATUS_CHANGE", 0, false},
    {82, "VEX_EVENT_SWITCH_FAULT_CHANGE", 7, true},
    {253, "VEX_EVENT_CONNECTION_LOST", 0, false},
    {254, "VEX_EVENT_CONNECTION_RESTORED", 0, false},
};

constexpr EventRegistrations makeRegistrations() {
    EventRegistrations list{};
    for (const EventCode& row : kEventCodes) {
        if (row.registration != 0) list[row.registration - 1U] = {row.code, 0};
    }
    return list;
}

constexpr bool everyPlaceTakenOnce() {
    size_t taken[std::tuple_size<EventRegistrations>::value] = {};
    for (const EventCode& row : kEventCodes) {
        if (row.registration > std::size(taken)) return false;
        if (row.registration != 0) ++taken[row.registration - 1U];
    }
    for (const size_t times : taken) {
        if (times != 1) return false;
    }
    return true;
}
static_assert(everyPlaceTakenOnce(), "each place of the registration list belongs to one code");

const EventCode* findEventCode(int32_t code) {
    for (const EventCode& row : kEventCodes) {
        if (row.code == code) return &row;
    }
    return nullptr;
}

}  // namespace

const char* eventCodeName(int32_t code) {
    const EventCode* row = findEventCode(code);
    return row == nullptr ? kOther : row->name;
}

bool isQueuedEvent(int32_t code) {
    const EventCode* row = findEventCode(code);
    return row != nullptr && row->queued;
}

EventRegistrations eventRegistrations() {
    static constexpr EventRegistrations kList = makeRegistrations();
    return kList;
}

}  // namespace datacache
