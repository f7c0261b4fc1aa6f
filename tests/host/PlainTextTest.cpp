#include "host/PlainText.h"

#include <gtest/gtest.h>

namespace {

std::string const kReplacement = "\xef\xbf\xbd";

} // namespace

TEST(PlainTextTest, WhatCanBePrintedStays) {
    for (std::string const text : {"", "slide 7.tif", "\u00e4\u00f6", "\u20ac", "\U0001f600", "\xef\xbf\xbd"})
        EXPECT_EQ(plainText(text, 100), text);
}

TEST(PlainTextTest, ControlCharactersAreReplaced) {
    EXPECT_EQ(plainText("a\nb\tc\x7f", 100), "a" + kReplacement + "b" + kReplacement + "c" + kReplacement);
    EXPECT_EQ(plainText(std::string("a\0b", 3), 100), "a" + kReplacement + "b");
    EXPECT_EQ(plainText("\xc2\x85", 100), kReplacement) << "a new line of Unicode's";
    EXPECT_EQ(plainText("\x1b[31m", 100), kReplacement + "[31m");
}

TEST(PlainTextTest, BytesThatAreNoUtf8AreReplacedOneByOne) {
    EXPECT_EQ(plainText("b\xe4r", 100), "b" + kReplacement + "r") << "Latin-1";
    EXPECT_EQ(plainText("\xc3", 100), kReplacement) << "cut off";
    EXPECT_EQ(plainText("\xe2\x82", 100), kReplacement + kReplacement);
    EXPECT_EQ(plainText("\xc0\xaf", 100), kReplacement + kReplacement) << "longer than it must be";
    EXPECT_EQ(plainText("\xe0\x80\xaf", 100), kReplacement + kReplacement + kReplacement);
    EXPECT_EQ(plainText("\xed\xa0\x80", 100), kReplacement + kReplacement + kReplacement) << "half of a pair";
    EXPECT_EQ(plainText("\xf4\x90\x80\x80", 100).size(), 4 * kReplacement.size()) << "beyond the last character";
    EXPECT_EQ(plainText("\xff\xfe", 100), kReplacement + kReplacement);
}

TEST(PlainTextTest, ALongTextIsCutBetweenCharacters) {
    EXPECT_EQ(plainText("abcdef", 3), "abc");
    EXPECT_EQ(plainText("ab\u20accd", 4), "ab");
    EXPECT_EQ(plainText("ab\u20accd", 5), "ab\u20ac");
    EXPECT_EQ(plainText(std::string(100000, 'x'), 1024), std::string(1024, 'x'));
}
