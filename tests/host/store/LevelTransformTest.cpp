#include "host/store/LevelTransform.h"
#include "tests/host/store/WaveletModel.h"

#include <gtest/gtest.h>

using waveletmodel::Kind;
using waveletmodel::Plane;

namespace {

using Sample = LevelTransform::Sample;

struct Bands {
    std::vector<std::int64_t> ll, hl, lh, hh;
};

std::vector<Sample> rowOf(Plane const& plane, std::int64_t y) {
    std::vector<Sample> row;
    for (std::int64_t x = 0; x < plane.width; ++x)
        row.push_back(static_cast<Sample>(plane.at(x, y)));
    return row;
}

Bands transformed(Plane const& plane) {
    auto const width = static_cast<size_t>(plane.width);
    size_t const samples = wavelet53::bandSamples(width);
    Bands bands;
    auto const appendTo = [=](std::vector<std::int64_t>& low, std::vector<std::int64_t>& high) {
        return [=, &low, &high](Sample const* lowRow, Sample const* highRow) {
            low.insert(low.end(), lowRow, lowRow + samples);
            high.insert(high.end(), highRow, highRow + samples);
        };
    };
    LevelTransform transform(width, static_cast<size_t>(plane.height), appendTo(bands.ll, bands.hl),
                             appendTo(bands.lh, bands.hh));
    for (std::int64_t y = 0; y < plane.height; ++y)
        transform.push(rowOf(plane, y).data());
    return bands;
}

} // namespace

TEST(LevelTransformTest, BandsOfAPlaneAreThoseOfTheMirroredPlane) {
    std::mt19937 random(2);
    for (int width = 1; width <= 23; ++width)
        for (int height = 1; height <= 23; ++height) {
            Plane const plane = waveletmodel::noise(width, height, -3000, 3000, random);
            auto const columns = waveletmodel::bandSamples(width);
            auto const rows = waveletmodel::bandSamples(height);
            Bands const bands = transformed(plane);
            ASSERT_EQ(bands.ll, waveletmodel::band(plane, Kind::Low, Kind::Low, columns, rows).samples);
            ASSERT_EQ(bands.hl, waveletmodel::band(plane, Kind::High, Kind::Low, columns, rows).samples);
            ASSERT_EQ(bands.lh, waveletmodel::band(plane, Kind::Low, Kind::High, columns, rows).samples);
            ASSERT_EQ(bands.hh, waveletmodel::band(plane, Kind::High, Kind::High, columns, rows).samples);
        }
}

TEST(LevelTransformTest, RowsComeOutWhileRowsGoIn) {
    size_t lowRows = 0;
    size_t highRows = 0;
    LevelTransform transform(
        4, 1000, [&](Sample const*, Sample const*) { ++lowRows; }, [&](Sample const*, Sample const*) { ++highRows; });
    std::vector<Sample> const row(4, 7);
    for (size_t pushed = 1; pushed < 1000; ++pushed) {
        transform.push(row.data());
        EXPECT_EQ(lowRows, (pushed - 1) / 2);
        EXPECT_EQ(highRows, lowRows == 0 ? 0 : lowRows + 1);
    }
    transform.push(row.data());
    EXPECT_EQ(lowRows, 502u);
    EXPECT_EQ(highRows, 502u);
}

// Along x H reaches 30000 and -30000 on neighbouring rows, which fits; along y the difference does not.
TEST(LevelTransformTest, ACoefficientThatOverflowsOnlyAlongColumnsIsNoticed) {
    auto const ignore = [](Sample const*, Sample const*) {};
    LevelTransform transform(4, 8, ignore, ignore);
    std::vector<Sample> const up{0, 30000, 0, 0};
    std::vector<Sample> const down{0, -30000, 0, 0};
    transform.push(up.data());
    transform.push(down.data());
    EXPECT_THROW(transform.push(up.data()), CoefficientOverflow);
}

TEST(LevelTransformTest, ACoefficientThatOverflowsAlongTheRowIsNoticed) {
    auto const ignore = [](Sample const*, Sample const*) {};
    LevelTransform transform(4, 8, ignore, ignore);
    std::vector<Sample> const row{-20000, 20000, -20000, 20000};
    EXPECT_THROW(transform.push(row.data()), CoefficientOverflow);
}

// Along y: H is 30000 on both sides of row 2, L = 30000 + 30000 / 2.
TEST(LevelTransformTest, ALowSampleThatOverflowsAlongColumnsIsNoticed) {
    auto const ignore = [](Sample const*, Sample const*) {};
    LevelTransform transform(4, 8, ignore, ignore);
    std::vector<Sample> const up(4, 30000);
    std::vector<Sample> const down(4, -30000);
    transform.push(down.data());
    for (int y = 1; y < 4; ++y)
        transform.push(up.data());
    EXPECT_THROW(transform.push(down.data()), CoefficientOverflow);
}
