// Pyramids upright, and in the colours of their profile.
#include "host/image/ShownSamples.h"
#include "host/pyramid/PyramidTiles.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/pyramid/PyramidFixture.h"
#include "tests/support/TestImages.h"

#include <vips/vips8>

namespace {

class ShownPyramidTest : public PyramidFixture {
protected:
    static PyramidOptions shown(bool isUpright, bool followsProfile) {
        PyramidOptions options;
        options.selection.isUpright = isUpright;
        options.selection.followsProfile = followsProfile;
        return options;
    }

    // What libvips turns on its own.
    static Bytes turned(Bytes samples, Directory const& directory, int orientation) {
        auto image =
            vips::VImage::new_from_memory(samples.data(), samples.size(), static_cast<int>(directory.width),
                                          static_cast<int>(directory.height), directory.bands, VIPS_FORMAT_UCHAR)
                .copy();
        image.set("orientation", orientation);
        size_t bytes = 0;
        auto* const made = static_cast<std::uint8_t*>(image.autorot().write_to_memory(&bytes));
        Bytes upright(made, made + bytes);
        g_free(made);
        return upright;
    }

    static Bytes converted(Bytes samples, Directory const& directory) {
        ImageFacts facts;
        facts.layout.bands = facts.layout.colours = directory.bands;
        facts.iccProfile = profile();
        SrgbConversion::of(facts).conversion->convert(samples.data(), samples.size() / directory.bands);
        return samples;
    }

    static Bytes profile() { return testprofiles::rgb(testprofiles::kAdobe, 2.2, "Wide"); }
};

} // namespace

TEST_F(ShownPyramidTest, AllLevelsAreTurned) {
    for (int orientation = 1; orientation <= 8; ++orientation) {
        Directory full = level(100, 70, 3, 1);
        full.orientation = static_cast<std::uint16_t>(orientation);
        Directory const half = reduced(50, 35, 3, 2);
        auto const pyramid = open(write({full, half}), shown(true, false));
        bool const swaps = orientation > 4;
        EXPECT_EQ(sizesOf(pyramid->facts()), (swaps ? Sizes{"70x100", "35x50"} : Sizes{"100x70", "50x35"}));
        EXPECT_EQ(pyramid->facts().levels.front().unit.width, swaps ? 16u : 32u);
        EXPECT_EQ(pyramid->facts().image.layout.width, swaps ? 70u : 100u);
        EXPECT_EQ(pyramid->facts().image.orientation, 1);
        EXPECT_EQ(pyramid->orientation(), orientation);
        auto const reader = pyramid->reader();
        Bytes const expected = turned(full.bytes, full, orientation);
        EXPECT_TRUE(readAll(*reader) == expected) << orientation;
        EXPECT_TRUE(readAll(*reader, 1) == turned(half.bytes, half, orientation)) << orientation;
        Region const part{11, 7, 40, 50};
        EXPECT_TRUE(read(*reader, 0, part) == crop(expected, pyramid->facts().image.layout.width, 3, part));
        EXPECT_EQ(open(path("a.tif"))->orientation(), 1);
        EXPECT_TRUE(readAll(*open(path("a.tif"))->reader()) == full.bytes);
    }
}

TEST_F(ShownPyramidTest, PhotographsAreTurned) {
    testimages::writePattern8(path("a.jpg"), "", 90, 60, 3);
    auto image = vips::VImage::new_from_file(path("a.jpg").c_str()).copy_memory();
    image.set("orientation", 6);
    image.write_to_file(path("b.jpg").c_str());
    auto const pyramid = open(path("b.jpg"), shown(true, true));
    EXPECT_EQ(sizesOf(pyramid->facts()), (Sizes{"60x90", "30x45", "15x22", "7x11"}));
    size_t bytes = 0;
    auto* const made = static_cast<std::uint8_t*>(
        vips::VImage::new_from_file(path("b.jpg").c_str()).autorot().write_to_memory(&bytes));
    Bytes const expected(made, made + bytes);
    g_free(made);
    EXPECT_TRUE(readAll(*pyramid->reader()) == expected);
}

TEST_F(ShownPyramidTest, BandsOfTurnedPicturesAreTaken) {
    Directory full = level(100, 70, 5, 1);
    full.orientation = ORIENTATION_LEFTBOT;
    PyramidOptions options = shown(true, true);
    options.selection.bands = {5, 2, 1};
    auto const reader = open(write({full}), options)->reader();
    Bytes const all = turned(full.bytes, full, 8);
    Bytes expected;
    for (size_t i = 0; i < all.size(); i += 5)
        for (size_t const band : {4u, 1u, 0u})
            expected.push_back(all[i + band]);
    EXPECT_TRUE(readAll(*reader) == expected);
}

// Pages that are channels, of 16 bits and two bands each.
TEST_F(ShownPyramidTest, EachPlaneOfAStackIsTurned) {
    std::vector<Directory> pages;
    std::vector<std::vector<std::uint16_t>> samples;
    for (std::uint32_t page = 0; page < 2; ++page) {
        samples.push_back(noise<std::uint16_t>(40 * 30 * 2, page + 1));
        pages.push_back(testtiff::directory<std::uint16_t>(40, 30, 2, samples.back()));
        pages.back().orientation = ORIENTATION_BOTRIGHT;
    }
    pages.front().description =
        R"(<OME><Image><Pixels SizeC="4" SizeZ="1" SizeT="1" DimensionOrder="XYCZT"><Channel SamplesPerPixel="2"/>)"
        R"(<Channel SamplesPerPixel="2"/></Pixels></Image></OME>)";
    auto const pyramid = open(write(pages), shown(true, true));
    ASSERT_EQ(pyramid->facts().image.layout.bands, 4u);
    std::vector<std::uint16_t> expected;
    for (size_t pixel = 40 * 30; pixel-- > 0;)
        for (auto const& page : samples)
            expected.insert(expected.end(), {page[2 * pixel], page[2 * pixel + 1]});
    EXPECT_TRUE(readAll(*pyramid->reader()) == bytesOf(expected));
}

TEST_F(ShownPyramidTest, AllLevelsAndTheirMeansHaveTheColoursOfTheProfile) {
    Directory full = level(100, 70, 3, 1);
    full.iccProfile = profile();
    full.orientation = ORIENTATION_RIGHTTOP;
    Directory const half = reduced(50, 35, 3, 2);
    auto const pyramid = open(write({full, half}), shown(true, true));
    EXPECT_EQ(pyramid->facts().image.followedProfile, "Wide");
    EXPECT_TRUE(pyramid->facts().image.iccProfile.empty());
    auto const reader = pyramid->reader();
    Bytes const expected = turned(converted(full.bytes, full), full, 6);
    EXPECT_TRUE(readAll(*reader) == expected);
    EXPECT_TRUE(readAll(*reader, 1) == turned(converted(half.bytes, half), half, 6));
    // One band needs the others.
    reader->take({1}, {});
    Bytes greens;
    for (size_t i = 1; i < expected.size(); i += 3)
        greens.push_back(expected[i]);
    EXPECT_TRUE(readAll(*reader) == greens);
    // Samples of the file, at the same places.
    EXPECT_TRUE(readAll(*pyramid->ownColours()) == turned(full.bytes, full, 6));
    auto const plain = open(path("a.tif"));
    EXPECT_EQ(plain->facts().image.followedProfile, "");
    EXPECT_TRUE(readAll(*plain->reader()) == full.bytes);
    // Means are taken of what is shown.
    PyramidTiles tiles(pyramid->reader());
    Bytes means(18 * 25 * 3);
    tiles.read(2, {0, 0, 18, 25}, means.data());
    Bytes const below = turned(converted(half.bytes, half), half, 6);
    for (size_t band = 0; band < 3; ++band) {
        int const sum = below[band] + below[3 + band] + below[35 * 3 + band] + below[36 * 3 + band];
        EXPECT_NEAR(means[band], sum / 4.0, 0.5);
    }
}

TEST_F(ShownPyramidTest, ChosenBandsAndDataWithGapsKeepTheirNumbers) {
    Directory full = level(64, 32, 3, 1);
    full.iccProfile = profile();
    PyramidOptions bands = shown(true, true);
    bands.selection.bands = {1, 2, 3};
    EXPECT_TRUE(readAll(*open(write({full}), bands)->reader()) == full.bytes);
    full.nodata = "7";
    EXPECT_TRUE(readAll(*open(write({full}), shown(true, true))->reader()) == full.bytes);
}
