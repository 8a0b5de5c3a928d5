#include <cstring>

#include "tests/zoning/ZoningTest.h"

namespace {

using datacache::ZoningOutcome;
using datacache::ZoningSession;
using namespace testing;

constexpr vex_fzs_zonemember_type_e kWwn = VEX_ZMT_WWN;
const char* const kNewName = "2000001122000099";

class ZoningEdit : public ZoningTest {};

TEST_F(ZoningEdit, MakesNothingTwice) {
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
    fault("function = 'vex_ZoneAliasDeleteMember'\nresult = 8");
    EXPECT_EQ(z.removeMember(kWwn, Arg{"2000001122000001"}), ZONING_DONE);
    EXPECT_THAT(log(), Contains("2 DCACHE: Alias Deletion failed, result = 8"));
    z.clearZoningCache();
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
        EXPECT_EQ(z.addZoneToZoneset(Arg{name}, Arg{"z1"}), ZONING_NOT_FOUND);
        EXPECT_EQ(z.removeZoneFromZoneset(Arg{name}, Arg{"z1"}), ZONING_NOT_FOUND);
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
    start(kSwitch + limitsText({2, 3, 8, 1, 2, 2, 2}));
    const std::string before = shown();
    {
        ZoningSession session = DataCache::zoningSession("client");
        const std::pair<ZoningOutcome, std::string> refused[] = {
            {session.createZone("z9", VEX_ZT_SOFT), "3 zones"},
            {session.createZoneAlias("a9"), "2 aliases"},
            {session.createZoneset("s9"), "2 zonesets"},
            {session.addZoneToZoneset("beta", "z3"), "1 zones in a zoneset"},
            {session.addMemberToZone("z1", kWwn, kNewName), "2 members in a zone"},
            {session.addMemberToZoneAlias("a1", kWwn, kNewName), "2 members in an alias"},
        };
        for (const auto& [outcome, limit] : refused)
            EXPECT_THAT(outcome.text(), EndsWith(": the fabric's limit of " + limit + " is reached"));
        EXPECT_EQ(shown(), before);
        EXPECT_TRUE(zoning().memberLimitAtMax());
        EXPECT_THAT(log(), ::testing::IsSupersetOf({"2 DCACHE: Zone alias maximum of 2 reached",
                                                    "2 DCACHE: Zoneset maximum of 2 reached",
                                                    "2 DCACHE: Member maximum of 8 reached"}));
        EXPECT_TRUE(session.addMemberToZone("z3", kWwn, kNewName).done())
            << "the limit of all members stops no edit";
    }
    start(kSwitch);
    EXPECT_THAT(DataCache::zoningSession("client").addZoneToZoneset("beta", "z3").text(),
                EndsWith(": the fabric's limits cannot be read"));
    sim.loadSwitchText(kSwitch + limitsText({1, 2, 7, 2, 2, 1, 3}));
    ZoningSession session = DataCache::zoningSession("client");  // reads them itself
    EXPECT_TRUE(zoning().initZoningLimits());
    EXPECT_TRUE(session.createZone("z9", VEX_ZT_SOFT).done()) << "a database beyond its maximum is not full";
    EXPECT_TRUE(session.createZoneAlias("a9").done());
    EXPECT_TRUE(session.createZoneset("s9").done());
    EXPECT_FALSE(zoning().memberLimitAtMax());
    EXPECT_TRUE(session.addZoneToZoneset("beta", "z3").done()) << "one more fits";
    EXPECT_TRUE(session.addMemberToZoneAlias("a1", kWwn, kNewName).done());
}

TEST_F(ZoningEdit, MemberTextsDifferBetweenCommandsAndPeople) {
    const struct {
        vex_fzs_zonemember_type_e type;
        const char *text, *command, *forPeople;
    } cases[] = {
        {VEX_ZMT_WWN, "0123456789abcdef", "0123456789ABCDEF", "0123456789ABCDEF"},
        {VEX_ZMT_DOMAIN_PORT, "171,12", "ab0c", "171:12"},
        {VEX_ZMT_DOMAIN_PORT, "1,2", "0102", "01:02"},
        {VEX_ZMT_DOMAIN_PORT, "1,4294967295", "01ffffffff", "01:-01"},
        {VEX_ZMT_FCID, "0a0B0c", "0A0B0C", "0a0b0c"},
        {VEX_ZMT_ALIAS, "a1", "a1", "a1"},
        {VEX_ZMT_NODENAME, "2000001122000001", "Invalid", "untouched"},
    };
    char out[VEX_ZONING_NAME_SIZE];
    const auto forPeople = [&out](int type, vex_memberid_u& id) {
        std::strcpy(out, "untouched");
        formatMemberId(&type, id.bytes, out);
        return std::string(out);
    };
    vex_memberid_u id{};
    for (const auto& test : cases) {
        EXPECT_EQ(vex_strToMemberIdentifier(test.text, test.type, &id), 0);
        void* member = vex_MemberCreate(test.type, &id);
        EXPECT_EQ(ZoneMemberToString(out, member), test.type == VEX_ZMT_NODENAME ? 0 : 1);
        EXPECT_STREQ(out, test.command);
        vex_MemberDestroy(&member);
        EXPECT_EQ(forPeople(test.type, id), test.forPeople);
    }
    EXPECT_EQ(ZoneMemberToString(out, nullptr), 0);
    EXPECT_STREQ(out, "Invalid");
    for (const int type : {0, 6, -1, 1000}) EXPECT_EQ(forPeople(type, id), "untouched") << type;
    EXPECT_THAT(log(), ::testing::ElementsAre("2 DCACHE: Type is VEX_ZMT_NODENAME",
                                              "2 DCACHE: Type is VEX_ZMT_UNKNOWN"));
}

TEST_F(ZoningEdit, TheActiveZonesetsNameIsReadWithItsBound) {
    start();
    char name[VEX_ZONING_NAME_SIZE];
    fault("function = 'vex_fzsGetActiveZonesetName'\nunterminated = true");
    EXPECT_EQ(get_Active_ZoneSet(name), 0);
    EXPECT_EQ(std::string(name), "alpha" + std::string(59, '#'));
}

TEST_F(ZoningEdit, ConvertsTypes) {
    const int members[] = {0, 0, 1, 3, 2, 0};  // of the CIM types 0 to 5
    for (int cim = 0; cim <= 5; ++cim) EXPECT_EQ(ZoningCache::CIMMemberTypeToVexlib(cim), members[cim]);
    EXPECT_EQ(ZoningCache::cnvCIMZoneTypeToVEX(3), 0);
    EXPECT_STREQ(ZoningCache::vex_smlCnvFromVEXZoneType(VEX_ZT_HARD_VPF), "HardVPF");
    EXPECT_STREQ(ZoningCache::vex_smlCnvFromVEXZoneType(static_cast<vex_fzs_zone_type_e>(-7)), "Invalid");
}

}  // namespace
