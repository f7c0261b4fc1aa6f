#include "host/store/ColourPlanes.h"
#include "reference/YCoCgR.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace {

StoreInfo infoOf(size_t width, size_t bands, size_t bits, size_t residualBits) {
    StoreInfo info;
    info.width = width;
    info.height = 1;
    info.bands = bands;
    info.bits = bits;
    info.residualBits = residualBits;
    return info;
}

std::vector<std::uint8_t> noise(size_t bytes) {
    std::mt19937 random(static_cast<unsigned>(bytes));
    std::vector<std::uint8_t> row(bytes);
    for (auto& byte : row)
        byte = static_cast<std::uint8_t>(random());
    return row;
}

} // namespace

TEST(ColourPlanesTest, RedGreenAndBlueBecomeLumaCoAndCg) {
    auto const row = noise(3 * 500);
    ColourPlanes planes(infoOf(500, 3, 8, 0));
    planes.split(row.data());
    for (size_t x = 0; x < 500; ++x) {
        auto const colour = reference::yCoCgFromRgb({row[3 * x], row[3 * x + 1], row[3 * x + 2]});
        EXPECT_EQ(planes.plane(0)[x], colour.y);
        EXPECT_EQ(planes.plane(1)[x], colour.co);
        EXPECT_EQ(planes.plane(2)[x], colour.cg);
    }
}

TEST(ColourPlanesTest, TheLowestBitsOf16StayOutsideThePlanes) {
    std::uint16_t const pixel[4] = {0xffff, 0x0000, 0x1237, 0xabcd};
    std::vector<std::uint8_t> row(sizeof(pixel));
    std::memcpy(row.data(), pixel, sizeof(pixel));
    ColourPlanes planes(infoOf(1, 4, 16, 3));
    planes.split(row.data());
    auto const colour = reference::yCoCgFromRgb({0x1fff, 0, 0x1237 >> 3});
    EXPECT_EQ(planes.plane(0)[0], colour.y);
    EXPECT_EQ(planes.plane(1)[0], colour.co);
    EXPECT_EQ(planes.plane(2)[0], colour.cg);
    EXPECT_EQ(planes.plane(3)[0], 0xabcd >> 3);
    for (size_t band = 0; band < 4; ++band)
        EXPECT_EQ(planes.residual(band)[0], pixel[band] & 7);
}

TEST(ColourPlanesTest, GreyAndAlphaStayAsTheyAre) {
    auto const row = noise(2 * 100);
    ColourPlanes planes(infoOf(100, 2, 8, 0));
    planes.split(row.data());
    for (size_t x = 0; x < 100; ++x) {
        EXPECT_EQ(planes.plane(0)[x], row[2 * x]);
        EXPECT_EQ(planes.plane(1)[x], row[2 * x + 1]);
    }
}

TEST(ColourPlanesTest, ARowComesBackByteForByte) {
    for (size_t bands = 1; bands <= 4; ++bands)
        for (auto const& [bits, residualBits] : std::vector<std::pair<size_t, size_t>>{{8, 0}, {16, 3}, {16, 5}}) {
            auto const row = noise(1000 * bands * bits / 8);
            ColourPlanes planes(infoOf(1000, bands, bits, residualBits));
            planes.split(row.data());
            std::vector<std::uint8_t> joined(row.size());
            planes.join(joined.data());
            EXPECT_EQ(joined, row) << bands << " bands of " << bits;
        }
}
