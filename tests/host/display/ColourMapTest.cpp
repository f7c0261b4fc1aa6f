#include "host/display/ColourMap.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// Five colours of each map, a quarter apart, as they are published everywhere.
TEST(ColourMapTest, NamedMapsAreThePublishedOnes) {
    struct Row {
        char const* name;
        std::array<char const*, 5> colours;
    };
    for (Row const& row : {
             Row{"grey", {"000000", "404040", "808080", "c0c0c0", "ffffff"}},
             Row{"viridis", {"440154", "3b528b", "21918c", "5ec962", "fde725"}},
             Row{"magma", {"000004", "51127c", "b73779", "fc8961", "fcfdbf"}},
             Row{"inferno", {"000004", "57106e", "bc3754", "f98e09", "fcffa4"}},
             Row{"turbo", {"30123b", "28bceb", "a4fc3c", "fb7e21", "7a0403"}},
         }) {
        ColourMap const map = colourmap::named(row.name);
        constexpr std::array<size_t, 5> kPlaces = {0, 64, 128, 192, 255};
        for (size_t i = 0; i < kPlaces.size(); ++i)
            EXPECT_EQ(map[kPlaces[i]], colourmap::parseColour(row.colours[i])) << row.name << " " << kPlaces[i];
    }
}

TEST(ColourMapTest, EveryNameHasAMapAndNoOtherHas) {
    EXPECT_EQ(colourmap::names().size(), 5u);
    for (std::string const& name : colourmap::names())
        EXPECT_NO_THROW(colourmap::named(name)) << name;
    for (char const* const name : {"", "Viridis", "jet"})
        EXPECT_THROW(colourmap::named(name), std::invalid_argument) << name;
}

// Why people take them: what is more looks brighter, and no step is seen as an edge.
TEST(ColourMapTest, MapsGetBrighterStepByStep) {
    for (char const* const name : {"viridis", "magma", "inferno"}) {
        ColourMap const map = colourmap::named(name);
        double before = -1;
        for (Colour const& colour : map) {
            double const luma = 0.2126 * colour[0] + 0.7152 * colour[1] + 0.0722 * colour[2];
            EXPECT_GT(luma, before - 0.5) << name;
            before = luma;
        }
    }
    for (std::string const& name : colourmap::names()) {
        ColourMap const map = colourmap::named(name);
        for (size_t i = 1; i < map.size(); ++i)
            for (size_t channel = 0; channel < 3; ++channel)
                EXPECT_LE(std::abs(map[i][channel] - map[i - 1][channel]), 8) << name << " " << i;
    }
}

TEST(ColourMapTest, RampsRiseFromBlackToTheirColour) {
    ColourMap const ramp = colourmap::rampTo({255, 128, 1});
    EXPECT_EQ(ramp[0], (Colour{0, 0, 0}));
    EXPECT_EQ(ramp[255], (Colour{255, 128, 1}));
    EXPECT_EQ(ramp[127], (Colour{127, 64, 0})) << "63.75 and 0.498";
    EXPECT_EQ(ramp[128], (Colour{128, 64, 1})) << "64.25 and 0.502";
}

TEST(ColourMapTest, InvertedMapsRunBackwards) {
    ColourMap const map = colourmap::named("viridis");
    ColourMap const inverted = colourmap::inverted(map);
    for (size_t i = 0; i < map.size(); ++i)
        EXPECT_EQ(inverted[i], map[255 - i]);
}

TEST(ColourMapTest, ColoursAreSixDigits) {
    EXPECT_EQ(colourmap::parseColour("FF8001"), (Colour{255, 128, 1}));
    EXPECT_EQ(colourmap::parseColour("#ff8001"), (Colour{255, 128, 1}));
    for (char const* const text : {"", "#", "FF800", "FF80011", "GG0000", "##FF800", "FF 800", "+F8001", "red"})
        EXPECT_THROW(colourmap::parseColour(text), std::invalid_argument) << text;
}

} // namespace
