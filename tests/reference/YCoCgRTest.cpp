#include "reference/YCoCgR.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;

struct ColourRow {
    char const* name = "";
    Rgb rgb;
    YCoCg colour;
};

constexpr ColourRow kColours[] = {
    {"red", {255, 0, 0}, {63, 255, -127}},      {"green", {0, 255, 0}, {127, 0, 255}},
    {"blue", {0, 0, 255}, {63, -255, -127}},    {"black", {0, 0, 0}, {0, 0, 0}},
    {"white", {255, 255, 255}, {255, 0, 0}},    {"grey", {77, 77, 77}, {77, 0, 0}},
    {"yellow", {255, 255, 0}, {191, 255, 128}}, // tmp 127, cg 128, y 127 + 64
    {"one blue", {0, 0, 1}, {0, -1, 0}},        // tmp 1 - 1, cg 0
    {"one green", {0, 1, 0}, {0, 0, 1}},
};

TEST(YCoCgRTest, NamedColoursBothWays) {
    for (ColourRow const& row : kColours) {
        YCoCg const colour = yCoCgFromRgb(row.rgb);
        EXPECT_EQ(colour.y, row.colour.y) << row.name;
        EXPECT_EQ(colour.co, row.colour.co) << row.name;
        EXPECT_EQ(colour.cg, row.colour.cg) << row.name;
        Rgb const rgb = rgbFromYCoCg(row.colour);
        EXPECT_EQ(rgb.r, row.rgb.r) << row.name;
        EXPECT_EQ(rgb.g, row.rgb.g) << row.name;
        EXPECT_EQ(rgb.b, row.rgb.b) << row.name;
    }
}

TEST(YCoCgRTest, All16777216ColoursComeBackAndStayInRange) {
    std::int32_t wrong = 0;
    for (std::int32_t r = 0; r < 256; ++r) {
        for (std::int32_t g = 0; g < 256; ++g) {
            for (std::int32_t b = 0; b < 256; ++b) {
                YCoCg const c = yCoCgFromRgb({r, g, b});
                Rgb const rgb = rgbFromYCoCg(c);
                bool const same = rgb.r == r && rgb.g == g && rgb.b == b;
                bool const inRange =
                    c.y >= 0 && c.y <= 255 && c.co >= -255 && c.co <= 255 && c.cg >= -255 && c.cg <= 255;
                wrong += same && inRange ? 0 : 1;
            }
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST(YCoCgRTest, HalvesAreArithmeticShifts) {
    // co alone: b = -floor(co/2). -3 halves to -2, -1 to -1, 3 to 1.
    EXPECT_EQ(rgbFromYCoCg({0, -3, 0}).b, 2);
    EXPECT_EQ(rgbFromYCoCg({0, -1, 0}).b, 1);
    EXPECT_EQ(rgbFromYCoCg({0, 3, 0}).b, -1);
    EXPECT_EQ(rgbFromYCoCg({0, 0, -3}).b, 2);
    EXPECT_EQ(rgbFromYCoCg({0, 0, 3}).b, -1);
}

TEST(YCoCgRTest, ForwardTextureHoldsYCoCgInThreeChannels) {
    Texels const out = rgba8ToYCoCg16(Texels(1, 1, {255, 0, 0, 7}));
    // Y 63, Co 255, Cg -127 = 0xFF81
    EXPECT_EQ(out, Texels(2, 1, {63, 0, 255, 255, 0, 0x81, 0xff, 255}));
}

TEST(YCoCgRTest, ForwardThenInverseTexturesAreLossless) {
    Texels rgba(256, 16);
    for (size_t i = 0; i < rgba.bytes.size(); ++i) {
        rgba.bytes[i] = i % 4 == 3 ? std::uint8_t{255} : static_cast<std::uint8_t>(i * 7919 >> 3);
    }
    Texels const yCoCg = rgba8ToYCoCg16(rgba);
    EXPECT_EQ(yCoCg16ToRgba8(yCoCg), rgba);
    Planes3 const rgb = unpackThreeChannel16(yCoCg16ToRgb16(yCoCg));
    for (int y = 0; y < rgba.height; ++y) {
        for (int x = 0; x < rgba.width; ++x) {
            for (size_t c = 0; c < 3; ++c)
                ASSERT_EQ(rgb[c].at(x, y), rgba.at(x, y)[c]) << x << ", " << y;
        }
    }
}

TEST(YCoCgRTest, EightBitInverseClampsInsteadOfWrapping) {
    Planes3 const bright{Plane(2, 1, {300, -4}), Plane(2, 1, {0, 0}), Plane(2, 1, {0, 0})};
    Texels const out = yCoCg16ToRgba8(packThreeChannel16(bright));
    EXPECT_EQ(out.at(0, 0), (Texel{255, 255, 255, 255}));
    EXPECT_EQ(out.at(1, 0), (Texel{0, 0, 0, 255}));
}

TEST(YCoCgRTest, SixteenBitInverseKeepsSignAndDoesNotClamp) {
    // tmp = 10 - floor(-600/2) = 310, g = -290, b = 310 - 500 = -190, r = 810
    Planes3 const in{Plane(1, 1, {10}), Plane(1, 1, {1000}), Plane(1, 1, {-600})};
    Planes3 const out = unpackThreeChannel16(yCoCg16ToRgb16(packThreeChannel16(in)));
    EXPECT_EQ(out[0].at(0, 0), 810);
    EXPECT_EQ(out[1].at(0, 0), -290);
    EXPECT_EQ(out[2].at(0, 0), -190);
}

TEST(YCoCgRTest, SixteenBitInverseWrapsAtTheEndsOfTheRange) {
    // tmp = 32767 + 16384 = 49151, b = 49151 - 16383 = 32768, r = 65535, g = 16383
    Planes3 const in{Plane(1, 1, {32767}), Plane(1, 1, {32767}), Plane(1, 1, {-32768})};
    Planes3 const out = unpackThreeChannel16(yCoCg16ToRgb16(packThreeChannel16(in)));
    EXPECT_EQ(out[0].at(0, 0), -1);
    EXPECT_EQ(out[1].at(0, 0), 16383);
    EXPECT_EQ(out[2].at(0, 0), -32768);
}

} // namespace
