#include "host/filter/Enhancement.h"
#include "host/filter/EnhancementChain.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using namespace enhancement;

template <class Parse>
void expectRefused(Parse const& parse, std::vector<std::string> const& texts) {
    for (std::string const& text : texts) {
        try {
            parse(text);
            ADD_FAILURE() << "\"" << text << "\" was taken";
        } catch (std::invalid_argument const& error) {
            EXPECT_EQ(std::string(error.what()).rfind("\"" + text + "\" is not ", 0), 0U) << error.what();
        }
    }
}

TEST(EnhancementTest, NumbersAreTaken) {
    EXPECT_EQ(parseSharpen("-1.5").gain, -1.5);
    EXPECT_EQ(parseEqualise("3").clipLimit, 3.0);
    Gamma const gamma = parseGamma("2.2,10,65535");
    EXPECT_EQ(gamma.gamma, 2.2);
    EXPECT_EQ(gamma.black, 10U);
    EXPECT_EQ(gamma.white, 65535U);
    EXPECT_EQ(parseTruncate("16").bits, 16U);
    EXPECT_FALSE(parseTruncate("4").rounding);
    EXPECT_TRUE(parseTruncate("4,round").rounding);
}

TEST(EnhancementTest, MatrixHasNineNumbersAndPerhapsAStrength) {
    ColourMatrix const plain = parseColourMatrix("1,2,3,4,5,6,7,-7.5,0.25");
    EXPECT_EQ(plain.rows, (std::array<double, 9>{1, 2, 3, 4, 5, 6, 7, -7.5, 0.25}));
    EXPECT_EQ(plain.strength, 1.0);
    EXPECT_EQ(parseColourMatrix("1,0,0,0,1,0,0,0,1,-0.5").strength, -0.5);
}

TEST(EnhancementTest, OtherTextsAreRefusedWithWhatTheyShouldBe) {
    expectRefused(parseSharpen, {"", "x", "1x", "1,2", " 1", "nan", "inf", "1001", "-1001"});
    expectRefused(parseColourMatrix, {"", "1,2,3", "1,2,3,4,5,6,7,8", "1,0,0,0,1,0,0,0,1,1,1", "1,0,0,0,1,0,0,0,",
                                      "9,0,0,0,1,0,0,0,1", "1,0,0,0,1,0,0,0,1,nan"});
    // Each coefficient times the strength has to stay below 8.
    expectRefused(parseColourMatrix, {"4,0,0,0,1,0,0,0,1,2", "8,0,0,0,1,0,0,0,1"});
    expectRefused(parseGamma, {"", "2.2", "2.2,0", "0,0,255", "-1,0,255", "2.2,-1,255", "2.2,0,65536", "2.2,0.5,255",
                               "2.2,0,255,1"});
    expectRefused(parseEqualise, {"", "0.99", "-3", "nan", "3,4"});
    expectRefused(parseTruncate, {"", "17", "-1", "4,", "4,up", "4,round,round", "4.5"});
}

// The input of a part has at most kMaxSide pixels per side, whichever part.
TEST(EnhancementTest, PartsLeaveRoomForWhatIsReadAroundThem) {
    Sharpen const sharpen;
    Equalise const equalise;
    EXPECT_EQ(EnhancementChain::partSide({}), 1000U);
    EXPECT_EQ(EnhancementChain::partSide({LinearToSrgb(), ColourMatrix(), Gamma(), Truncate()}), 1000U);
    EXPECT_EQ(EnhancementChain::partSide({sharpen}), 1000U);
    EXPECT_EQ(EnhancementChain::partSide({equalise}), 840U);
    EXPECT_EQ(EnhancementChain::partSide({equalise, sharpen}), 840U);
    EXPECT_EQ(EnhancementChain::partSide(std::vector<Step>(6, equalise)), 40U);
    EXPECT_EQ(EnhancementChain::partSide(std::vector<Step>(7, equalise)), 0U);
}

} // namespace
