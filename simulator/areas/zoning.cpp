#include "simulator/areas/Area.h"
#include "simulator/zoning/commands.h"
#include "simulator/zoning/names.h"

namespace vexsim {
namespace {

/** The fabric's limits, all seven or none. */
void loadLimits(TableReader& table, Switch& target) {
    constexpr int64_t kMost = INT32_MAX;
    const auto read = [&](const char* field) { return static_cast<int32_t>(table.integer(field, 0, kMost)); };
    vex_fzs_limits_s limits{};
    limits.max_zonesets = read("zonesets");
    limits.max_zones = read("zones");
    limits.max_members = read("members");
    limits.max_zones_per_zoneset = read("zones_per_zoneset");
    limits.max_members_per_zone = read("members_per_zone");
    limits.max_aliases = read("aliases");
    limits.max_members_per_alias = read("members_per_alias");
    target.zoningLimits = limits;
}

void expect(TableReader& table, const char* field, Status status, const std::string& what) {
    switch (status) {
        case Ok:
            return;
        case BadName:
            table.fail(field, '"' + what + "\" is not a zoning name");
        case BadMember:
            table.fail(field, '"' + what +
                                  "\" is no member: neither an address, domain and port, nor a known alias");
        case NoSuchName:
            table.fail(field, "there is no \"" + what + '"');
        case Exists:
            table.fail(field, '"' + what + "\" is there already");
        default:
            table.fail(field, '"' + what + "\" is refused");
    }
}

void readAlias(TableReader& table, ZoningDatabase& database) {
    const std::string name = table.text("name");
    expect(table, "name", database.createAlias(name), name);
    for (const std::string& text : table.texts("members"))
        expect(table, "members", database.addAliasMember(name, text), text);
    table.finish();
}

void readZone(TableReader& table, ZoningDatabase& database) {
    const std::string name = table.text("name");
    expect(table, "name", database.createZone(name), name);
    if (table.has("type")) database.setZoneType(name, table.word("type", {"Soft", "HardVPF", "HardACL"}));
    for (const std::string& text : table.texts("members"))
        expect(table, "members", database.addZoneMember(name, text), text);
}

void readZoneset(TableReader& table, ZoningDatabase& database) {
    const std::string name = table.text("name");
    if (database.zonesets.has(name)) expect(table, "name", Exists, name);
    expect(table, "name", database.createZoneset(name), name);
    for (const std::string& zone : table.texts("zones"))
        expect(table, "zones", database.addZone(name, zone), zone);
    table.finish();
}

/** [[alias]], [[zone]] and [[zoneset]] tables; aliases first, as zones name them, and zones before zonesets.
 */
ZoningDatabase readDatabase(TableReader& table) {
    ZoningDatabase database;
    for (TableReader& alias : table.tables("alias")) readAlias(alias, database);
    for (TableReader& zone : table.tables("zone")) {
        readZone(zone, database);
        zone.finish();
    }
    for (TableReader& zoneset : table.tables("zoneset")) readZoneset(zoneset, database);
    return database;
}

/** The name of a zoneset of the database, or a table with a database of one zoneset of its own. */
ZonesetContent readActive(TableReader& table, const ZoningDatabase& configured) {
    if (table.isTable("active")) {
        TableReader own = *table.table("active");
        const ZoningDatabase database = readDatabase(own);
        own.finish();
        if (database.zonesets.size() != 1) own.fail("what is active is one zoneset");
        return *collect(database, database.zonesets.begin()->first);
    }
    const std::string name = table.text("active");
    std::optional<ZonesetContent> content = collect(configured, name);
    if (!content) expect(table, "active", NoSuchName, name);
    return std::move(*content);
}

/**
 * For a file without the section: checksums of 1, with which a cache begins, so that files about other things
 * load no zoning.
 */
void setZoningDefaults(Switch& target) {
    target.set("Oper.Zoning.InactiveChecksum", "1");
    target.set("Oper.Zoning.ActiveChecksum", "1");
    target.set("Oper.Zoning.ActiveZoneSet", "");
}

void loadZoning(TableReader& table, Switch& target) {
    Zoning& zoning = target.part<Zoning>();
    if (std::optional<TableReader> limits = table.table("limits")) {
        loadLimits(*limits, target);
        limits->finish();
    }
    zoning.configured = readDatabase(table);
    if (table.has("active")) zoning.active = readActive(table, zoning.configured);
    publishZoning(target);
}

void activate(Switch& target, std::optional<ZonesetContent> content) {
    Zoning& zoning = target.part<Zoning>();
    zoning.active = std::move(content);
    publishZoning(target);
    target.raise(VEX_EVENT_ZONE_CHANGE,
                 zoning.active ? "Active zoneset " + zoning.active->name : "No active zoneset");
}

Action readActivate(TableReader& table) {
    return [name = table.text("name")](Switch& target) {
        std::optional<ZonesetContent> content = collect(target.part<Zoning>().configured, name);
        if (!content) throw StepError("the switch has no zoneset \"" + name + '"');
        activate(target, std::move(content));
    };
}

Action readDeactivate(TableReader&) {
    return [](Switch& target) { activate(target, std::nullopt); };
}

/** Somebody else in the fabric commits: a whole database, one zone more, or one less. */
Action readReplace(TableReader& table) {
    return [database = readDatabase(table)](Switch& target) { configureZoning(target, database); };
}

Action readZoneAdd(TableReader& table) {
    const std::string name = table.text("name");
    if (!isZoningName(name)) expect(table, "name", BadName, name);
    const std::string type =
        table.has("type") ? table.word("type", {"Soft", "HardVPF", "HardACL"}) : std::string("Soft");
    return
        [name, type, members = table.texts("members"), zonesets = table.texts("zonesets")](Switch& target) {
            ZoningDatabase database = target.part<Zoning>().configured;
            bool good = database.createZone(name) == Ok && database.setZoneType(name, type) == Ok;
            for (const std::string& text : members) good = good && database.addZoneMember(name, text) == Ok;
            for (const std::string& zoneset : zonesets) good = good && database.addZone(zoneset, name) == Ok;
            if (!good) throw StepError("the switch cannot take the zone \"" + name + '"');
            configureZoning(target, std::move(database));
        };
}

Action readZoneRemove(TableReader& table) {
    return [name = table.text("name")](Switch& target) {
        ZoningDatabase database = target.part<Zoning>().configured;
        if (!database.removeZone(name)) throw StepError("the switch has no zone \"" + name + '"');
        configureZoning(target, std::move(database));
    };
}

Action readFabricLock(TableReader& table) {
    return [held = table.flag("held_elsewhere")](Switch& target) {
        Zoning& zoning = target.part<Zoning>();
        if (held && zoning.lock) throw StepError("the fabric's lock is held here");
        zoning.lockedElsewhere = held;
    };
}

}  // namespace

Area zoningArea() {
    Area made;
    made.name = "zoning";
    made.sections = {{"zoning", false, loadZoning}};
    made.steps = {
        {"zoneset_activate", readActivate}, {"zoneset_deactivate", readDeactivate},
        {"zoning_replace", readReplace},    {"zone_add", readZoneAdd},
        {"zone_remove", readZoneRemove},    {"fabric_lock", readFabricLock},
    };
    made.defaults = setZoningDefaults;
    made.commandPrefixes = {"Cmd.Zoning."};
    made.command = runZoningCommand;
    return made;
}

}  // namespace vexsim
