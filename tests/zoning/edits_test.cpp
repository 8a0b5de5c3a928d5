#include <functional>

#include "tests/zoning/ZoningTest.h"

namespace {

using datacache::ZoningLimit;
using datacache::ZoningOutcome;
using datacache::ZoningSession;
using datacache::ZoningStatus;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

constexpr vex_fzs_zonemember_type_e kWwn = VEX_ZMT_WWN;
const char* const kNewName = "2000001122000099";

class ZoningEdit : public ZoningTest {
  protected:
    using Edit = std::function<ZoningOutcome(ZoningSession&)>;

};

TEST_F(ZoningEdit, DeletionsThatFailAreLogged) {
    start();
    sim.run("do = 'fault'\nfunction = 'vex_ZoneDeleteMember'\nresult = -3");
    sim.run("do = 'fault'\nfunction = 'vex_ZoneAliasDeleteMember'\nresult = 8");
    EXPECT_EQ(zoning().removeMember(kWwn, Arg{"2000001122000003"}), ZONING_DONE);
    EXPECT_EQ(zoning().removeMember(kWwn, Arg{"2000001122000001"}), ZONING_DONE);
    EXPECT_THAT(log(), ElementsAre("2 DCACHE: Deletion failed, result = -3",
                                   "2 DCACHE: Alias Deletion failed, result = 8"));
}

TEST_F(ZoningEdit, TellsWhatIsThereFromWhatIsNot) {
    start();
    ZoningCache& z = zoning();
    const Arg none{"nothing"};
    const std::vector<uint32_t> exists = {
        z.createZone(Arg{"z1"}, VEX_ZT_SOFT),
        z.createZoneAlias(Arg{"a1"}),
        z.createZoneset(Arg{"beta"}),
        z.createZoneset(Arg{kUber}),
        z.addZoneToZoneset(Arg{"beta"}, Arg{"z1"}),
        z.addMemberToZone(Arg{"z1"}, VEX_ZMT_ALIAS, Arg{"a1"}),
        z.addMemberToZoneAlias(Arg{"a1"}, kWwn, Arg{"20:00:00:11:22:00:00:01"}),
    };
    EXPECT_THAT(exists, ::testing::Each(ZONING_EXISTS));
    const std::vector<uint32_t> missing = {
        z.removeZone(Arg(none)),
        z.removeZoneAlias(Arg(none)),
        z.removeZoneset(Arg(none)),
        z.addZoneToZoneset(Arg{"beta"}, Arg(none)),
        z.addZoneToZoneset(Arg(none), Arg{"z1"}),
        z.removeZoneFromZoneset(Arg{"beta"}, Arg{"z2"}),
        z.removeZoneFromZoneset(Arg(none), Arg{"z1"}),
        z.addMemberToZone(Arg(none), kWwn, Arg{kNewName}),
        z.addMemberToZoneAlias(Arg(none), kWwn, Arg{kNewName}),
        z.removeMemberFromZone(Arg{"z1"}, kWwn, Arg{kNewName}),
        z.removeMemberFromZoneAlias(Arg{"a1"}, kWwn, Arg{kNewName}),
    };
    EXPECT_THAT(missing, ::testing::Each(ZONING_NOT_FOUND));
    EXPECT_EQ(z.addMemberToZoneAlias(Arg{"a1"}, VEX_ZMT_ALIAS, Arg{"a2"}), ZONING_FAILED)
        << "refused by the library";
    z.clearZoningCache();
    EXPECT_EQ(z.removeMember(kWwn, Arg{kNewName}), ZONING_DONE);
    EXPECT_EQ(z.removeMember(kWwn, Arg{"?"}), ZONING_INVALID) << "the text is read first";
    expectNoLeak();
}

TEST_F(ZoningEdit, StopsAtTheLimits) {
    const struct {
        Edit edit;
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
    start(std::string(kSwitch) + limitsText({2, 3, 1, 1, 2, 2, 2}));
    const Zonesets before = cached();
    {
        ZoningSession session(zoning(), "client");
        for (const auto& test : cases) EXPECT_EQ(test.edit(session).text(), test.outcome);
        EXPECT_EQ(cached(), before);
        EXPECT_TRUE(session.addMemberToZone("z3", kWwn, kNewName).done())
            << "the limit of all members stops no edit";
    }
    start(kSwitch);
    ZoningSession session(zoning(), "client");
    EXPECT_EQ(session.addMemberToZone("z3", kWwn, kNewName).status, ZoningStatus::LimitsUnknown);
    EXPECT_EQ(session.addZoneToZoneset("beta", "z3").text(),
              "add zone z3 to zoneset beta: the fabric's limits were never read; read them with "
              "initZoningLimits()");
    EXPECT_FALSE(zoning().initZoningLimits());
    sim.loadSwitchText(std::string(kSwitch) + kLimits);
    EXPECT_TRUE(zoning().initZoningLimits());
    EXPECT_TRUE(session.addZoneToZoneset("beta", "z3").done());
}

}  // namespace
