/*
 * vexlib: the switch management library, as this project imports it.
 *
 * The library is closed. The process that hosts the cache provides it: on a switch the real one, on a desk
 * the simulated switch. This header declares records, codes and functions, and defines none of them. It is
 * valid C and C++.
 *
 * Conventions: a function that returns a status returns 0 for success. A function that returns a handle
 * returns null for "none" or for failure. No argument may be null, the context of a callback and an empty
 * list apart: the library reads and writes without asking. Texts are NUL-terminated, but a caller must not
 * rely on that for anything that the library fills in: read every field with its bound. A slot for a text, a
 * reply or a zoneset that the library hands out is null at the call.
 */
#ifndef VEX_VEXLIB_H
#define VEX_VEXLIB_H

#include <stdint.h>

#ifdef __cplusplus
/* A fixed underlying type makes every 32-bit value a valid one: codes come from outside. */
#define VEX_ENUM(name) enum name : int32_t
#define VEX_ENUM_NAME(name)
extern "C" {
#else
#define VEX_ENUM(name) enum name
#define VEX_ENUM_NAME(name) typedef enum name name;
#endif

/* ---- Connection ---- */

/**
 * Connects to the switch `host` as `client`; the meaning of the third text is the library's own, callers pass
 * "". On success stores the connection handle, which is not 0, and returns 0.
 */
int32_t vex_IPConnect(const char* host, const char* client, const char* options, uint32_t* handle);

/* ---- Events ---- */

/** Codes of the switch events. The codes 74 to 77 have no name in the library. */
VEX_ENUM(vex_eventcode_e){
    VEX_EVENT_FABRIC_CHANGE = 1,
    VEX_EVENT_SWITCHTOPO_CHANGE = 2,
    VEX_EVENT_ZONE_CHANGE = 3,
    VEX_EVENT_ZONE_MODE_CHANGE = 4,
    VEX_EVENT_ZONEDB_MERGE = 5,
    VEX_EVENT_NS_CHANGE = 6,
    VEX_EVENT_LSDB_CHANGE = 7,
    VEX_EVENT_SWITCH_ATTR_CHANGE = 8,
    VEX_EVENT_SWITCH_CFG_CHANGE = 9,
    VEX_EVENT_SWITCH_RESET = 10,
    VEX_EVENT_CHASSIS_ATTR_CHANGE = 11,
    VEX_EVENT_BLADE_ATTR_CHANGE = 12,
    VEX_EVENT_PORT_STATE_CHANGE = 13,
    VEX_EVENT_PORT_ATTR_CHANGE = 14,
    VEX_EVENT_PORT_CFG_CHANGE = 15,
    VEX_EVENT_NETWORK_CFG_CHANGE = 16,
    VEX_EVENT_SNMP_CFG_CHANGE = 17,
    VEX_EVENT_PORT_TEST_COMPLETE = 19,
    VEX_EVENT_PORT_TOPO_CHANGE = 20,
    VEX_EVENT_ZONEDB_MERGE_FAILED = 21,
    VEX_EVENT_EPORT_CONVERGE_ALARM = 22,
    VEX_EVENT_SWITCH_ACCESS_ALARM = 23,
    VEX_EVENT_FABRIC_NS_CHANGE = 24,
    VEX_EVENT_GENERIC_ALARM = 25,
    VEX_EVENT_GENERIC_USER_EVENT = 26,
    VEX_EVENT_BLADE_CFG_CHANGE = 27,
    VEX_EVENT_BLADE_INSERTED = 28,
    VEX_EVENT_BLADE_REMOVED = 29,
    VEX_EVENT_PORT_COUNTERS_ZERO = 30,
    VEX_EVENT_SWITCH_OPERCHANGE = 31,
    VEX_EVENT_SWITCH_STATE_CHANGE = 32,
    VEX_EVENT_CHASSIS_OPERCHANGE = 33,
    VEX_EVENT_PWR_SPLY_BAD_ALARM = 34,
    VEX_EVENT_PWR_SPLY_OK_ALARM = 35,
    VEX_EVENT_FAN_BAD_ALARM = 36,
    VEX_EVENT_FAN_OK_ALARM = 37,
    VEX_EVENT_BLADE_OPERCHANGE = 38,
    VEX_EVENT_BLADE_STATE_CHANGE = 39,
    VEX_EVENT_OVERHEAT_ALARM = 40,
    VEX_EVENT_OVERWARM_ALARM = 41,
    VEX_EVENT_TEMP_OK_ALARM = 42,
    VEX_EVENT_SECURITY_CHANGE = 43,
    VEX_EVENT_SECURITY_CFG_CHANGE = 44,
    VEX_EVENT_FDMI_CLEARED = 45,
    VEX_EVENT_FDMI_HBA_ADD = 46,
    VEX_EVENT_FDMI_HBA_MODIFY = 47,
    VEX_EVENT_FDMI_HBA_DELETE = 48,
    VEX_EVENT_DOMAINID_CHANGE = 49,
    VEX_EVENT_USER_ACL_CHANGE = 50,
    VEX_EVENT_TIMEZONE_CHANGE = 51,
    VEX_EVENT_FEATURE_CHANGE = 52,
    VEX_EVENT_CLI_COMMAND_DONE = 53,
    VEX_EVENT_CREATE_SUPPORT_DONE = 54,
    VEX_EVENT_MEDIA_SPEED_ALARM = 55,
    VEX_EVENT_RADIUS_CFG_CHANGE = 56,
    VEX_EVENT_SERVICES_CFG_CHANGE = 57,
    VEX_EVENT_PORT_TEST_COMPLETE_2 = 60,
    VEX_EVENT_BLADE_TEST_COMPLETE = 61,
    VEX_EVENT_SWITCH_TEST_COMPLETE = 62,
    VEX_EVENT_CPU_SWITCHOVER = 66,
    VEX_EVENT_SWITCH_FAULT = 67,
    VEX_EVENT_IP_ADDRESS_CHANGE = 68,
    VEX_EVENT_IPV6_ADDRESS_CHANGE = 69,
    VEX_EVENT_USERLOG_UPDATE = 70,
    VEX_EVENT_USER_PASSWORD_CHANGED = 72,
    VEX_EVENT_USER_LOGIN_FAILURE = 73,
    VEX_EVENT_CIM_CFG_CHANGE = 78,
    VEX_EVENT_NS_ENTRYADDED = 79,
    VEX_EVENT_NS_ENTRYDELETED = 80,
    VEX_EVENT_BLADE_STATUS_CHANGE = 81,
    VEX_EVENT_SWITCH_FAULT_CHANGE = 82,
    VEX_EVENT_CONNECTION_LOST = 253,
    VEX_EVENT_CONNECTION_RESTORED = 254,
};
VEX_ENUM_NAME(vex_eventcode_e)

/** What an event is about; the third word is the port number where the event concerns a port. */
typedef struct vex_eventsource_s {
    int32_t word[3];
} vex_eventsource_s;

enum { VEX_EVENT_TEXT_SIZE = 1400 };

/** One switch event as the library delivers it: 1416 bytes. */
typedef struct vex_event_s {
    int32_t code; /**< a vex_eventcode_e, or any other value */
    vex_eventsource_s source;
    char text[VEX_EVENT_TEXT_SIZE];
} vex_event_s;

/** Receives an event on the library's own thread. The event stays the library's. */
typedef void (*vex_notification_cb)(void* context, vex_event_s* event, void* user);

/** One entry of a registration list: 8 bytes. `result` is 0 where the event could be registered. */
typedef struct vex_eventreg_s {
    int32_t code;
    int32_t result;
} vex_eventreg_s;

/** Registers `callback` for the `count` events of `list` and fills their results. Returns 0 for success. */
int32_t vex_enRegisterForEventList(uint32_t handle, vex_notification_cb callback, void* context,
                                   vex_eventreg_s* list, int32_t count);

/* ---- Switch management layer (SML) ---- */

enum { VEX_SML_KEY_SIZE = 256, VEX_SML_VALUE_SIZE = 256 };

/** One key with its value and its own status: 516 bytes, packed back to back in arrays. */
typedef struct vex_smlrequest_s {
    char key[VEX_SML_KEY_SIZE];
    char value[VEX_SML_VALUE_SIZE];
    uint32_t status;
} vex_smlrequest_s;

/** Reads `count` keys: fills value and status of each record. Returns 0 when the batch was carried out. */
int32_t vex_smlGetBatch(uint32_t handle, vex_smlrequest_s* records, int32_t count);

/** Writes `count` keys: fills the status of each record. Returns 0 when the batch was carried out. */
int32_t vex_smlSetBatch(uint32_t handle, vex_smlrequest_s* records, int32_t count);

/**
 * Reads one key. On success returns 0 and stores a text that the caller releases with vex_libFreeMemory. The
 * second out slot has no meaning that is known here; it is 0 at the call, and callers do not read it.
 */
int32_t vex_smlGet(uint32_t handle, const char* key, char** value, uint32_t* extra);

/**
 * Writes one key, or runs one command. The library writes to the reply slot, which must be there; what it
 * writes has no meaning that is known here, and no caller reads it.
 */
int32_t vex_smlSet(uint32_t handle, const char* key, void** reply);

/** Releases a text that vex_smlGet handed out. Returns 0 for success. */
int32_t vex_libFreeMemory(void* memory);

/* ---- Zoning ---- */
/*
 * Zonesets, zones, aliases and members are opaque objects. A container owns what was added to it: an Add that
 * succeeds takes the object over, one that fails leaves it with the caller; a Remove or Delete destroys the
 * container's object. Handles that a List or Find call returns stay the container's. Zonesets hold zones and
 * aliases of their own: two zonesets never share an object.
 */

enum { VEX_ZONING_NAME_SIZE = 65 }; /**< 64 characters and the terminator */

/** The fabric's zoning limits. */
typedef struct vex_fzs_limits_s {
    int32_t max_zonesets;
    int32_t max_zones;
    int32_t max_members;
    int32_t max_zones_per_zoneset;
    int32_t max_members_per_zone;
    int32_t max_aliases;
    int32_t max_members_per_alias;
} vex_fzs_limits_s;

VEX_ENUM(vex_fzs_zonemember_type_e){
    VEX_ZMT_UNKNOWN = 0, VEX_ZMT_WWN = 1,      VEX_ZMT_DOMAIN_PORT = 2,
    VEX_ZMT_FCID = 3,    VEX_ZMT_NODENAME = 4, VEX_ZMT_ALIAS = 5,
};
VEX_ENUM_NAME(vex_fzs_zonemember_type_e)

VEX_ENUM(vex_fzs_zone_type_e){
    VEX_ZT_SOFT = 1,
    VEX_ZT_HARD_VPF = 2,
    VEX_ZT_HARD_ACL = 3,
};
VEX_ENUM_NAME(vex_fzs_zone_type_e)

/** A member identifier: 68 bytes, read according to the member's type. */
typedef union vex_memberid_u {
    uint8_t wwn[8]; /**< VEX_ZMT_WWN: byte 0 most significant */
    struct {
        uint8_t domain;
        uint8_t unused[3];
        uint32_t port;
    } domain_port;                    /**< VEX_ZMT_DOMAIN_PORT */
    uint8_t fcid[3];                  /**< VEX_ZMT_FCID: domain, area, port */
    char alias[VEX_ZONING_NAME_SIZE]; /**< VEX_ZMT_ALIAS: name, at most 64 characters */
    uint8_t bytes[68];
} vex_memberid_u;

int32_t vex_fzsGetZoningLimitations(uint32_t handle, vex_fzs_limits_s* limits);
/** Copies the name of the fabric's active zoneset into `name` (VEX_ZONING_NAME_SIZE bytes). */
int32_t vex_fzsGetActiveZonesetName(uint32_t handle, char* name);
/** The zoneset handles that the next four calls store become the caller's (vex_ZonesetDestroy). */
int32_t vex_fzsGetActiveZoneset(uint32_t handle, void** zoneset);
int32_t vex_fzsGetZoneset(uint32_t handle, const char* name, void** zoneset);
/** Builds one zoneset called `name` that holds every zone and alias of the database. */
int32_t vex_fzsGetAllZonesAndAliases(uint32_t handle, const char* name, void** zoneset);
/** Lists the names of the configured zonesets. The list is the library's, good until the next call of its
 * kind. */
int32_t vex_fzsGetZonesetList(uint32_t handle, int32_t* count, char (**names)[VEX_ZONING_NAME_SIZE]);

void* vex_ZonesetCreate(const char* name);
int32_t vex_ZonesetDestroy(void** zoneset); /**< frees the zoneset and all it holds, and nulls the handle */
int32_t vex_ZonesetTestName(const char* name); /**< 0 when the name is acceptable */
int32_t vex_ZonesetGetName(void* zoneset,
                           char* name); /**< `name`: VEX_ZONING_NAME_SIZE bytes, as in all GetName */
int32_t vex_ZonesetGetZoneCount(void* zoneset);
void* vex_ZonesetListZones(void* zoneset, int32_t index);
void* vex_ZonesetFindZone(void* zoneset, const char* name);
int32_t vex_ZonesetAddZone(void* zoneset, void* zone);
int32_t vex_ZonesetRemoveZone(void* zoneset, void* zone);
int32_t vex_ZonesetGetAliasCount(void* zoneset);
void* vex_ZonesetListAliases(void* zoneset, int32_t index);
void* vex_ZonesetFindAlias(void* zoneset, const char* name);
int32_t vex_ZonesetAddAlias(void* zoneset, void* alias);
int32_t vex_ZonesetRemoveAlias(void* zoneset, void* alias);

void* vex_ZoneCreate(const char* name);
void* vex_ZoneCreateCopy(void* zone, const char* name); /**< members and type of `zone` under a new name */
int32_t vex_ZoneDestroy(void** zone);
int32_t vex_ZoneGetName(void* zone, char* name);
int32_t vex_ZoneSetName(void* zone, const char* name);
int32_t vex_ZoneGetType(void* zone, vex_fzs_zone_type_e* type);
int32_t vex_ZoneSetType(void* zone, vex_fzs_zone_type_e type);
int32_t vex_ZoneGetMemberCount(void* zone);
void* vex_ZoneListMembers(void* zone, int32_t index);
void* vex_ZoneFindMember(void* zone, vex_fzs_zonemember_type_e type, const vex_memberid_u* id);
int32_t vex_ZoneAddMember(void* zone, void* member);
int32_t vex_ZoneDeleteMember(void* zone, void* member);

void* vex_ZoneAliasCreate(const char* name);
int32_t vex_ZoneAliasDestroy(void** alias);
int32_t vex_ZoneAliasGetName(void* alias, char* name);
int32_t vex_ZoneAliasGetMemberCount(void* alias);
void* vex_ZoneAliasListMembers(void* alias, int32_t index);
void* vex_ZoneAliasFindMember(void* alias, vex_fzs_zonemember_type_e type, const vex_memberid_u* id);
int32_t vex_ZoneAliasAddMember(void* alias, void* member);
int32_t vex_ZoneAliasDeleteMember(void* alias, void* member);

void* vex_MemberCreate(vex_fzs_zonemember_type_e type, const vex_memberid_u* id);
int32_t vex_MemberDestroy(void** member);
int32_t vex_MemberGetAttr(void* member, vex_fzs_zonemember_type_e* type, vex_memberid_u* id);
/** Parses member text of the given type. Returns 0 and fills `id`, or another value when the text is
 * malformed. */
int32_t vex_strToMemberIdentifier(const char* text, vex_fzs_zonemember_type_e type, vex_memberid_u* id);

/* ---- Host platform ---- */

/** Stores the seconds since the system started. Provided by the host platform, beside the library. */
void uptime(long* seconds);

#ifdef __cplusplus
} /* extern "C" */

static_assert(sizeof(vex_eventsource_s) == 12, "event source layout");
static_assert(sizeof(vex_event_s) == 1416, "event layout");
static_assert(__builtin_offsetof(vex_event_s, source) == 4 && __builtin_offsetof(vex_event_s, text) == 16,
              "event layout");
static_assert(sizeof(vex_eventreg_s) == 8, "registration entry layout");
static_assert(sizeof(vex_smlrequest_s) == 516, "SML request layout");
static_assert(__builtin_offsetof(vex_smlrequest_s, value) == 256 &&
                  __builtin_offsetof(vex_smlrequest_s, status) == 512,
              "SML request layout");
static_assert(sizeof(vex_fzs_limits_s) == 28, "zoning limits layout");
static_assert(sizeof(vex_memberid_u) == 68, "member identifier layout");
static_assert(sizeof(vex_eventcode_e) == 4 && sizeof(vex_fzs_zonemember_type_e) == 4 &&
                  sizeof(vex_fzs_zone_type_e) == 4,
              "enumeration width");
#endif

#endif
