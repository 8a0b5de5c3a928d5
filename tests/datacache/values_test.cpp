// What the switch says, turned into what hosts read: functions without state.
#include <gtest/gtest.h>

#include "datacache/accounts_load.h"
#include "datacache/cim_status.h"
#include "datacache/transceivers.h"
#include "tests/support/CachePeer.h"

namespace {

TEST(CimStatus, OfTheSwitchEndsWithItsFaults) {
    const struct {
        const char* state;
        StatusList faults, status;
    } cases[] = {
        {"Online", {}, {2}},
        {"Online", {0, 0}, {2, 0, 0}},
        {"Online", {32768, 32769}, {6, 32768, 32769}},
        {"Online", {0, 32769}, {2, 5, 0, 32769}},
        {"Online", {32768, 0}, {6, 32768, 0}},
        {"Offline", {0, 0}, {10, 0, 0}},
        {"Downed", {0, 32769}, {10, 5, 0, 32769}},
        {"Down", {0, 0}, {0, 0, 0}},
        {"Diagnostics", {32768, 32769}, {11, 32768, 32769}},
        {"online", {}, {0}},
        {"", {32769, 32769}, {0, 5, 0, 5, 32769, 32769}},
    };
    for (const auto& c : cases) EXPECT_EQ(cimSwitchStatus(c.state, c.faults), c.status) << c.state;
    EXPECT_EQ(DataCache::smlSwitchStateToCIMOperationalStatus(nullptr, {}), StatusList{0});
}

TEST(CimStatus, OfPortsAndBladesDifferWhereTheyAreDown) {
    const struct {
        const char *oper, *admin;
        unsigned short port;
        StatusList blade;
    } cases[] = {
        {"Online", "Online", 2, {2}},
        {"Offline", "Online", 10, {2, 15}},
        {"Diagnostics", "Down", 11, {2, 11}},
        {"Isolated", "Offline", 10, {2}},
        {"Isolated", "Down", 10, {2}},
        {"Isolated", "Downed", 10, {2}},
        {"Isolated", "Online", 6, {2}},
        {"Down", "Down", 10, {6, 15}},
        {"Downed", "Down", 10, {6, 15}},
        {"Down", "Downed", 10, {6, 15}},
        {"Down", "Offline", 6, {2, 15}},
        {"Downed", "Online", 6, {2, 15}},
        {"Pending", "PoweredOff", 0, {2, 9}},
        {"Pending", "Online", 0, {2, 8}},
        {"online", "", 0, {2}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(cimPortStatus(c.oper, c.admin), c.port) << c.oper << ' ' << c.admin;
        EXPECT_EQ(cimBladeStatus(c.oper, c.admin, "Passed"), c.blade) << c.oper << ' ' << c.admin;
    }
    EXPECT_EQ(cimBladeStatus("Online", "Online", "Failed"), StatusList{6});
    EXPECT_EQ(cimBladeStatus("Online", "Online", "Compromised"), StatusList{3});
    EXPECT_EQ(cimBladeStatus("Offline", "Online", "Compromised"), (StatusList{3, 15}));
    EXPECT_EQ(cimBladeStatus("Down", "Down", "Compromised"), (StatusList{6, 15}));
}

TEST(CimStatus, CodesOfWords) {
    const std::pair<const char*, uint16_t> types[] = {
        {"G", 2},      {"GL", 3},     {"E", 4},      {"F", 5},      {"FL", 6}, {"Donor", 16000},
        {"TH", 16001}, {"TF", 16002}, {"TR", 16003}, {"PT", 16004}, {"g", 0},  {"", 0}};
    for (const auto& [word, code] : types) EXPECT_EQ(cimPortType(word), code) << word;
    EXPECT_EQ(cimPortHardwareType("E"), 0);
    EXPECT_EQ(hardwareStatus("good"), 0);
    EXPECT_EQ(CachePeer::hardwareStatus(nullptr), 0);
}

TEST(AccountChanges, CountOccurrences) {
    using Names = std::vector<std::string>;
    const struct {
        Names before, now, added, removed;
    } cases[] = {
        {{"a", "b"}, {"b", "a"}, {}, {}},
        {{"a"}, {"a", "a"}, {"a"}, {}},
        {{"a", "b", "a"}, {"a"}, {}, {"b", "a"}},
        {{"a", "b", "a", "c"}, {"a", "d", "a", "a"}, {"d", "a"}, {"b", "c"}},
        {{"Admin", "a "}, {"admin", "a"}, {"admin", "a"}, {"Admin", "a "}},
        {{"a", ""}, {""}, {}, {"a"}},
        {{"a"}, {}, {}, {"a"}},
    };
    for (const auto& row : cases) {
        const AccountChanges changes = compareAccounts(row.before, row.now);
        EXPECT_EQ(changes.added, row.added) << ::testing::PrintToString(row.before);
        EXPECT_EQ(changes.removed, row.removed) << ::testing::PrintToString(row.before);
    }
}

TEST(FabricLists, SplitsAtCommas) {
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"", {}},      {"7", {"7"}},         {"1,2", {"1", "2"}}, {"1,2,", {"1", "2", ""}},
        {",1", {"1"}}, {"1,,2", {"1", "2"}}, {",", {""}},         {" 1 , 2", {" 1 ", " 2"}},
    };
    for (const auto& [text, fields] : cases) EXPECT_EQ(CachePeer::parseSMLList(text), fields) << text;
}

TEST(MediaData, CleansSerialNumbers) {
    const std::pair<const char*, const char*> serials[] = {
        {"", ""},
        {"    ", ""},
        {"A B C", "A B C"},
        {"AB  12   ", "AB _12"},
        {"A    B", "A ___B"},
        {"  A", " _A"},
        {"A  B  C", "A _B _C"},
        {"0123456789ABCDE  ", "0123456789ABCDE"},     // 17 characters
        {"0123456789ABCDEFGH", "0123456789ABCDEFG"},  // 18
        {"0123456789ABCDE   ", "0123456789ABCDE _"},  // 18: the cut leaves spaces that stay
        {"                  ", " ________________"},  // 18
    };
    for (const auto& [text, clean] : serials) EXPECT_EQ(sanitizedSerial(text), clean) << text;
    EXPECT_EQ(CachePeer::sanitizedMediaVendorSN("A  B"), "A _B");
    EXPECT_EQ(CachePeer::sanitizedMediaVendorSN(nullptr), "");
}

TEST(MediaData, ReadsFormatAndVendor) {
    EXPECT_EQ(mediaFormatOf("0304"), MEDIA_SFP);
    EXPECT_EQ(mediaFormatOf("0B04"), MEDIA_UNKNOWN) << "read as a decimal number";
    EXPECT_EQ(mediaFormatOf("1104"), MEDIA_OTHER);
    EXPECT_EQ(mediaFormatOf(""), MEDIA_UNKNOWN);
    EXPECT_EQ(mediaFormatOf("3"), MEDIA_SFP);
    EXPECT_EQ(vendorOUIOf("0123456789ABCDEF"), "ABCDEF");
    EXPECT_EQ(vendorOUIOf("0123456789ABCDE"), "000000") << "too short";
}

}  // namespace
