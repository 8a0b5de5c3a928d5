// What the switch says, turned into what hosts read: functions without state.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>
#include <stdexcept>
#include <tuple>

#include "datacache/accounts_load.h"
#include "datacache/cim_status.h"
#include "datacache/event_texts.h"
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

/** What `describe` gives, or the text of its out-of-range error in parentheses. */
template <typename Describe>
std::string told(Describe describe) {
    try {
        return describe();
    } catch (const std::out_of_range& error) {
        return '(' + std::string(error.what()) + ')';
    }
}

const std::string kThrows = "(basic_string::substr)";

TEST(EventTexts, FindsTheHotSensor) {
    const std::string head(17, 'x');  // puts a name at position 32, whose end is then a blank
    const std::string hot = " temp sensor reading is out of range, it is too high";
    const std::pair<std::string, std::string> alarms[] = {
        {head + "Temp overheat, CPU above 80", "CPU sensor"},
        {head + "Temp overheat, CPU", "unknown"},  // no blank behind
        // The end goes by position, not by blank.
        {"Temp overheat, CPU hot\x0f and more text beyond 32\x0f!",
         "CPU hot\x0f and more text beyond 32 sensor"},
        {std::string(51, 'B') + "Temp overheat, CPU", "CPU sensor"},  // negative length: the rest
        {head + "Temp overheat, CPU" + hot, "CPU sensor"},            // the short wording wins
        {"(1) the a (2) the inlet" + hot, "inlet sensor"},
        {"a" + hot + ") the z", "z sensor"},  // parenthesis behind the phrase: the rest
        {"a" + hot + ")12345", " sensor"},    // the name would begin at the end, and beyond it
        {"a" + hot + ")1234", kThrows},
    };
    for (const auto& [text, description] : alarms)
        EXPECT_EQ(told([&text = text] { return overheatDescription(text); }), description) << text;
}

TEST(EventTexts, FindsTheVoltageSensor) {
    const std::string high = " voltage supply is out of range, it is too high";
    const std::string low = " voltage supply is out of range, it is too low";
    const struct {
        std::string text, ifHigh, ifLow;
    } alarms[] = {
        {"x [3.3V] [12V voltage sensor shows 13 V", "12V sensor", "12V sensor"},
        {"12V voltage sensor shows 13 V (1) the x" + high, "unknown", "unknown"},
        {"12V voltage sensor shows [13 V", "13 V sensor", "13 V sensor"},
        {"(1) the 12V" + high, "12V sensor", "unknown"},
        {"(1) the 12V" + low, "unknown", "12V sensor"},
        {high + ")", kThrows, "unknown"},
    };
    for (const auto& alarm : alarms) {
        EXPECT_EQ(told([&] { return voltageDescription(alarm.text, true); }), alarm.ifHigh) << alarm.text;
        EXPECT_EQ(told([&] { return voltageDescription(alarm.text, false); }), alarm.ifLow) << alarm.text;
    }
}

/** The events of transceivers are read as the C library would, whatever the text. */
TEST(EventTexts, ReadsMediaAsTheCLibraryDoes) {
    std::mt19937 random(20240607);
    // Numbers that fit: what the C library makes of larger ones is not defined.
    const std::string pieces[] = {"7", "-5", "+6", " 4", "77", "ABCDEF0123456789", "A1234567890123456", "x",
                                  "",  "-",  "\t", ";",  "; "};
    std::map<int, int> counted;
    for (int round = 0; round < 50000; ++round) {
        std::string text;
        for (int field = 0; field < 9; ++field) {
            // A number, or for the seventh a serial number; now and then anything else.
            const bool odd = random() % 16 == 0;
            text += pieces[odd ? random() % std::size(pieces) : field == 6 ? 5 : random() % 5];
            text += random() % 16 == 0 ? pieces[random() % std::size(pieces)] : ";";
        }
        if (random() % 4 == 0) text.resize(random() % (text.size() + 1));
        MediaInserted wanted;
        int unused[3];
        char serial[17] = "";
        wanted.items =
            std::sscanf(text.c_str(), "%d;%d;%d;%d;%d;%d;%16s;%d", &unused[0], &unused[1], &unused[2],
                        &wanted.port, &wanted.presence, &wanted.vendorOUI, serial, &wanted.format);
        const MediaInserted media = parseMediaInserted(text);
        const auto all = [](const MediaInserted& m) {
            return std::tie(m.items, m.port, m.presence, m.vendorOUI, m.vendorSN, m.format);
        };
        wanted.vendorSN = serial;
        ASSERT_EQ(all(media), all(wanted)) << text;
        ASSERT_EQ(parseMediaRemoved(text).items, std::min(wanted.items, 4)) << text;
        ASSERT_EQ(parseMediaRemoved(text).port, wanted.port) << text;
        ++counted[wanted.items];
    }
    EXPECT_EQ(counted.size(), 10U) << "-1 comes of a text without anything, 0 to 8 of others";
    EXPECT_EQ(parseMediaInserted("1;2;3;99999999999").port, 2147483647);
}

TEST(EventTexts, WalksNameServerEntries) {
    const std::pair<const char*, std::vector<std::string>> texts[] = {
        {",,A;,,;,,C", {"A", "", "C"}},
        {"x,y,A,more;x,y,B", {"A,more", "B"}},  // more fields belong to the third
        {"x,y,A;x,y", {"A"}},                   // an entry of two fields ends the list
        {"x;y;z", {}},
        {"x;y,z,A;", {"A"}}};  // a ';' in front of the commas is part of a field
    for (const auto& [text, wanted] : texts) {
        std::vector<std::string> names;
        std::string name;
        for (size_t position = 0; nextNameServerEntry(text, position, name);) names.push_back(name);
        EXPECT_EQ(names, wanted) << text;
    }
}

}  // namespace
