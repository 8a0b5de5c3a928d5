#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/export.h"
#include "host/statements.h"

namespace host {

/** A wrong command line or a file that cannot be used; what() is one line for the user. */
struct HostInputError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** Exit statuses of the tool. */
enum ExitStatus {
    EXIT_DONE = 0,
    EXIT_NOT_DONE = 1,  ///< something shown was not up to date, or an edit was refused
    EXIT_WRONG_INPUT = 2,
    EXIT_DIFFERS = 3,  ///< from a recording that is replayed strictly; the replayer itself ends so
};

/** What the user asked for. */
struct HostRequest {
    enum Command { Run, Show, Graph, Zone, Config, Capture, Report, Metrics, Verify } command = Run;

    std::string switchFile;  ///< required with the simulated switch, impossible without
    std::string scenario;
    std::string transcript;
    std::string replay;           ///< recording that the provider, a replayer, plays
    bool strict = false;          ///< with a recording: the cache must make the recorded calls
    std::optional<double> speed;  ///< of a recording; 0 for no waiting
    bool json = false;
    double timeout = 30;                ///< seconds until a command that needs a complete cache gives up
    double seconds = 0;                 ///< Run, Report, Verify: end after this time; 0 for no such limit
    std::string area;                   ///< Show: one of kAreaNames, or "all"
    std::vector<Statement> statements;  ///< Zone, Config
    bool keepGoing = false;             ///< Zone, Config: also after a statement that was not done
    bool mask = false;                  ///< Capture: names and addresses are replaced
    std::string output;                 ///< Capture, Report, Metrics: the file to write
    std::string recording;              ///< Capture, Report: where the calls of this process are recorded
    std::string provider;               ///< Report: path of the provider of vexlib
    std::string factsFile;              ///< Report: what the page shows, as JSON; empty for no such file
    bool unmasked = false;              ///< Report: secrets are shown
};

/** The areas that the tool shows, in the order in which it prints them all. */
constexpr const char* kAreaNames[] = {"switch",   "chassis", "blades",     "ports", "fabric",
                                      "accounts", "zoning",  "properties", "lsdb",  "health"};

/**
 * The tool's second half, a shared object of its own: it is linked against libdatacache, whose calls to
 * vexlib need a provider as soon as it is loaded; so the tool's first half, the program, reads the command
 * line, loads the provider that the user chose (`provider`, of dlopen), and then this. Returns the exit
 * status, if it returns.
 */
extern "C" DC_EXPORT int hostMain(void* provider, const HostRequest& request);

}  // namespace host
