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
