#include "switchlib/CallWatch.h"
#include "switchlib/NORV_Vex_Lib.h"

using datacache::CallWatch;

namespace {

/** The commands in which the two kinds of edit differ; a null activation means that there is none. */
struct EditCommands {
    const char* edit;
    const char* save;
    const char* activate;
    const char* cancel;
};

int32_t send(uint32_t handle, const char* command) {
    void* reply = nullptr;
    const CallWatch watch("vex_smlSet", command, 1);
    return vex_smlSet(handle, command, &reply);
}

int32_t sendBatch(uint32_t handle, vex_smlrequest_s* records, int count) {
    const CallWatch watch("vex_smlSetBatch", count > 0 && records != nullptr ? records[0].key : nullptr,
                          static_cast<uint32_t>(count));
    return vex_smlSetBatch(handle, records, count);
}

int32_t firstFailure(int32_t first, int32_t second, int32_t third = 0) {
    if (first != 0) return first;
    return second != 0 ? second : third;
}

/** One whole edit. Failures of the release count first, so that nobody overlooks admin rights that stayed
 * taken. */
int32_t runEdit(const EditCommands& commands, uint32_t handle, vex_smlrequest_s* records, int count) {
    const int32_t admin = send(handle, "Cmd.Switch.ReqAdmin");
    if (admin != 0) return admin;
    const auto release = [handle] { return send(handle, "Cmd.Switch.RelAdmin"); };

    const int32_t edit = send(handle, commands.edit);
    if (edit != 0) return firstFailure(release(), edit);

    int32_t failed = sendBatch(handle, records, count);
    if (failed == 0) failed = send(handle, commands.save);
    if (failed != 0) {
        const int32_t cancel = send(handle, commands.cancel);
        return firstFailure(release(), cancel, failed);
    }
    const int32_t activation = commands.activate == nullptr ? 0 : send(handle, commands.activate);
    return firstFailure(release(), activation);
}

}  // namespace

int32_t vex_smlBatchSet(uint32_t handle, vex_smlrequest_s* records, int count) {
    static constexpr EditCommands kSwitchEdit = {"Cmd.Switch.EditConfig", "Cmd.Switch.SaveConfig",
                                                 "Cmd.Switch.ActConfig", "Cmd.Switch.CancelConfig"};
    return runEdit(kSwitchEdit, handle, records, count);
}

int32_t vex_smlBatchCimSet(uint32_t handle, vex_smlrequest_s* records, int count) {
    static constexpr EditCommands kCimEdit = {"Cmd.Cim.EditConfig", "Cmd.Cim.SaveConfig", nullptr,
                                              "Cmd.Cim.CancelConfig"};
    return runEdit(kCimEdit, handle, records, count);
}
