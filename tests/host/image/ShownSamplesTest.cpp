// Pictures as they are meant to be seen: upright, in the colours of their profile.
#include "host/image/ShownSamples.h"

#include "tests/host/image/TestProfiles.h"
#include "tests/host/image/TiffFixture.h"
#include "tests/support/TestImages.h"

#include <tiffio.h>
#include <vips/vips8>

using testtiff::Directory;
using vips::VImage;

namespace {

constexpr std::uint32_t kWidth = 37;
constexpr std::uint32_t kHeight = 23;

class ShownSamplesTest : public TiffFixture {
protected:
    static Options upright() {
        Options options = lossless();
        options.selection.isUpright = true;
        return options;
    }
    static Options coloured() {
        Options options = lossless();
        options.selection.followsProfile = true;
        return options;
    }

    static Directory picture(std::uint16_t bands = 3) {
        return testtiff::directory(kWidth, kHeight, bands, bytes(size_t{kWidth} * kHeight * bands));
    }

    static Directory profiled(std::uint16_t bands = 3) {
        Directory made = picture(bands);
        made.iccProfile = testprofiles::rgb(testprofiles::kAdobe, 2.2, "Wide");
        return made;
    }

    // What libvips turns on its own.
    static std::vector<double> turnedByVips(std::string const& file) {
        VImage const image = VImage::new_from_file(file.c_str()).autorot();
        size_t bytes = 0;
        auto* const samples = static_cast<std::uint8_t*>(image.write_to_memory(&bytes));
        std::vector<double> values(samples, samples + bytes);
        g_free(samples);
        return values;
    }

    static void expectUpright(std::string const& file, int orientation) {
        ImageReader reader(file, upright());
        bool const swaps = orientation > 4;
        ASSERT_EQ(reader.width(), swaps ? kHeight : kWidth) << orientation;
        ASSERT_EQ(reader.height(), swaps ? kWidth : kHeight) << orientation;
        EXPECT_TRUE(reader.notes().empty());
        EXPECT_EQ(has(reader.description(), "turned upright (orientation " + std::to_string(orientation) + ")"),
                  orientation != 1)
            << reader.description();
        auto const expected = turnedByVips(file);
        EXPECT_EQ(readAll(file, upright()).values, expected) << orientation;
        // Some rows, and some below them.
        for (size_t const y : {2u, 9u}) {
            auto const part = samplesOf(reader, {3, y, 5, 4});
            for (size_t row = 0; row < 4; ++row)
                for (size_t i = 0; i < 15; ++i)
                    ASSERT_EQ(part.values[row * 15 + i], expected[((y + row) * reader.width() + 3) * 3 + i])
                        << orientation;
        }
    }
};

} // namespace

TEST_F(ShownSamplesTest, PicturesAreTurnedUpright) {
    testimages::writePattern8(path("a.jpg"), "", kWidth, kHeight, 3);
    VImage const image = VImage::new_from_file(path("a.jpg").c_str()).copy_memory();
    for (int orientation = 1; orientation <= 8; ++orientation) {
        VImage turned = image.copy();
        turned.set("orientation", orientation);
        turned.write_to_file(path("turned.jpg").c_str());
        expectUpright(path("turned.jpg"), orientation);
        for (std::uint32_t const tile : {0u, 16u}) {
            Directory one = picture();
            one.orientation = static_cast<std::uint16_t>(orientation);
            one.tile = tile;
            write({one});
            expectUpright(tiff_, orientation);
        }
    }
}

TEST_F(ShownSamplesTest, SidesOfPixelsAreTurnedToo) {
    Directory one = picture();
    one.resolutionUnit = RESUNIT_CENTIMETER;
    one.xResolution = 100;
    one.yResolution = 200;
    for (unsigned const orientation : {1u, 4u, 5u, 8u}) {
        one.orientation = static_cast<std::uint16_t>(orientation);
        write({one});
        ImageReader const reader(tiff_, upright());
        EXPECT_DOUBLE_EQ(reader.pixelsPerMillimetreX(), orientation > 4 ? 20 : 10) << orientation;
        EXPECT_DOUBLE_EQ(reader.pixelsPerMillimetreY(), orientation > 4 ? 10 : 20) << orientation;
    }
}

// Where rows of a picture are columns of its file, all of a file that is read from the top is held.
TEST_F(ShownSamplesTest, MoreThanMayBeHeldIsRefused) {
    Directory one = picture();
    one.compression = COMPRESSION_ZSTD;
    one.orientation = ORIENTATION_RIGHTTOP;
    write({one});
    std::string file = readFile(tiff_);
    for (auto const& [tag, side] : {std::pair<std::uint16_t, std::uint8_t>{256, kWidth}, {257, kHeight}}) {
        std::string const entry{
            static_cast<char>(tag), static_cast<char>(tag >> 8), 3, 0, 1, 0, 0, 0, static_cast<char>(side), 0, 0, 0};
        size_t const at = file.find(entry);
        ASSERT_NE(at, std::string::npos);
        file.replace(at + 8, 2, std::string("\x40\x9c", 2)); // 40000
    }
    writeFile(tiff_, file);
    EXPECT_TRUE(has(refusal(tiff_, upright()), "of memory to read")) << refusal(tiff_, upright());
    EXPECT_NO_THROW(ImageReader(tiff_, lossless()));
}

TEST_F(ShownSamplesTest, ColoursAreConvertedByTheProfile) {
    for (std::uint16_t const bands : std::vector<std::uint16_t>{3, 4})
        for (std::uint32_t const tile : {0u, 16u}) {
            Directory one = profiled(bands);
            one.tile = tile;
            if (bands == 4) one.extraSamples = {EXTRASAMPLE_UNASSALPHA};
            one.orientation = ORIENTATION_BOTRIGHT;
            write({one});
            ImageReader reader(tiff_, coloured());
            EXPECT_TRUE(has(reader.description(), "Wide converted to sRGB")) << reader.description();
            ImageFacts facts;
            facts.layout.bands = bands;
            facts.layout.colours = 3;
            facts.layout.alpha = bands == 4;
            facts.iccProfile = one.iccProfile;
            std::vector<std::uint8_t> expected = one.bytes;
            SrgbConversion::of(facts).conversion->convert(expected.data(), size_t{kWidth} * kHeight);
            EXPECT_NE(expected, one.bytes);
            EXPECT_EQ(valuesOf(tiff_, coloured()), std::vector<double>(expected.begin(), expected.end()));
            expectOwnSamples(tiff_);
        }
}

TEST_F(ShownSamplesTest, ChosenBandsAreNumbers) {
    write({profiled()});
    Options options = coloured();
    options.selection.bands = {3, 1};
    EXPECT_EQ(filesamples::difference(readAll(tiff_, options),
                                      filesamples::withBands(filesamples::readTiff(tiff_, 1), {3, 1})),
              "");
}

TEST_F(ShownSamplesTest, AProfileThatIsLeftOutIsTold) {
    Directory one = picture();
    one.iccProfile = testprofiles::grey(1.8, "Dots");
    write({one});
    EXPECT_EQ(ImageReader(tiff_, coloured()).notes(),
              std::vector<std::string>{"'" + tiff_ + "': its colour profile 'Dots' is not one of RGB"});
    EXPECT_TRUE(ImageReader(tiff_, lossless()).notes().empty());
    one.iccProfile = testprofiles::srgb();
    write({one});
    EXPECT_TRUE(ImageReader(tiff_, coloured()).notes().empty());
    EXPECT_FALSE(has(ImageReader(tiff_, coloured()).description(), "sRGB"));
}

// Inks are converted by libvips, which follows the profile itself.
TEST_F(ShownSamplesTest, NoProfileIsFollowedTwice) {
    Directory inks = picture(4);
    inks.photometric = PHOTOMETRIC_SEPARATED;
    inks.iccProfile = testprofiles::rgb(testprofiles::kAdobe, 2.2, "Wide");
    write({inks});
    Options options = coloured();
    options.lossless = false;
    ImageReader const reader(tiff_, options);
    EXPECT_FALSE(has(reader.description(), "Wide")) << reader.description();
    Options plain = lossless();
    plain.lossless = false;
    EXPECT_EQ(valuesOf(tiff_, options), valuesOf(tiff_, plain));
}

TEST_F(ShownSamplesTest, StoresOfTheCacheHaveOtherNames) {
    ImageSelection all;
    ImageSelection turned;
    turned.isUpright = true;
    ImageSelection coloured;
    coloured.followsProfile = true;
    EXPECT_NE(all.identity(), turned.identity());
    EXPECT_NE(all.identity(), coloured.identity());
    EXPECT_NE(turned.identity(), coloured.identity());
    EXPECT_TRUE(turned.isEmpty());
    EXPECT_TRUE(coloured.isEmpty());
}
