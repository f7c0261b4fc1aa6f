#include "host/image/NodataSample.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

TEST(NodataSampleTest, TextsAreNumbers) {
    EXPECT_EQ(nodatasample::parse("-9999"), -9999);
    EXPECT_EQ(nodatasample::parse(" 0.5 "), 0.5);
    EXPECT_EQ(nodatasample::parse("+1e3"), 1000);
    EXPECT_EQ(nodatasample::parse(std::string("255\0", 4)), 255);
    EXPECT_TRUE(std::isnan(nodatasample::parse("nan").value()));
    for (std::string const text : {"", " ", "none", "1 2", "1,5", "0x", "+"})
        EXPECT_FALSE(nodatasample::parse(text)) << text;
    EXPECT_FALSE(nodatasample::parse(std::string("\0", 1)));
}

TEST(NodataSampleTest, ATypeHasTheSampleOrNone) {
    using Bytes = std::vector<std::uint8_t>;
    EXPECT_EQ(nodatasample::bytesOf(255, SampleType::Unsigned8), Bytes{255});
    EXPECT_EQ(nodatasample::bytesOf(-1, SampleType::Signed8), Bytes{255});
    EXPECT_EQ(nodatasample::bytesOf(-32768, SampleType::Signed16).value().size(), 2u);
    EXPECT_EQ(nodatasample::bytesOf(4294967295.0, SampleType::Unsigned32), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(nodatasample::bytesOf(-2147483648.0, SampleType::Signed32).value().size(), 4u);
    struct Row {
        double number;
        SampleType type;
    };
    for (Row const& row :
         {Row{256, SampleType::Unsigned8}, Row{-1, SampleType::Unsigned8}, Row{0.5, SampleType::Unsigned8},
          Row{128, SampleType::Signed8}, Row{65536, SampleType::Unsigned16}, Row{1e300, SampleType::Signed32},
          Row{std::nan(""), SampleType::Signed16}, Row{1e39, SampleType::Float32}})
        EXPECT_FALSE(nodatasample::bytesOf(row.number, row.type)) << row.number << " " << toText(row.type);
}

TEST(NodataSampleTest, AFloatIsTheNearestOne) {
    auto const floatOf = [](double number) {
        float sample = 0;
        std::memcpy(&sample, nodatasample::bytesOf(number, SampleType::Float32).value().data(), sizeof sample);
        return sample;
    };
    EXPECT_EQ(floatOf(0.1), 0.1F);
    // As GDAL writes the smallest float: rounded to 15 digits, which no float reaches.
    EXPECT_EQ(floatOf(-3.40282346638529e+38), -std::numeric_limits<float>::max());
    EXPECT_TRUE(std::isnan(floatOf(std::nan(""))));
    EXPECT_TRUE(std::isinf(floatOf(std::numeric_limits<double>::infinity())));
    double sample = 0;
    std::memcpy(&sample, nodatasample::bytesOf(-0.1, SampleType::Float64).value().data(), sizeof sample);
    EXPECT_EQ(sample, -0.1);
}

TEST(NodataSampleTest, ValuesAreThoseOfTheType) {
    EXPECT_EQ(nodatasample::valueOf(-9999, SampleType::Signed16), -9999.0);
    EXPECT_EQ(nodatasample::valueOf(-9999, SampleType::Unsigned16), std::nullopt);
    EXPECT_EQ(nodatasample::valueOf(0.1, SampleType::Float32), static_cast<double>(0.1F));
    EXPECT_EQ(nodatasample::valueOf(0.1, SampleType::Float64), 0.1);
}
