#include "simulator/areas/Session.h"

#include <cstdlib>

namespace vexsim {
namespace {

bool startsWith(const std::string& text, const std::string& prefix) {
    return text.compare(0, prefix.size(), prefix) == 0;
}

/** The notification that tells of a changed setting, by the beginning of its key. */
constexpr struct {
    const char* prefix;
    vex_eventcode_e code;
} kChangeEvents[] = {
    {"Config.Services.", VEX_EVENT_SERVICES_CFG_CHANGE}, {"Config.Snmp.", VEX_EVENT_SNMP_CFG_CHANGE},
    {"Config.System.", VEX_EVENT_NETWORK_CFG_CHANGE},    {"Config.Switch.", VEX_EVENT_SWITCH_CFG_CHANGE},
    {"Config.UserPort.", VEX_EVENT_PORT_CFG_CHANGE},
};

/** The port of "Config.UserPort.0.PORT.NAME" as an event's source; zeros for any other key. */
vex_eventsource_s sourceOf(const std::string& key) {
    const std::string prefix = "Config.UserPort.0.";
    if (!startsWith(key, prefix)) return {};
    return {{0, 0, static_cast<int32_t>(std::strtol(key.c_str() + prefix.size(), nullptr, 10))}};
}

/** Puts settings in force and reports them: one notification for each kind of setting and port. */
void putInForce(Switch& target, const std::map<std::string, std::string>& settings) {
    std::map<std::pair<int32_t, int32_t>, std::string> changed;
    for (const auto& [key, value] : settings) {
        if (target.value(key) == value) continue;
        target.set(key, value);
        for (const auto& row : kChangeEvents) {
            if (startsWith(key, row.prefix)) changed.emplace(std::pair(row.code, sourceOf(key).word[2]), key);
        }
    }
    for (const auto& [about, key] : changed) {
        target.raise(about.first, key, {{0, 0, about.second}});
    }
}

void endEdit(Session& session) {
    session.edit = EditKind::None;
    session.pending.clear();
}

uint32_t requestAdmin(Switch& target, const Command& command) {
    Session& session = target.part<Session>();
    const bool taken = (session.admin || session.heldElsewhere) && !session.isAdmin(command.handle);
    if (taken && !session.sharedAdmin) return Refused;
    session.admin = command.handle;
    return Ok;
}

uint32_t releaseAdmin(Switch& target, const Command& command) {
    Session& session = target.part<Session>();
    if (!session.isAdmin(command.handle)) return NoAdmin;
    session.admin.reset();
    endEdit(session);
    return Ok;
}

template <EditKind kind>
uint32_t edit(Switch& target, const Command& command) {
    Session& session = target.part<Session>();
    if (!session.isAdmin(command.handle)) return NoAdmin;
    if (session.edit != EditKind::None) return Busy;
    session.edit = kind;
    return Ok;
}

template <EditKind kind>
uint32_t save(Switch& target, const Command& command) {
    Session& session = target.part<Session>();
    if (!session.isAdmin(command.handle)) return NoAdmin;
    if (session.edit != kind) return NotInEdit;
    putInForce(target, session.pending);
    if (kind == EditKind::Cim) target.raise(VEX_EVENT_CIM_CFG_CHANGE, "");
    endEdit(session);
    return Ok;
}

template <EditKind kind>
uint32_t cancel(Switch& target, const Command& command) {
    Session& session = target.part<Session>();
    if (!session.isAdmin(command.handle)) return NoAdmin;
    if (session.edit != kind) return NotInEdit;
    endEdit(session);
    return Ok;
}

/** Saving puts settings in force at once here, so activation after it has nothing left to do. */
uint32_t activate(Switch& target, const Command& command) {
    Session& session = target.part<Session>();
    if (!session.isAdmin(command.handle)) return NoAdmin;
    if (session.edit == EditKind::Cim) return Busy;
    return session.edit == EditKind::Switch ? save<EditKind::Switch>(target, command) : uint32_t{Ok};
}

uint32_t backUp(Switch& target, const Command&) {
    Session& session = target.part<Session>();
    session.backup.clear();
    for (const auto& [key, value] : target.store()) {
        if (startsWith(key, "Config.")) session.backup.emplace(key, value);
    }
    session.hasBackup = true;
    return Ok;
}

uint32_t restore(Switch& target, const Command&) {
    Session& session = target.part<Session>();
    if (!session.hasBackup) return NoBackup;
    if (session.edit != EditKind::None) return Busy;
    putInForce(target, session.backup);
    return Ok;
}

constexpr struct {
    const char* key;
    uint32_t (*run)(Switch&, const Command&);
} kCommands[] = {
    {"Cmd.Switch.ReqAdmin", requestAdmin},
    {"Cmd.Switch.RelAdmin", releaseAdmin},
    {"Cmd.Switch.CancelAdmin", releaseAdmin},
    {"Cmd.Switch.EditConfig", edit<EditKind::Switch>},
    {"Cmd.Switch.SaveConfig", save<EditKind::Switch>},
    {"Cmd.Switch.ActConfig", activate},
    {"Cmd.Switch.CancelConfig", cancel<EditKind::Switch>},
    {"Cmd.Cim.EditConfig", edit<EditKind::Cim>},
    {"Cmd.Cim.SaveConfig", save<EditKind::Cim>},
    {"Cmd.Cim.CancelConfig", cancel<EditKind::Cim>},
    {"Cmd.Switch.BackupConfig", backUp},
    {"Cmd.Switch.RestoreConfig", restore},
};

uint32_t runCommand(Switch& target, const Command& command) {
    for (const auto& row : kCommands) {
        if (command.key == row.key) return row.run(target, command);
    }
    return UnknownKey;
}

struct AdminChange {
    std::optional<bool> heldElsewhere;
    std::optional<bool> shared;

    explicit AdminChange(TableReader& table) {
        if (table.has("held_elsewhere")) heldElsewhere = table.flag("held_elsewhere");
        if (table.has("shared")) shared = table.flag("shared");
    }

    void operator()(Switch& target) const {
        Session& session = target.part<Session>();
        session.heldElsewhere = heldElsewhere.value_or(session.heldElsewhere);
        session.sharedAdmin = shared.value_or(session.sharedAdmin);
    }
};

}  // namespace

uint32_t setConfig(Switch& target, const Command& command) {
    Session& session = target.part<Session>();
    if (!target.has(command.key)) return UnknownKey;
    if (session.edit == EditKind::None || !session.isAdmin(command.handle)) return NotInEdit;
    session.pending[command.key] = command.value;
    return Ok;
}

Command splitOperand(Switch& target, const Command& command) {
    if (!startsWith(command.key, "Config.")) return command;
    // From the right: a value may hold dots (an address), and the longest key that the switch knows is the
    // one.
    for (size_t dot = command.key.rfind('.'); dot != std::string::npos && dot > 0;
         dot = command.key.rfind('.', dot - 1)) {
        const std::string key = command.key.substr(0, dot);
        if (target.has(key))
            return {key, command.key.substr(dot + 1), command.batch, command.index, command.handle};
    }
    return command;
}

Area sessionArea() {
    Area made;
    made.name = "session";
    made.sections = {
        {"admin", false, [](TableReader& table, Switch& target) { AdminChange{table}(target); }}};
    made.steps = {{"admin", [](TableReader& table) -> Action { return AdminChange(table); }}};
    made.commandPrefixes = {"Cmd.Switch.", "Cmd.Cim."};
    made.command = runCommand;
    return made;
}

}  // namespace vexsim
