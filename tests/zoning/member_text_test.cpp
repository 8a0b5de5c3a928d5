#include "tests/zoning/ZoningTest.h"

namespace {

class MemberText : public ZoningTest {
  protected:
    MemberText() { start(); }
    static vex_memberid_u parsed(const char* text, vex_fzs_zonemember_type_e type) {
        vex_memberid_u id{};
        EXPECT_EQ(vex_strToMemberIdentifier(text, type, &id), 0);
        return id;
    }
    static std::string command(vex_fzs_zonemember_type_e type, const vex_memberid_u& id, int result = 1) {
        void* member = vex_MemberCreate(type, &id);
        char out[VEX_ZONING_NAME_SIZE];
        EXPECT_EQ(ZoneMemberToString(out, member), result);
        vex_MemberDestroy(&member);
        return out;
    }
    static std::string forPeople(int type, vex_memberid_u id) {
        char out[VEX_ZONING_NAME_SIZE] = "untouched";
        formatMemberId(&type, id.bytes, out);
        return out;
    }
};

TEST_F(MemberText, DiffersBetweenCommandsAndPeople) {
    const struct {
        vex_fzs_zonemember_type_e type;
        const char* text;
        const char* command;
        const char* forPeople;
    } cases[] = {
        {VEX_ZMT_WWN, "20000011220000ab", "20000011220000AB", "20000011220000AB"},
        {VEX_ZMT_DOMAIN_PORT, "171,12", "ab0c", "171:12"},
        {VEX_ZMT_DOMAIN_PORT, "1,2", "0102", "01:02"},
        {VEX_ZMT_DOMAIN_PORT, "1,4294967295", "01ffffffff", "01:-01"},
        {VEX_ZMT_FCID, "0a0B0c", "0A0B0C", "0a0b0c"},
        {VEX_ZMT_ALIAS, "a1", "a1", "a1"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.text);
        const vex_memberid_u id = parsed(test.text, test.type);
        EXPECT_EQ(command(test.type, id), test.command);
        EXPECT_EQ(forPeople(test.type, id), test.forPeople);
    }
}

TEST_F(MemberText, OfOtherTypesIsInvalidOrLeftAlone) {
    const vex_memberid_u id = parsed("2000001122000001", VEX_ZMT_NODENAME);
    EXPECT_EQ(command(VEX_ZMT_NODENAME, id, 0), "Invalid");
    char out[VEX_ZONING_NAME_SIZE];
    EXPECT_EQ(ZoneMemberToString(out, nullptr), 0);
    EXPECT_STREQ(out, "Invalid");
    log();
    for (const int type : {0, 4, 6, -1, 1000}) EXPECT_EQ(forPeople(type, id), "untouched") << type;
    EXPECT_THAT(log(), ::testing::ElementsAre("2 DCACHE: Type is VEX_ZMT_UNKNOWN",
                                              "2 DCACHE: Type is VEX_ZMT_NODENAME"));
}

TEST_F(MemberText, ActiveZonesetNameIsReadWithItsBound) {
    char name[VEX_ZONING_NAME_SIZE];
    fault("function = 'vex_fzsGetActiveZonesetName'\nunterminated = true");
    EXPECT_EQ(get_Active_ZoneSet(name), 0);
    EXPECT_EQ(std::string(name), "alpha" + std::string(59, '#'));
}

TEST_F(MemberText, ConvertsTypes) {
    const int members[] = {0, 0, 1, 3, 2, 0};  // of the CIM types 0 to 5
    for (int cim = 0; cim <= 5; ++cim) EXPECT_EQ(ZoningCache::CIMMemberTypeToVexlib(cim), members[cim]);
    EXPECT_EQ(ZoningCache::cnvCIMZoneTypeToVEX(1), VEX_ZT_HARD_ACL);
    EXPECT_EQ(ZoningCache::cnvCIMZoneTypeToVEX(2), VEX_ZT_SOFT);
    EXPECT_EQ(ZoningCache::cnvCIMZoneTypeToVEX(3), 0);
    EXPECT_STREQ(ZoningCache::vex_smlCnvFromVEXZoneType(VEX_ZT_HARD_VPF), "HardVPF");
    EXPECT_STREQ(ZoningCache::vex_smlCnvFromVEXZoneType(static_cast<vex_fzs_zone_type_e>(-7)), "Invalid");
}

}  // namespace
