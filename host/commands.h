#pragma once

#include "host/Session.h"
#include "host/request.h"

namespace host {

/** The commands of the tool. Each works in a session that has been started, and returns the exit status. */

/** Prints events as they come, until the scenario's end, an interrupt or the time given, and then all areas.
 */
int runCommand(Session& session, const HostRequest& request);

/** Prints one area, or "all". */
int showCommand(Session& session, const HostRequest& request);

/** Writes the health as OpenMetrics text. The exit status does not depend on the health. */
int metricsCommand(Session& session, const HostRequest& request);

/** Follows the switch for a while, reads everything again, and prints what had changed without a switch
 * event. */
int verifyCommand(Session& session, const HostRequest& request);

/** Writes the fabric as Graphviz DOT. */
int graphCommand(Session& session, const HostRequest& request);

/** Reads all of the switch and writes it as a switch file for the simulated switch. */
int captureCommand(Session& session, const HostRequest& request);
/** The same from a recording, which needs no session. Throws HostInputError. */
int captureRecording(const HostRequest& request);
/** Writes one page that tells all: of a switch, of a scenario, or of a recording. */
int reportCommand(Session& session, const HostRequest& request);

/** Carries out zoning statements under the fabric's lock, and prints the switch's zoning afterwards. */
int zoneCommand(Session& session, const HostRequest& request);

/** Carries out statements of a configuration-edit session. */
int configCommand(Session& session, const HostRequest& request);

}  // namespace host
