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

struct Alarm {
    const char* name;
    std::string text;
    const char* description;  ///< null: out of range
};

std::string overheatOf(const std::string& text) {
    return overheatDescription(text);
}
std::string highOf(const std::string& text) {
    return voltageDescription(text, true);
}
std::string lowOf(const std::string& text) {
    return voltageDescription(text, false);
}

void check(std::string (*describe)(const std::string&), const std::vector<Alarm>& alarms) {
    for (const Alarm& alarm : alarms) {
        SCOPED_TRACE(alarm.name);
        try {
            EXPECT_EQ(describe(alarm.text), alarm.description == nullptr ? "(throws)" : alarm.description);
        } catch (const std::out_of_range& error) {
            EXPECT_EQ(alarm.description, nullptr);
            EXPECT_STREQ(error.what(), "basic_string::substr");
        }
    }
}

const std::string kHead17(17, 'x');  // puts a name at position 32, whose end is then a blank
const std::string kLongHot = " temp sensor reading is out of range, it is too high";

TEST(EventTexts, FindsTheHotSensor) {
    check(
        overheatOf,
        {
            {"name up to a blank", kHead17 + "Temp overheat, CPU above 80", "CPU sensor"},
            {"blank nowhere behind", kHead17 + "Temp overheat, CPU", "unknown"},
            {"end goes by position, not by blank", "Temp overheat, CPU hot\x0f and more text beyond 32\x0f!",
             "CPU hot\x0f and more text beyond 32 sensor"},
            {"negative length: the rest", std::string(51, 'B') + "Temp overheat, CPU", "CPU sensor"},
            {"the short wording wins", kHead17 + "Temp overheat, CPU" + kLongHot, "CPU sensor"},
            {"long wording", "Alarm (12.3) the inlet" + kLongHot, "inlet sensor"},
            {"last parenthesis counts", "(1) the a (2) the inlet" + kLongHot, "inlet sensor"},
            {"no parenthesis", "the inlet" + kLongHot, "unknown"},
            {"parenthesis behind the phrase: the rest", "a" + kLongHot + ") the z", "z sensor"},
            {"name would begin at the end", "a" + kLongHot + ")12345", " sensor"},
            {"name would begin beyond the end", "a" + kLongHot + ")1234", nullptr},
            {"neither", "Temperature", "unknown"},
            {"empty", "", "unknown"},
        });
}

TEST(EventTexts, FindsTheVoltageSensor) {
    const std::string high = " voltage supply is out of range, it is too high";
    const std::string low = " voltage supply is out of range, it is too low";
    const std::vector<Alarm> either = {
        {"bracket", "x [3.3V] [12V voltage sensor shows 13 V", "12V sensor"},
        {"no bracket", "12V voltage sensor shows 13 V (1) the x" + high, "unknown"},
        {"bracket behind: the rest", "12V voltage sensor shows [13 V", "13 V sensor"},
        {"bracket at the end", "12V voltage sensor shows [", " sensor"},
        {"neither", "voltage", "unknown"},
    };
    check(highOf, either);
    check(lowOf, either);
    check(highOf, {{"long wording", "(1) the 12V" + high, "12V sensor"},
                   {"the other direction", "(1) the 12V" + low, "unknown"},
                   {"beyond the end", high + ")", nullptr}});
    check(lowOf, {{"long wording", "(1) the 12V" + low, "12V sensor"},
                  {"the other direction", "(1) the 12V" + high, "unknown"},
                  {"no parenthesis", "the 12V" + low, "unknown"},
                  {"beyond the end", low + ")12", nullptr}});
}

TEST(EventTexts, ReadsMediaInserted) {
    const MediaInserted media = parseMediaInserted("1;2;3; 4;-5;+6; ABCDEFGHIJ123456;255 and more");
    EXPECT_EQ(media.items, 8);
    EXPECT_EQ(media.port, 4);
    EXPECT_EQ(media.presence, -5);
    EXPECT_EQ(media.vendorOUI, 6);
    EXPECT_EQ(media.vendorSN, "ABCDEFGHIJ123456");
    EXPECT_EQ(media.format, 255);

    const MediaInserted large = parseMediaInserted("1;2;3;99999999999;1;-99999999999;0123456789ABCDEF;1");
    EXPECT_EQ(large.items, 8);
    EXPECT_EQ(large.port, 2147483647);
    EXPECT_EQ(large.vendorOUI, -2147483647 - 1);

    const struct {
        const char* text;
        int items;
    } kCounts[] = {
        {"", -1},
        {" \t", -1},
        {"x", 0},
        {"-", 0},
        {";", 0},
        {"1", 1},
        {"1 ;2", 1},
        {"1;2;3", 3},
        {"1;2;3;4;5;6;", 6},
        {"1;2;3;4;5;6;   ", 6},
        {"1;2;3;4;5;6;SHORT;8", 7},              // the serial number takes the ';' and all behind it
        {"1;2;3;4;5;6;SHORT           ;8", 7},   // blanks behind it are no ';'
        {"1;2;3;4;5;6;01234567890123456;8", 7},  // 17 characters
        {"1;2;3;4;5;6;0123456789ABCDEF;", 7},
        {"1;2;3;4;5;6;0123456789ABCDEF;x", 7},
        {"1;2;3;4;5;6;           SHORT;x;8", 7},  // blanks in front count for nothing: SHORT;x;8
    };
    for (const auto& count : kCounts)
        EXPECT_EQ(parseMediaInserted(count.text).items, count.items) << count.text;
}

TEST(EventTexts, ReadsMediaRemoved) {
    EXPECT_EQ(parseMediaRemoved("1;2;0;17").port, 17);
    EXPECT_EQ(parseMediaRemoved("1;2;0;17;5").items, 4);
    EXPECT_EQ(parseMediaRemoved("1;2;3").items, 3);
    EXPECT_EQ(parseMediaRemoved("").items, -1);
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
    EXPECT_THAT(entries("x,y,200000051E000001"), ElementsAre("200000051E000001"));
    EXPECT_THAT(entries("x,y,A;x,y,B"), ElementsAre("A", "B"));
    EXPECT_THAT(entries("x,y,A;"), ElementsAre("A"));
    EXPECT_THAT(entries(",,A;,,;,,C"), ElementsAre("A", "", "C"));
    EXPECT_THAT(entries("x,y,A,more;x,y,B"), ElementsAre("A,more", "B"))
        << "further fields belong to the third";
    EXPECT_THAT(entries("x,y,A;x,y"), ElementsAre("A")) << "an entry of two fields ends the list";
    EXPECT_THAT(entries("x,y"), IsEmpty());
    EXPECT_THAT(entries("x;y;z"), IsEmpty());
    EXPECT_THAT(entries(""), IsEmpty());
    EXPECT_THAT(entries("x;y,z,A"), ElementsAre("A")) << "a ';' in front of the commas is part of a field";
}

}  // namespace
