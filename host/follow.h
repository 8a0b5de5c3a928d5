#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/Session.h"
#include "host/request.h"

namespace host {

/** Tells on standard error which areas are lost and which are back. */
class Readiness {
  public:
    void see(const Session::State& state);

    bool passed() const { return _passed; }
    bool ready() const { return _ever && _stale.empty(); }

    /** Why not, at the end. */
    std::string reason() const;

  private:
    bool _passed = false;
    bool _ever = false;
    std::vector<std::string> _stale;
};

/** What an interrupt leaves undone before the end that the user chose. */
std::string remaining(const HostRequest& request);

/**
 * Follows the switch until the end that the user chose: the scenario's or the recording's end, the time
 * given, or an interrupt. `wait` waits in the session and takes its events; false ends it too. Throws
 * HostInputError for a step of the scenario that the switch could not carry out.
 */
void follow(Session& session, const HostRequest& request, Readiness& readiness,
            const std::function<bool()>& wait);

}  // namespace host
