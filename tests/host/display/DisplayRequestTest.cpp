#include "host/display/DisplayRequest.h"

#include "host/HostError.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

using displayrequest::channelsFor;
using displayrequest::parseChannel;

namespace {

template <class Sample>
std::vector<std::uint8_t> bytesOf(std::vector<Sample> const& samples) {
    std::vector<std::uint8_t> bytes(samples.size() * sizeof(Sample));
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

ImageFacts factsOf(SampleType type, size_t bands, size_t colours, bool alpha = false) {
    ImageFacts facts;
    facts.layout.type = type;
    facts.layout.bands = bands;
    facts.layout.colours = colours;
    facts.layout.alpha = alpha;
    return facts;
}

// 201 pixels: band b of pixel i is 100 * b + i. Percentile 0.5 is the second of a band, 99.5 the last but one.
template <class Sample>
std::vector<Sample> ramp(size_t bands) {
    std::vector<Sample> samples;
    for (size_t i = 0; i < 201; ++i)
        for (size_t band = 0; band < bands; ++band)
            samples.push_back(static_cast<Sample>(1000 * band + i));
    return samples;
}

void expectRange(ChannelDisplay const& channel, double low, double high) {
    EXPECT_DOUBLE_EQ(channel.tone.low, low) << channel.name;
    EXPECT_DOUBLE_EQ(channel.tone.high, high) << channel.name;
}

HostError usage(DisplayRequest const& request, ImageFacts const& facts) {
    try {
        channelsFor(request, facts, bytesOf(ramp<std::uint16_t>(facts.layout.bands)));
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::Usage);
        return error;
    }
    throw std::logic_error("nothing was refused");
}

DisplayRequest of(std::vector<std::string> const& channels) {
    DisplayRequest request;
    for (std::string const& text : channels)
        request.channels.push_back(parseChannel(text));
    return request;
}

} // namespace

TEST(DisplayRequestTest, NothingIsAskedForAtFirst) {
    EXPECT_TRUE(DisplayRequest().isEmpty());
    EXPECT_TRUE(DisplayRequest().asksForRangeAlone());
    DisplayRequest range;
    range.range = SampleRange{1, 2};
    DisplayRequest automatic;
    automatic.automaticRange = true;
    for (DisplayRequest const& request : {range, automatic}) {
        EXPECT_FALSE(request.isEmpty());
        EXPECT_TRUE(request.asksForRangeAlone());
    }
    std::vector<DisplayRequest> others(7);
    others[0].channels.emplace_back();
    others[1].position.slice = 1;
    others[2].position.time = 1;
    others[3].curve = Tone::Curve::Log;
    others[4].gamma = 2;
    others[5].colourMap = "grey";
    others[6].isInverted = true;
    for (size_t i = 0; i < others.size(); ++i) {
        EXPECT_FALSE(others[i].isEmpty()) << i;
        EXPECT_FALSE(others[i].asksForRangeAlone()) << i;
    }
}

TEST(DisplayRequestTest, BytesOpenWholeAndOthersInTheirAutomaticRange) {
    auto const bytes = channelsFor({}, factsOf(SampleType::Unsigned8, 1, 1), bytesOf(ramp<std::uint8_t>(1)));
    ASSERT_EQ(bytes.size(), 1u);
    expectRange(bytes[0], 0, 255);
    auto const words = channelsFor({}, factsOf(SampleType::Unsigned16, 1, 1), bytesOf(ramp<std::uint16_t>(1)));
    expectRange(words[0], 1, 199);
    DisplayRequest automatic;
    automatic.automaticRange = true;
    expectRange(channelsFor(automatic, factsOf(SampleType::Unsigned8, 1, 1), bytesOf(ramp<std::uint8_t>(1))).front(), 1,
                199);
}

TEST(DisplayRequestTest, PrimariesHaveOneRangeAndOtherBandsTheirOwn) {
    auto const samples = bytesOf(ramp<std::uint16_t>(3));
    auto const rgb = channelsFor({}, factsOf(SampleType::Unsigned16, 3, 3), samples);
    auto const others = channelsFor({}, factsOf(SampleType::Unsigned16, 3, 0), samples);
    // 603 samples: percentile 0.5 lies at 3.01 of the sorted ones, 99.5 at 598.99.
    for (ChannelDisplay const& channel : rgb)
        expectRange(channel, 3.01, 2196.99);
    for (size_t band = 0; band < 3; ++band)
        expectRange(others[band], 1000.0 * static_cast<double>(band) + 1, 1000.0 * static_cast<double>(band) + 199);
}

TEST(DisplayRequestTest, AlphaKeepsItsWholeRange) {
    DisplayRequest request;
    request.curve = Tone::Curve::Log;
    request.gamma = 2;
    for (bool const given : {false, true}) {
        if (given) request.range = SampleRange{10, 20};
        auto const channels =
            channelsFor(request, factsOf(SampleType::Unsigned16, 2, 1, true), bytesOf(ramp<std::uint16_t>(2)));
        ASSERT_EQ(channels.size(), 2u);
        expectRange(channels[0], given ? 10 : 1, given ? 20 : 199);
        EXPECT_EQ(channels[0].tone.curve, Tone::Curve::Log);
        EXPECT_EQ(channels[0].tone.gamma, 2);
        expectRange(channels[1], 0, 65535);
        EXPECT_EQ(channels[1].tone.curve, Tone::Curve::Linear);
        EXPECT_EQ(channels[1].tone.gamma, 1);
    }
}

TEST(DisplayRequestTest, NodataDoesNotCount) {
    auto samples = ramp<std::uint16_t>(1);
    samples.insert(samples.end(), 5000, 60000);
    ImageFacts facts = factsOf(SampleType::Unsigned16, 1, 1);
    facts.nodata = 60000;
    expectRange(channelsFor({}, facts, bytesOf(samples)).front(), 1, 199);
    facts.nodata = 60000.5; // no sample of the type
    EXPECT_EQ(channelsFor({}, facts, bytesOf(samples)).front().tone.high, 60000);
}

TEST(DisplayRequestTest, ARangeOfNoSampleIsThatOfTheType) {
    std::vector<float> const samples(10, std::nanf(""));
    expectRange(channelsFor({}, factsOf(SampleType::Float32, 1, 1), bytesOf(samples)).front(), 0, 1);
}

TEST(DisplayRequestTest, AColourMapIsForOneChannel) {
    DisplayRequest request;
    request.colourMap = "viridis";
    auto const grey = factsOf(SampleType::Unsigned16, 2, 1, true);
    auto const samples = bytesOf(ramp<std::uint16_t>(2));
    EXPECT_EQ(channelsFor(request, grey, samples)[0].colours, colourmap::named("viridis"));
    request.isInverted = true;
    EXPECT_EQ(channelsFor(request, grey, samples)[0].colours, colourmap::inverted(colourmap::named("viridis")));
    request.colourMap.clear();
    EXPECT_EQ(channelsFor(request, grey, samples)[0].colours, colourmap::inverted(colourmap::named("grey")));
    EXPECT_EQ(channelsFor(request, grey, samples)[1].colours, colourmap::named("grey")) << "alpha has none";
    EXPECT_STREQ(usage(request, factsOf(SampleType::Unsigned16, 3, 3)).what(),
                 "a colour map is for one channel, and 3 are shown: choose one with --channel or --bands");
    EXPECT_STREQ(usage(request, factsOf(SampleType::Unsigned16, 2, 0)).what(),
                 "a colour map is for one channel, and 2 are shown: choose one with --channel or --bands");
    // One of them alone has it.
    request.channels = {parseChannel("1")};
    EXPECT_EQ(channelsFor(request, factsOf(SampleType::Unsigned16, 2, 0), samples)[1].colours,
              colourmap::inverted(colourmap::rampTo({0, 255, 0})));
}

TEST(DisplayRequestTest, ChannelsThatAreAskedForAreOnAndNoOthers) {
    auto const channels = channelsFor(of({"2", "0:102030", "6:FF8000:5,6", "7:auto"}),
                                      factsOf(SampleType::Unsigned16, 8, 0), bytesOf(ramp<std::uint16_t>(8)));
    std::vector<bool> on;
    for (ChannelDisplay const& channel : channels)
        on.push_back(channel.isOn);
    EXPECT_EQ(on, (std::vector<bool>{true, false, true, false, false, false, true, true}));
    EXPECT_EQ(channels[0].colours, colourmap::rampTo({0x10, 0x20, 0x30}));
    EXPECT_EQ(channels[2].colours, colourmap::rampTo({0, 0, 255})) << "its own";
    EXPECT_EQ(channels[6].colours, colourmap::rampTo({255, 128, 0}));
    expectRange(channels[0], 1, 199);
    expectRange(channels[2], 2001, 2199);
    expectRange(channels[6], 5, 6);
    expectRange(channels[7], 7001, 7199);
}

TEST(DisplayRequestTest, AChannelsOwnRangeGoesBeforeThatOfAll) {
    DisplayRequest request = of({"0", "1:5,6", "2:auto"});
    request.range = SampleRange{100, 200};
    auto const channels = channelsFor(request, factsOf(SampleType::Unsigned16, 3, 0), bytesOf(ramp<std::uint16_t>(3)));
    expectRange(channels[0], 100, 200);
    expectRange(channels[1], 5, 6);
    expectRange(channels[2], 2001, 2199);
}

TEST(DisplayRequestTest, AlphaStaysOnBesideChosenChannelsAndCannotBeChosen) {
    auto const facts = factsOf(SampleType::Unsigned16, 4, 3, true);
    auto const channels = channelsFor(of({"1"}), facts, bytesOf(ramp<std::uint16_t>(4)));
    EXPECT_FALSE(channels[0].isOn);
    EXPECT_TRUE(channels[1].isOn);
    EXPECT_FALSE(channels[2].isOn);
    EXPECT_TRUE(channels[3].isOn);
    EXPECT_STREQ(usage(of({"3"}), facts).what(), "the picture has no channel 3; --channel takes 0 to 2");
}

TEST(DisplayRequestTest, AChannelAskedForTwiceCountsOnce) {
    DisplayRequest request = of({"1", "1:0000FF"});
    request.colourMap = "magma";
    auto const channels = channelsFor(request, factsOf(SampleType::Unsigned16, 2, 0), bytesOf(ramp<std::uint16_t>(2)));
    EXPECT_EQ(channels[1].colours, colourmap::named("magma"));
}

TEST(DisplayRequestTest, ChannelsAreParsed) {
    ChannelRequest const plain = parseChannel("12");
    EXPECT_EQ(plain.channel, 12u);
    EXPECT_FALSE(plain.colour || plain.range || plain.automaticRange);
    ChannelRequest const whole = parseChannel("0:#ff8000:-1.5,2e3");
    EXPECT_EQ(whole.channel, 0u);
    EXPECT_EQ(whole.colour, (Colour{255, 128, 0}));
    ASSERT_TRUE(whole.range);
    EXPECT_EQ(whole.range->low, -1.5);
    EXPECT_EQ(whole.range->high, 2000);
    ChannelRequest const automatic = parseChannel("3:auto");
    EXPECT_TRUE(automatic.automaticRange);
    EXPECT_FALSE(automatic.colour || automatic.range);
    EXPECT_TRUE(parseChannel("3:00ff00:auto").colour);
    for (char const* const wrong : {"", "-1", "x", "1x", "1:", "1:ff", "1:ff8000:ff8000", "1:1,2:ff8000", "1:2,1",
                                    "1:auto:auto", "1:ff8000:1,2:3", "1:ff8000:ff8000:1,2", "99999999999999999999999"})
        EXPECT_THROW(parseChannel(wrong), std::invalid_argument) << wrong;
}
