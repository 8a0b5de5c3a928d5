#include "datacache/event_texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>
#include <stdexcept>
#include <vector>

using namespace datacache;

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

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
        {"Temperature", "unknown"},
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
    EXPECT_EQ(counted.size(), 9U) << "-1 comes of a text without anything, 0 to 8 of others";
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
