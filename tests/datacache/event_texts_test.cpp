#include "datacache/event_texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <stdexcept>
#include <vector>

#include "datacache/TextScan.h"

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
        {"Alarm (12.3) the inlet" + hot, "inlet sensor"},
        {"(1) the a (2) the inlet" + hot, "inlet sensor"},
        {"the inlet" + hot, "unknown"},
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
        {"12V voltage sensor shows [", " sensor", " sensor"},
        {"(1) the 12V" + high, "12V sensor", "unknown"},
        {"(1) the 12V" + low, "unknown", "12V sensor"},
        {high + ")", kThrows, "unknown"},
    };
    for (const auto& alarm : alarms) {
        EXPECT_EQ(told([&] { return voltageDescription(alarm.text, true); }), alarm.ifHigh) << alarm.text;
        EXPECT_EQ(told([&] { return voltageDescription(alarm.text, false); }), alarm.ifLow) << alarm.text;
    }
}

TEST(EventTexts, ReadsMedia) {
    const MediaInserted media = parseMediaInserted("1;2;3; 4;-5;+6; ABCDEFGHIJ123456;255 and more");
    EXPECT_EQ(media.items, 8);
    EXPECT_EQ(media.port, 4);
    EXPECT_EQ(media.presence, -5);
    EXPECT_EQ(media.vendorOUI, 6);
    EXPECT_EQ(media.vendorSN, "ABCDEFGHIJ123456");
    EXPECT_EQ(media.format, 255);

    EXPECT_EQ(parseMediaInserted("1;2;3;99999999999").port, 2147483647);
    const std::pair<const char*, int> counts[] = {
        {"", -1},
        {"1;2;3", 3},
        {"1;2;3;4;5;6;   ", 6},
        {"1;2;3;4;5;6;SHORT;8", 7},              // the serial number takes the ';' and all behind it
        {"1;2;3;4;5;6;01234567890123456;8", 7},  // 17 characters
        {"1;2;3;4;5;6;0123456789ABCDEF;x", 7},
        {"1;2;3;4;5;6;           SHORT;x;8", 7},  // blanks in front count for nothing: SHORT;x;8
    };
    for (const auto& [text, items] : counts) EXPECT_EQ(parseMediaInserted(text).items, items) << text;

    EXPECT_EQ(parseMediaRemoved("1;2;0;17;5").port, 17);
    EXPECT_EQ(parseMediaRemoved("1;2;0;17;5").items, 4);
    EXPECT_EQ(parseMediaRemoved("1;2;3").items, 3);
}

/** The scan counts what the C library counts, whatever the text. */
TEST(EventTexts, ScansAsTheCLibraryDoes) {
    std::mt19937 random(20240607);
    const std::string alphabet = "0123456789;;;;;;;; -+AB\t";
    for (int round = 0; round < 50000; ++round) {
        std::string text;
        const size_t length = random() % 40;
        while (text.size() < length) {
            // Numbers of at most 8 digits: what the C library makes of larger ones is not defined.
            text += alphabet[random() % alphabet.size()];
            if (text.size() % 8 == 7) text += ';';
        }
        int number[3] = {0, 0, 0};
        char word[17] = "";
        const int counted =
            std::sscanf(text.c_str(), "%d;%d;%16s;%d", &number[0], &number[1], word, &number[2]);
        int32_t ours[3] = {0, 0, 0};
        std::string ourWord;
        TextScan scan(text);
        scan.number(ours[0]).literal(';').number(ours[1]).literal(';');
        scan.word(ourWord, 16).literal(';').number(ours[2]);
        ASSERT_EQ(scan.items(), counted) << '"' << text << '"';
        ASSERT_THAT(ours, ElementsAre(number[0], number[1], number[2])) << '"' << text << '"';
        ASSERT_EQ(ourWord, word) << '"' << text << '"';
    }
}

std::vector<std::string> entries(const std::string& text) {
    std::vector<std::string> names;
    size_t position = 0;
    std::string name;
    while (nextNameServerEntry(text, position, name)) names.push_back(name);
    return names;
}

TEST(EventTexts, WalksNameServerEntries) {
    EXPECT_THAT(entries("x,y,A;x,y,B;"), ElementsAre("A", "B"));
    EXPECT_THAT(entries(",,A;,,;,,C"), ElementsAre("A", "", "C"));
    EXPECT_THAT(entries("x,y,A,more;x,y,B"), ElementsAre("A,more", "B")) << "more fields belong to the third";
    EXPECT_THAT(entries("x,y,A;x,y"), ElementsAre("A")) << "an entry of two fields ends the list";
    EXPECT_THAT(entries("x;y;z"), IsEmpty());
    EXPECT_THAT(entries("x;y,z,A"), ElementsAre("A")) << "a ';' in front of the commas is part of a field";
}

}  // namespace
