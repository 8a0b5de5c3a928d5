/* A provider of vexlib that refuses everything and has no controls: what the real library is while its switch
 * is away.
 */
int refuse(void);
int refuse(void) {
    return 1;
}

#define REFUSE(name) \
    int name(void);  \
    __attribute__((alias("refuse"), visibility("default"))) int name(void);

REFUSE(uptime)
REFUSE(vex_IPConnect)
REFUSE(vex_MemberCreate)
REFUSE(vex_MemberDestroy)
REFUSE(vex_MemberGetAttr)
REFUSE(vex_ZoneAddMember)
REFUSE(vex_ZoneAliasAddMember)
REFUSE(vex_ZoneAliasCreate)
REFUSE(vex_ZoneAliasDeleteMember)
REFUSE(vex_ZoneAliasDestroy)
REFUSE(vex_ZoneAliasFindMember)
REFUSE(vex_ZoneAliasGetMemberCount)
REFUSE(vex_ZoneAliasGetName)
REFUSE(vex_ZoneAliasListMembers)
REFUSE(vex_ZoneCreate)
REFUSE(vex_ZoneCreateCopy)
REFUSE(vex_ZoneDeleteMember)
REFUSE(vex_ZoneDestroy)
REFUSE(vex_ZoneFindMember)
REFUSE(vex_ZoneGetMemberCount)
REFUSE(vex_ZoneGetName)
REFUSE(vex_ZoneGetType)
REFUSE(vex_ZoneListMembers)
REFUSE(vex_ZoneSetName)
REFUSE(vex_ZoneSetType)
REFUSE(vex_ZonesetAddAlias)
REFUSE(vex_ZonesetAddZone)
REFUSE(vex_ZonesetCreate)
REFUSE(vex_ZonesetDestroy)
REFUSE(vex_ZonesetFindAlias)
REFUSE(vex_ZonesetFindZone)
REFUSE(vex_ZonesetGetAliasCount)
REFUSE(vex_ZonesetGetName)
REFUSE(vex_ZonesetGetZoneCount)
REFUSE(vex_ZonesetListAliases)
REFUSE(vex_ZonesetListZones)
REFUSE(vex_ZonesetRemoveAlias)
REFUSE(vex_ZonesetRemoveZone)
REFUSE(vex_ZonesetTestName)
REFUSE(vex_enRegisterForEventList)
REFUSE(vex_fzsGetActiveZoneset)
REFUSE(vex_fzsGetActiveZonesetName)
REFUSE(vex_fzsGetAllZonesAndAliases)
REFUSE(vex_fzsGetZoneset)
REFUSE(vex_fzsGetZonesetList)
REFUSE(vex_fzsGetZoningLimitations)
REFUSE(vex_libFreeMemory)
REFUSE(vex_smlGet)
REFUSE(vex_smlGetBatch)
REFUSE(vex_smlSet)
REFUSE(vex_smlSetBatch)
REFUSE(vex_strToMemberIdentifier)
