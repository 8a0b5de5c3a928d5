#include <gtest/gtest.h>

#include <string>

#include "common/NORV_Except.h"

TEST(NorvExcept, KeepsWhereItWasThrownAndFormatsTheMessage) {
    static const char file[] = "ZoningCache";
    static const char function[] = "commit";
    const NORV_Except except(file, function, -7, EXCEPT_INFORMATIONAL, "%s of %d", "%n%s", 5);
    EXPECT_EQ(except.file, file);
    EXPECT_EQ(except.function, function);
    EXPECT_EQ(except.line, -7);
    EXPECT_STREQ(except.message, "%n%s of 5");
    EXPECT_NE(except.severity, 0);
    EXPECT_EQ(NORV_Except(file, function, 1, EXCEPT_CRITICAL, "x").severity, 0);
    const std::string text = std::string(2022, 'a') + "zz";
    EXPECT_EQ(NORV_Except(file, function, 1, EXCEPT_CRITICAL, "%s", text.c_str()).message,
              text.substr(0, 2023));
}
