#pragma once

#include "common/AccessLock.h"
#include "zoning/ZoningCache.h"
#include "zoning/ZoningReport.h"

namespace datacache {

struct EditRule;
struct MemberId;
struct ContainerCalls;

/**
 * The edits of a zoning database. Each stops at the first failure and says which; what it changed before
 * that, if anything, is Damaged.
 *
 * Of the objects that a zoneset holds a commit sends the names alone. So a draft's edits change zones and
 * aliases in the uber zoneset and leave the copies as they are, which may differ from it for good reason: the
 * active zoneset's are those that were activated.
 */
class ZoningEdits {
  public:
    ZoningEdits(ZoningCache& cache, bool ofDraft) : _cache(cache), _ofDraft(ofDraft) {}

    ZoningReport createZoneAlias(const char* name) DC_REQUIRES(access_lock);
    ZoningReport createZone(const char* name, vex_fzs_zone_type_e type) DC_REQUIRES(access_lock);
    ZoningReport createZoneset(const char* name) DC_REQUIRES(access_lock);
    ZoningReport removeZoneAlias(const char* name) DC_REQUIRES(access_lock);
    ZoningReport removeZone(const char* name) DC_REQUIRES(access_lock);
    ZoningReport removeZoneset(const char* name) DC_REQUIRES(access_lock);
    ZoningReport addZoneToZoneset(const char* zoneset, const char* zone) DC_REQUIRES(access_lock);
    ZoningReport removeZoneFromZoneset(const char* zoneset, const char* zone) DC_REQUIRES(access_lock);
    ZoningReport addMemberToZone(const char* zone, vex_fzs_zonemember_type_e type, const char* member)
        DC_REQUIRES(access_lock);
    ZoningReport removeMemberFromZone(const char* zone, vex_fzs_zonemember_type_e type, const char* member)
        DC_REQUIRES(access_lock);
    ZoningReport addMemberToZoneAlias(const char* alias, vex_fzs_zonemember_type_e type, const char* member)
        DC_REQUIRES(access_lock);
    ZoningReport removeMemberFromZoneAlias(const char* alias, vex_fzs_zonemember_type_e type,
                                           const char* member) DC_REQUIRES(access_lock);
    ZoningReport removeMember(vex_fzs_zonemember_type_e type, const char* member) DC_REQUIRES(access_lock);

  private:
    template <typename Edit>
    ZoningReport _repeat(const EditRule& rule, Edit edit) DC_REQUIRES(access_lock);
    template <typename Edit>
    ZoningReport _repeatInContainers(const ContainerCalls& calls, const EditRule& rule, const char* name,
                                     Edit edit) DC_REQUIRES(access_lock);
    ZoningReport _addToUber(const ContainerCalls& calls, void* container) DC_REQUIRES(access_lock);
    ZoningReport _removeEverywhere(const ContainerCalls& calls, const EditRule& rule, const char* name)
        DC_REQUIRES(access_lock);
    ZoningReport _addMember(const ContainerCalls& calls, const EditRule& rule, const char* name,
                            vex_fzs_zonemember_type_e type, const char* text) DC_REQUIRES(access_lock);
    ZoningReport _removeMemberFrom(const ContainerCalls& calls, const EditRule& rule, const char* name,
                                   vex_fzs_zonemember_type_e type, const char* text) DC_REQUIRES(access_lock);

    ZoningCache& _cache;
    const bool _ofDraft;
};

}  // namespace datacache
