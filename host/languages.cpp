#include "host/statements.h"

const std::vector<StatementForm>& zoneLanguage() {
    static const std::vector<StatementForm> forms{
        {ZONE_LOCK, "lock", "take the fabric's zoning lock, for 90 seconds"},
        {ZONE_CREATE, "create alias|zone|zoneset NAME", "a zone is \"Soft\" unless typed"},
        {ZONE_CREATE_TYPED, "create zone NAME soft|vpf|acl", "a zone of that type"},
        {ZONE_REMOVE, "remove alias|zone|zoneset NAME", ""},
        {ZONE_ADD_ZONE, "add zone NAME to zoneset NAME", ""},
        {ZONE_REMOVE_ZONE, "remove zone NAME from zoneset NAME", ""},
        {ZONE_ADD_MEMBER, "add wwn|port|fcid|alias MEMBER to zone|alias NAME", ""},
        {ZONE_REMOVE_MEMBER, "remove wwn|port|fcid|alias MEMBER from zone|alias NAME", ""},
        {ZONE_REMOVE_EVERYWHERE, "remove wwn|port|fcid|alias MEMBER everywhere",
         "from all zones and aliases"},
        {ZONE_COMMIT, "commit", "send the edits to the switch and give the lock back"},
        {ZONE_UNLOCK, "abandon", "give the lock back; the edits are dropped"},
        {ZONE_WAIT, "wait SECONDS", ""},
    };
    return forms;
}

const std::vector<StatementForm>& configLanguage() {
    static const std::vector<StatementForm> forms{
        {CONFIG_EDIT, "edit", "take admin rights and open an edit"},
        {CONFIG_SET, "set KEY VALUE", "set a key of the configuration in the open edit"},
        {CONFIG_GET, "get KEY", "print the value of any key"},
        {CONFIG_SAVE, "save", "put the edit in force and give admin rights back"},
        {CONFIG_CANCEL, "cancel", "drop the edit and give admin rights back"},
        {CONFIG_BACKUP, "backup", "have the switch keep a copy of its configuration"},
        {CONFIG_RESTORE, "restore", "have the switch go back to that copy"},
    };
    return forms;
}
