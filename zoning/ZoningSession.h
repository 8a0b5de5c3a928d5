#pragma once

#include <cstdint>
#include <string>

#include "common/AccessLock.h"
#include "common/export.h"
#include "common/thread_annotations.h"
#include "zoning/ZoningCache.h"

namespace datacache {

/**
 * One editing session of the fabric's zoning: the way for a host to edit.
 *
 *     ZoningSession session(zoning, "provider-4711");
 *     ZoningOutcome outcome = session.lockOutcome();
 *     if (outcome.done()) outcome = session.createZone("backup", VEX_ZT_SOFT);
 *     if (outcome.done()) outcome = session.addMemberToZone("backup", VEX_ZMT_ALIAS, "library");
 *     if (outcome.done()) outcome = session.commit();
 *     if (!outcome.done()) report(outcome.text());
 *
 * It takes the fabric's zoning lock and admin rights when it is made. Edits change the database in the cache
 * alone, and everybody who reads the cache sees them; commit() sends the whole database to the switch, which
 * gives the lock back. A session that is not committed is abandoned, at the latest when it is destroyed: the
 * lock is given back. After a commit, and after edits were abandoned, the evaluation thread is woken to load
 * the switch's zoning anew, which it tells with DCEventZoningDBChange. Until then the abandoned edits can
 * still be read, and a next session may lock but not edit (NotLoaded).
 *
 * Every step gives a ZoningOutcome; nothing throws but std::bad_alloc. An edit that is not done leaves
 * the session open, so that another one may be tried. An edit that failed with LibraryFailed or NotFound
 * may have changed a part of the database; abandon the session unless you know better.
 *
 * What makes a session worthless, and every edit and the commit are then refused:
 * - 90 seconds after the lock (Expired);
 * - the zoning was loaded anew after the first edit, because the switch's changed or somebody asked for it
 *   (Reloaded). A load before the first edit does no harm;
 * - somebody else in this process locked, unlocked or committed through the same ZoningCache (Taken). An open
 *   session does not keep another one from doing so; the later one has the edits of the earlier one dropped.
 *
 * A session starts from what is in the cache: edits made through ZoningCache alone and never committed are
 * committed with it.
 *
 * Each call takes the access lock while it runs, and none is held between the calls: passes run in between.
 * To keep them out, hold the access lock yourself, as DataCache::getInstance() gives it, for as short as you
 * can. Calls from several threads exclude each other. The ZoningCache outlives the session.
 */
class DC_EXPORT ZoningSession {
  public:
    /** Takes the lock for a client, whose id says in ZoningCache::LockIdOK() who holds it. */
    ZoningSession(ZoningCache& zoning, std::string client) DC_TAKES(access_lock);
    /** Abandons the session if it is still open. */
    ~ZoningSession() DC_TAKES(access_lock);
    ZoningSession(const ZoningSession&) = delete;
    ZoningSession& operator=(const ZoningSession&) = delete;

    /** How the lock was obtained, or why it was not: Done, Refused or OutOfMemory. */
    ZoningOutcome lockOutcome() const DC_TAKES(access_lock);
    /** Whether the session got the lock and was neither committed nor abandoned; an expired one is open. */
    bool isOpen() const DC_TAKES(access_lock);
    /** Whole seconds until the lock expires, 90 to 0; 0 as well when the session is not open. */
    long secondsLeft() const DC_TAKES(access_lock);

    // Names have at most 64 characters and begin with a letter. A member's text is what its type calls for: a
    // world wide name of 16 hexadecimal digits, with or without colons; domain and port; an FC address of 6
    // hexadecimal digits; or an alias's name. What is accepted beyond that is the switch library's affair.

    ZoningOutcome createZoneAlias(const std::string& name) DC_TAKES(access_lock);
    ZoningOutcome createZone(const std::string& name, vex_fzs_zone_type_e type) DC_TAKES(access_lock);
    ZoningOutcome createZoneset(const std::string& name) DC_TAKES(access_lock);
    ZoningOutcome removeZoneAlias(const std::string& name) DC_TAKES(access_lock);
    ZoningOutcome removeZone(const std::string& name) DC_TAKES(access_lock);
    ZoningOutcome removeZoneset(const std::string& name) DC_TAKES(access_lock);
    ZoningOutcome addZoneToZoneset(const std::string& zoneset, const std::string& zone) DC_TAKES(access_lock);
    ZoningOutcome removeZoneFromZoneset(const std::string& zoneset, const std::string& zone)
        DC_TAKES(access_lock);
    ZoningOutcome addMemberToZone(const std::string& zone, vex_fzs_zonemember_type_e type,
                                  const std::string& member) DC_TAKES(access_lock);
    ZoningOutcome removeMemberFromZone(const std::string& zone, vex_fzs_zonemember_type_e type,
                                       const std::string& member) DC_TAKES(access_lock);
    ZoningOutcome addMemberToZoneAlias(const std::string& alias, vex_fzs_zonemember_type_e type,
                                       const std::string& member) DC_TAKES(access_lock);
    ZoningOutcome removeMemberFromZoneAlias(const std::string& alias, vex_fzs_zonemember_type_e type,
                                            const std::string& member) DC_TAKES(access_lock);
    /** Removes a member from every zone and alias of the configured zoning; Done also where it was in none.
     */
    ZoningOutcome removeMember(vex_fzs_zonemember_type_e type, const std::string& member)
        DC_TAKES(access_lock);

    /**
     * Replaces the switch's configured zoning by the cache's, saves it, and gives the lock back. Done and
     * Refused end the session; after Refused the failure names the first command that the switch refused, the
     * lock is given back and the switch's zoning is loaded anew. Any other outcome sent nothing and leaves
     * the session open.
     */
    ZoningOutcome commit() DC_TAKES(access_lock);
    /** Gives the lock back and drops the edits. The session is closed even when the switch refuses to take
     * the lock back (Refused). */
    ZoningOutcome abandon() DC_TAKES(access_lock);

  private:
    /** Why the session can neither edit nor commit at the moment, if so. */
    DC_HIDDEN ZoningStatus _obstacle() DC_REQUIRES(access_lock);
    /** Carries out an edit, a function of no arguments that gives a ZoningResult. */
    template <typename Edit>
    DC_HIDDEN ZoningOutcome _edit(std::string step, Edit edit) DC_REQUIRES(access_lock);
    /** Ends the session, with the lock given back; false when the switch refused that. */
    DC_HIDDEN bool _close() DC_REQUIRES(access_lock);

    ZoningCache& _zoning;
    const std::string _client;
    ZoningOutcome _lockOutcome DC_GUARDED_BY(access_lock);
    bool _open DC_GUARDED_BY(access_lock) = false;
    bool _edited DC_GUARDED_BY(access_lock) = false;
    uint32_t _lockChanges DC_GUARDED_BY(access_lock) = 0;  ///< the cache's, when it took the lock
    uint32_t _generation DC_GUARDED_BY(access_lock) = 0;   ///< the cache's, at the first edit
};

}  // namespace datacache
