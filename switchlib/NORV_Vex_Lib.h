/*
 * Plain functions over the switch management layer (SML): requests, message groups, configuration
 * transactions, single switch properties, the configuration-edit session, and walkers over the link state
 * database and the name server.
 *
 * They keep no state but the shared connection handle and the admin flag, take no lock, and may be called
 * from C. `handle` is a connection handle of vex_IPConnect. Where a function takes none it uses `hSwitch`.
 */
#ifndef DC_SWITCHLIB_NORV_VEX_LIB_H
#define DC_SWITCHLIB_NORV_VEX_LIB_H

#ifndef __cplusplus
#include <stdbool.h>
#endif
#include <stdint.h>

#include "common/cim_log.h"
#include "common/export.h"
#include "common/text.h"
#include "vexlib/vexlib.h"

DC_BEGIN_C

/** The connection handle of the process; 0 until the cache has connected, which writes it once. */
extern DC_EXPORT uint32_t hSwitch;

/* ---- Message groups ---- */

/** A growable array of requests. The functions below own both blocks; `records` moves when the group grows.
 */
typedef struct vex_smlmsggroup_s {
    int32_t count;    /**< records in use */
    int32_t capacity; /**< records allocated */
    vex_smlrequest_s* records;
} vex_smlmsggroup_s;

/** A new group with room for `capacity` records (0 or more) and `count` 0, or null without memory. */
DC_NODISCARD DC_EXPORT vex_smlmsggroup_s* vex_smlAllocMsgGroup(int capacity);

/**
 * Appends a record whose key is formatted from `format`, cut at 255 characters; grows by 25 records at a
 * time. Returns 0, or 1 when growing failed: the group is then freed and must not be touched again.
 */
DC_NODISCARD DC_EXPORT int vex_smlAddMsgGroupV(vex_smlmsggroup_s* group, const char* format, ...)
    DC_PRINTF(2, 3);

/** Empties the group; its memory stays. */
DC_EXPORT void vex_smlResetMsgGroup(vex_smlmsggroup_s* group);

/** Frees the group and its records. */
DC_EXPORT void vex_smlFreeMsgGroup(vex_smlmsggroup_s* group);

/** Reads (or writes) all records of the group. Returns 1 when any record's status is not 0, else the call's
 * result. */
DC_EXPORT int32_t vex_smlGetMsgGroup(vex_smlmsggroup_s* group);
DC_EXPORT int32_t vex_smlSetMsgGroup(vex_smlmsggroup_s* group);

/**
 * The status of record `index`; stores a pointer to its value, which is the group's. An index outside the
 * group gives 1 and leaves `value` untouched.
 */
DC_EXPORT uint32_t vex_smlGetResult(vex_smlmsggroup_s* group, int index, char** value);

/** Whether any of the `count` records has a status other than 0. Logs the first one, unless its status is 24.
 */
DC_EXPORT bool isErrors(const vex_smlrequest_s* records, int count);

/* ---- Single keys ---- */

/** Reads one key, formatted from `format`; as vex_smlGet, with failures other than 103 logged. */
DC_EXPORT int32_t vex_smlGetV(uint32_t handle, char** value, uint32_t* extra, const char* format, ...)
    DC_PRINTF(4, 5);

/** Writes one key or sends one command, formatted from `format`; as vex_smlSet, with failures logged. */
DC_EXPORT int32_t vex_smlSetV(uint32_t handle, void** reply, const char* format, ...) DC_PRINTF(3, 4);

/* ---- Configuration transactions ---- */

/**
 * Writes `count` records in one configuration edit: admin rights, edit, write, save, activate, and admin
 * given back whatever failed after it was obtained. Returns 0, or the status of what failed.
 */
DC_EXPORT int32_t vex_smlBatchSet(uint32_t handle, vex_smlrequest_s* records, int count);

/** The same in one edit of the CIM configuration, which has no activation. */
DC_EXPORT int32_t vex_smlBatchCimSet(uint32_t handle, vex_smlrequest_s* records, int count);

/* ---- Single switch properties ---- */

/*
 * Each reads one key from the switch and returns its value, or null when the read failed or gave no text. The
 * caller owns the text and releases it with vex_libFreeMemory.
 */

/** Services: "True" or "False". */
DC_EXPORT char* get_Switch_Telnet_Enabled(void);
DC_EXPORT char* get_Switch_SSH_Enabled(void);
DC_EXPORT char* get_Switch_EmbeddedGUI_Enabled(void);
DC_EXPORT char* is_Switch_SSLEnabled(void);
DC_EXPORT char* is_Switch_SNMP_Enabled(void);

/** The SNMP community that may read. */
DC_EXPORT char* get_Switch_SNMPReadCommunity(void);

/** Addresses of the management port; whether the switch has the protocol, and whether it is switched on:
 * "True" or "False". */
DC_EXPORT char* get_Switch_IPv6Address(void);
DC_EXPORT char* get_Switch_IPv6Feature(void);
DC_EXPORT char* get_Switch_IPv6Enable(void);
DC_EXPORT char* get_Switch_IPv4Address(void);
DC_EXPORT char* get_Switch_IPv4Feature(void);
DC_EXPORT char* get_Switch_IPv4Enable(void);

/** Manufacturing data and firmware versions, as the switch words them. */
DC_EXPORT char* get_Switch_PlanarPartNum(void);
DC_EXPORT char* get_Switch_ChassisSerialNum(void);
DC_EXPORT char* get_Switch_ChassisPartNum(void);
DC_EXPORT char* get_Switch_ActiveVer(void);
DC_EXPORT char* get_Switch_OemActiveVer(void);
DC_EXPORT char* get_Switch_Brand_Name(void);
DC_EXPORT char* get_Switch_Type(void);

/** The domain ID in the fabric, decimal. */
DC_EXPORT char* get_Switch_Domain_ID(void);

/** World wide names in upper case. */
DC_EXPORT char* get_Principal_Switch_World_Wide_Name(void);
DC_EXPORT char* get_Local_Switch_World_Wide_Name(void);

/**
 * Reads four texts, one after the other, and stores them through the four addresses; the caller releases each
 * with vex_libFreeMemory. Returns 0 when all were read. All four are null at first, whatever they held
 * before: one that was not read, or that the switch library read without handing out a text, is null
 * afterwards.
 *
 * A failure of the first two returns its status. A failure of the last two releases the symbolic name (and
 * the serial number) again and returns the status of the last release, which is 0 when that succeeded: test
 * `brand` as well. What was released is null afterwards. The system description is never released here, so
 * after a failure it is still the caller's.
 */
DC_EXPORT int get_Product_Info(char** description, char** symbolicName, char** serialNumber, char** brand);

/* ---- Configuration-edit session ---- */

/*
 * getConfigEditMode(), then settings by vex_smlSet or vex_smlSetBatch, then saveConfigEdit() or
 * cancelConfigEdit(). These return 0, or -1 for a failure; the status of the switch is then in the log only.
 * The switch has one session: use it from one thread at a time.
 */

/** 1 from a successful reqAdminMode() to a successful releaseAdminMode(), else 0. Guarded by nothing. */
extern DC_EXPORT uint32_t adminModeHeld;

/** Obtains admin rights. */
DC_EXPORT int reqAdminMode(void);

/** Gives admin rights back. Without rights it asks the switch for nothing and returns 0. */
DC_EXPORT int releaseAdminMode(void);

/** Obtains admin rights and opens an edit of the CIM configuration. The rights stay when that fails. */
DC_EXPORT int getConfigEditMode(void);

/** Saves (or drops) the edit and gives admin rights back. The rights stay when saving (or dropping) fails. */
DC_EXPORT int saveConfigEdit(void);
DC_EXPORT int cancelConfigEdit(void);

/** Has the switch save its configuration, or go back to the saved one. Returns the status of the switch, 0
 * for success. */
DC_EXPORT int backupConfig(void);
DC_EXPORT int restoreConfig(void);

/* ---- Walks through the link state database and the name server ---- */

/*
 * A walk starts with the first function and passes what it gave to the next one until that returns null. The
 * functions keep nothing between calls.
 *
 * `dst` has room for VEX_SML_VALUE_SIZE (256) bytes and receives the value, terminated. The functions return
 * `dst`, or null when the read failed; `dst` is then as it was. Keys longer than 255 characters are cut.
 */

/** Link state records. */
DC_EXPORT char* get_first_lsdb_record(char* dst);
DC_EXPORT char* get_next_lsdb_record(const char* record, char* dst);

/** Links of a record: a decimal number, 0 where the switch gives none, -1 when the read failed. */
DC_EXPORT int get_lsdb_record_link_count(const char* record);

/** The two ends of a link. */
DC_EXPORT char* get_lsdb_record_link_local_information(const char* record, const char* link, char* dst);
DC_EXPORT char* get_lsdb_record_link_remote_information(const char* record, const char* link, char* dst);

/** Devices that the name server knows at a port. */
DC_EXPORT char* get_first_attached_port(const char* port, char* dst);
DC_EXPORT char* get_next_attached_port(const char* port, const char* entry, char* dst);

DC_END_C

#endif
