#include "conformance/Trial.h"

#include "tests/renderbackend/MinimalInstance.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <utility>

namespace {

using conformance::Layout;
using conformance::Trial;
using reference::Texels;

class TrialTest : public ::testing::Test {
protected:
    // Counting asks nothing of it.
    FixedContext context_;
    conformance::TexelRunner runner_{std::make_shared<MinimalInstance>(1, context_)};
    Trial trial_{runner_, {}};
    Texels const picture_{2, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
};

TEST_F(TrialTest, EqualPicturesHaveNoDifference) {
    trial_.count({picture_, picture_}, Layout::kRgba8);
    EXPECT_EQ(trial_.tally().pixels, 4U);
    EXPECT_EQ(trial_.tally().differingBytes, 0U);
    EXPECT_EQ(trial_.tally().firstDifference, "");
}

TEST_F(TrialTest, EveryDifferingByteCountsAndTheFirstIsNamed) {
    Texels other = picture_;
    other.bytes[6] = 77;
    other.bytes[15] = 0;
    trial_.count({picture_, picture_}, Layout::kRgba8);
    trial_.count({other, picture_}, Layout::kRgba8);
    EXPECT_EQ(trial_.tally().pixels, 8U);
    EXPECT_EQ(trial_.tally().differingBytes, 2U);
    EXPECT_EQ(trial_.tally().firstDifference, "picture 2: byte 2 of texel (1, 0) is 77, not 7");
    trial_.count({other, picture_}, Layout::kRgba8);
    EXPECT_EQ(trial_.tally().differingBytes, 4U);
    EXPECT_EQ(trial_.tally().firstDifference, "picture 2: byte 2 of texel (1, 0) is 77, not 7");
}

TEST_F(TrialTest, PixelsAreThoseOfTheLayout) {
    trial_.count({picture_, picture_}, Layout::kOneChannel16);
    EXPECT_EQ(trial_.tally().pixels, 8U);
    trial_.count({picture_, picture_}, Layout::kThreeChannel16);
    EXPECT_EQ(trial_.tally().pixels, 10U);
}

TEST_F(TrialTest, StripsAreAsLongAsTexturesGetInWholePixelsOfEveryLayout) {
    auto const lengths = [&](int longestTexels) {
        return Trial(runner_, {conformance::Depth::kThorough, longestTexels}).stripLengths();
    };
    EXPECT_EQ(lengths(2048), std::vector<int>{2048});
    EXPECT_EQ(lengths(8192), std::vector<int>{8192});
    EXPECT_EQ(lengths(16384), (std::vector<int>{8192, 16384}));
    EXPECT_EQ(lengths(32767), (std::vector<int>{8192, 32764}));
}

TEST_F(TrialTest, ASharpTrialsStripIsLongerThanFloatsOf16BitsCountAndNoLongerThanTexturesGet) {
    auto const lengths = [&](int longestTexels) {
        return Trial(runner_, {conformance::Depth::kSharp, longestTexels}).stripLengths();
    };
    EXPECT_EQ(lengths(2048), std::vector<int>{2048});
    EXPECT_EQ(lengths(4110), std::vector<int>{4108});
    EXPECT_EQ(lengths(16384), std::vector<int>{4112});
    Trial const aboutPlaces(runner_, {conformance::Depth::kSharp, 16384, true});
    EXPECT_EQ(aboutPlaces.stripLengths(), (std::vector<int>{8192, 16384}));
}

TEST_F(TrialTest, EachDepthGoesFurtherThanTheOneBefore) {
    auto const at = [&](conformance::Depth depth) {
        Trial const trial(runner_, {depth});
        return std::pair{trial.thorough(), trial.full()};
    };
    EXPECT_EQ(at(conformance::Depth::kSharp), std::pair(false, false));
    EXPECT_EQ(at(conformance::Depth::kThorough), std::pair(true, false));
    EXPECT_EQ(at(conformance::Depth::kFull), std::pair(true, true));
}

TEST_F(TrialTest, PictureOfAnotherSizeIsNoDifferenceButAnError) {
    EXPECT_THROW(trial_.count({Texels(1, 2), picture_}, Layout::kRgba8), std::logic_error);
}

} // namespace
