#include "host/display/ChannelDisplay.h"

#include <gtest/gtest.h>

#include <limits>

using channeldisplay::defaultsFor;
using channeldisplay::wholeRange;

namespace {

ImageFacts factsOf(SampleType type, size_t bands, size_t colours, bool alpha) {
    ImageFacts facts;
    facts.layout.type = type;
    facts.layout.bands = bands;
    facts.layout.colours = colours;
    facts.layout.alpha = alpha;
    return facts;
}

std::vector<std::string> namesOf(std::vector<ChannelDisplay> const& channels) {
    std::vector<std::string> names;
    for (ChannelDisplay const& channel : channels)
        names.push_back(channel.name);
    return names;
}

using Names = std::vector<std::string>;

void expectWhole(ChannelDisplay const& channel, double low, double high) {
    EXPECT_EQ(channel.tone.low, low) << channel.name;
    EXPECT_EQ(channel.tone.high, high) << channel.name;
    EXPECT_EQ(channel.tone.curve, Tone::Curve::Linear);
    EXPECT_EQ(channel.tone.gamma, 1);
}

} // namespace

TEST(ChannelDisplayTest, TheWholeRangeIsThatOfTheType) {
    struct {
        SampleType type;
        double low;
        double high;
    } const ranges[] = {{SampleType::Unsigned8, 0, 255},
                        {SampleType::Signed8, -128, 127},
                        {SampleType::Unsigned16, 0, 65535},
                        {SampleType::Signed16, -32768, 32767},
                        {SampleType::Unsigned32, 0, 4294967295.0},
                        {SampleType::Signed32, -2147483648.0, 2147483647},
                        {SampleType::Float32, 0, 1},
                        {SampleType::Float64, 0, 1}};
    for (auto const& range : ranges) {
        EXPECT_EQ(wholeRange(range.type).low, range.low) << toText(range.type);
        EXPECT_EQ(wholeRange(range.type).high, range.high) << toText(range.type);
        EXPECT_EQ(wholeRange(range.type).curve, Tone::Curve::Linear);
        EXPECT_EQ(wholeRange(range.type).gamma, 1);
    }
}

TEST(ChannelDisplayTest, GreyIsOneChannel) {
    for (size_t const colours : {0u, 1u}) { // a band alone is grey, whether the file says so or not
        auto const channels = defaultsFor(factsOf(SampleType::Signed16, 1, colours, false));
        ASSERT_EQ(namesOf(channels), Names{"grey"});
        EXPECT_EQ(channels[0].band, 0u);
        EXPECT_TRUE(channels[0].isOn);
        EXPECT_EQ(channels[0].role, ChannelTable::Role::Added);
        EXPECT_EQ(channels[0].colours, colourmap::named("grey"));
        expectWhole(channels[0], -32768, 32767);
    }
}

TEST(ChannelDisplayTest, RedGreenAndBlueAreThree) {
    auto const channels = defaultsFor(factsOf(SampleType::Unsigned16, 3, 3, false));
    ASSERT_EQ(namesOf(channels), (Names{"red", "green", "blue"}));
    std::vector<Colour> const colours = {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(channels[i].band, i);
        EXPECT_TRUE(channels[i].isOn);
        EXPECT_EQ(channels[i].role, ChannelTable::Role::Added);
        EXPECT_EQ(channels[i].colours, colourmap::rampTo(colours[i]));
        expectWhole(channels[i], 0, 65535);
    }
}

TEST(ChannelDisplayTest, AlphaFollowsTheColoursAndBeginsAtZero) {
    for (size_t const colours : {1u, 3u}) {
        auto const channels = defaultsFor(factsOf(SampleType::Signed16, colours + 1, colours, true));
        ASSERT_EQ(channels.size(), colours + 1);
        ChannelDisplay const& alpha = channels.back();
        EXPECT_EQ(alpha.name, "alpha");
        EXPECT_EQ(alpha.band, colours);
        EXPECT_TRUE(alpha.isOn);
        EXPECT_EQ(alpha.role, ChannelTable::Role::Alpha);
        expectWhole(alpha, 0, 32767);
        for (size_t i = 0; i < colours; ++i)
            EXPECT_EQ(channels[i].role, ChannelTable::Role::Added);
    }
}

TEST(ChannelDisplayTest, OtherBandsHaveColoursOfTheirOwnAndTheFirstSixAreOn) {
    auto const channels = defaultsFor(factsOf(SampleType::Float32, 8, 0, false));
    ASSERT_EQ(namesOf(channels),
              (Names{"band 1", "band 2", "band 3", "band 4", "band 5", "band 6", "band 7", "band 8"}));
    std::vector<Colour> const colours = {{255, 0, 0},   {0, 255, 0},   {0, 0, 255}, {255, 255, 0},
                                         {255, 0, 255}, {0, 255, 255}, {255, 0, 0}, {0, 255, 0}};
    for (size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(channels[i].band, i);
        EXPECT_EQ(channels[i].isOn, i < 6) << i;
        EXPECT_EQ(channels[i].colours, colourmap::rampTo(colours[i])) << i;
        expectWhole(channels[i], 0, 1);
    }
    // More bands than the file's colours and alpha account for.
    EXPECT_EQ(namesOf(defaultsFor(factsOf(SampleType::Unsigned8, 5, 3, true))).back(), "band 5");
}

TEST(ChannelDisplayTest, WhatTheFileSaysOfItsBandsGoesFirst) {
    ImageFacts facts = factsOf(SampleType::Unsigned16, 3, 0, false);
    facts.bands = {{"DAPI", Colour{0, 0, 255}}, {"", std::nullopt}, {"a\nb\x1b[31m", Colour{1, 2, 3}}};
    auto const channels = defaultsFor(facts);
    EXPECT_EQ(channels[0].name, "DAPI");
    EXPECT_EQ(channels[0].colours, colourmap::rampTo({0, 0, 255}));
    EXPECT_EQ(channels[1].name, "band 2");
    EXPECT_EQ(channels[1].colours, colourmap::rampTo({0, 255, 0}));
    EXPECT_EQ(channels[2].name.find_first_of("\n\x1b"), std::string::npos) << channels[2].name;
    EXPECT_EQ(channels[2].colours, colourmap::rampTo({1, 2, 3}));

    ImageFacts grey = factsOf(SampleType::Unsigned16, 1, 0, false);
    grey.bands = {{"DAPI", std::nullopt}};
    EXPECT_EQ(namesOf(defaultsFor(grey)), Names{"DAPI"});
    EXPECT_EQ(defaultsFor(grey)[0].colours, colourmap::named("grey"));
}

TEST(ChannelDisplayTest, ChannelsAreEqualIfAllOfThemIs) {
    ChannelDisplay const one = defaultsFor(factsOf(SampleType::Unsigned8, 1, 1, false)).front();
    EXPECT_TRUE(one == one);
    auto const differs = [&](auto const& change) {
        ChannelDisplay other = one;
        change(other);
        return !(one == other) && !(other == one);
    };
    EXPECT_TRUE(differs([](ChannelDisplay& other) { other.band = 1; }));
    EXPECT_TRUE(differs([](ChannelDisplay& other) { other.name = "x"; }));
    EXPECT_TRUE(differs([](ChannelDisplay& other) { other.isOn = false; }));
    EXPECT_TRUE(differs([](ChannelDisplay& other) { other.role = ChannelTable::Role::Alpha; }));
    EXPECT_TRUE(differs([](ChannelDisplay& other) { other.tone.high = 7; }));
    EXPECT_TRUE(differs([](ChannelDisplay& other) { other.colours[3] = {1, 2, 3}; }));
}

TEST(ChannelDisplayTest, AChannelIsAddedUnlessItSaysOtherwise) {
    ChannelDisplay const channel;
    EXPECT_EQ(channel.band, 0u);
    EXPECT_TRUE(channel.isOn);
    EXPECT_EQ(channel.role, ChannelTable::Role::Added);
    EXPECT_EQ(channel.colours, colourmap::named("grey"));
}
