#include "switchlib/NORV_Vex_Lib.h"

uint32_t adminModeHeld = 0;

namespace {

/** Sends one command; a failure is logged as `failure` ("get Admin mode"), behind the line of vex_smlSetV. */
int32_t send(const char* command, const char* failure) {
    void* reply = nullptr;
    const int32_t result = vex_smlSetV(hSwitch, &reply, "%s", command);
    if (result != 0) cim_log(CIM_LOG_TRACE, "DCACHE: vex_smlSet failed %s\n", failure);
    return result;
}

/** Ends the edit by `command`. Admin rights stay when that fails, so that the host can try again. */
int endEdit(const char* command, const char* failure) {
    if (send(command, failure) != 0) return -1;
    return adminModeHeld != 0 ? releaseAdminMode() : 0;
}

}  // namespace

int reqAdminMode() {
    if (send("Cmd.Switch.ReqAdmin", "to get Admin mode") != 0) return -1;
    adminModeHeld = 1;
    return 0;
}

int releaseAdminMode() {
    if (adminModeHeld == 0) return 0;
    // Required: this command, though the batch transactions give the same rights back by
    // "Cmd.Switch.RelAdmin".
    if (send("Cmd.Switch.CancelAdmin", "to release Admin mode") != 0) return -1;
    adminModeHeld = 0;
    return 0;
}

int getConfigEditMode() {
    if (reqAdminMode() != 0 || adminModeHeld == 0) return -1;
    return send("Cmd.Cim.EditConfig", "for Config Edit") == 0 ? 0 : -1;
}

int saveConfigEdit() {
    return endEdit("Cmd.Cim.SaveConfig", "for Config Save");
}

int cancelConfigEdit() {
    return endEdit("Cmd.Cim.CancelConfig", "for Config Cancel");
}

int backupConfig() {
    return send("Cmd.Switch.BackupConfig", "to backup config");
}

int restoreConfig() {
    return send("Cmd.Switch.RestoreConfig", "to restore config");
}
