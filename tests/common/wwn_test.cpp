#include "common/Wwn.h"

#include <gtest/gtest.h>

#include <map>
#include <tuple>

namespace {

using namespace std::string_literals;

TEST(Wwn, ParsesSixteenHexadecimalDigitsAndNothingElse) {
    EXPECT_EQ(Wwn("1000001122aAbBcC"s).tostring(), "1000001122AABBCC");
    EXPECT_EQ(Wwn("FFFFFFFFFFFFFFFF"s).tostring(), "FFFFFFFFFFFFFFFF");
    for (const std::string& none : {"1000001122AABBC"s, "1000001122AABBCCD"s, "1000001122AABBCg"s,
                                    "0x00001122AABBCC"s, "-000001122AABBCC"s, "10000011\0AABBCC1"s})
        EXPECT_TRUE(Wwn(none).isNull()) << none;
    EXPECT_TRUE(Wwn().isNull());
    EXPECT_FALSE(Wwn("0000000000000001"s).isNull());
}

TEST(Wwn, PlacesThePortByFormat) {
    const struct {
        std::string before, after;
        unsigned port, read;
    } cases[] = {
        {"2000001122AABBCC", "2123001122AABBCC", 0x123, 0x123},
        {"2000001122AABBCC", "2005001122AABBCC", 0xFFFFF005, 0x005},  // cut to 12 bits
        {"3ABC001222AABBCC", "3000123222AABBCC", 0x123, 0x123},       // byte 1 and the nibble before it go
        {"1000001122AABBCC", "1000001122AABBCC", 0x123, 4096},        // no port field: untouched, unread
    };
    for (const auto& c : cases) {
        Wwn name(c.before);
        name.Set_Port(c.port);
        EXPECT_EQ(name.tostring(), c.after) << c.before;
        unsigned port = 4096;
        name.Get_Port(port);
        EXPECT_EQ(port, c.read) << c.before;

        unsigned upper = 99, lower = 99;
        name.Get_Port(upper, lower);
        EXPECT_EQ(upper, c.read == 4096 ? 99 : c.read >> 6) << c.before;
        EXPECT_EQ(lower, c.read == 4096 ? 99 : c.read & 63) << c.before;
        name.Set_Port(upper + 64, lower + 64);  // wider halves are cut
        EXPECT_EQ(name.tostring(), c.after) << c.before;
    }
}

TEST(Wwn, SharesABaseWithinOneSwitch) {
    const struct {
        std::string one, other;
        bool same;
    } cases[] = {
        {"2001001122AABBCC", "2ABC001122AABBCC", true},  {"2001001122AABBCC", "2001001122AABBCD", false},
        {"2001001122AABBCC", "1001001122AABBCC", false}, {"1000001122AABBCC", "1FFF001122AABBCC", true},
        {"3001001122AABBCC", "3FFFFFF122AABBCC", true},  {"3001001122AABBCC", "3001001222AABBCC", false},
        {"5001001122AABBCC", "5FFFFFF122AABBCC", true},  {"4000001122AABBCC", "4000001122AABBCC", false},
        {"2001001122AABBCC", "2001001222AABBCC", false},
    };
    for (const auto& c : cases) EXPECT_EQ(Wwn(c.one).Same_Base(Wwn(c.other)), c.same) << c.one << c.other;
}

TEST(Wwn, MakesSwitchNamesOfPortNames) {
    const std::map<std::string, std::string> cases = {
        {"2ABC000DECAABBCC", "2000000DECAABBCC"},  // Cisco keeps NAA 2
        {"2ABC001122AABBCC", "1000001122AABBCC"}, {"3ABCDEF122AABBCC", "5000000122AABBCC"},
        {"1ABC001122AABBCC", "1ABC001122AABBCC"}, {"5ABC001122AABBCC", "5ABC001122AABBCC"},
    };
    for (const auto& [port, switchName] : cases) {
        Wwn name(port);
        EXPECT_EQ(&name.convertToSwitchName(), &name);
        EXPECT_EQ(name.tostring(), switchName) << port;
    }
}

TEST(Wwn, MakesFabricPortNames) {
    for (const auto& [before, made, after] : std::initializer_list<std::tuple<std::string, int, std::string>>{
             {"1000001122AABBCC", 1, "2123001122AABBCC"},
             {"2FFF001122AABBCC", 1, "2123001122AABBCC"},
             {"5000001122AABBCC", 0, "5000001122AABBCC"}}) {
        Wwn name(before);
        EXPECT_EQ(name.Make_Fabric_Port_Wwn(0x04, 0x23), made);
        EXPECT_EQ(name.tostring(), after);
        EXPECT_EQ(name.Make_Fabric_Port_Wwn_Null_Mac(0, 1), 1);
        EXPECT_EQ(name.tostring(), "2001FFFFFFFFFFFF");
    }
}

TEST(Wwn, KnowsTwoCompanies) {
    EXPECT_TRUE(Wwn("2001080088AABBCC"s).isMcDATA());
    EXPECT_FALSE(Wwn("2001080089AABBCC"s).isMcDATA());
    EXPECT_TRUE(Wwn("5001000DECAABBCC"s).isCisco());
    EXPECT_FALSE(Wwn("5001000DEDAABBCC"s).isCisco());
    EXPECT_FALSE(Wwn("5000010DECAABBCC"s).isCisco());
}

}  // namespace
