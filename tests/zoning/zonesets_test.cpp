#include <algorithm>
#include <cctype>

#include "tests/zoning/ZoningTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const char* const kActive = "[ActiveZoneSetKey]";

class Zoneset : public ZoningTest {
  protected:
    Zoneset() { start(); }
};

TEST_F(Zoneset, IsFoundByItsKeyAndInTheOrderOfKeys) {
    _ZoneSetTypes type{};
    EXPECT_NE(zoning().getZoneset(Arg{"alpha"}, type), zoning().getActiveZoneset());
    EXPECT_EQ(type, ZONESET_INACTIVE);
    EXPECT_EQ(zoning().getZoneset(Arg{kActive}, type), zoning().getActiveZoneset());
    EXPECT_EQ(type, ZONESET_ACTIVE);
    EXPECT_EQ(zoning().getZoneset(Arg{"__UberZoneset__"}, type), nullptr);
    EXPECT_TRUE(zoning().isUberZoneset(zoning().getUberZoneset()));
    EXPECT_FALSE(zoning().isActiveZoneset(zoning().getUberZoneset()));
    EXPECT_EQ(zoning().getNextZoneset(&type, type), nullptr) << "unknown handles have no next";
    EXPECT_EQ(zoning().createZoneset(Arg{"Zulu"}), ZONING_DONE);
    EXPECT_THAT(walk(),
                ElementsAre(std::pair("Zulu", 1), std::pair("alpha", 0), std::pair("__UberZoneset__", 2),
                            std::pair("alpha", 1), std::pair("beta", 1)));
    zoning().clearInactive();
    EXPECT_THAT(walk(), ElementsAre(std::pair("alpha", 0), std::pair("__UberZoneset__", 2)));
    zoning().clearActive();
    EXPECT_THAT(walk(), ElementsAre(std::pair("__UberZoneset__", 2)));
    zoning().clearZoningCache();
    EXPECT_THAT(walk(), IsEmpty());
}

TEST_F(Zoneset, OfASecondAddIsCurrentButNotHeld) {
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
}

TEST_F(Zoneset, DumpNamesWhatCannotBeRead) {
    const auto dumped = [&] {
        log();
        zoning().dump();
        std::vector<std::string> lines = log();
        for (std::string& line : lines)
            line.erase(std::remove_if(line.begin(), line.end(), isdigit), line.end());
        return lines;
    };
    const std::string at = " INFO:ZoningCache:dump:[]";
    zoning().clearInactive();
    zoning().clearActive();
    fault("function = 'vex_ZonesetListZones'\nnull = true");
    fault("function = 'vex_ZoneGetName'\nresult = 1");
    fault("function = 'vex_ZonesetListAliases'\nnull = true");
    fault("function = 'vex_ZoneAliasGetName'\nresult = 1");
    EXPECT_THAT(dumped(), ElementsAre(at + " Zoneset: __UberZoneset__ (uber)", at + " Zone : Bad entry",
                                      at + " Zone : Can't get name", at + "   Zone: z",
                                      at + "    Alias : Bad entry", at + "    Alias : Can't get name"));

    // One handle under two keys, and none under a third, end no walk and begin none anew.
    zoning().clearUber();
    void* const zoneset = vex_ZonesetCreate("gamma");
    EXPECT_EQ(zoning().addZoneset(zoneset, ZONESET_ACTIVE), 0);
    EXPECT_EQ(zoning().addZoneset(nullptr, ZONESET_UBER), 0);
    EXPECT_EQ(zoning().addZoneset(zoneset, ZONESET_INACTIVE), 0);
    EXPECT_THAT(dumped(), ElementsAre(at + " Zoneset: gamma (active)", at + " Zoneset: Bad entry",
                                      at + " Zoneset: gamma (inactive)"));
    misuse = 1;  // the host's: the zoneset that it gave twice is destroyed twice
}

}  // namespace
