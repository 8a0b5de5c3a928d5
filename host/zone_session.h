#pragma once

#include "datacache/DataCache.h"
#include "host/edits.h"

/** A zoning editing session, as the provider of a switch runs one: lock, edits, commit or abandon. */
class ZoneSession {
  public:
    explicit ZoneSession(Session& session) : _session(session) {}

    Outcome carryOut(const Statement& statement);

    /** Whether the tool holds the lock; an expired one counts, because the switch may still hold it. */
    bool locked() const { return _locked; }

  private:
    void setLocked(bool locked);
    bool lockIsGood(ZoningCache& zoning);
    Outcome lock();
    Outcome unlock();
    Outcome commit();
    Outcome edit(const Statement& statement);
    Outcome wait(const std::string& seconds);

    Session& _session;
    bool _locked = false;
};
