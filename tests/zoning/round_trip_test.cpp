#include <algorithm>
#include <random>
#include <set>

#include "tests/zoning/ZoningTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/** A random zoning database and random edits of it. */
class Dice {
  public:
    explicit Dice(unsigned seed) : _random(seed) {}

    size_t below(size_t bound) { return std::uniform_int_distribution<size_t>(0, bound - 1)(_random); }
    std::string name(const char* kind) { return kind + std::to_string(below(6)); }
    std::string wwn() { return "20000011220000" + std::to_string(10 + below(20)); }

    std::string switchText() {
        std::string toml = "[switch]\nwwn = '1000001122AABBCC'\nprincipal = '1000001122000001'\n[zoning]\n";
        const size_t zonesets = 1 + below(4);
        if (below(4) != 0) toml += "active = 'S0'\n";
        for (int i = 0; i < 6; ++i) toml += table("alias", "a", i) + "members = [" + members(false) + "]\n";
        for (int i = 0; i < 6; ++i) {
            toml += table("zone", "z", i) + "type = '" +
                    ZoningCache::vex_smlCnvFromVEXZoneType(static_cast<vex_fzs_zone_type_e>(1 + below(3))) +
                    "'\nmembers = [" + members(true) + "]\n";
        }
        for (size_t i = 0; i < zonesets; ++i) {
            toml += table("zoneset", i % 2 == 0 ? "S" : "s", static_cast<int>(i)) + "zones = [";
            for (int zone = 0; zone < 6; ++zone) {
                if (below(2) == 0) toml += "'z" + std::to_string(zone) + "',";
            }
            toml += "]\n";
        }
        return toml + kLimits;
    }

    datacache::ZoningOutcome edit(datacache::ZoningSession& zoning) {
        const std::string zoneset = (below(2) == 0 ? "S" : "s") + std::to_string(below(5));
        switch (below(13)) {
            case 0:
                return zoning.createZone(name("y"), static_cast<vex_fzs_zone_type_e>(1 + below(3)));
            case 1:
                return zoning.createZoneAlias(name("b"));
            case 2:
                return zoning.createZoneset(zoneset);
            case 3:
                return below(4) == 0 ? zoning.removeZone(name("z")) : zoning.removeZone(name("y"));
            case 4:
                return below(4) == 0 ? zoning.removeZoneAlias(name("a")) : zoning.removeZoneAlias(name("b"));
            case 5:
                return zoning.removeZoneset(zoneset);
            case 6:
            case 7:
                return zoning.addZoneToZoneset(zoneset, name(below(2) == 0 ? "z" : "y"));
            case 8:
                return zoning.removeZoneFromZoneset(zoneset, name("z"));
            case 9:
                return zoning.addMemberToZone(name("z"), VEX_ZMT_DOMAIN_PORT,
                                              std::to_string(below(256)) + ':' + std::to_string(below(256)));
            case 10:
                return zoning.addMemberToZone(name("z"), VEX_ZMT_ALIAS, name("a"));
            case 11:
                return zoning.addMemberToZoneAlias(name("a"), VEX_ZMT_WWN, wwn());
            default:
                return zoning.removeMember(VEX_ZMT_WWN, wwn());
        }
    }

  private:
    static std::string table(const char* kind, const char* prefix, int number) {
        return std::string("[[zoning.") + kind + "]]\nname = '" + prefix + std::to_string(number) + "'\n";
    }
    std::string members(bool aliases) {
        std::set<std::string> texts;
        for (size_t i = below(4); i > 0; --i) texts.insert(wwn());
        if (below(3) == 0) texts.insert("0a0b0" + std::to_string(below(10)));
        if (aliases && below(2) == 0) texts.insert(name("a"));
        std::string list;
        for (const std::string& text : texts) list += '\'' + text + "',";
        return list;
    }

    std::mt19937 _random;
};

class RoundTrip : public ZoningTest, public ::testing::WithParamInterface<unsigned> {
  protected:
    static std::set<std::string> zoneNames(const Contents& contents) {
        std::set<std::string> names;
        for (const std::string& line : contents) {
            if (line.compare(0, 5, "zone ") == 0) names.insert(line.substr(5, line.find(' ', 5) - 5));
        }
        return names;
    }
    static std::set<std::string> aliasNames(const Contents& contents) {
        std::set<std::string> names;
        for (const std::string& line : contents) {
            if (line.compare(0, 6, "alias ") == 0) names.insert(line.substr(6, line.find(' ', 6) - 6));
        }
        return names;
    }
    /** The zones that each zoneset of a commit names; the active one counts under its own name. */
    static std::map<std::string, std::set<std::string>> named(const Zonesets& all,
                                                              const std::string& active) {
        std::map<std::string, std::set<std::string>> names;
        for (const auto& [key, contents] : all) {
            if (key == kUber) continue;
            for (const std::string& zone : zoneNames(contents))
                names[key == kActive ? active : key].insert(zone);
            names[key == kActive ? active : key];
        }
        return names;
    }
    /** Whether the database names nothing that it does not hold. */
    static bool complete(const Zonesets& all) {
        const Contents& uber = all.at(kUber);
        const std::set<std::string> zones = zoneNames(uber);
        const std::set<std::string> aliases = aliasNames(uber);
        for (const auto& [key, contents] : all) {
            for (const std::string& zone : zoneNames(contents)) {
                if (zones.count(zone) == 0) return false;
            }
        }
        for (const std::string& line : uber) {
            const size_t members =
                line.compare(0, 5, "zone ") == 0 ? line.find(' ', line.find(' ', 5) + 1) : line.npos;
            for (size_t at = members; at != line.npos; at = line.find(',', at + 1)) {
                const std::string member = line.substr(at + 1, line.find(',', at + 1) - at - 1);
                if (member.size() == 2 && aliases.count(member) == 0) return false;
            }
        }
        return true;
    }
};

TEST_P(RoundTrip, SwitchHoldsWhatTheCacheHeld) {
    Dice dice(GetParam());
    start(dice.switchText());
    const Zonesets before = onSwitch();
    const std::string active = sim.get("Oper.Zoning.ActiveZoneSet").value();
    datacache::ZoningSession session(zoning(), "client");
    for (int i = 0; i < 25; ++i) EXPECT_LE(dice.edit(session).code, ZONING_FAILED);
    expectNoLeak();
    const Zonesets edited = cached();
    const datacache::ZoningOutcome outcome = session.commit();
    EXPECT_EQ(outcome.done(), complete(edited)) << outcome.text();

    const Zonesets after = onSwitch();
    if (outcome.done()) {
        EXPECT_EQ(after.at(kUber), edited.at(kUber));
        EXPECT_EQ(named(after, ""), named(edited, active));
    } else {
        EXPECT_EQ(after, before) << "a database with loose ends is refused whole";
        EXPECT_EQ(logWith("Zoning session failed").size(), 1U);
    }
    allEvents();
    settle();
    EXPECT_THAT(events(), ElementsAre("DCEventZoningDBChange wwn=1000001122AABBCC")) << "loaded anew, once";
    Zonesets loaded = cached();
    EXPECT_TRUE(refresh());
    EXPECT_THAT(events(), IsEmpty()) << "a second load changes nothing";
    EXPECT_EQ(cached(), loaded);
    loaded.erase(kActive);
    EXPECT_EQ(loaded, after);
    expectNoLeak();
}

INSTANTIATE_TEST_SUITE_P(Seeds, RoundTrip, ::testing::Range(1U, 41U));

}  // namespace
