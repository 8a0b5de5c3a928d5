#include <gtest/gtest.h>

#include <string>

#include "common/NORV_Except.h"

TEST(NorvExcept, KeepsWhereItWasThrownAndFormatsTheMessage) {
    static const char file[] = "ZoningCache";
    static const char function[] = "commit";
    try {
        throw NORV_Except(file, function, -7, EXCEPT_INFORMATIONAL, "%s of %d", "%n%s", 5);
    } catch (const NORV_Except& caught) {
        EXPECT_EQ(caught.file, file);
        EXPECT_EQ(caught.function, function);
        EXPECT_EQ(caught.line, -7);
        EXPECT_STREQ(caught.message, "%n%s of 5");
        EXPECT_NE(caught.severity, 0);
    }
    EXPECT_EQ(NORV_Except(file, function, 1, EXCEPT_CRITICAL, "x").severity, 0);
}

TEST(NorvExcept, CutsTheMessageAt2023Bytes) {
    for (const std::size_t length : {2022U, 2023U, 2024U, 5000U}) {
        const std::string text = std::string(length - 1, 'a') + 'z';
        const NORV_Except except("f", "g", 1, EXCEPT_CRITICAL, "%s", text.c_str());
        EXPECT_EQ(except.message, text.substr(0, 2023)) << length;
        EXPECT_EQ(except.severity, EXCEPT_CRITICAL) << length;
    }
}
