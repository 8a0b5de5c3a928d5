#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "common/AccessLock.h"
#include "common/export.h"
#include "common/thread_annotations.h"
#include "vexlib/vexlib.h"
#include "zoning/ZoningOutcome.h"

class DataCache;
class ZoningCache;

namespace datacache {

class ZoningSessionState;

/**
 * One editing session of the fabric's zoning: the way for a host to edit.
 *
 *     ZoningSession session = DataCache::zoningSession("provider-4711");
 *     ZoningOutcome outcome = session.lockOutcome();
 *     if (outcome.done()) outcome = session.createZone("backup", VEX_ZT_SOFT);
 *     if (outcome.done()) outcome = session.addMemberToZone("backup", VEX_ZMT_ALIAS, "library");
 *     if (outcome.done()) outcome = session.commit();
 *     if (!outcome.done()) report(outcome.text());
 *
 * A session takes the fabric's zoning lock and admin rights, after which nobody else can change the fabric's
 * zoning. Then it reads the switch's zoning, active and configured, into a draft of its own. Edits change the
 * draft alone; commit() sends the whole draft to the switch, which saves it and gives the lock back. So a
 * commit changes what the session changed, whatever the cache knew: a session is as good inside the host's
 * callback, under a CacheReader, with events still queued, and after a zoning read that failed. What the
 * cache shows changes when a pass has read what the switch has; commit() asks for that pass. A session that
 * is not committed is abandoned, at the latest when it is destroyed: the lock is given back, and nothing else
 * happened.
 *
 * The active zoneset is sent as well, so the configured zoneset of its name ends with the active one's zones
 * too; check() and commit() tell which these are (ZoningOutcome::brought()). A zone that the active zoneset
 * still needs cannot be taken out of the configuration: commit() then sends nothing (StillActive).
 *
 * Every step gives a ZoningOutcome, and nothing throws. An edit that is not done has changed nothing and
 * leaves the session open, so that another one may be tried; the exception is Damaged, after which nothing
 * but abandon() is left. Every edit and the commit are refused
 * - 90 seconds after the lock (Expired). The time also runs while the draft is read;
 * - when somebody locked, unlocked or committed through ZoningCache itself (Taken).
 *
 * One session of a process is open at a time; another one is refused as Busy. While it is open,
 * ZoningCache::LockIdOK() says yes to its client's id. Whoever ends a session gives admin rights back, and a
 * switch may drop an open configuration edit with them (docs/integration.md).
 *
 * Each call takes the access lock while it runs, and none is held between the calls: passes run in between.
 * Calls from several threads exclude each other. A session that was moved from is closed.
 */
class DC_EXPORT ZoningSession {
  public:
    /** Abandons the session if it is still open. */
    ~ZoningSession() DC_TAKES(access_lock);
    ZoningSession(ZoningSession&& other) noexcept;
    /** Abandons this session if it is still open; `other`, made beside it, was then refused as Busy. */
    ZoningSession& operator=(ZoningSession&& other) noexcept DC_TAKES(access_lock);

    /**
     * How the lock was obtained and the draft read, or why not: Done, NoCache, Transparent, Busy,
     * OutOfMemory, Refused, NotRead (the call, the key and the status are in the failure) or Expired. Unless
     * it is Done the session is closed, and what it had obtained is given back.
     */
    ZoningOutcome lockOutcome() const DC_TAKES(access_lock);
    /** Whether the session got the lock and was neither committed nor abandoned; an expired one is open. */
    bool isOpen() const DC_TAKES(access_lock);
    /** Whole seconds until the lock expires, 90 to 0; 0 as well when the session is not open. */
    long secondsLeft() const DC_TAKES(access_lock);

    // Names have at most 64 characters and begin with a letter. A member's text is what its type calls for: a
    // world wide name of 16 hexadecimal digits, with or without colons; domain and port; an FC address of 6
    // hexadecimal digits; or an alias's name. What is accepted beyond that is the switch library's affair,
    // but for control characters, zero bytes and the keys "[ActiveZoneSetKey]" and "[UberZoneSetKey]": these
    // are Invalid without asking it.

    ZoningOutcome createZoneAlias(std::string_view name) DC_TAKES(access_lock);
    ZoningOutcome createZone(std::string_view name, vex_fzs_zone_type_e type) DC_TAKES(access_lock);
    ZoningOutcome createZoneset(std::string_view name) DC_TAKES(access_lock);
    /** Zones that name the alias keep it as a member, which the switch may then refuse. */
    ZoningOutcome removeZoneAlias(std::string_view name) DC_TAKES(access_lock);
    /** Removes the zone from the configured zonesets as well. */
    ZoningOutcome removeZone(std::string_view name) DC_TAKES(access_lock);
    ZoningOutcome removeZoneset(std::string_view name) DC_TAKES(access_lock);
    ZoningOutcome addZoneToZoneset(std::string_view zoneset, std::string_view zone) DC_TAKES(access_lock);
    ZoningOutcome removeZoneFromZoneset(std::string_view zoneset, std::string_view zone)
        DC_TAKES(access_lock);
    ZoningOutcome addMemberToZone(std::string_view zone, vex_fzs_zonemember_type_e type,
                                  std::string_view member) DC_TAKES(access_lock);
    ZoningOutcome removeMemberFromZone(std::string_view zone, vex_fzs_zonemember_type_e type,
                                       std::string_view member) DC_TAKES(access_lock);
    ZoningOutcome addMemberToZoneAlias(std::string_view alias, vex_fzs_zonemember_type_e type,
                                       std::string_view member) DC_TAKES(access_lock);
    ZoningOutcome removeMemberFromZoneAlias(std::string_view alias, vex_fzs_zonemember_type_e type,
                                            std::string_view member) DC_TAKES(access_lock);
    /** Removes a member from every zone and alias of the configured zoning; Done also where it was in none.
     */
    ZoningOutcome removeMember(vex_fzs_zonemember_type_e type, std::string_view member) DC_TAKES(access_lock);

    /** What commit() would be stopped by before it asks the switch, and what the active zoneset brings with
     * it. Sends nothing and changes nothing. */
    ZoningOutcome check() DC_TAKES(access_lock);
    /**
     * Replaces the switch's configured zoning by the draft, saves it, and gives the lock back. Before it
     * sends anything it makes sure that the switch's zoning is still what was read (Changed).
     *
     * Done, NotReleased, Refused, SavedInPart and Unknown end the session; they say what the switch has:
     * - Done: all of it. NotReleased: all of it, but the lock or the rights were not given back;
     * - Refused: nothing of it. The failure names the first command that was refused, or the call;
     * - SavedInPart: a part, as the switch went on after a command that it refused, the failure's;
     * - Unknown: the switch no longer answers, or its zoning is neither what it was nor what was sent; or it
     *   says that it saved all and shows what it had before.
     * Where the switch did not carry out every command, its zoning is read anew to find out; where it says
     * that it did, its checksum alone. Each of them but Done tells in ZoningFailure::held if the lock or the
     * rights were not given back. Any other outcome sent nothing and leaves the session open.
     */
    ZoningOutcome commit() DC_TAKES(access_lock);
    /** Gives the lock back and drops the draft. The session is closed even when the switch refuses to take
     * the lock or the rights back (NotReleased). */
    ZoningOutcome abandon() DC_TAKES(access_lock);

  private:
    friend class ::DataCache;
    friend class ZoningSessionState;
    /**
     * Opens a session that locks through `shared`; null where there is no cache. `refresh` has the zoning
     * area read by the next pass, and that pass made.
     */
    DC_HIDDEN static ZoningSession _open(ZoningCache* shared, bool transparent, std::string_view client,
                                         void (*refresh)()) noexcept;
    DC_HIDDEN explicit ZoningSession(std::unique_ptr<ZoningSessionState> state) noexcept;

    std::unique_ptr<ZoningSessionState> _state;  ///< null where memory was short, and when moved from
};

}  // namespace datacache
