#pragma once

#include "simulator/areas/Area.h"
#include "simulator/zoning/Database.h"

namespace vexsim {

/**
 * Carries out "Cmd.Zoning.*": the fabric's lock and the edit of the zoning database.
 *
 * The lock needs admin rights, the edit the lock. A command of the edit is checked at once; after one that
 * was refused the edit cannot be saved. A save puts the edit in force as a whole, or nothing of it where the
 * whole breaks a limit. An edit that is not saved is dropped by CancelConfig or with the lock.
 */
uint32_t runZoningCommand(Switch& target, const Command& command);

/** Puts a database in force and tells of it where it differs. */
void configureZoning(Switch& target, ZoningDatabase database);

}  // namespace vexsim
