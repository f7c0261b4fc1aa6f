#include "host/display/SampleCodes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <set>

namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

SampleFormat layoutOf(SampleType type, size_t bands) {
    SampleFormat layout;
    layout.type = type;
    layout.bands = bands;
    return layout;
}

// Samples of one band.
template <class Sample>
std::vector<std::uint16_t> codesOf(SampleCodes const& codes, SampleType type, std::vector<Sample> const& samples) {
    // One sample more, which must not be taken: what lies behind the codes stays.
    std::vector<std::uint8_t> bytes((samples.size() + 1) * sizeof(Sample));
    std::memcpy(bytes.data(), samples.data(), samples.size() * sizeof(Sample));
    std::vector<std::uint16_t> result(samples.size() + 1, 54321);
    codes.encode(bytes.data(), layoutOf(type, 1), 0, samples.size(), result.data());
    EXPECT_EQ(result.back(), 54321) << "written beyond the end";
    result.pop_back();
    return result;
}

using Brightness = std::optional<std::uint8_t>;

template <class Sample>
std::vector<Brightness> shown(SampleCodes const& codes, SampleType type, std::vector<Sample> const& samples) {
    std::vector<Brightness> result;
    for (std::uint16_t const code : codesOf(codes, type, samples))
        result.push_back(codes.brightness(code));
    return result;
}

template <class Sample>
void expectEverySample(SampleType type, Tone const& tone) {
    SampleCodes const codes(type, {}, tone);
    EXPECT_FALSE(SampleCodes::followTone(type));
    std::vector<Sample> all;
    for (int sample = std::numeric_limits<Sample>::lowest(); sample <= std::numeric_limits<Sample>::max(); ++sample)
        all.push_back(static_cast<Sample>(sample));
    auto const numbers = codesOf(codes, type, all);
    EXPECT_EQ(std::set<std::uint16_t>(numbers.begin(), numbers.end()).size(), all.size()) << "each has its own";
    auto const bytes = shown(codes, type, all);
    for (size_t i = 0; i < all.size(); ++i)
        ASSERT_EQ(bytes[i], tone.byteOf(all[i])) << int{all[i]};
}

TEST(SampleCodesTest, EverySampleOf8And16BitsHasACodeAndIsShownAsTheToneSays) {
    expectEverySample<std::uint8_t>(SampleType::Unsigned8, {10, 200});
    expectEverySample<std::int8_t>(SampleType::Signed8, {-100, 100});
    expectEverySample<std::uint16_t>(SampleType::Unsigned16, {100, 4095, Tone::Curve::Log});
    expectEverySample<std::int16_t>(SampleType::Signed16, {-1000, 3000, Tone::Curve::Asinh, 2});
}

TEST(SampleCodesTest, LargerSamplesAreShownAsTheToneSays) {
    Tone const tone{0, 255};
    std::vector<Brightness> const bytes = {0, 1, 128, 255};
    EXPECT_TRUE(SampleCodes::followTone(SampleType::Unsigned32));
    EXPECT_EQ(shown<std::uint32_t>({SampleType::Unsigned32, {}, tone}, SampleType::Unsigned32, {0, 1, 128, 4294967295}),
              bytes);
    EXPECT_EQ(shown<std::int32_t>({SampleType::Signed32, {}, tone}, SampleType::Signed32,
                                  {std::numeric_limits<std::int32_t>::lowest(), 1, 128, 2147483647}),
              bytes);
    EXPECT_EQ(shown<float>({SampleType::Float32, {}, tone}, SampleType::Float32, {-1e30F, 0.5F, 127.5F, 1e30F}), bytes);
    EXPECT_EQ(shown<double>({SampleType::Float64, {}, tone}, SampleType::Float64, {-1e300, 0.5, 127.5, 1e300}), bytes);
}

TEST(SampleCodesTest, InfinitiesAreClippedAndWhatIsNotANumberIsNothing) {
    EXPECT_EQ(
        shown<double>({SampleType::Float64, {}, {0, 1}}, SampleType::Float64, {-kInfinity, kInfinity, kNotANumber}),
        (std::vector<Brightness>{0, 255, {}}));
    EXPECT_EQ(shown<float>({SampleType::Float32, {}, {0, 1}}, SampleType::Float32, {std::nanf("")}),
              (std::vector<Brightness>{{}}));
}

TEST(SampleCodesTest, NodataIsNothingInEveryType) {
    Tone const tone{-10, 245};
    auto const expectNothing = [&](SampleType type, auto nodata, auto other) {
        SampleCodes const codes(type, static_cast<double>(nodata), tone);
        using Sample = decltype(nodata);
        auto const result = shown<Sample>(codes, type, {nodata, static_cast<Sample>(other)});
        EXPECT_EQ(result[0], Brightness()) << toText(type);
        EXPECT_NE(result[1], Brightness()) << toText(type);
    };
    expectNothing(SampleType::Unsigned8, std::uint8_t{255}, 254);
    expectNothing(SampleType::Signed8, std::int8_t{-128}, -127);
    expectNothing(SampleType::Unsigned16, std::uint16_t{65535}, 65534);
    expectNothing(SampleType::Signed16, std::int16_t{-9999}, -9998);
    expectNothing(SampleType::Unsigned32, std::uint32_t{4294967295}, 0);
    expectNothing(SampleType::Signed32, std::int32_t{-9999}, 255);
    expectNothing(SampleType::Float32, -9999.0F, 1.0F);
    expectNothing(SampleType::Float64, -9999.0, 1.0);
}

// -3.4e38 as people write the least float is none of 32 bits; neither is 0.1.
TEST(SampleCodesTest, NodataOfFloatsIsTheNearestOne) {
    SampleCodes const least(SampleType::Float32, -3.40282346638529e+38, {0, 1});
    EXPECT_EQ(shown<float>(least, SampleType::Float32, {std::numeric_limits<float>::lowest()})[0], Brightness());
    SampleCodes const tenth(SampleType::Float32, 0.1, {0, 1});
    EXPECT_EQ(shown<float>(tenth, SampleType::Float32, {0.1F})[0], Brightness());
    SampleCodes const beyond(SampleType::Float32, 1e39, {0, 1});
    EXPECT_EQ(shown<float>(beyond, SampleType::Float32, {std::numeric_limits<float>::infinity()})[0], 255)
        << "an infinity is none of them";
}

TEST(SampleCodesTest, OtherNodataThanTheTypeHasIsNoSample) {
    SampleCodes const codes(SampleType::Unsigned8, -9999, {0, 255});
    for (std::uint16_t code = 0; code < 256; ++code)
        EXPECT_EQ(codes.brightness(code), code);
}

TEST(SampleCodesTest, OneBandIsTakenOfInterleavedOnes) {
    std::vector<std::uint16_t> const samples = {1, 20, 300, 4, 50, 600};
    std::vector<std::uint8_t> bytes(samples.size() * 2);
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    SampleCodes const codes(SampleType::Unsigned16, {}, {0, 255});
    for (size_t const band : {0u, 1u, 2u}) {
        std::vector<std::uint16_t> result(2);
        codes.encode(bytes.data(), layoutOf(SampleType::Unsigned16, 3), band, 2, result.data());
        EXPECT_EQ(result, (std::vector<std::uint16_t>{samples[band], samples[3 + band]}));
    }
}

} // namespace
