#include "tests/zoning/ZoningTest.h"

namespace {

using ::testing::ElementsAre;

class HostileZoning : public ZoningTest {
  protected:
    HostileZoning() { start(); }
};

TEST_F(HostileZoning, NamesGiveCodes) {
    const std::string names[] = {
        "",
        std::string(65, 'n'),
        std::string(300, 'n'),
        std::string(100000, 'n'),
        "%s%s%s%n",
        "%1000000d",
        "a.b",
        "a b",
        "9a",
        "_a",
        "a\n",
        "\xff\xfe",
        "[x]",
    };
    const Zonesets before = cached();
    for (const std::string& name : names) {
        SCOPED_TRACE(name.substr(0, 20));
        ZoningCache& z = zoning();
        EXPECT_EQ(z.createZone(Arg{name}, VEX_ZT_SOFT), ZONING_INVALID);
        EXPECT_EQ(z.createZoneAlias(Arg{name}), ZONING_FAILED);
        EXPECT_EQ(z.createZoneset(Arg{name}), ZONING_INVALID);
        EXPECT_EQ(z.removeZone(Arg{name}), ZONING_NOT_FOUND);
        EXPECT_EQ(z.removeZoneAlias(Arg{name}), ZONING_NOT_FOUND);
        EXPECT_EQ(z.removeZoneset(Arg{name}), ZONING_NOT_FOUND);
        EXPECT_EQ(z.addZoneToZoneset(Arg{"beta"}, Arg{name}), ZONING_NOT_FOUND);
        EXPECT_EQ(z.addMemberToZone(Arg{"z1"}, VEX_ZMT_ALIAS, Arg{name}), ZONING_INVALID);
        EXPECT_EQ(z.addMemberToZone(Arg{name}, VEX_ZMT_FCID, Arg{"010203"}), ZONING_NOT_FOUND);
    }
    EXPECT_EQ(zoning().createZone(nullptr, VEX_ZT_SOFT), ZONING_INVALID);
    EXPECT_EQ(zoning().addMemberToZone(Arg{"z1"}, VEX_ZMT_WWN, nullptr), ZONING_INVALID);
    EXPECT_EQ(cached(), before);
    expectNoLeak();
    const std::string longest(64, 'n');
    EXPECT_EQ(zoning().createZone(Arg{longest}, VEX_ZT_SOFT), ZONING_DONE);
    EXPECT_EQ(zoning().createZoneAlias(Arg{longest}), ZONING_DONE);
    EXPECT_EQ(zoning().createZoneset(Arg{longest}), ZONING_DONE);
    EXPECT_EQ(zoning().addZoneToZoneset(Arg{longest}, Arg{longest}), ZONING_DONE);
    EXPECT_EQ(zoning().addMemberToZone(Arg{longest}, VEX_ZMT_ALIAS, Arg{longest}), ZONING_DONE);
    ASSERT_EQ(zoning().ZoningLock(Arg{"%n"}), 1);
    EXPECT_EQ(zoning().replaceZoningDB(), 1);
    EXPECT_EQ(onSwitch().at(longest), (Contents{"zone " + longest + " Soft " + longest, "alias " + longest}));
}

TEST_F(HostileZoning, MemberTextsAndTypesGiveCodes) {
    const struct {
        int32_t type;
        std::vector<std::string> texts;
    } cases[] = {
        {VEX_ZMT_WWN,
         {"", "2000001122", "200000112200000g", "20000011220000030", "20-00-00-11-22-00-00-03",
          "2000:0011:2200:0003", "20:00:00:11:22:00:00:0", std::string(5000, '2'), "%s%s%s%s%s%s%s%n"}},
        {VEX_ZMT_DOMAIN_PORT,
         {"", ",", "1,", ",1", "256,1", "-1,1", "1,4294967296", "1,2,3", "1;2", "0x1,2", "010", "01020304050",
          "zz"}},
        {VEX_ZMT_FCID, {"", "01020", "0102030", "01:02:03", "01020x"}},
        {VEX_ZMT_NODENAME, {"", "name"}},
        {VEX_ZMT_UNKNOWN, {"", "2000001122000003", "a1"}},
        {6, {"a1"}},
        {-1, {"a1"}},
        {INT32_MAX, {"010203"}},
    };
    const Zonesets before = cached();
    for (const auto& test : cases) {
        const auto type = static_cast<vex_fzs_zonemember_type_e>(test.type);
        for (const std::string& text : test.texts) {
            SCOPED_TRACE(std::to_string(test.type) + " '" + text.substr(0, 40) + '\'');
            EXPECT_EQ(zoning().addMemberToZone(Arg{"z1"}, type, Arg{text}), ZONING_INVALID);
            EXPECT_EQ(zoning().addMemberToZoneAlias(Arg{"a1"}, type, Arg{text}), ZONING_INVALID);
            EXPECT_EQ(zoning().removeMemberFromZone(Arg{"z1"}, type, Arg{text}), ZONING_INVALID);
            EXPECT_EQ(zoning().removeMemberFromZoneAlias(Arg{"a1"}, type, Arg{text}), ZONING_INVALID);
            EXPECT_EQ(zoning().removeMember(type, Arg{text}), ZONING_INVALID);
        }
    }
    for (const int32_t type : {-1, 0, 4, INT32_MAX})
        EXPECT_EQ(zoning().createZone(Arg{"z9"}, static_cast<vex_fzs_zone_type_e>(type)), ZONING_FAILED);
    EXPECT_EQ(cached(), before);
    expectNoLeak();
}

TEST_F(HostileZoning, CountsFromTheSwitchAreOnlyCounts) {
    for (const char* function : {"vex_ZonesetGetZoneCount", "vex_ZonesetGetAliasCount",
                                 "vex_ZoneGetMemberCount", "vex_ZoneAliasGetMemberCount"}) {
        for (const char* count : {"-1", "-2147483648", "1000"}) {
            SCOPED_TRACE(std::string(function) + ' ' + count);
            sim.run(std::string("do = 'fault'\ntimes = 0\nfunction = '") + function + "'\nresult = " + count);
            zoning().updateZoningCounts();
            EXPECT_NO_FATAL_FAILURE(zoning().addMemberToZone(Arg{"z3"}, VEX_ZMT_FCID, Arg{"0a0b0c"}));
            zoning().removeMember(VEX_ZMT_FCID, Arg{"0a0b0c"});
            sim.run("do = 'clear_faults'");
            sim.clearTranscript();
            expectNoLeak();
        }
    }
}

}  // namespace
