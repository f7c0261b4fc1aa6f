#include "host/TerminalText.h"

#include "host/HostError.h"

#include <gtest/gtest.h>

TEST(TerminalTextTest, TextOfAnyLanguageStaysAsItIs) {
    for (std::string const text :
         {"", "slide.tif", "a b\\n", "Präparat", "\xe7\x8c\xab", "\xf0\x9f\x94\xac", "\xc2\xa0", "\xed\x9f\xbf",
          "\xee\x80\x80", "\xf4\x8f\xbf\xbf", "\xe2\x80\xa7", "\xe2\x80\xaf"})
        EXPECT_EQ(terminalText(text), text);
}

TEST(TerminalTextTest, ControlCharactersAreShownAndNotObeyed) {
    EXPECT_EQ(terminalText("\x1b[2J\x1b]0;title\x07"), "\\x1b[2J\\x1b]0;title\\x07");
    EXPECT_EQ(terminalText("a\nb\tc\rd\b"), "a\\x0ab\\x09c\\x0dd\\x08");
    EXPECT_EQ(terminalText(std::string("a\0b", 3)), "a\\x00b");
    EXPECT_EQ(terminalText("\x1f \x7e\x7f"), "\\x1f ~\\x7f");
    // As UTF-8: U+0080, U+009B, which begins a sequence as ESC [ does, and U+009F.
    EXPECT_EQ(terminalText("\xc2\x80\xc2\x9b\xc2\x9f"), "\\xc2\\x80\\xc2\\x9b\\xc2\\x9f");
}

TEST(TerminalTextTest, WhatTurnsOtherCharactersAroundOrEndsALineIsShown) {
    EXPECT_EQ(terminalText("a\xe2\x80\xaegpj.exe"), "a\\xe2\\x80\\xaegpj.exe"); // U+202E
    for (std::string const character : {"\xe2\x80\xa8", "\xe2\x80\xa9", "\xe2\x80\xaa", "\xe2\x80\x8e", "\xe2\x80\x8f",
                                        "\xe2\x81\xa6", "\xe2\x81\xa9", "\xd8\x9c"})
        EXPECT_EQ(terminalText(character).front(), '\\') << character;
}

TEST(TerminalTextTest, WhatIsNoUtf8IsShownByteByByte) {
    EXPECT_EQ(terminalText("\xff\xfe"), "\\xff\\xfe");
    EXPECT_EQ(terminalText("\x80"), "\\x80") << "a byte that begins nothing";
    EXPECT_EQ(terminalText("\xe7\x8c"), "\\xe7\\x8c") << "cut off";
    EXPECT_EQ(terminalText("\xe7\x8cz"), "\\xe7\\x8cz") << "broken off";
    EXPECT_EQ(terminalText("\xc0\xaf\xc1\xbf"), "\\xc0\\xaf\\xc1\\xbf") << "longer than needed";
    EXPECT_EQ(terminalText("\xe0\x9f\xbf"), "\\xe0\\x9f\\xbf") << "longer than needed";
    EXPECT_EQ(terminalText("\xf0\x8f\xbf\xbf"), "\\xf0\\x8f\\xbf\\xbf") << "longer than needed";
    EXPECT_EQ(terminalText("\xed\xa0\x80\xed\xbf\xbf"), "\\xed\\xa0\\x80\\xed\\xbf\\xbf") << "halves of a pair";
    EXPECT_EQ(terminalText("\xf4\x90\x80\x80\xf5\x80\x80\x80"), "\\xf4\\x90\\x80\\x80\\xf5\\x80\\x80\\x80");
    EXPECT_EQ(terminalText("\xfc\x80"), "\\xfc\\x80");
}

TEST(TerminalTextTest, ATextThatHasBeenThroughItStaysTheSame) {
    std::string const once = terminalText("\x1b[2J\xff\n");
    EXPECT_EQ(terminalText(once), once);
}

TEST(TerminalTextTest, MessagesAreWhatATerminalMayShow) {
    EXPECT_STREQ(HostError(HostError::Kind::Usage, "'a\x1b[2J\xff' is\tnot\nthere").what(),
                 "'a\\x1b[2J\\xff' is\\x09not; there");
    EXPECT_EQ(onOneLine("\x1b[2J\n\n  b "), "\\x1b[2J; b");
}
