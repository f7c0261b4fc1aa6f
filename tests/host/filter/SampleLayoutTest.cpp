#include "host/filter/SampleLayout.h"

#include <gtest/gtest.h>

#include <array>

namespace {

struct Row {
    SampleLayout layout;
    size_t bits;
    size_t components;
    size_t bytes;
    bool isSigned;
    size_t pixels; ///< in four texels
};

// As in the drawings of docs/SAMPLE_LAYOUTS.md.
constexpr std::array<Row, 5> kRows = {{{SampleLayout::kRgb8, 24, 3, 3, false, 4},
                                       {SampleLayout::kRgba8, 32, 4, 4, false, 4},
                                       {SampleLayout::kOneChannel16, 16, 1, 2, true, 8},
                                       {SampleLayout::kThreeChannel16, 48, 3, 8, true, 2},
                                       {SampleLayout::kFourChannel16, 64, 4, 8, true, 2}}};

TEST(SampleLayoutTest, PixelsTakeBitsAndTexelsAsDrawn) {
    for (Row const& row : kRows) {
        SCOPED_TRACE(row.bits);
        EXPECT_EQ(samplelayout::bitsPerPixel(row.layout), row.bits);
        EXPECT_EQ(samplelayout::components(row.layout), row.components);
        EXPECT_EQ(samplelayout::bytesPerPixel(row.layout), row.bytes);
        EXPECT_EQ(samplelayout::isSigned(row.layout), row.isSigned);
        EXPECT_EQ(samplelayout::pixels(row.layout, 4), row.pixels);
        EXPECT_EQ(samplelayout::texels(row.layout, row.pixels), 4U);
        EXPECT_EQ(samplelayout::format(row.layout), row.bits == 24 ? RenderBackend::RGB24 : RenderBackend::RGBA32);
    }
}

TEST(SampleLayoutTest, SamplesOfThreeChannelsLeaveTheLastByteOfEachTexelOut) {
    std::array<unsigned char, 8> const pixel = {0x01, 0x10, 0x02, 255, 0x20, 0xFF, 0xFF, 255};
    EXPECT_EQ(samplelayout::threeChannelSample(pixel.data(), 0), 0x1001);
    EXPECT_EQ(samplelayout::threeChannelSample(pixel.data(), 1), 0x2002);
    EXPECT_EQ(samplelayout::threeChannelSample(pixel.data(), 2), -1);
}

} // namespace
