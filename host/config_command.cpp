#include "datacache/DataCache.h"
#include "host/commands.h"
#include "host/edits.h"

namespace {

Outcome simple(int result) {
    return {result == 0, {{"result", result == 0 ? "done" : "the switch refused (see /tmp/cim.out)"}}};
}

Outcome set(const std::string& key, const std::string& value) {
    return simple(vex_smlSetV(hSwitch, nullptr, "%s.%s", key.c_str(), value.c_str()));
}

Outcome get(const std::string& key) {
    char* value = nullptr;
    uint32_t extra = 0;
    if (vex_smlGetV(hSwitch, &value, &extra, "%s", key.c_str()) != 0 || value == nullptr) return simple(-1);
    Outcome outcome{true, {{"result", std::string(value)}}};
    vex_libFreeMemory(value);
    return outcome;
}

/** The configuration-edit session, as the provider of a switch runs one. */
class ConfigSession {
  public:
    Outcome carryOut(const Statement& statement) {
        switch (statement.code) {
            case CONFIG_EDIT:
                return edit();
            case CONFIG_GET:
                return get(statement.operands[0]);
            case CONFIG_BACKUP:
                return simple(backupConfig());
            case CONFIG_RESTORE:
                return simple(restoreConfig());
            default:
                break;
        }
        if (!_editing) return {false, {{"result", "refused: there is no edit; begin one with: edit"}}};
        if (statement.code == CONFIG_SET) return set(statement.operands[0], statement.operands[1]);
        return end(statement.code == CONFIG_SAVE ? saveConfigEdit() : cancelConfigEdit());
    }

    bool editing() const { return _editing; }

    /** Admin rights stay when an edit could not be opened or ended. */
    static void giveRightsBack() {
        if (adminModeHeld != 0) releaseAdminMode();
    }

  private:
    Outcome edit() {
        Outcome outcome = simple(getConfigEditMode());
        _editing = outcome.done;
        return outcome;
    }
    Outcome end(int result) {
        if (result == 0) _editing = false;
        return simple(result);
    }

    bool _editing = false;
};

}  // namespace

int configCommand(Session& session, const HostRequest& request) {
    if (!session.waitReady(request.timeout)) return EXIT_NOT_DONE;
    ConfigSession config;
    bool done =
        carryOut(session, request, [&](const Statement& statement) { return config.carryOut(statement); });
    if (config.editing()) {  // nobody is to wait for rights that this process takes to its grave
        printOutcome("cancel", config.carryOut({CONFIG_CANCEL, {}, ""}), request.json);
        done = false;
    }
    ConfigSession::giveRightsBack();
    return done ? EXIT_DONE : EXIT_NOT_DONE;
}
