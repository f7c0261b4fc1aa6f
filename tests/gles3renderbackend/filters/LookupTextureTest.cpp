#include "gles3renderbackend/filters/LookupTexture.h"

#include "tests/support/RecordingGlTest.h"

#include <numeric>
#include <stdexcept>

namespace {

using Bytes = std::vector<std::uint8_t>;
using LookupTextureTest = RecordingGlTest;

Bytes ramp(size_t entries) {
    Bytes table(entries);
    std::iota(table.begin(), table.end(), std::uint8_t{3});
    return table;
}

TEST_F(LookupTextureTest, TableUpToEightBitsIsOneRowOfBytes) {
    Gles3Texture const texture = lookup::makeTexture(ramp(256), 8);
    auto const& image = gl.texture(texture.texture()).image();
    EXPECT_EQ(image.width, 256U);
    EXPECT_EQ(image.height, 1U);
    EXPECT_EQ(image.pixels, ramp(256));
}

TEST_F(LookupTextureTest, DeeperTableIsThreeEqualBandsOneAChannel) {
    for (size_t const depth : {9U, 11U, 12U, 16U}) {
        size_t const entries = size_t{1} << depth;
        Gles3Texture const texture = lookup::makeTexture(ramp(entries), depth);
        auto const& image = gl.texture(texture.texture()).image();
        EXPECT_EQ(image.width, std::min<size_t>(entries, 2048)) << depth;
        EXPECT_EQ(image.height, 3 * entries / image.width) << depth;
        Bytes bands;
        for (int band = 0; band < 3; ++band)
            for (std::uint8_t const entry : ramp(entries))
                bands.push_back(entry);
        EXPECT_EQ(image.pixels, bands) << depth;
    }
}

TEST_F(LookupTextureTest, TableIsSampledWithoutInterpolation) {
    Gles3Texture const texture = lookup::makeTexture(ramp(4096), 12);
    auto const& parameters = gl.texture(texture.texture()).parameters;
    EXPECT_EQ(parameters.at(GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(parameters.at(GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    EXPECT_EQ(parameters.at(GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(parameters.at(GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
}

TEST_F(LookupTextureTest, DeepestTableFitsTheSmallestTexturesOfOpenGlEs3) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 2048);
    EXPECT_NO_THROW(lookup::makeTexture(ramp(65536), 16));
}

TEST_F(LookupTextureTest, TableOfAnotherLengthIsRefusedAndLeavesNoTexture) {
    EXPECT_THROW(lookup::makeTexture(ramp(255), 8), std::length_error);
    EXPECT_THROW(lookup::makeTexture(ramp(257), 8), std::length_error);
    EXPECT_THROW(lookup::makeTexture({}, 8), std::length_error);
    EXPECT_THROW(lookup::makeTexture(ramp(1U << 17U), 17), std::length_error);
    EXPECT_THROW(lookup::makeTexture(ramp(1), 64), std::length_error);
    EXPECT_TRUE(gl.living().empty());
}

TEST_F(LookupTextureTest, DepthsFromNineOnHaveAProgramOfTheirOwn) {
    EXPECT_EQ(&lookup::fragmentSource(1), &lookup::fragmentSource(8));
    EXPECT_EQ(&lookup::fragmentSource(9), &lookup::fragmentSource(16));
    EXPECT_NE(&lookup::fragmentSource(8), &lookup::fragmentSource(9));
    EXPECT_EQ(&lookup::vertexSource(1), &lookup::vertexSource(8));
    EXPECT_NE(&lookup::vertexSource(8), &lookup::vertexSource(9));
}

TEST_F(LookupTextureTest, MaxValueIsTheLargestCode) {
    EXPECT_EQ(lookup::maxValue(1), 1.0F);
    EXPECT_EQ(lookup::maxValue(8), 255.0F);
    EXPECT_EQ(lookup::maxValue(9), 511.0F);
    EXPECT_EQ(lookup::maxValue(16), 65535.0F);
}

} // namespace
