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
        {"Online", {32768, 32769}, {6, 32768, 32769}},
        {"Offline", {0, 0}, {10, 0, 0}},
        {"Downed", {0, 32769}, {10, 5, 0, 32769}},
        {"Diagnostics", {32768, 32769}, {11, 32768, 32769}},
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
        {"Online", "Online", 2, {2}},         {"Offline", "Online", 10, {2, 15}},
        {"Diagnostics", "Down", 11, {2, 11}}, {"Isolated", "Offline", 10, {2}},
        {"Isolated", "Online", 6, {2}},       {"Down", "Down", 10, {6, 15}},
        {"Downed", "Downed", 10, {6, 15}},    {"Down", "Offline", 6, {2, 15}},
        {"Pending", "PoweredOff", 0, {2, 9}}, {"Pending", "Online", 0, {2, 8}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(cimPortStatus(c.oper, c.admin), c.port) << c.oper << ' ' << c.admin;
        EXPECT_EQ(cimBladeStatus(c.oper, c.admin, "Passed"), c.blade) << c.oper << ' ' << c.admin;
    }
    EXPECT_EQ(cimBladeStatus("Offline", "Online", "Compromised"), (StatusList{3, 15}));
    EXPECT_EQ(cimBladeStatus("Down", "Downed", "Failed"), (StatusList{6, 15}));
    const std::pair<const char*, uint16_t> types[] = {{"FL", 6}, {"TF", 16002}, {"TR", 16003}, {"g", 0}};
    for (const auto& [word, code] : types) EXPECT_EQ(cimPortType(word), code) << word;
    EXPECT_EQ(cimPortHardwareType("E"), 0);
    EXPECT_EQ(CachePeer::hardwareStatus(nullptr), 0);
}

TEST(AccountChanges, CountOccurrences) {
    using Names = std::vector<std::string>;
    const struct {
        Names before, now, added, removed;
    } cases[] = {
        {{"a", "b", "a"}, {"a"}, {}, {"b", "a"}},
        {{"a", "b", "a", "c"}, {"a", "d", "a", "a"}, {"d", "a"}, {"b", "c"}},
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

TEST(MediaData, IsCleanedAndReadByPosition) {
    const std::pair<const char*, const char*> serials[] = {
        {"    ", ""},
        {"AB  12   ", "AB _12"},
        {"  A", " _A"},
        {"0123456789ABCDE  ", "0123456789ABCDE"},     // 17 characters
        {"0123456789ABCDEFGH", "0123456789ABCDEFG"},  // 18
        {"0123456789ABCDE   ", "0123456789ABCDE _"},  // 18: the cut leaves spaces that stay
    };
    for (const auto& [text, clean] : serials) EXPECT_EQ(sanitizedSerial(text), clean) << text;
    EXPECT_EQ(CachePeer::sanitizedMediaVendorSN(nullptr), "");
    EXPECT_EQ(mediaFormatOf("0B04"), MEDIA_UNKNOWN) << "read as a decimal number";
    EXPECT_EQ(mediaFormatOf("1104"), MEDIA_OTHER);
    EXPECT_EQ(mediaFormatOf("3"), MEDIA_SFP);
    EXPECT_EQ(vendorOUIOf("0123456789ABCDEF"), "ABCDEF");
    EXPECT_EQ(vendorOUIOf("0123456789ABCDE"), "000000") << "too short";
}

}  // namespace
