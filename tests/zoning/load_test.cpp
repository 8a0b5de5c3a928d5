#include "tests/zoning/ZoningTest.h"

namespace {

using namespace testing;

class ZoningLoad : public ZoningTest {
  protected:
    /** The zonesets with their types, in the order of the walk. */
    std::string walk() {
        std::string found;
        _ZoneSetTypes type{};
        for (void* zoneset = zoning().getFirstZoneset(type); zoneset != nullptr;
             zoneset = zoning().getNextZoneset(zoneset, type)) {
            char name[VEX_ZONING_NAME_SIZE];
            vex_ZonesetGetName(zoneset, name);
            found += name + (' ' + std::to_string(type)) + ' ';
        }
        return found;
    }
};

TEST_F(ZoningLoad, TellsHowLongEachPartTook) {
    load(kSwitch);
    fault("uptime_s = 20\nfunction = 'vex_fzsGetActiveZoneset'");
    fault("uptime_s = 30\nfunction = 'vex_fzsGetZoneset'\nskip = 1");
    settle();
    // One second more where the clock's own tick falls in between.
    EXPECT_THAT(log(), IsSupersetOf({MatchesRegex(".* Active zoneset added, 2[01]s"),
                                     MatchesRegex(".* 'alpha' added, [01]s"),
                                     MatchesRegex(".* 'beta' added, 3[01]s")}));
}

TEST_F(ZoningLoad, ComparesChecksumsAsHexadecimalNumbers) {
    const std::string key = "Oper.Zoning.InactiveChecksum";
    start(kSwitch + "[sml]\n\"" + key + "\" = \"1A2B\"\n");
    const std::pair<const char*, size_t> cases[] = {
        {"00001a2b", 0}, {"1A2C", 1}, {"FFFFFFFF", 1}, {"ffffffff", 0}};
    for (const auto& [checksum, changes] : cases) {
        sim.set(key, checksum);
        EXPECT_TRUE(refresh());
        EXPECT_EQ(events().size(), changes) << checksum;
    }
    cache().reloadZoning();
    sim.set(key, "0");
    EXPECT_TRUE(refresh());
    EXPECT_EQ(events().size(), 1U) << "forced, though this is one more in 32 bits";
}

TEST_F(ZoningLoad, AsksAgainForAMissingActiveZonesetWhereThatIsWanted) {
    load(kSwitch + limitsText());
    fault("function = 'vex_fzsGetActiveZoneset'\nresult = 5\ntimes = 2");
    settle();
    const struct {
        bool wanted, asked, missing;
    } reads[] = {
        {false, false, true}, {true, true, true},   {false, false, true},
        {true, true, false},  {true, false, false},
    };
    for (const auto& read : reads) {
        events();
        calls();
        log();
        read.wanted ? DataCache::refreshNow() : cache().updateZoning();
        EXPECT_TRUE(pass());
        takeEvaluationRequests();
        const auto count = [](const std::vector<std::string>& lines, const std::string& text) {
            return std::count_if(lines.begin(), lines.end(),
                                 [&](const std::string& line) { return line.rfind(text, 0) == 0; });
        };
        EXPECT_EQ(count(calls(), "vex_fzsGetActiveZoneset "), read.asked);
        EXPECT_EQ(count(log(), "2 DCACHE: no active zoneset"), read.asked && read.missing);
        EXPECT_EQ(count(events(), "DCEventActiveZonesetChange"), read.asked && !read.missing);
        const Health health = DataCache::health();
        EXPECT_EQ(health[CacheArea::Zoning].firstGap.status, read.missing ? 5 : 0)
            << "told until it is mended";
        EXPECT_EQ(count(health.problems(), "the active zoneset is missing"), read.missing);
    }
}

TEST_F(ZoningLoad, WithoutTheActiveZonesetStillTellsOfTheChange) {
    start();
    fault("function = 'vex_fzsGetActiveZoneset'\nresult = 5");
    step("do = 'zoneset_activate'\nname = 'beta'");
    EXPECT_THAT(log(), Contains("2 DCACHE: no active zoneset"));
    EXPECT_THAT(events(), ElementsAre("DCEventActiveZonesetChange wwn=1000001122000001 "
                                      "previousActiveZoneset=\"alpha\" activeZoneset=\"beta\""));
    EXPECT_TRUE(refresh());
    EXPECT_EQ(zoning().getActiveZoneset(), nullptr) << "it counts as loaded";
}

TEST_F(ZoningLoad, IsDueUntilTheHostWasTold) {
    static int leaving = 0;
    const struct {
        int type;
        const char *change, *back;
    } cases[] = {
        {DCEventZoningDBChange::TYPE, "do = 'zone_add'\nname = 'z9'", "do = 'zone_remove'\nname = 'z9'"},
        {DCEventActiveZonesetChange::TYPE, "do = 'zoneset_activate'\nname = 'beta'",
         "do = 'zoneset_activate'\nname = 'alpha'"},
    };
    for (const auto& [type, change, back] : cases) {
        start();
        const std::string before = shown();
        leaving = type;
        {
            const AccessGuard guard;
            peer().callback = [](DataCacheEvent* event) {
                if (event->type == std::exchange(leaving, -1)) throw "left";
            };
        }
        sim.run(change);
        sim.deliverPending();
        pass();
        EXPECT_NE(shown(), before);
        step(back);
        EXPECT_EQ(shown(), before) << "though the checksum is that of what the host was told of last";
    }
}

TEST_F(ZoningLoad, EndsSoonWhenACountIsWild) {
    start();
    for (const char* count : {"ZonesetGetZone", "ZonesetGetAlias", "ZoneGetMember", "ZoneAliasGetMember"}) {
        const auto wild = [&] {
            fault(std::string("result = 2147483647\nfunction = 'vex_") + count + "Count'");
        };
        wild();
        cache().reloadZoning();
        EXPECT_TRUE(refresh());
        wild();
        zoning().dump();
        wild();
        zoning().replaceZoningDB();
        EXPECT_THAT(log(), Contains(HasSubstr("Internal consistency error"))) << "of " << count;
    }
}

TEST_F(ZoningLoad, SurvivesZonesetsThatTakeEachOthersPlace) {
    start();
    const std::string before = shown();
    for (const std::string name : {"[UberZoneSetKey]", "[ActiveZoneSetKey]", "beta"}) {
        cache().reloadZoning();
        fault("function = 'vex_ZonesetGetName'\nvalue = '" + name + '\'');
        EXPECT_TRUE(refresh());
        EXPECT_NE(zoning().getUberZoneset(), nullptr);
        cache().reloadZoning();
        EXPECT_TRUE(refresh());
        EXPECT_EQ(shown(), before) << name;
    }
    sim.run("do = 'zoneset_deactivate'");
    EXPECT_TRUE(refresh());
    EXPECT_EQ(walk(), "__UberZoneset__ 2 alpha 1 beta 1 ") << "no load leaves behind what it replaces";
}

TEST_F(ZoningLoad, GivesZonesetsByKeyAndInTheOrderOfKeys) {
    start();
    _ZoneSetTypes type{};
    EXPECT_NE(zoning().getZoneset(Arg{"alpha"}, type), zoning().getActiveZoneset());
    EXPECT_EQ(type, ZONESET_INACTIVE);
    EXPECT_EQ(zoning().getZoneset(Arg{"[ActiveZoneSetKey]"}, type), zoning().getActiveZoneset());
    EXPECT_EQ(type, ZONESET_ACTIVE);
    EXPECT_EQ(zoning().getZoneset(Arg{"__UberZoneset__"}, type), nullptr);
    EXPECT_TRUE(zoning().isUberZoneset(zoning().getUberZoneset()));
    EXPECT_FALSE(zoning().isActiveZoneset(zoning().getUberZoneset()));
    EXPECT_EQ(zoning().getNextZoneset(&type, type), nullptr) << "unknown handles have no next";
    EXPECT_EQ(zoning().createZoneset(Arg{"Zulu"}), ZONING_DONE);
    EXPECT_EQ(walk(), "Zulu 1 alpha 0 __UberZoneset__ 2 alpha 1 beta 1 ");
    zoning().clearInactive();
    EXPECT_EQ(walk(), "alpha 0 __UberZoneset__ 2 ");
    zoning().clearActive();
    EXPECT_EQ(walk(), "__UberZoneset__ 2 ");
    zoning().clearZoningCache();
    EXPECT_EQ(walk(), "");
}

TEST_F(ZoningLoad, KeepsWhatAHostAddsTwice) {
    start();
    void* const first = zoning().getActiveZoneset();
    void* second = vex_ZonesetCreate("second");
    EXPECT_EQ(zoning().addZoneset(second, _ZoneSetTypes{3}), -1) << "no known type";
    EXPECT_EQ(zoning().getActiveZoneset(), first);
    EXPECT_EQ(zoning().addZoneset(second, ZONESET_ACTIVE), -1);
    EXPECT_EQ(zoning().getActiveZoneset(), second) << "current, but not held";
    _ZoneSetTypes type{};
    EXPECT_EQ(zoning().getZoneset(Arg{"[ActiveZoneSetKey]"}, type), first);
    vex_ZonesetDestroy(&second);
    EXPECT_EQ(zoning().delZoneset(nullptr, ZONESET_ACTIVE), 0) << "found by its key, whatever the handle";
    EXPECT_EQ(zoning().getActiveZoneset(), nullptr);
    EXPECT_EQ(zoning().delZoneset(nullptr, ZONESET_ACTIVE), 0) << "an unknown key is no failure";

    // One handle under two keys, and none under a third, end no walk and begin none anew.
    zoning().clearZoningCache();
    void* const zoneset = vex_ZonesetCreate("gamma");
    EXPECT_EQ(zoning().addZoneset(zoneset, ZONESET_ACTIVE), 0);
    EXPECT_EQ(zoning().addZoneset(nullptr, ZONESET_UBER), 0);
    EXPECT_EQ(zoning().replaceZoningDB(), 0);
    EXPECT_EQ(zoning().addZoneset(zoneset, ZONESET_INACTIVE), 0);
    log();
    zoning().dump();
    EXPECT_THAT(log(), ElementsAre(HasSubstr("Zoneset: gamma (active)"), HasSubstr("Zoneset: Bad entry"),
                                   HasSubstr("Zoneset: gamma (inactive)")));
    misuse = 1;  // the host's: the zoneset that it gave twice is destroyed twice
}

}  // namespace
