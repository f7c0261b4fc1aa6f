#include "host/PlainText.h"

#include "host/HostError.h"

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

TEST(PrintableTextTest, WordsOfAnyLanguageStay) {
    for (std::string const text :
         {"", "slide 7.tif", "\xC2\xB5m \xC3\xA4", "\xE6\x96\x87\xE5\xAD\x97", "\xF0\x9F\x94\xAC", "a%s %n\\"})
        EXPECT_EQ(printableText(text), text);
}

TEST(PrintableTextTest, ControlCharactersAndMarksThatTurnTheLineAreReplaced) {
    EXPECT_EQ(printableText("a\nb"), "a" + kReplacement + "b");
    EXPECT_EQ(printableText("\x1B[2J"), kReplacement + "[2J");
    EXPECT_EQ(printableText(std::string("a\0b", 3)), "a" + kReplacement + "b");
    EXPECT_EQ(printableText("\x7F"), kReplacement);
    EXPECT_EQ(printableText("\xC2\x9B"), kReplacement) << "a control character of Latin-1";
    EXPECT_EQ(printableText("\xC2\xA0"), "\xC2\xA0") << "the first that is none";
    // NOLINTBEGIN(misc-misleading-bidirectional): that is what they are
    for (std::string const mark :
         {"\xE2\x80\xA8", "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9", "\xE2\x80\x8E", "\xE2\x80\x8F", "\xD8\x9C"})
        EXPECT_EQ(printableText(mark), kReplacement);
    // NOLINTEND(misc-misleading-bidirectional)
    EXPECT_EQ(printableText("\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA"),
              "\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA");
}

TEST(PrintableTextTest, BytesThatAreNoUtf8AreReplacedOneByOne) {
    EXPECT_EQ(printableText("a\xFF"
                            "b"),
              "a" + kReplacement + "b");
    EXPECT_EQ(printableText("\x80"), kReplacement);
    EXPECT_EQ(printableText("\xC3"), kReplacement) << "cut off";
    EXPECT_EQ(printableText("\xC3"
                            "a"),
              kReplacement + "a");
    EXPECT_EQ(printableText("\xE6\x96"), kReplacement + kReplacement);
    EXPECT_EQ(printableText("\xC0\xAF"), kReplacement + kReplacement) << "more bytes than it takes";
    EXPECT_EQ(printableText("\xE0\x9F\xBF"), kReplacement + kReplacement + kReplacement);
    EXPECT_EQ(printableText("\xE0\xA0\x80"), "\xE0\xA0\x80");
    EXPECT_EQ(printableText("\xED\xA0\x80"), kReplacement + kReplacement + kReplacement) << "half of a pair";
    EXPECT_EQ(printableText("\xED\x9F\xBF\xEE\x80\x80"), "\xED\x9F\xBF\xEE\x80\x80");
    EXPECT_EQ(printableText("\xF4\x90\x80\x80"), kReplacement + kReplacement + kReplacement + kReplacement)
        << "beyond the last";
    EXPECT_EQ(printableText("\xF4\x8F\xBF\xBF"), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(printableText("\xF0\x8F\xBF\xBF"), kReplacement + kReplacement + kReplacement + kReplacement);
    EXPECT_EQ(printableText("\xF5\x80"), kReplacement + kReplacement);
}

TEST(PrintableTextTest, LongTextsAreCutBetweenCharacters) {
    std::string const character = "\xC3\xA4";
    std::string text;
    for (int i = 0; i < 5; ++i)
        text += character;
    EXPECT_EQ(printableText(text, 5), text);
    EXPECT_EQ(printableText(text, 4), text.substr(0, 8) + "...");
    EXPECT_EQ(printableText(std::string(1000000, 'x')).size(), 123U);
}

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
    // As UTF-8: U+0080, U+009B, which begins a sequence like ESC [, and U+009F.
    EXPECT_EQ(terminalText("\xc2\x80\xc2\x9b\xc2\x9f"), "\\xc2\\x80\\xc2\\x9b\\xc2\\x9f");
}

// NOLINTBEGIN(misc-misleading-bidirectional): that is what they are
TEST(TerminalTextTest, WhatTurnsOtherCharactersAroundOrEndsALineIsShown) {
    EXPECT_EQ(terminalText("a\xe2\x80\xaegpj.exe"), "a\\xe2\\x80\\xaegpj.exe"); // U+202E
    for (std::string const character : {"\xe2\x80\xa8", "\xe2\x80\xa9", "\xe2\x80\xaa", "\xe2\x80\x8e", "\xe2\x80\x8f",
                                        "\xe2\x81\xa6", "\xe2\x81\xa9", "\xd8\x9c"})
        EXPECT_EQ(terminalText(character).front(), '\\') << character;
}
// NOLINTEND(misc-misleading-bidirectional)

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

TEST(CountedTest, OneIsNoPlural) {
    EXPECT_EQ(counted(0, "level"), "0 levels");
    EXPECT_EQ(counted(1, "level"), "1 level");
    EXPECT_EQ(counted(12, "level"), "12 levels");
}

TEST(BytesTextTest, ASizeHasTwoOrThreeDigits) {
    EXPECT_EQ(bytesText(0), "0 bytes");
    EXPECT_EQ(bytesText(999), "999 bytes");
    EXPECT_EQ(bytesText(1000), "1.0 kB");
    EXPECT_EQ(bytesText(9949), "9.9 kB");
    EXPECT_EQ(bytesText(9950), "10 kB");
    EXPECT_EQ(bytesText(999'499), "999 kB");
    EXPECT_EQ(bytesText(999'500), "1.0 MB");
    EXPECT_EQ(bytesText(10'000'000'000), "10 GB");
    EXPECT_EQ(bytesText(UINT64_MAX), "18 EB");
}
