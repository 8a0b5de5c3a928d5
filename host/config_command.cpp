#include <utility>

#include "host/areas.h"
#include "host/commands.h"
#include "host/edits.h"
#include "switchlib/NORV_Vex_Lib.h"

namespace host {

namespace {

Outcome simple(int result) {
    return {result == 0, {{"result", result == 0 ? "done" : "the switch refused (see /tmp/cim.out)"}}};
}

Outcome set(const std::string& key, const std::string& value) {
    void* reply = nullptr;  // the switch library writes there
    return simple(vex_smlSetV(hSwitch, &reply, "%s.%s", key.c_str(), value.c_str()));
}

Outcome get(const std::string& key) {
    const std::optional<std::string> value = readKey(key);
    return value ? Outcome{true, {{"result", *value}}} : simple(-1);
}

/** The configuration-edit session, as the provider of a switch runs one. */
class ConfigSession {
  public:
    explicit ConfigSession(Session& session) : _session(session) {}

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
        return end(statement.code == CONFIG_SAVE ? saveConfigEdit : cancelConfigEdit);
    }

    bool editing() const { return _editing; }

    /** Admin rights stay when an edit could not be opened, or when they were refused back. */
    Outcome giveRightsBack() {
        Outcome outcome = simple(releaseAdminMode());
        if (outcome.done) _session.setHeld("");
        return outcome;
    }

  private:
    Outcome edit() {
        _session.setHeld("admin rights and an open edit");
        Outcome outcome = simple(getConfigEditMode());
        if (outcome.done) _editing = true;
        if (!_editing) _session.setHeld(adminModeHeld != 0 ? "admin rights" : "");
        return outcome;
    }

    /** Ends the edit by `command`, which would give admin rights back too and tell of both in one result: it
     * is told that there are none, so that the two are told apart. */
    Outcome end(int (*command)()) {
        const uint32_t held = std::exchange(adminModeHeld, 0);
        Outcome outcome = simple(command());
        adminModeHeld = held;
        if (!outcome.done) return outcome;
        _editing = false;
        _session.setHeld("admin rights");
        if (giveRightsBack().done) return outcome;
        return {false,
                {{"result", "done, but the switch did not take admin rights back (see /tmp/cim.out)"}}};
    }

    Session& _session;
    bool _editing = false;
};

}  // namespace

int configCommand(Session& session, const HostRequest& request) {
    if (!session.waitConnected(request.timeout)) return EXIT_NOT_DONE;
    ConfigSession config(session);
    bool done =
        carryOut(session, request, [&](const Statement& statement) { return config.carryOut(statement); });
    if (config.editing()) {  // nobody is to wait for rights that this process takes to its grave
        printOutcome("cancel", config.carryOut({CONFIG_CANCEL, {}, ""}), request.json);
        done = false;
    }
    if (adminModeHeld != 0) {
        printOutcome("give admin rights back", config.giveRightsBack(), request.json);
        done = false;
    }
    return done ? EXIT_DONE : EXIT_NOT_DONE;
}

}  // namespace host
