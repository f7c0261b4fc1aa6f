#include "renderbackend/Filter.h"

#include "tests/renderbackend/FilterDescription.h"
#include "tests/renderbackend/ThrownMessage.h"

#include <gtest/gtest.h>
#include <string>

namespace {

// Spelled with every irregular blank, the last one included.
std::string const kLongSignature =
    "Filter::Filter(std::string const& name, size_t invalidLeft,size_t invalidRight,size_t invalidTop, size_t "
    "invalidBottom, size_t inputPosX0,size_t inputPosXStride, size_t inputPosY0, size_t inputPosYStride,size_t "
    "scaleXNum, size_t scaleXDen, size_t scaleYNum, size_t scaleYDen,size_t numTexturesIn, size_t bitsPerPixelIn, "
    "size_t bitsPerPixelOut,size_t componentsIn, size_t componentsOut, size_t alignXIn,size_t alignXOut,size_t "
    "alignYIn, size_t alignYOut,std::vector<bool> signedIn,bool signedOut,size_t bitDepthIn, "
    "RenderBackend::ImageFiltering filtering) ";
std::string const kShortSignature =
    "Filter::Filter(std::string const& name, size_t invalidLeft, size_t invalidRight, size_t invalidTop, size_t "
    "invalidBottom, size_t inputPosX0, size_t inputPosXStride, size_t inputPosY0, size_t inputPosYStride, size_t "
    "scaleXNum, size_t scaleXDen, size_t scaleYNum, size_t scaleYDen, size_t numTexturesIn, "
    "RenderBackend::ImageFiltering filtering)";

std::string const kBadX = "#Name:error x stride times x scale factor is not integer#Location:" + kShortSignature;
std::string const kBadY = "#Name:error y stride times y scale factor is not integer#Location:" + kLongSignature;
std::string const kBadAlignment = "#Name:input alignment not compatibe with input stride#Location:" + kLongSignature;
std::string const kBadSigns =
    "#Name:signed vector size does not match number of input textures#Location:" + kLongSignature;

std::string refusal(FilterDescription const& description) {
    return thrownMessage([&] { description.filter(); });
}

FilterDescription alignedX(size_t alignment, size_t stride, size_t origin) {
    FilterDescription d;
    d.alignXIn = alignment;
    d.inputPosXStride = stride;
    d.inputPosX0 = origin;
    return d;
}

FilterDescription alignedY(size_t alignment, size_t stride, size_t origin) {
    FilterDescription d;
    d.alignYIn = alignment;
    d.inputPosYStride = stride;
    d.inputPosY0 = origin;
    return d;
}

TEST(FilterValidationTest, StrideThreeAtScaleOneHalfFailsInX) {
    FilterDescription d = alignedX(1, 3, 0);
    d.scaleXDen = 2;
    EXPECT_EQ(refusal(d), kBadX);
}

TEST(FilterValidationTest, StrideTwoAtScaleOneHalfPasses) {
    FilterDescription d = alignedX(1, 2, 0);
    d.scaleXDen = 2;
    EXPECT_NO_THROW(d.filter());
}

TEST(FilterValidationTest, StrideOneAtScaleOneHalfFails) {
    FilterDescription d;
    d.scaleXDen = 2;
    EXPECT_EQ(refusal(d), kBadX);
}

TEST(FilterValidationTest, TheShorterConstructorReportsXWithTheSameText) {
    EXPECT_EQ(thrownMessage([] { Filter("f", 0, 0, 0, 0, 0, 3, 0, 1, 1, 2, 1, 1, 1, RenderBackend::NEAREST); }), kBadX);
}

TEST(FilterValidationTest, StrideThreeAtScaleOneHalfFailsInYWithTheLongSignature) {
    FilterDescription d = alignedY(1, 3, 0);
    d.scaleYDen = 2;
    EXPECT_EQ(refusal(d), kBadY);
}

TEST(FilterValidationTest, XIsReportedBeforeY) {
    FilterDescription d;
    d.scaleXDen = 2;
    d.scaleYDen = 2;
    EXPECT_EQ(refusal(d), kBadX);
}

TEST(FilterValidationTest, ScaleIsReportedBeforeAlignment) {
    FilterDescription d = alignedX(3, 2, 0);
    d.scaleYDen = 2;
    EXPECT_EQ(refusal(d), kBadY);
}

TEST(FilterValidationTest, AlignmentIsReportedBeforeTheSigns) {
    FilterDescription d = alignedX(3, 2, 0);
    d.signedIn = {};
    EXPECT_EQ(refusal(d), kBadAlignment);
}

TEST(FilterValidationTest, AlignmentFourFitsStrideTwoFromColumnTwo) {
    EXPECT_NO_THROW(alignedX(4, 2, 2).filter());
    EXPECT_NO_THROW(alignedY(4, 2, 2).filter());
}

TEST(FilterValidationTest, AlignmentFourDoesNotFitStrideTwoFromColumnOne) {
    EXPECT_EQ(refusal(alignedX(4, 2, 1)), kBadAlignment);
    EXPECT_EQ(refusal(alignedY(4, 2, 1)), kBadAlignment);
}

TEST(FilterValidationTest, AlignmentTwoDoesNotFitStrideFourFromColumnOne) {
    EXPECT_EQ(refusal(alignedX(2, 4, 1)), kBadAlignment);
    EXPECT_EQ(refusal(alignedY(2, 4, 1)), kBadAlignment);
}

TEST(FilterValidationTest, AlignmentTwoFitsStrideFourFromColumnTwo) {
    EXPECT_NO_THROW(alignedX(2, 4, 2).filter());
    EXPECT_NO_THROW(alignedY(2, 4, 2).filter());
}

TEST(FilterValidationTest, AlignmentThreeDoesNotFitStrideTwo) {
    EXPECT_EQ(refusal(alignedX(3, 2, 0)), kBadAlignment);
    EXPECT_EQ(refusal(alignedY(3, 2, 0)), kBadAlignment);
}

TEST(FilterValidationTest, AlignmentTwoDoesNotFitStrideThree) {
    EXPECT_EQ(refusal(alignedX(2, 3, 0)), kBadAlignment);
    EXPECT_EQ(refusal(alignedY(2, 3, 0)), kBadAlignment);
}

TEST(FilterValidationTest, AnAlignmentEqualToTheStrideNeedsAnOriginOnIt) {
    EXPECT_NO_THROW(alignedX(3, 3, 6).filter());
    EXPECT_EQ(refusal(alignedX(3, 3, 4)), kBadAlignment);
}

TEST(FilterValidationTest, EveryInputNeedsItsSign) {
    FilterDescription d;
    d.numTexturesIn = 2;
    EXPECT_EQ(refusal(d), kBadSigns);
    d.signedIn = {false, true, false};
    EXPECT_EQ(refusal(d), kBadSigns);
    d.signedIn = {false, true};
    EXPECT_NO_THROW(d.filter());
}

TEST(FilterValidationTest, AFilterWithoutInputsNeedsNoSigns) {
    FilterDescription d;
    d.numTexturesIn = 0;
    d.signedIn = {};
    EXPECT_NO_THROW(d.filter());
}

TEST(FilterValidationTest, ZeroScaleOverStrideIsAWholeNumber) {
    FilterDescription d;
    d.scaleXNum = 0;
    d.scaleXDen = 5;
    EXPECT_NO_THROW(d.filter());
}

} // namespace
