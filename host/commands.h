#pragma once

#include "host/request.h"
#include "host/session.h"

/** The commands of the tool. Each works in a session that has been started, and returns the exit status. */

/** Prints events as they come, until the scenario's end, an interrupt or the time given, and then all areas.
 */
int runCommand(Session& session, const HostRequest& request);

/** Prints one area, or "all", of a complete cache. */
int showCommand(Session& session, const HostRequest& request);
