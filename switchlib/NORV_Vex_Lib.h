/*
 * Plain functions over the switch management layer (SML): requests, message groups, configuration
 * transactions, single switch properties, the configuration-edit session, and walkers over the link state
 * database and the name server.
 *
 * They keep no state but the shared connection handle and the admin flag, take no lock, and may be called
 * from C. `handle` is a connection handle of vex_IPConnect. Where a function takes none it uses `hSwitch`.
 */
#ifndef SWITCHLIB_NORV_VEX_LIB_H
#define SWITCHLIB_NORV_VEX_LIB_H

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
DC_EXPORT vex_smlmsggroup_s* vex_smlAllocMsgGroup(int capacity);

/**
 * Appends a record whose key is formatted from `format`, cut at 255 characters; grows by 25 records at a
 * time. Returns 0, or 1 when growing failed: the group is then freed and must not be touched again.
 */
DC_EXPORT int vex_smlAddMsgGroupV(vex_smlmsggroup_s* group, const char* format, ...) DC_PRINTF(2, 3);

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

DC_END_C

#endif
