#include "tests/zoning/ZoningTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

class ZoningLoad : public ZoningTest {};

TEST_F(ZoningLoad, TellsHowLongEachPartTook) {
    load(kSwitch);
    fault("uptime_s = 20\nfunction = 'vex_fzsGetActiveZoneset'");
    fault("uptime_s = 30\nfunction = 'vex_fzsGetZoneset'\nskip = 1");
    fault("uptime_s = 40\nfunction = 'vex_fzsGetAllZonesAndAliases'");
    settle();
    const std::vector<std::string> lines = log();
    // One second more where the clock's own tick falls in between.
    for (const char* line : {".* Active zoneset added, 2[01]s", ".* 'alpha' added, [01]s",
                             ".* 'beta' added, 3[01]s", ".* Uber zoneset added, 4[01]s"}) {
        EXPECT_THAT(lines, Contains(MatchesRegex(line)));
    }
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
    EXPECT_THAT(events(), ElementsAre("DCEventZoningDBChange wwn=1000001122AABBCC"))
        << "forced, though this is one more in 32 bits";
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

TEST_F(ZoningLoad, SurvivesZonesetsThatTakeEachOthersPlace) {
    start();
    const std::string before = shown();
    for (const std::string name : {"[UberZoneSetKey]", "[ActiveZoneSetKey]", "beta"}) {
        SCOPED_TRACE(name);
        cache().reloadZoning();
        fault("function = 'vex_ZonesetGetName'\nvalue = '" + name + '\'');
        EXPECT_TRUE(refresh());
        EXPECT_NE(zoning().getUberZoneset(), nullptr);
        cache().reloadZoning();
        EXPECT_TRUE(refresh());
        EXPECT_EQ(shown(), before);
    }
    for (const _ZoneSetTypes type : {ZONESET_UBER, ZONESET_ACTIVE, ZONESET_INACTIVE})
        EXPECT_EQ(zoning().addZoneset(nullptr, type), -1);
    EXPECT_EQ(zoning().getUberZoneset(), nullptr) << "the last one added is the current one";
    EXPECT_EQ(zoning().replaceZoningDB(), 0);
    cache().reloadZoning();
    sim.run("do = 'zoneset_deactivate'");
    EXPECT_TRUE(refresh());
    EXPECT_THAT(walk(),
                ElementsAre(std::pair("__UberZoneset__", 2), std::pair("alpha", 1), std::pair("beta", 1)))
        << "no load leaves behind what it replaces";
    sim.run("do = 'zoneset_activate'\nname = 'alpha'");
    EXPECT_TRUE(refresh());
    EXPECT_EQ(shown(), before);
}

}  // namespace
