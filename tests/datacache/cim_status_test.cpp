#include "datacache/cim_status.h"
#include "tests/support/CachePeer.h"

#include <gtest/gtest.h>

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

}  // namespace
