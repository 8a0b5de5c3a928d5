#include "common/text.h"

#include <gtest/gtest.h>

#include <cstring>

#include "common/NORV_Except.h"
#include "common/bounded_text.h"
#include "common/number_text.h"

using namespace datacache;

namespace {

TEST(Text, WritesBytesAsDigits) {
    const unsigned char bytes[] = {0x10, 0x00, 0x00, 0xFF, 0x0A, 0xB0, 0x80, 0x01};
    char text[18];
    std::memset(text, '#', sizeof text);
    EXPECT_EQ(VEX_WWNToStr(text, bytes), text);
    EXPECT_STREQ(text, "100000FF0AB08001");
    EXPECT_EQ(text[17], '#');

    for (const int count : {0, -1})
        EXPECT_STREQ(byteToStr(text, bytes, count), "100000FF0AB08001") << "nothing is written";
    EXPECT_STREQ(byteToStr(text, bytes, 3), "100000");
}

TEST(Text, ConvertsToUpperCaseInPlace) {
    char text[] = "10:00:aB\xe4z";
    EXPECT_STREQ(toUpper(text), "10:00:AB\xe4Z");
    EXPECT_EQ(toUpper(nullptr), nullptr);
    EXPECT_STREQ(booltostr(true), "true");
    EXPECT_STREQ(booltostr(false), "false");
}

TEST(Text, ReadsFieldsWithTheirBound) {
    struct {
        char field[4];
        char beyond[4];
    } record = {{'a', 'b', 'c', 'd'}, "xyz"};
    EXPECT_EQ(boundedText(record.field), "abcd");
    record.field[1] = '\0';
    EXPECT_EQ(boundedText(record.field), "a");
}

TEST(Text, ReadsNumbersAsOnThePlatformOfRecord) {
    const std::pair<const char*, int32_t> decimals[] = {
        {"12", 12}, {" -7x", -7}, {"\t\n\v\f\r 9", 9}, {"-", 0},
        {"", 0},    {"0x10", 0},  {"+5", 5},           {"2147483648", 2147483647},
    };
    for (const auto& [text, number] : decimals) EXPECT_EQ(toInt(text), number) << text;
    EXPECT_EQ(toInt("-99999999999999999999"), -2147483647 - 1);
    EXPECT_EQ(toUint16("65537"), 1);
    EXPECT_EQ(toUint8("300"), 44);

    EXPECT_EQ(strtoul32("1A2B", 16), 6699U);
    EXPECT_EQ(strtoul32("0x1F", 0), 31U);
    const std::pair<const char*, uint32_t> unsigneds[] = {{"4294967295", 4294967295U},
                                                          {"4294967296", 4294967295U},
                                                          {"99999999999999999999999", 4294967295U},
                                                          {"-2", 4294967294U},
                                                          {"-4294967295", 1},
                                                          {"+5", 5},
                                                          {"--5", 0},
                                                          {"  ", 0},
                                                          {"x", 0}};
    for (const auto& [text, number] : unsigneds) EXPECT_EQ(strtoul32(text, 10), number) << text;
}

TEST(NorvExcept, KeepsWhereItWasThrownAndFormatsTheMessage) {
    static const char file[] = "ZoningCache";
    static const char function[] = "commit";
    const NORV_Except except(file, function, -7, EXCEPT_INFORMATIONAL, "%s of %d", "%n%s", 5);
    EXPECT_EQ(except.file, file);
    EXPECT_EQ(except.function, function);
    EXPECT_EQ(except.line, -7);
    EXPECT_STREQ(except.message, "%n%s of 5");
    EXPECT_NE(except.severity, 0);
    const NORV_Except unformatted(file, function, 1, EXCEPT_CRITICAL, "x%ls", L"\xd800");
    EXPECT_STREQ(unformatted.message, "") << "no half a message";
    EXPECT_EQ(unformatted.severity, 0);
    const std::string text = std::string(2022, 'a') + "zz";
    EXPECT_EQ(NORV_Except(file, function, 1, EXCEPT_CRITICAL, "%s", text.c_str()).message,
              text.substr(0, 2023));
}

}  // namespace
