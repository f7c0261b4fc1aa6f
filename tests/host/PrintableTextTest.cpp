#include "host/PrintableText.h"

#include <gtest/gtest.h>

namespace {

std::string const kBad = "\xEF\xBF\xBD";

} // namespace

TEST(PrintableTextTest, WordsOfAnyLanguageStay) {
    for (std::string const text :
         {"", "slide 7.tif", "\xC2\xB5m \xC3\xA4", "\xE6\x96\x87\xE5\xAD\x97", "\xF0\x9F\x94\xAC", "a%s %n\\"})
        EXPECT_EQ(printableText(text), text);
}

TEST(PrintableTextTest, ControlCharactersAndMarksThatTurnTheLineAreReplaced) {
    EXPECT_EQ(printableText("a\nb"), "a" + kBad + "b");
    EXPECT_EQ(printableText("\x1B[2J"), kBad + "[2J");
    EXPECT_EQ(printableText(std::string("a\0b", 3)), "a" + kBad + "b");
    EXPECT_EQ(printableText("\x7F"), kBad);
    EXPECT_EQ(printableText("\xC2\x9B"), kBad) << "a control character of Latin-1";
    EXPECT_EQ(printableText("\xC2\xA0"), "\xC2\xA0") << "the first that is none";
    for (std::string const mark :
         {"\xE2\x80\xA8", "\xE2\x80\xAE", "\xE2\x81\xA6", "\xE2\x81\xA9", "\xE2\x80\x8E", "\xE2\x80\x8F", "\xD8\x9C"})
        EXPECT_EQ(printableText(mark), kBad);
    EXPECT_EQ(printableText("\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA"),
              "\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5\xE2\x81\xAA");
}

TEST(PrintableTextTest, BytesThatAreNoUtf8AreReplacedOneByOne) {
    EXPECT_EQ(printableText("a\xFF"
                            "b"),
              "a" + kBad + "b");
    EXPECT_EQ(printableText("\x80"), kBad);
    EXPECT_EQ(printableText("\xC3"), kBad) << "cut off";
    EXPECT_EQ(printableText("\xC3"
                            "a"),
              kBad + "a");
    EXPECT_EQ(printableText("\xE6\x96"), kBad + kBad);
    EXPECT_EQ(printableText("\xC0\xAF"), kBad + kBad) << "more bytes than it takes";
    EXPECT_EQ(printableText("\xE0\x9F\xBF"), kBad + kBad + kBad);
    EXPECT_EQ(printableText("\xE0\xA0\x80"), "\xE0\xA0\x80");
    EXPECT_EQ(printableText("\xED\xA0\x80"), kBad + kBad + kBad) << "half of a pair";
    EXPECT_EQ(printableText("\xED\x9F\xBF\xEE\x80\x80"), "\xED\x9F\xBF\xEE\x80\x80");
    EXPECT_EQ(printableText("\xF4\x90\x80\x80"), kBad + kBad + kBad + kBad) << "beyond the last";
    EXPECT_EQ(printableText("\xF4\x8F\xBF\xBF"), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(printableText("\xF0\x8F\xBF\xBF"), kBad + kBad + kBad + kBad);
    EXPECT_EQ(printableText("\xF5\x80"), kBad + kBad);
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
