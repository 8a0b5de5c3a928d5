#pragma once

#include <cstdint>

namespace vexsim {

/**
 * The statuses that the simulated switch answers with, as the result of a call or as the status of one key.
 *
 * Callers of the library know three of them: 0, 24 and 103. The others are the simulator's own and lie apart,
 * so that a number in a log says where it came from. Scripted failures may use any number.
 */
enum Status : uint32_t {
    Ok = 0,
    EndOfList = 24,     /**< no such entry; how a walk through a list ends */
    Absent = 103,       /**< the switch knows the key and has no value for it; not worth a report */
    UnknownKey = 201,   /**< the switch does not know the key */
    ReadOnly = 202,     /**< a value that only the switch itself changes */
    NoAdmin = 203,      /**< the command needs admin rights */
    NotInEdit = 204,    /**< the command needs an edit session of its kind */
    Refused = 205,      /**< somebody else holds admin rights, or the fabric's lock */
    BadHandle = 206,    /**< no connection has this handle */
    BadArgument = 207,  /**< a null pointer, a negative count, memory that is not the library's */
    Busy = 208,         /**< an edit session is open already */
    NoBackup = 209,     /**< nothing to restore */
    NotLocked = 210,    /**< the command needs the fabric's zoning lock */
    BadName = 211,      /**< not a name for a zone, alias or zoneset */
    BadMember = 212,    /**< not a zone member, or none that an alias may have */
    NoSuchName = 213,   /**< no zone, alias or zoneset has this name */
    Exists = 214,       /**< the name or the member is there already */
    LimitReached = 215, /**< the zoning database would be larger than the fabric allows */
    Scripted = 299,     /**< a fault rule that names no number of its own */
};

}  // namespace vexsim
