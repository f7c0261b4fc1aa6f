#include "host/HostError.h"

#include <gtest/gtest.h>

TEST(HostErrorTest, LinesAreJoinedAndEmptyOnesDropped) {
    EXPECT_EQ(onOneLine("first\n  second \r\n\n \t\nthird\n"), "first; second; third");
    EXPECT_EQ(onOneLine("one line"), "one line");
    EXPECT_EQ(onOneLine("\n \n"), "");
}

TEST(HostErrorTest, KeepsItsKindAndOneLineOfText) {
    HostError const error(HostError::Kind::UnwritableOutput, "cannot write\nbecause");
    EXPECT_EQ(error.kind(), HostError::Kind::UnwritableOutput);
    EXPECT_STREQ(error.what(), "cannot write; because");
}
