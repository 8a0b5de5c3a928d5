#include "tests/zoning/ZoningTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

const std::string kDatabaseChange = "DCEventZoningDBChange wwn=1000001122AABBCC";

std::string activeChange(const std::string& previous, const std::string& now) {
    return "DCEventActiveZonesetChange wwn=1000001122000001 previousActiveZoneset=\"" + previous +
           "\" activeZoneset=\"" + now + '"';
}

class ZoningLoad : public ZoningTest {
  protected:
    std::vector<std::string> libraryCalls() {
        std::vector<std::string> found;
        for (const std::string& call : calls()) {
            if (call.compare(0, 7, "vex_fzs") == 0 || call.compare(0, 7, "vex_sml") == 0)
                found.push_back(call.substr(0, call.find(' ')));
        }
        return found;
    }
};

TEST_F(ZoningLoad, ReadsAllAtFirst) {
    load(std::string(kSwitch) + kLimits);
    settle();
    EXPECT_THAT(events(), ElementsAre(activeChange("", "alpha"), kDatabaseChange));
    const Zonesets loaded = cached();
    EXPECT_EQ(loaded.size(), 4U);
    EXPECT_THAT(loaded.at(kActive),
                ElementsAre("zone z1 Soft 2000001122000003,a1", "zone z2 HardACL 0102,010203",
                            "alias a1 2000001122000001,2000001122000002"));
    EXPECT_EQ(loaded.at("beta").size(), 2U);
    EXPECT_EQ(loaded.at(kUber).size(), 5U);
    EXPECT_THAT(logWith("Zoning database update complete").size(), 1U);
    expectNoLeak();
    EXPECT_TRUE(refresh());
    EXPECT_THAT(events(), IsEmpty()) << "nothing changed";
}

TEST_F(ZoningLoad, TellsHowLongEachPartTook) {
    load(std::string(kSwitch) + kLimits);
    for (const char* fault : {"uptime_s = 20\nfunction = 'vex_fzsGetActiveZoneset'",
                              "uptime_s = 30\nfunction = 'vex_fzsGetZoneset'\nskip = 1",
                              "uptime_s = 40\nfunction = 'vex_fzsGetAllZonesAndAliases'"})
        sim.run(std::string("do = 'fault'\n") + fault);
    log();
    settle();
    // One second more where the clock's own tick falls in between.
    EXPECT_THAT(
        logWith(" added, "),
        ElementsAre(MatchesRegex(".* Active zoneset added, 2[01]s"), MatchesRegex(".* 'alpha' added, [01]s"),
                    MatchesRegex(".* 'beta' added, 3[01]s"), MatchesRegex(".* Uber zoneset added, 4[01]s")));
}

TEST_F(ZoningLoad, ReadsOnlyThePartThatChanged) {
    start();
    sim.run("do = 'zone_add'\nname = 'z4'\nmembers = ['a2']\nzonesets = ['beta']");
    EXPECT_TRUE(refresh());
    EXPECT_THAT(libraryCalls(), ElementsAre("vex_smlGetBatch", "vex_fzsGetZonesetList", "vex_fzsGetZoneset",
                                            "vex_fzsGetZoneset", "vex_fzsGetAllZonesAndAliases"));
    EXPECT_THAT(events(), ElementsAre(kDatabaseChange));
    sim.run("do = 'zoneset_activate'\nname = 'beta'");
    EXPECT_TRUE(refresh());
    EXPECT_THAT(libraryCalls(), ElementsAre("vex_smlGetBatch", "vex_fzsGetActiveZoneset"));
    EXPECT_THAT(events(), ElementsAre(activeChange("alpha", "beta")));
    sim.run("do = 'zoneset_deactivate'");
    EXPECT_TRUE(refresh());
    EXPECT_THAT(libraryCalls(), ElementsAre("vex_smlGetBatch"));
    EXPECT_THAT(events(), ElementsAre(activeChange("beta", "")));
    EXPECT_EQ(zoning().getActiveZoneset(), nullptr);
    expectNoLeak();
}

TEST_F(ZoningLoad, OfATransparentSwitchAsksNothing) {
    start(std::string("[features]\ntransparent = true\n") + kSwitch);
    sim.set("Config.Switch.TransparentMode", "True");
    cache().updateSwitch();
    pass();
    sim.run("do = 'zone_remove'\nname = 'z3'");
    allEvents();
    calls();
    const Zonesets before = cached();
    calls();
    EXPECT_TRUE(refresh());
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(cached(), before);
}

TEST_F(ZoningLoad, ComparesChecksumsAsHexadecimalNumbers) {
    const std::string key = "Oper.Zoning.InactiveChecksum";
    start(std::string(kSwitch) + "[sml]\n\"" + key + "\" = \"1A2B\"\n");
    const struct {
        const char* checksum;
        bool loads;
    } cases[] = {{"00001a2b", false}, {"1A2C", true}, {"FFFFFFFF", true}, {"ffffffff", false}};
    for (const auto& test : cases) {
        sim.set(key, test.checksum);
        EXPECT_TRUE(refresh());
        EXPECT_EQ(events().size(), test.loads ? 1U : 0U) << test.checksum;
    }
    cache().reloadZoning();
    sim.set(key, "0");
    EXPECT_TRUE(refresh());
    EXPECT_THAT(events(), ElementsAre(kDatabaseChange)) << "forced, though this is one more in 32 bits";
}

TEST_F(ZoningLoad, OfAnEmptyDatabaseStillHasTheUberZoneset) {
    load(std::string("[switch]\nwwn = '1000001122AABBCC'\nprincipal = '1000001122000001'\n") + kLimits);
    settle();
    EXPECT_THAT(events(), ElementsAre(activeChange("", ""), kDatabaseChange));
    EXPECT_EQ(cached(), (Zonesets{{kUber, {}}}));
}

TEST_F(ZoningLoad, IsRepeatedUntilItSucceeds) {
    const struct {
        const char* function;
        const char* message;
        size_t zonesets;
    } cases[] = {
        {"vex_fzsGetZonesetList", "2 DCACHE: vex_fzsGetZonesetList failed", 1},
        {"vex_fzsGetZoneset", "2 DCACHE: vex_fzsGetZoneset failed", 2},
        {"vex_fzsGetAllZonesAndAliases", "2 DCACHE: vex_fzsGetAllZonesAndAliases failed", 3},
    };
    for (const char* effect : {"result = 5", "null = true"}) {
        for (const auto& test : cases) {
            const bool list = test.function == cases[0].function;
            if (list && effect[0] == 'n') continue;  // hands out no handle
            SCOPED_TRACE(std::string(test.function) + ' ' + effect);
            start();
            const Zonesets before = cached();
            const std::string checksum = sim.get("Oper.Zoning.InactiveChecksum").value();
            sim.set("Oper.Zoning.InactiveChecksum", "ABC");
            sim.run(std::string("do = 'fault'\nfunction = '") + test.function + "'\n" + effect +
                    (test.zonesets == 2 ? "\nskip = 1" : ""));
            log();
            EXPECT_FALSE(refresh());
            EXPECT_THAT(logWith("failed").front(), test.message);
            EXPECT_EQ(cached().size(), test.zonesets);
            EXPECT_EQ(zoning().getUberZoneset(), nullptr);
            EXPECT_THAT(events(), IsEmpty());
            EXPECT_NE(zoning().createZone(Arg{"z9"}, VEX_ZT_SOFT), ZONING_DONE) << "without an uber zoneset";
            expectNoLeak();
            sim.set("Oper.Zoning.InactiveChecksum", checksum);
            EXPECT_TRUE(refresh());
            EXPECT_EQ(cached(), before) << "also when the checksum is the one of the last good load again";
            EXPECT_THAT(events(), ElementsAre(kDatabaseChange));
        }
    }
}

TEST_F(ZoningLoad, KeepsWhatItHasWhenTheChecksumsCannotBeRead) {
    start();
    const Zonesets before = cached();
    sim.run("do = 'zone_remove'\nname = 'z1'");
    sim.run("do = 'fault'\nfunction = 'vex_smlGetBatch'\nkey = 'Oper.Zoning.*'\nstatus = 24");
    EXPECT_FALSE(refresh());
    EXPECT_THAT(logWith("failed").front(), "2 DCACHE: Cache update failed: DataCache:_getZoningInfo:2469");
    EXPECT_EQ(cached(), before);
    EXPECT_TRUE(refresh());
    EXPECT_NE(cached(), before);
}

TEST_F(ZoningLoad, WithoutTheActiveZonesetStillTellsOfTheChange) {
    start();
    sim.run("do = 'zoneset_activate'\nname = 'beta'");
    sim.run("do = 'fault'\nfunction = 'vex_fzsGetActiveZoneset'\nresult = 5");
    log();
    EXPECT_TRUE(refresh());
    EXPECT_THAT(logWith("active zoneset"), ElementsAre("2 DCACHE: no active zoneset"));
    EXPECT_THAT(events(), ElementsAre(activeChange("alpha", "beta")));
    EXPECT_EQ(zoning().getActiveZoneset(), nullptr);
    EXPECT_TRUE(refresh());
    EXPECT_EQ(zoning().getActiveZoneset(), nullptr) << "it counts as loaded";
    expectNoLeak();
}

TEST_F(ZoningLoad, SurvivesZonesetsThatTakeEachOthersPlace) {
    start();
    const Zonesets before = cached();
    for (const std::string& name : {kUber, kActive, std::string("beta")}) {
        SCOPED_TRACE(name);
        cache().reloadZoning();
        sim.run("do = 'fault'\nfunction = 'vex_ZonesetGetName'\nvalue = '" + name + '\'');
        EXPECT_TRUE(refresh());
        EXPECT_NE(zoning().getUberZoneset(), nullptr);
        expectNoLeak();
        cache().reloadZoning();
        EXPECT_TRUE(refresh());
        EXPECT_EQ(cached(), before);
        expectNoLeak();
    }
    EXPECT_EQ(zoning().addZoneset(nullptr, ZONESET_UBER), -1);
    EXPECT_EQ(zoning().addZoneset(nullptr, ZONESET_ACTIVE), -1);
    EXPECT_EQ(zoning().addZoneset(nullptr, ZONESET_INACTIVE), -1);
    EXPECT_EQ(zoning().getUberZoneset(), nullptr) << "the last one added is the current one";
    EXPECT_EQ(zoning().replaceZoningDB(), 0);
    cache().reloadZoning();
    sim.run("do = 'zoneset_deactivate'");
    EXPECT_TRUE(refresh());
    const Zonesets without = cached();
    EXPECT_EQ(without.count(kActive), 0U) << "no load leaves behind what it replaces";
    sim.run("do = 'zoneset_activate'\nname = 'alpha'");
    EXPECT_TRUE(refresh());
    EXPECT_EQ(cached(), before);
    expectNoLeak();
}

}  // namespace
