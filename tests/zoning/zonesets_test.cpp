#include <regex>

#include "tests/zoning/ZoningTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class Zoneset : public ZoningTest {
  protected:
    /** What dump() logs, with the source lines left out. */
    std::vector<std::string> dumped() {
        log();
        zoning().dump();
        std::vector<std::string> lines = log();
        for (std::string& line : lines) line = std::regex_replace(line, std::regex("\\[[0-9]+\\]"), "[]");
        return lines;
    }
    std::vector<std::pair<std::string, int>> walk() {
        std::vector<std::pair<std::string, int>> found;
        _ZoneSetTypes type{};
        for (void* zoneset = zoning().getFirstZoneset(type); zoneset != nullptr;
             zoneset = zoning().getNextZoneset(zoneset, type)) {
            char name[VEX_ZONING_NAME_SIZE];
            vex_ZonesetGetName(zoneset, name);
            found.emplace_back(name, type);
        }
        return found;
    }
};

TEST_F(Zoneset, WalksInKeyOrderWithTheBracketsBetweenTheCases) {
    start();
    EXPECT_EQ(zoning().createZoneset(Arg{"Zulu"}), ZONING_DONE);
    EXPECT_THAT(walk(),
                ElementsAre(std::pair("Zulu", 1), std::pair("alpha", 0), std::pair("__UberZoneset__", 2),
                            std::pair("alpha", 1), std::pair("beta", 1)));
    _ZoneSetTypes type{};
    EXPECT_EQ(zoning().getNextZoneset(&type, type), nullptr) << "unknown handles have no next";
}

TEST_F(Zoneset, IsFoundByKeyAlone) {
    start();
    _ZoneSetTypes type{};
    EXPECT_NE(zoning().getZoneset(Arg{"alpha"}, type), zoning().getActiveZoneset());
    EXPECT_EQ(type, ZONESET_INACTIVE);
    EXPECT_EQ(zoning().getZoneset(Arg{kActive}, type), zoning().getActiveZoneset());
    EXPECT_EQ(type, ZONESET_ACTIVE);
    EXPECT_EQ(zoning().getZoneset(Arg{"__UberZoneset__"}, type), nullptr);
    EXPECT_TRUE(zoning().isUberZoneset(zoning().getUberZoneset()));
    EXPECT_FALSE(zoning().isActiveZoneset(zoning().getUberZoneset()));
}

TEST_F(Zoneset, OfASecondAddIsCurrentButNotHeld) {
    start();
    void* const first = zoning().getActiveZoneset();
    void* second = vex_ZonesetCreate("second");
    EXPECT_EQ(zoning().addZoneset(second, ZONESET_ACTIVE), -1);
    EXPECT_EQ(zoning().getActiveZoneset(), second);
    _ZoneSetTypes type{};
    EXPECT_EQ(zoning().getZoneset(Arg{kActive}, type), first);
    vex_ZonesetDestroy(&second);
    EXPECT_EQ(zoning().delZoneset(nullptr, ZONESET_ACTIVE), 0) << "found by its key, whatever the handle";
    EXPECT_EQ(zoning().getActiveZoneset(), nullptr);
    EXPECT_EQ(zoning().delZoneset(nullptr, ZONESET_ACTIVE), 0) << "an unknown key is no failure";
    expectNoLeak();
}

TEST_F(Zoneset, ClearsItsOwnKindOnly) {
    start();
    zoning().clearInactive();
    EXPECT_THAT(walk(), ElementsAre(std::pair("alpha", 0), std::pair("__UberZoneset__", 2)));
    zoning().clearActive();
    EXPECT_THAT(walk(), ElementsAre(std::pair("__UberZoneset__", 2)));
    zoning().clearZoningCache();
    EXPECT_THAT(walk(), IsEmpty());
    EXPECT_EQ(zoning().getUberZoneset(), nullptr);
    EXPECT_THAT(dumped(), IsEmpty());
    expectNoLeak();
}

TEST_F(Zoneset, CountsWhatAFailingLibraryLeaves) {
    start();
    sim.run("do = 'fault'\nfunction = 'vex_ZonesetListZones'\nskip = 1\nnull = true");
    sim.run("do = 'fault'\nfunction = 'vex_ZonesetGetAliasCount'\nresult = -1");
    zoning().updateZoningCounts();
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: zsl = 2, zl = 3, al = -1, zml = 4"));
}

TEST_F(Zoneset, LimitsOfTheDatabaseAreMetExactlyThoseOfAContainerReached) {
    start();
    void* uber = zoning().getUberZoneset();
    void* zone = vex_ZonesetFindZone(uber, "z2");
    void* alias = vex_ZonesetFindAlias(uber, "a1");
    const AccessGuard guard;
    const auto answers = [&](vex_fzs_limits_s limits) {
        sim.loadSwitchText(std::string(kSwitch) + limitsText(limits));
        EXPECT_TRUE(zoning().initZoningLimits());
        log();
        std::string text;
        for (const bool full :
             {zoning().zonesetLimitAtMax(), zoning().zoneLimitAtMax(), zoning().aliasLimitAtMax(),
              zoning().memberLimitAtMax(), zoning().zonesPerZonesetAtMax(uber),
              zoning().membersPerZoneAtMax(zone), zoning().membersPerAliasAtMax(alias)})
            text += full ? 'F' : '-';
        return text;
    };
    EXPECT_EQ(answers({2, 3, 8, 3, 2, 2, 2}), "FFFFFFF");
    EXPECT_THAT(
        log(),
        ElementsAre("2 DCACHE: Zoneset maximum of 2 reached", "2 DCACHE: Zone maximum of 3 reached",
                    "2 DCACHE: Zone alias maximum of 2 reached", "2 DCACHE: Member maximum of 8 reached",
                    "2 DCACHE: Zones per zoneset maximum of 3 reached",
                    "2 DCACHE: Members per zone maximum of 2 reached",
                    "2 DCACHE: Members per alisa maximum of 2 reached"));
    EXPECT_EQ(answers({3, 4, 9, 4, 3, 3, 3}), "-------");
    EXPECT_EQ(answers({1, 2, 7, 2, 1, 1, 1}), "----FFF") << "a database beyond its maximum is not full";
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: Zones per zoneset maximum of 2 reached",
                                   "2 DCACHE: Members per zone maximum of 1 reached",
                                   "2 DCACHE: Members per alisa maximum of 1 reached"));
}

TEST_F(Zoneset, DumpNamesWhatCannotBeRead) {
    start();
    zoning().clearInactive();
    zoning().clearActive();
    const auto fault = [&](const char* function, const char* effect, int skip = 0) {
        sim.run(std::string("do = 'fault'\nfunction = '") + function + "'\n" + effect +
                "\nskip = " + std::to_string(skip));
    };
    fault("vex_ZonesetListZones", "null = true");
    fault("vex_ZoneGetName", "result = 1");
    fault("vex_ZonesetListAliases", "null = true");
    fault("vex_ZoneAliasGetName", "result = 1");
    const std::string info = "2 INFO:ZoningCache:dump:[]";
    EXPECT_THAT(dumped(), ElementsAre(info + " Zoneset: __UberZoneset__ (uber)", info + " Zone : Bad entry",
                                      info + " Zone : Can't get name", info + "   Zone: z3",
                                      info + "    Alias : Bad entry", info + "    Alias : Can't get name"));
    fault("vex_ZonesetGetName", "result = 1");
    EXPECT_THAT(dumped(), ElementsAre(info + " Zoneset: Bad entry"));

    // One handle under two keys, and none under a third, end no walk and begin none anew.
    zoning().clearUber();
    void* const zoneset = vex_ZonesetCreate("gamma");
    EXPECT_EQ(zoning().addZoneset(zoneset, ZONESET_ACTIVE), 0);
    EXPECT_EQ(zoning().addZoneset(nullptr, ZONESET_UBER), 0);
    EXPECT_EQ(zoning().addZoneset(zoneset, ZONESET_INACTIVE), 0);
    EXPECT_THAT(dumped(), ElementsAre(info + " Zoneset: gamma (active)", info + " Zoneset: Bad entry",
                                      info + " Zoneset: gamma (inactive)"));
    misuse = 1;  // the host's: the zoneset that it gave twice is destroyed twice
}

}  // namespace
