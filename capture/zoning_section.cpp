#include "capture/sections.h"
#include "simulator/zoning/Database.h"

namespace capture {

namespace {

using vexsim::MemberId;
using vexsim::ZoningDatabase;

const char* wordOf(vex_fzs_zone_type_e type) {
    switch (type) {
        case VEX_ZT_HARD_VPF:
            return "HardVPF";
        case VEX_ZT_HARD_ACL:
            return "HardACL";
        default:
            return "Soft";
    }
}

/** Fills a database with what was read, and remarks what it cannot take or what was never read. */
class Filling {
  public:
    Filling(std::string what, ZoningDatabase& database, std::vector<std::string>& remarks)
        : _what(std::move(what)), _database(database), _remarks(remarks) {}

    void take(const Zoneset& zoneset) {
        for (const Container& alias : zoneset.aliases) takeAlias(alias);
        for (const Container& zone : zoneset.zones) takeZone(zone);
    }

    void takeZoneset(const Zoneset& zoneset) {
        if (_database.createZoneset(zoneset.name) != vexsim::Ok)
            return remark("a zoneset is called \"" + zoneset.name + "\", which none can be");
        if (!zoneset.listed) remark("not all zones of zoneset " + zoneset.name + " were read");
        for (const Container& zone : zoneset.zones) {
            if (zone.name) _database.addZone(zoneset.name, *zone.name);
        }
    }

  private:
    void remark(const std::string& text) { _remarks.push_back(_what + ": " + text); }

    bool create(const char* kind, const Container& container,
                vexsim::Status (ZoningDatabase::*make)(const std::string&)) {
        if (!container.name) {
            remark(std::string("the name of one ") + kind + " was never read, so it is missing");
            return false;
        }
        const vexsim::Status status = (_database.*make)(*container.name);
        if (status == vexsim::Exists) return false;  // several zonesets have it
        if (status == vexsim::Ok) {
            if (!container.complete)
                remark(std::string("not all members of ") + kind + ' ' + *container.name + " were read");
            return true;
        }
        remark(std::string("one ") + kind + " is called \"" + *container.name + "\", which none can be");
        return false;
    }

    void takeAlias(const Container& alias) {
        if (!create("alias", alias, &ZoningDatabase::createAlias)) return;
        for (const recording::Member& member : alias.members)
            addMember(member, *alias.name, *_database.aliases.find(*alias.name),
                      &ZoningDatabase::addAliasMember);
    }

    void takeZone(const Container& zone) {
        if (!create("zone", zone, &ZoningDatabase::createZone)) return;
        vexsim::ZoneContent& made = *_database.zones.find(*zone.name);
        const int64_t type = zone.type.value_or(VEX_ZT_SOFT);
        if (type >= VEX_ZT_SOFT && type <= VEX_ZT_HARD_ACL) {
            made.type = static_cast<vex_fzs_zone_type_e>(type);
        } else {
            remark("zone " + *zone.name + " has a type that no zone has, " + std::to_string(type));
        }
        for (const recording::Member& member : zone.members)
            addMember(member, *zone.name, made, &ZoningDatabase::addZoneMember);
    }

    void addMember(const recording::Member& member, const std::string& name, const vexsim::ZoneContent& made,
                   vexsim::Status (ZoningDatabase::*add)(const std::string&, const std::string&)) {
        const std::optional<MemberId> id = vexsim::makeMember(member.type, member.id);
        const size_t before = made.members.size();
        const bool good = id && (_database.*add)(name, memberText(*id)) == vexsim::Ok &&
                          made.members.size() > before && made.members.back() == *id;
        if (!good) {
            remark(name + " has a member that no switch file can name" + (id ? ", " + memberText(*id) : ""));
        }
    }

    std::string _what;
    ZoningDatabase& _database;
    std::vector<std::string>& _remarks;
};

/** The tables of a database below `path`, "zoning" or "zoning.active". */
void addTables(Document& document, const std::string& path, const ZoningDatabase& database) {
    const auto add = [&](const char* kind, const std::string& name) -> Table& {
        Table& table = document.add("[[" + path + '.' + kind + "]]");
        table.add("name", quoted(name));
        return table;
    };
    const auto addMembers = [](Table& table, const vexsim::ZoneContent& content) {
        std::vector<std::string> texts;
        for (const MemberId& member : content.members) texts.push_back(memberText(member));
        table.add("members", quotedList(texts));
    };
    for (const auto& [name, content] : database.aliases) addMembers(add("alias", name), content);
    for (const auto& [name, content] : database.zones) {
        Table& table = add("zone", name);
        table.add("type", quoted(wordOf(content.type)));
        addMembers(table, content);
    }
    for (const auto& [name, zones] : database.zonesets) add("zoneset", name).add("zones", quotedList(zones));
}

void addLimits(Document& document, const vex_fzs_limits_s& limits) {
    Table& table = document.add("[zoning.limits]");
    table.add("zonesets", limits.max_zonesets);
    table.add("zones", limits.max_zones);
    table.add("members", limits.max_members);
    table.add("zones_per_zoneset", limits.max_zones_per_zoneset);
    table.add("members_per_zone", limits.max_members_per_zone);
    table.add("aliases", limits.max_aliases);
    table.add("members_per_alias", limits.max_members_per_alias);
}

/** Says what is active: the configured zoneset of that name where it is the same, or else one of its own. */
void addActive(const Zoneset& active, const ZoningDatabase& configured, Table& table, ZoningDatabase& own,
               std::vector<std::string>& remarks) {
    const auto same = collect(configured, active.name);
    ZoningDatabase made;
    std::vector<std::string> missing;
    Filling filling("active zoneset", made, missing);
    filling.take(active);
    filling.takeZoneset(active);
    const auto content = collect(made, active.name);
    const bool equal = same && content && same->checksum() == content->checksum();
    if (equal || (same && !active.complete)) {
        table.add("active", quoted(active.name));
        if (!equal) {
            remarks.push_back("active zoneset: not all of it was read, so the configured zoneset " +
                              active.name + " stands for it");
        }
    } else {
        remarks.insert(remarks.end(), missing.begin(), missing.end());
        own = std::move(made);
    }
}

/** Functions that failed when they were last called, where the simulated switch's would not fail alike. */
void addFailures(const ZoningAnswers& zoning, const ZoningDatabase& configured, Document& document) {
    for (const auto& [call, status] : zoning.failures) {
        int64_t usual = vexsim::Ok;
        if (call.first == "vex_fzsGetZoningLimitations") usual = vexsim::UnknownKey;
        if (call.first == "vex_fzsGetActiveZoneset") usual = vexsim::Absent;
        if (call.first == "vex_fzsGetZoneset" && !configured.zonesets.has(call.second))
            usual = vexsim::NoSuchName;
        if (status == usual) continue;
        addFault(document, call.first, call.second).add("result", status);
    }
}

}  // namespace

size_t describeZoning(const Answers& answers, Document& document, std::vector<std::string>& remarks) {
    const ZoningAnswers& zoning = answers.zoning;
    ZoningDatabase configured;
    Filling filling("zoning", configured, remarks);
    if (zoning.all) filling.take(*zoning.all);
    for (const Zoneset& zoneset : zoning.zonesets) filling.take(zoneset);
    for (const Zoneset& zoneset : zoning.zonesets) filling.takeZoneset(zoneset);
    if (zoning.names && !zoning.all)
        remarks.emplace_back("zoning: zones and aliases that are in no zoneset were not read");
    if (zoning.all || zoning.names || zoning.limits || zoning.active) {
        Table table{"[zoning]"};
        ZoningDatabase own;
        if (zoning.active) {
            Zoneset active = *zoning.active;
            const std::string* const name = answers.value("Oper.Zoning.ActiveZoneSet");
            if (active.name.empty() && name != nullptr) active.name = *name;
            addActive(active, configured, table, own, remarks);
        }
        document.tables.push_back(std::move(table));
        if (zoning.limits) addLimits(document, *zoning.limits);
        addTables(document, "zoning", configured);
        addTables(document, "zoning.active", own);
    }
    addFailures(zoning, configured, document);
    return configured.zones.size();
}

}  // namespace capture
