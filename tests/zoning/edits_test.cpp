#include <functional>

#include "tests/zoning/ZoningTest.h"

namespace {

using datacache::ZoningOutcome;
using datacache::ZoningSession;
using datacache::ZoningStatus;
using ::testing::Each;
using ::testing::ElementsAre;

constexpr vex_fzs_zonemember_type_e kWwn = VEX_ZMT_WWN;
const char* const kNewName = "2000001122000099";

class ZoningEdit : public ZoningTest {};

TEST_F(ZoningEdit, TellsWhatIsThereFromWhatIsNot) {
    start();
    ZoningCache& z = zoning();
    const std::vector<uint32_t> exists = {
        z.createZone(Arg{"z1"}, VEX_ZT_SOFT),
        z.createZoneAlias(Arg{"a1"}),
        z.createZoneset(Arg{"beta"}),
        z.createZoneset(Arg{"[UberZoneSetKey]"}),
        z.addZoneToZoneset(Arg{"beta"}, Arg{"z1"}),
        z.addMemberToZone(Arg{"z1"}, VEX_ZMT_ALIAS, Arg{"a1"}),
        z.addMemberToZoneAlias(Arg{"a1"}, kWwn, Arg{"20:00:00:11:22:00:00:01"}),
    };
    EXPECT_THAT(exists, Each(ZONING_EXISTS));
    EXPECT_EQ(z.removeZone(nullptr), ZONING_NOT_FOUND);
    EXPECT_EQ(z.addZoneToZoneset(Arg{"nothing"}, Arg{"z1"}), ZONING_NOT_FOUND);
    EXPECT_EQ(z.removeZoneFromZoneset(Arg{"nothing"}, Arg{"z1"}), ZONING_NOT_FOUND);
    EXPECT_EQ(z.removeMemberFromZone(Arg{"z1"}, kWwn, Arg{kNewName}), ZONING_NOT_FOUND);
    EXPECT_EQ(z.addMemberToZoneAlias(Arg{"a1"}, VEX_ZMT_ALIAS, Arg{"a2"}), ZONING_FAILED)
        << "refused by the library";
    fault("function = 'vex_ZoneAliasDeleteMember'\nresult = 8");
    log();
    EXPECT_EQ(z.removeMember(kWwn, Arg{"2000001122000001"}), ZONING_DONE);
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: Alias Deletion failed, result = 8"));
    z.clearZoningCache();
    EXPECT_EQ(z.removeMember(kWwn, Arg{kNewName}), ZONING_DONE);
    EXPECT_EQ(z.removeMember(kWwn, Arg{"?"}), ZONING_INVALID) << "the text is read first";
}

TEST_F(ZoningEdit, WithHostileTextsGivesCodes) {
    start();
    ZoningCache& z = zoning();
    const std::string before = shown();
    for (const std::string& name : {std::string(), std::string(65, 'n'), std::string(100000, 'n'),
                                    std::string("%s%s%s%n"), std::string("9a"), std::string("\xff\xfe")}) {
        SCOPED_TRACE(name.substr(0, 20));
        EXPECT_EQ(z.createZone(Arg{name}, VEX_ZT_SOFT), ZONING_INVALID);
        EXPECT_EQ(z.createZoneAlias(Arg{name}), ZONING_FAILED);
        EXPECT_EQ(z.createZoneset(Arg{name}), ZONING_INVALID);
        EXPECT_EQ(z.removeZoneset(Arg{name}), ZONING_NOT_FOUND);
        EXPECT_EQ(z.addMemberToZone(Arg{"z1"}, VEX_ZMT_ALIAS, Arg{name}), ZONING_INVALID);
        for (const vex_fzs_zonemember_type_e type : {kWwn, VEX_ZMT_DOMAIN_PORT, VEX_ZMT_FCID, VEX_ZMT_UNKNOWN,
                                                     vex_fzs_zonemember_type_e{INT32_MAX}}) {
            EXPECT_EQ(z.addMemberToZoneAlias(Arg{"a1"}, type, Arg{name}), ZONING_INVALID) << type;
            EXPECT_EQ(z.removeMemberFromZone(Arg{"z1"}, type, Arg{name}), ZONING_INVALID) << type;
            EXPECT_EQ(z.removeMember(type, Arg{name}), ZONING_INVALID) << type;
        }
    }
    EXPECT_EQ(z.addMemberToZone(Arg{"z1"}, kWwn, nullptr), ZONING_INVALID);
    EXPECT_EQ(z.createZone(Arg{"z9"}, vex_fzs_zone_type_e{-1}), ZONING_FAILED);
    EXPECT_EQ(shown(), before);
    const std::string longest(64, 'n');
    EXPECT_EQ(z.createZone(Arg{longest}, VEX_ZT_SOFT), ZONING_DONE);
    EXPECT_EQ(z.createZoneAlias(Arg{longest}), ZONING_DONE);
    EXPECT_EQ(z.createZoneset(Arg{longest}), ZONING_DONE);
    EXPECT_EQ(z.addZoneToZoneset(Arg{longest}, Arg{longest}), ZONING_DONE);
    EXPECT_EQ(z.addMemberToZone(Arg{longest}, VEX_ZMT_ALIAS, Arg{longest}), ZONING_DONE);
    const std::string edited = shown();
    ASSERT_EQ(z.ZoningLock(Arg{"%n"}), 1);
    EXPECT_EQ(z.replaceZoningDB(), 1);
    settle();
    EXPECT_EQ(shown(), edited) << "and so has the switch";
}

TEST_F(ZoningEdit, StopsAtTheLimits) {
    const struct {
        std::function<ZoningOutcome(ZoningSession&)> edit;
        const char* outcome;
    } cases[] = {
        {[](ZoningSession& z) { return z.createZone("z9", VEX_ZT_SOFT); },
         "create zone z9: the fabric's limit of 3 zones is reached"},
        {[](ZoningSession& z) { return z.createZoneAlias("a9"); },
         "create alias a9: the fabric's limit of 2 aliases is reached"},
        {[](ZoningSession& z) { return z.createZoneset("s9"); },
         "create zoneset s9: the fabric's limit of 2 zonesets is reached"},
        {[](ZoningSession& z) { return z.addZoneToZoneset("beta", "z3"); },
         "add zone z3 to zoneset beta: the fabric's limit of 1 zones in a zoneset is reached"},
        {[](ZoningSession& z) { return z.addMemberToZone("z1", kWwn, kNewName); },
         "add 2000001122000099 to zone z1: the fabric's limit of 2 members in a zone is reached"},
        {[](ZoningSession& z) { return z.addMemberToZoneAlias("a1", kWwn, kNewName); },
         "add 2000001122000099 to alias a1: the fabric's limit of 2 members in an alias is reached"},
    };
    start(kSwitch + limitsText({2, 3, 8, 1, 2, 2, 2}));
    const std::string before = shown();
    {
        ZoningSession session(zoning(), "client");
        for (const auto& test : cases) EXPECT_EQ(test.edit(session).text(), test.outcome);
        EXPECT_EQ(shown(), before);
        EXPECT_TRUE(zoning().memberLimitAtMax());
        EXPECT_THAT(log(), ::testing::IsSupersetOf({"2 DCACHE: Zone alias maximum of 2 reached",
                                                    "2 DCACHE: Zoneset maximum of 2 reached",
                                                    "2 DCACHE: Member maximum of 8 reached"}));
        EXPECT_TRUE(session.addMemberToZone("z3", kWwn, kNewName).done())
            << "the limit of all members stops no edit";
    }
    start(kSwitch);
    ZoningSession session(zoning(), "client");
    EXPECT_EQ(session.addZoneToZoneset("beta", "z3").text(),
              "add zone z3 to zoneset beta: the fabric's limits were never read; read them with "
              "initZoningLimits()");
    sim.loadSwitchText(kSwitch + limitsText({1, 2, 7, 2, 2, 1, 3}));
    EXPECT_TRUE(zoning().initZoningLimits());
    EXPECT_TRUE(session.createZone("z9", VEX_ZT_SOFT).done()) << "a database beyond its maximum is not full";
    EXPECT_TRUE(session.createZoneAlias("a9").done());
    EXPECT_TRUE(session.createZoneset("s9").done());
    EXPECT_FALSE(zoning().memberLimitAtMax());
    EXPECT_TRUE(session.addZoneToZoneset("beta", "z3").done()) << "one more fits";
    EXPECT_TRUE(session.addMemberToZoneAlias("a1", kWwn, kNewName).done());
}

}  // namespace
