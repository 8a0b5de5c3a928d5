#include "simulator/zoning/Database.h"

#include <algorithm>
#include <cstdio>

#include "simulator/zoning/names.h"

namespace vexsim {
namespace {

/** FNV-1a over texts, each with its end marked. */
class Checksum {
  public:
    void add(const std::string& text) {
        for (const char c : text) take(static_cast<uint8_t>(c));
        take(0);
    }
    void add(const NamedList<ZoneContent>& list) {
        for (const auto& [name, content] : list) {
            add(name);
            take(static_cast<uint8_t>(content.type));
            for (const MemberId& member : content.members) add(memberText(member));
            take(1);
        }
        take(2);
    }
    uint32_t value() const { return _value; }

  private:
    void take(uint8_t byte) { _value = (_value ^ byte) * 16777619U; }

    uint32_t _value = 2166136261U;
};

std::string hex(uint32_t number) {
    char text[9];
    std::snprintf(text, sizeof text, "%08X", number);
    return text;
}

std::optional<vex_fzs_zone_type_e> zoneType(const std::string& text) {
    if (text == "Soft") return VEX_ZT_SOFT;
    if (text == "HardVPF") return VEX_ZT_HARD_VPF;
    if (text == "HardACL") return VEX_ZT_HARD_ACL;
    return std::nullopt;
}

template <class Item>
Status create(NamedList<Item>& list, const std::string& name) {
    if (!isZoningName(name)) return BadName;
    return list.add(name, {}) ? Ok : Exists;
}

Status addMember(ZoneContent* content, const std::optional<MemberId>& member) {
    if (content == nullptr) return NoSuchName;
    if (!member) return BadMember;
    if (content->has(*member)) return Exists;
    content->members.push_back(*member);
    return Ok;
}

bool over(size_t count, int32_t limit) {
    return count > static_cast<size_t>(std::max(limit, 0));
}

}  // namespace

bool ZoneContent::has(const MemberId& member) const {
    return std::find(members.begin(), members.end(), member) != members.end();
}

Status ZoningDatabase::createAlias(const std::string& name) {
    return create(aliases, name);
}

Status ZoningDatabase::createZone(const std::string& name) {
    return create(zones, name);
}

Status ZoningDatabase::createZoneset(const std::string& name) {
    const Status status = create(zonesets, name);
    return status == Exists ? Ok : status;
}

Status ZoningDatabase::setZoneType(const std::string& zone, const std::string& type) {
    ZoneContent* content = zones.find(zone);
    const std::optional<vex_fzs_zone_type_e> known = zoneType(type);
    if (content == nullptr) return NoSuchName;
    if (!known) return BadArgument;
    content->type = *known;
    return Ok;
}

Status ZoningDatabase::addZoneMember(const std::string& zone, const std::string& text) {
    return addMember(zones.find(zone),
                     inferMember(text, [&](const std::string& name) { return aliases.has(name); }));
}

Status ZoningDatabase::addAliasMember(const std::string& alias, const std::string& text) {
    return addMember(aliases.find(alias), inferMember(text, [](const std::string&) { return false; }));
}

Status ZoningDatabase::addZone(const std::string& zoneset, const std::string& zone) {
    std::vector<std::string>* names = zonesets.find(zoneset);
    if (names == nullptr || !zones.has(zone)) return NoSuchName;
    if (std::find(names->begin(), names->end(), zone) == names->end()) names->push_back(zone);
    return Ok;
}

bool ZoningDatabase::removeZone(const std::string& name) {
    if (!zones.remove(name)) return false;
    for (auto& [zoneset, names] : zonesets)
        names.erase(std::remove(names.begin(), names.end(), name), names.end());
    return true;
}

Status ZoningDatabase::check(const vex_fzs_limits_s& limits) const {
    size_t members = 0;
    bool full = over(zonesets.size(), limits.max_zonesets) || over(zones.size(), limits.max_zones) ||
                over(aliases.size(), limits.max_aliases);
    for (const auto& [name, names] : zonesets)
        full = full || over(names.size(), limits.max_zones_per_zoneset);
    for (const auto& [name, zone] : zones) {
        full = full || over(zone.members.size(), limits.max_members_per_zone);
        members += zone.members.size();
    }
    for (const auto& [name, alias] : aliases) {
        full = full || over(alias.members.size(), limits.max_members_per_alias);
        members += alias.members.size();
    }
    return full || over(members, limits.max_members) ? LimitReached : Ok;
}

uint32_t ZoningDatabase::checksum() const {
    Checksum sum;
    sum.add(aliases);
    sum.add(zones);
    for (const auto& [name, names] : zonesets) {
        sum.add(name);
        for (const std::string& zone : names) sum.add(zone);
        sum.add("");
    }
    return sum.value();
}

uint32_t ZonesetContent::checksum() const {
    Checksum sum;
    sum.add(name);
    sum.add(zones);
    sum.add(aliases);
    return sum.value();
}

std::optional<ZonesetContent> collect(const ZoningDatabase& database, const std::string& zoneset) {
    const std::vector<std::string>* const names = database.zonesets.find(zoneset);
    if (names == nullptr) return std::nullopt;
    ZonesetContent content;
    content.name = zoneset;
    for (const std::string& name : *names) {
        const ZoneContent* const zone = database.zones.find(name);
        if (zone == nullptr) continue;
        content.zones.add(name, *zone);
        for (const MemberId& member : zone->members) {
            if (member.type != VEX_ZMT_ALIAS) continue;
            const ZoneContent* const alias = database.aliases.find(member.alias());
            if (alias != nullptr) content.aliases.add(member.alias(), *alias);
        }
    }
    return content;
}

void publishZoning(Switch& target) {
    const Zoning& zoning = target.part<Zoning>();
    target.set("Oper.Zoning.InactiveChecksum", hex(zoning.configured.checksum()));
    target.set("Oper.Zoning.ActiveChecksum", hex(zoning.active ? zoning.active->checksum() : 0));
    target.set("Oper.Zoning.ActiveZoneSet", zoning.active ? zoning.active->name : "");
}

}  // namespace vexsim
