#include "host/filter/FilterDescriptions.h"

#include "renderbackend/FilterParameters.h"
#include "renderbackend/VelmoraException.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

namespace {

using Sizes = std::vector<size_t>;

template <class Record>
bool makes(Filter const& filter) {
    return std::dynamic_pointer_cast<Record>(filter.getParametersObject()) != nullptr;
}

Sizes borders(Filter const& filter) {
    return {filter.invalidLeft(), filter.invalidRight(), filter.invalidTop(), filter.invalidBottom()};
}

TEST(FilterDescriptionsTest, EveryNameIsDescribedOnce) {
    std::set<std::string> const distinct(description::names().begin(), description::names().end());
    EXPECT_EQ(distinct.size(), description::names().size());
    for (auto const& name : description::names())
        EXPECT_EQ(description::byName(name).name(), name);
}

TEST(FilterDescriptionsTest, NameThatIsNoneIsRefused) {
    EXPECT_THROW(description::byName("filterclahe"), std::out_of_range);
    EXPECT_THROW(description::byName(""), std::out_of_range);
}

TEST(FilterDescriptionsTest, DescriptionsAreNotInstantiatedAndSampleNearest) {
    for (auto const& name : description::names()) {
        Filter const filter = description::byName(name);
        EXPECT_EQ(filter.instanceKey(), nullptr) << name;
        EXPECT_EQ(filter.instance(), nullptr) << name;
        EXPECT_EQ(filter.filtering(), RenderBackend::NEAREST) << name;
    }
}

TEST(FilterDescriptionsTest, EachFilterMakesTheRecordThatItReads) {
    EXPECT_TRUE(makes<FilterSharpness8Params>(description::filterSharpness8()));
    EXPECT_TRUE(makes<FilterSharpness16Params>(description::filterSharpnessV16()));
    EXPECT_TRUE(makes<Filter3x3MatrixParams>(description::filter3x3Matrix8()));
    EXPECT_TRUE(makes<Filter3x3MatrixParams>(description::filter3x3Matrix16()));
    EXPECT_TRUE(makes<FilterTruncate16Params>(description::filterTruncate16()));
    EXPECT_TRUE(makes<FilterClaheParams>(description::filterCLAHE()));
    EXPECT_TRUE(makes<FilterBlackWhiteGamma8Params>(description::filterBlackWhiteGamma8()));
    EXPECT_TRUE(makes<FilterLinear16TosRGB8Params>(description::filterLinear16TosRGB8()));
    EXPECT_TRUE(makes<ComparableSingleFilterParameters<unsigned char>>(description::filterLinear8ToSRGB8()));
    EXPECT_TRUE(makes<ComparableSingleFilterParameters<unsigned char>>(description::filterLinear16ToSRGB8()));
    EXPECT_TRUE(makes<MaskFilterParams>(description::maskFilter3x8()));
    EXPECT_TRUE(makes<MaskFilterParams>(description::maskFilter4x8()));
    EXPECT_TRUE(makes<MaskFilterParams>(description::maskFilter3x16()));
    for (auto const* name : {"BlitFilter1x16", "FilterFirIH53LeGall16", "FilterInterleave16", "FilterSharpnessH16"})
        EXPECT_THROW(description::byName(name).getParametersObject(), VelmoraException) << name;
}

// M samples of each band give 2M - 4 outputs.
TEST(FilterDescriptionsTest, WaveletStepsDoubleOneAxisAndLoseFourAtItsEnd) {
    Filter const horizontal = description::filterFirIH53LeGall16();
    EXPECT_EQ(borders(horizontal), (Sizes{0, 4, 0, 0}));
    EXPECT_EQ(horizontal.outputRange({0, 9, 0, 9}), (Sizes{0, 14, 0, 9}));
    EXPECT_EQ(horizontal.scaleXNum(), 2U);
    EXPECT_EQ(horizontal.scaleYNum(), 1U);
    Filter const vertical = description::filterFirIV53LeGall16();
    EXPECT_EQ(borders(vertical), (Sizes{0, 0, 0, 4}));
    EXPECT_EQ(vertical.scaleXNum(), 1U);
    EXPECT_EQ(vertical.scaleYNum(), 2U);
    for (auto const& filter : {horizontal, vertical}) {
        EXPECT_EQ(filter.numTexturesIn(), 2U);
        EXPECT_EQ(filter.bitsPerPixelIn(), 16U);
        EXPECT_EQ(filter.bitsPerPixelOut(), 16U);
        EXPECT_EQ(filter.componentsIn(), 1U);
        EXPECT_EQ(filter.componentsOut(), 1U);
        EXPECT_TRUE(filter.signedIn(0) && filter.signedIn(1) && filter.signedOut());
        EXPECT_EQ(filter.alignXIn(), 1U) << "the filter class sets its own";
    }
}

TEST(FilterDescriptionsTest, SharpeningLosesTwoPixelsWhereItsTapsReach) {
    EXPECT_EQ(borders(description::filterSharpness8()), (Sizes{2, 2, 2, 2}));
    EXPECT_EQ(borders(description::filterSharpnessH16()), (Sizes{2, 2, 0, 0}));
    EXPECT_EQ(borders(description::filterSharpnessV16()), (Sizes{0, 0, 2, 2}));
    EXPECT_FALSE(description::filterSharpnessH16().signedOut()) << "the blur reaches 65472";
    EXPECT_FALSE(description::filterSharpnessV16().signedIn(1));
}

TEST(FilterDescriptionsTest, OnlyWaveletsAndSharpeningChangeTheGeometry) {
    std::set<std::string> const changing = {"FilterFirIH53LeGall16", "FilterFirIV53LeGall16", "FilterSharpness8",
                                            "FilterSharpnessH16", "FilterSharpnessV16"};
    for (auto const& name : description::names())
        EXPECT_EQ(description::byName(name).changesGeometry(), changing.count(name) != 0) << name;
}

TEST(FilterDescriptionsTest, DepthsAndBordersFollowTheirArguments) {
    EXPECT_EQ(description::filterLinear16ToSRGB8(12).bitDepthIn(), 12U);
    EXPECT_EQ(description::filterLinear16TosRGB8(9).bitDepthIn(), 9U);
    EXPECT_EQ(description::filterLinear8ToSRGB8().bitDepthIn(), 8U);
    EXPECT_EQ(borders(description::filterCLAHE({40, 41, 42, 43})), (Sizes{40, 41, 42, 43}));
    EXPECT_EQ(description::filterCLAHE().bitsPerPixelIn(), 64U);
}

TEST(FilterDescriptionsTest, LayoutsSayHowManyComponentsAPixelHas) {
    for (auto const& name : description::names()) {
        Filter const filter = description::byName(name);
        EXPECT_EQ(filter.bitsPerPixelIn(), filter.componentsIn() * (filter.bitDepthIn() > 8 ? 16U : 8U)) << name;
        EXPECT_EQ(filter.bitsPerPixelOut() % filter.componentsOut(), 0U) << name;
    }
    Filter const interleave = description::filterInterleave16();
    EXPECT_EQ(interleave.numTexturesIn(), 3U);
    EXPECT_EQ(interleave.bitsPerPixelIn(), 16U);
    EXPECT_EQ(interleave.bitsPerPixelOut(), 48U);
    Filter const removeAlpha = description::filterRemoveAlpha8();
    EXPECT_EQ(removeAlpha.componentsIn(), 4U);
    EXPECT_EQ(removeAlpha.componentsOut(), 3U);
}

} // namespace
