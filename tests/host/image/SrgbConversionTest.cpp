// Colours by the profile of a file: against the formulas of the standards.
#include "host/image/SrgbConversion.h"

#include "tests/host/image/TestProfiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace {

using Bytes = std::vector<std::uint8_t>;
using Colour = std::array<double, 3>;
using Matrix = std::array<Colour, 3>;

constexpr double kAdobeGamma = 563.0 / 256;

ImageFacts factsOf(SampleType type, size_t colours, bool alpha, Bytes const& profile) {
    ImageFacts facts;
    facts.layout.width = facts.layout.height = 1;
    facts.layout.type = type;
    facts.layout.colours = colours;
    facts.layout.alpha = alpha;
    facts.layout.bands = colours + (alpha ? 1 : 0);
    facts.iccProfile = profile;
    return facts;
}

double determinant(Matrix const& m) {
    double sum = 0;
    for (size_t i = 0; i < 3; ++i)
        sum += m[0][i] * (m[1][(i + 1) % 3] * m[2][(i + 2) % 3] - m[1][(i + 2) % 3] * m[2][(i + 1) % 3]);
    return sum;
}

// The solution of m * x = right, by Cramer's rule.
Colour solved(Matrix const& m, Colour const& right) {
    Colour solution{};
    for (size_t column = 0; column < 3; ++column) {
        Matrix replaced = m;
        for (size_t row = 0; row < 3; ++row)
            replaced[row][column] = right[row];
        solution[column] = determinant(replaced) / determinant(m);
    }
    return solution;
}

Colour tristimulus(std::array<double, 2> const& chromaticity) {
    double const x = chromaticity[0];
    double const y = chromaticity[1];
    return {x / y, 1, (1 - x - y) / y};
}

// From linear red, green and blue to X, Y and Z: white is the sum of the primaries.
Matrix matrixOf(testprofiles::Primaries const& primaries) {
    std::array<Colour, 3> const columns{tristimulus(primaries.red), tristimulus(primaries.green),
                                        tristimulus(primaries.blue)};
    Matrix matrix{};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            matrix[row][column] = columns[column][row];
    Colour const amounts = solved(matrix, tristimulus(primaries.white));
    for (Colour& row : matrix)
        for (size_t column = 0; column < 3; ++column)
            row[column] *= amounts[column];
    return matrix;
}

// IEC 61966-2-1.
double encoded(double linear) {
    double const clipped = std::min(std::max(linear, 0.0), 1.0);
    return clipped <= 0.0031308 ? 12.92 * clipped : 1.055 * std::pow(clipped, 1 / 2.4) - 0.055;
}

// Both have the same white: nothing is adapted.
Colour srgbOf(Colour const& adobe) {
    Colour linear{};
    std::transform(adobe.begin(), adobe.end(), linear.begin(), [](double v) { return std::pow(v, kAdobeGamma); });
    Matrix const from = matrixOf(testprofiles::kAdobe);
    Colour xyz{};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column)
            xyz[row] += from[row][column] * linear[column];
    Colour srgb = solved(matrixOf(testprofiles::kSrgb), xyz);
    std::transform(srgb.begin(), srgb.end(), srgb.begin(), encoded);
    return srgb;
}

template <class Sample>
void expectConverted(SampleType type, bool alpha, double tolerance) {
    double const full = std::numeric_limits<Sample>::max();
    Bytes const profile = testprofiles::rgb(testprofiles::kAdobe, kAdobeGamma, "Adobe RGB (1998)");
    auto const choice = SrgbConversion::of(factsOf(type, 3, alpha, profile));
    ASSERT_TRUE(choice.conversion);
    EXPECT_EQ(choice.profile, "Adobe RGB (1998)");
    EXPECT_EQ(choice.reason, "");
    size_t const bands = alpha ? 4 : 3;
    std::vector<Sample> samples;
    for (int red = 0; red <= 16; ++red)
        for (int green = 0; green <= 16; ++green)
            for (int blue = 0; blue <= 16; ++blue) {
                for (int const step : {red, green, blue})
                    samples.push_back(static_cast<Sample>(full * step / 16));
                if (alpha) samples.push_back(static_cast<Sample>(samples.size() * 31));
            }
    std::vector<Sample> converted = samples;
    choice.conversion->convert(reinterpret_cast<std::uint8_t*>(converted.data()), samples.size() / bands);
    for (size_t i = 0; i < samples.size(); i += bands) {
        Colour const expected = srgbOf({samples[i] / full, samples[i + 1] / full, samples[i + 2] / full});
        for (size_t band = 0; band < 3; ++band)
            ASSERT_NEAR(converted[i + band], full * expected[band], tolerance)
                << samples[i] << " " << samples[i + 1] << " " << samples[i + 2];
        if (alpha) {
            ASSERT_EQ(converted[i + 3], samples[i + 3]);
        }
    }
}

} // namespace

TEST(SrgbConversionTest, ColoursAreThoseOfTheFormulas) {
    for (bool const alpha : {false, true}) {
        expectConverted<std::uint8_t>(SampleType::Unsigned8, alpha, 1);
        // The profile's numbers have 16 bits after the point; the curve is steep at black.
        expectConverted<std::uint16_t>(SampleType::Unsigned16, alpha, 40);
    }
}

TEST(SrgbConversionTest, GreyStaysGrey) {
    Bytes const profile = testprofiles::grey(1.8, "Dot Gain");
    for (bool const alpha : {false, true}) {
        auto const choice = SrgbConversion::of(factsOf(SampleType::Unsigned8, 1, alpha, profile));
        ASSERT_TRUE(choice.conversion);
        size_t const bands = alpha ? 2 : 1;
        Bytes samples;
        for (unsigned i = 0; i <= 0xff; ++i) {
            samples.push_back(static_cast<std::uint8_t>(i));
            if (alpha) samples.push_back(static_cast<std::uint8_t>(i * 7));
        }
        choice.conversion->convert(samples.data(), 0x100);
        for (size_t i = 0; i <= 0xff; ++i) {
            EXPECT_NEAR(samples[i * bands], 255 * encoded(std::pow(static_cast<double>(i) / 255, 1.8)), 1) << i;
            if (alpha) {
                EXPECT_EQ(samples[i * bands + 1], static_cast<std::uint8_t>(i * 7));
            }
        }
    }
    auto const choice = SrgbConversion::of(factsOf(SampleType::Unsigned16, 1, false, profile));
    ASSERT_TRUE(choice.conversion);
    for (unsigned i = 0; i <= 0xffff; i += 257) {
        auto sample = static_cast<std::uint16_t>(i);
        choice.conversion->convert(reinterpret_cast<std::uint8_t*>(&sample), 1);
        EXPECT_NEAR(sample, 65535 * encoded(std::pow(i / 65535.0, 1.8)), 40) << i;
    }
}

TEST(SrgbConversionTest, SrgbIsLeftAlone) {
    auto const choice = SrgbConversion::of(factsOf(SampleType::Unsigned8, 3, false, testprofiles::srgb()));
    EXPECT_FALSE(choice.conversion);
    EXPECT_EQ(choice.reason, "");
    auto const none = SrgbConversion::of(factsOf(SampleType::Unsigned8, 3, false, {}));
    EXPECT_FALSE(none.conversion);
    EXPECT_EQ(none.profile + none.reason, "");
}

TEST(SrgbConversionTest, ManyPixelsAreConvertedAsOne) {
    auto const choice = SrgbConversion::of(factsOf(SampleType::Unsigned8, 1, false, testprofiles::grey(1, "linear")));
    ASSERT_TRUE(choice.conversion);
    std::uint8_t one = 60;
    choice.conversion->convert(&one, 1);
    Bytes many((1 << 20) + 3, 60);
    choice.conversion->convert(many.data(), many.size() - 1);
    EXPECT_TRUE(std::all_of(many.begin(), many.end() - 1, [&](std::uint8_t sample) { return sample == one; }));
    EXPECT_EQ(many.back(), 60);
    EXPECT_NE(one, 60);
}

TEST(SrgbConversionTest, WhatCannotBeFollowedIsToldWithAReason) {
    Bytes const adobe = testprofiles::rgb(testprofiles::kAdobe, kAdobeGamma, "Adobe RGB (1998)");
    Bytes const grey = testprofiles::grey(1.8, "Dots");
    auto const reason = [](ImageFacts const& facts) {
        auto const choice = SrgbConversion::of(facts);
        EXPECT_FALSE(choice.conversion);
        return choice.reason;
    };
    EXPECT_EQ(reason(factsOf(SampleType::Unsigned8, 3, false, Bytes(200, 7))), "its colour profile is damaged");
    EXPECT_EQ(reason(factsOf(SampleType::Unsigned8, 1, false, adobe)),
              "its colour profile 'Adobe RGB (1998)' is not one of grey");
    EXPECT_EQ(reason(factsOf(SampleType::Unsigned16, 3, false, grey)), "its colour profile 'Dots' is not one of RGB");
    EXPECT_EQ(reason(factsOf(SampleType::Float32, 3, false, adobe)),
              "its colour profile 'Adobe RGB (1998)' is left out for samples of 32-bit float");
    ImageFacts bands = factsOf(SampleType::Unsigned8, 3, false, adobe);
    bands.layout.bands = 5;
    EXPECT_EQ(reason(bands), "its colour profile 'Adobe RGB (1998)' is left out: the bands are not grey or RGB");
    ImageFacts gaps = factsOf(SampleType::Unsigned8, 3, false, adobe);
    gaps.nodata = 0;
    EXPECT_EQ(reason(gaps), "its colour profile 'Adobe RGB (1998)' is left out: a sample stands for no data");
    // Colours of other spaces are converted elsewhere.
    ImageFacts inks = factsOf(SampleType::Unsigned8, 3, false, adobe);
    inks.colourSpace = "CMYK";
    EXPECT_EQ(reason(inks), "");
    // A profile that ends early has no curves.
    Bytes cut = adobe;
    cut.resize(cut.size() - 100);
    EXPECT_NE(reason(factsOf(SampleType::Unsigned8, 3, false, cut)), "");
}
