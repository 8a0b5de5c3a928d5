#include "simulator/zoning/commands.h"

#include <array>
#include <utility>

#include "simulator/areas/Session.h"

namespace vexsim {
namespace {

Status lock(Switch& target, const Command& command) {
    Zoning& zoning = target.part<Zoning>();
    if (!target.part<Session>().isAdmin(command.handle)) return NoAdmin;
    if (zoning.lockedElsewhere || zoning.lock.value_or(command.handle) != command.handle) return Refused;
    zoning.lock = command.handle;
    zoning.edit.reset();  // a lock that is taken again begins anew
    return Ok;
}

Status unlock(Switch& target, const Command& command) {
    Zoning& zoning = target.part<Zoning>();
    if (!target.part<Session>().isAdmin(command.handle)) return NoAdmin;
    if (zoning.lock != command.handle) return NotLocked;
    zoning.lock.reset();
    zoning.edit.reset();
    return Ok;
}

Status edit(Switch& target, const Command& command) {
    Zoning& zoning = target.part<Zoning>();
    if (!target.part<Session>().isAdmin(command.handle)) return NoAdmin;
    if (zoning.lock != command.handle) return NotLocked;
    if (zoning.edit) return Busy;
    zoning.edit = zoning.configured;
    zoning.editFailed = false;
    return Ok;
}

Status clear(Switch&, ZoningDatabase& database) {
    database = ZoningDatabase();
    return Ok;
}

Status save(Switch& target, ZoningDatabase& database) {
    if (target.part<Zoning>().editFailed) return Refused;
    if (target.zoningLimits) {
        const Status status = database.check(*target.zoningLimits);
        if (status != Ok) return status;
    }
    configureZoning(target, std::move(database));
    target.part<Zoning>().edit.reset();
    return Ok;
}

Status cancel(Switch& target, ZoningDatabase&) {
    target.part<Zoning>().edit.reset();
    return Ok;
}

constexpr struct {
    const char* key;
    Status (*run)(Switch&, const Command&);
} kSessionCommands[] = {
    {"Cmd.Zoning.FabricLock.77", lock},
    {"Cmd.Zoning.FabricUnlock.77", unlock},
    {"Cmd.Zoning.EditConfig", edit},
};

/** Commands of an edit as a whole. */
constexpr struct {
    const char* key;
    Status (*run)(Switch&, ZoningDatabase&);
} kEditCommands[] = {
    {"Cmd.Zoning.ClearConfig", clear},
    {"Cmd.Zoning.SaveConfig", save},
    {"Cmd.Zoning.CancelConfig", cancel},
};

/** Commands about one object: "Cmd.Zoning.KIND.NAME.VERB" or "...VERB.OPERAND". */
constexpr struct {
    const char* kind;
    const char* verb;
    Status (ZoningDatabase::*create)(const std::string& name);
    Status (ZoningDatabase::*change)(const std::string& name, const std::string& operand);
} kObjectCommands[] = {
    {"Alias", "Create", &ZoningDatabase::createAlias, nullptr},
    {"Alias", "AddZoneMember", nullptr, &ZoningDatabase::addAliasMember},
    {"Zone", "Create", &ZoningDatabase::createZone, nullptr},
    {"Zone", "ZoneType", nullptr, &ZoningDatabase::setZoneType},
    {"Zone", "AddZoneMember", nullptr, &ZoningDatabase::addZoneMember},
    {"ZoneSet", "Create", &ZoningDatabase::createZoneset, nullptr},
    {"ZoneSet", "AddZone", nullptr, &ZoningDatabase::addZone},
};

/** KIND, NAME, VERB and OPERAND; names have no dots, and an operand is all that is left. */
std::array<std::string, 4> split(const std::string& key) {
    std::array<std::string, 4> parts;
    size_t start = sizeof("Cmd.Zoning.") - 1;
    for (size_t i = 0; i < parts.size(); ++i) {
        const size_t dot = i + 1 < parts.size() ? key.find('.', start) : std::string::npos;
        parts[i] = key.substr(start, dot == std::string::npos ? dot : dot - start);
        if (dot == std::string::npos) break;
        start = dot + 1;
    }
    return parts;
}

Status runOnObject(ZoningDatabase& database, const std::string& key) {
    const auto [kind, name, verb, operand] = split(key);
    for (const auto& row : kObjectCommands) {
        if (kind != row.kind || verb != row.verb) continue;
        if (row.change != nullptr) return (database.*row.change)(name, operand);
        return operand.empty() ? (database.*row.create)(name) : UnknownKey;
    }
    return UnknownKey;
}

}  // namespace

uint32_t runZoningCommand(Switch& target, const Command& command) {
    for (const auto& row : kSessionCommands) {
        if (command.key == row.key) return row.run(target, command);
    }
    Zoning& zoning = target.part<Zoning>();
    if (!zoning.edit || zoning.lock != command.handle || !target.part<Session>().isAdmin(command.handle))
        return NotInEdit;
    for (const auto& row : kEditCommands) {
        if (command.key == row.key) return row.run(target, *zoning.edit);
    }
    const Status status = runOnObject(*zoning.edit, command.key);
    if (status != Ok) zoning.editFailed = true;
    return status;
}

void configureZoning(Switch& target, ZoningDatabase database) {
    Zoning& zoning = target.part<Zoning>();
    const bool changed = database.checksum() != zoning.configured.checksum();
    zoning.configured = std::move(database);
    publishZoning(target);
    if (changed) target.raise(VEX_EVENT_ZONE_CHANGE, "Zoning configuration");
}

}  // namespace vexsim
