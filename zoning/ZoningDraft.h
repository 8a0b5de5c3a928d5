#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "common/AccessLock.h"
#include "zoning/CommandGroup.h"
#include "zoning/ZoningCache.h"
#include "zoning/ZoningEdits.h"

namespace datacache {

/** The switch's zoning as one session reads, edits and sends it; the shared cache has no part in it. */
class ZoningDraft {
  public:
    /** Reads the switch's whole zoning, with the calls of a pass. Not done where anything of it is not here.
     */
    ZoningReport read() DC_REQUIRES(access_lock);
    /** Reads the switch's checksums alone. */
    ZoningReport readKeys() DC_REQUIRES(access_lock);
    /** Takes over the limits that the shared cache knows, or else reads them. */
    void takeLimits(const ZoningCache& shared) DC_REQUIRES(access_lock);
    /** Whether the switch's checksums are those that were read; Changed, or NotRead with the reason. */
    ZoningReport checkUnchanged() const DC_REQUIRES(access_lock);

    ZoningEdits edits() { return {_zoning, true}; }

    /** What the active zoneset brings into the configured zoneset of its name, when the draft is sent. */
    std::vector<ZoningBrought> brought() const DC_REQUIRES(access_lock);
    /** Whether each zone of the active zoneset is configured; StillActive with the first that is not. */
    ZoningReport checkActive() const DC_REQUIRES(access_lock);
    ZoningReport addCommands(CommandGroup& group) const DC_REQUIRES(access_lock) {
        return _zoning._addCommands(group, true);
    }

    bool hasChecksumOf(const ZoningDraft& other) const DC_REQUIRES(access_lock) {
        return _zoning._inactiveChecksum == other._zoning._inactiveChecksum;
    }
    /** Whether this is what the switch has when it has saved all of `sent`; nothing where an object of either
     * cannot be read. */
    std::optional<bool> isWhatWasSent(const ZoningDraft& sent) const DC_REQUIRES(access_lock);

  private:
    /** A zone of the active zoneset, and where it was when the draft was read. */
    struct ActiveZone {
        std::string name;
        bool configured;  ///< in the configured zoneset of the active one's name
    };

    ZoningReport _noteActive() DC_REQUIRES(access_lock);
    void* _configuredNamesake() const DC_REQUIRES(access_lock);

    ZoningCache _zoning;
    std::vector<ActiveZone> _active DC_GUARDED_BY(access_lock);
    bool _namesakeWasConfigured DC_GUARDED_BY(access_lock) = false;
};

}  // namespace datacache
