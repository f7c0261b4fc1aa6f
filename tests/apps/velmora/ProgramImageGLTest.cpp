// Parts of image files, drawn by the program.
#include "tests/apps/velmora/Process.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/image/TestTiff.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"
#include "tests/support/reading/FileSamples.h"

#include <gtest/gtest.h>

#include <filesystem>

using filesamples::Samples;
using testtiff::Directory;
using testtiff::directory;

namespace {

class ProgramImageGLTest : public testing::Test {
protected:
    std::string path(std::string const& name) const { return folder_.path(name); }

    std::string tiff(std::vector<Directory> const& directories) const {
        testtiff::write(path("a.tif"), directories);
        return path("a.tif");
    }

    static std::vector<std::uint8_t> bytes(size_t count, unsigned start) {
        std::vector<std::uint8_t> made(count);
        for (size_t i = 0; i < count; ++i)
            made[i] = static_cast<std::uint8_t>(start + i * 11 + i * i / 90);
        return made;
    }

    // The drawn picture, and the program's messages.
    Samples render(std::vector<std::string> const& options, std::string const& told = "") {
        return renderOf(path("a.tif"), options, told);
    }

    Samples renderOf(std::string const& image, std::vector<std::string> options, std::string const& told = "") {
        std::filesystem::remove(path("view.png"));
        options.insert(options.begin(), {"render", image, "-o", path("view.png")});
        auto const result = runVelmora(options, {{"XDG_CACHE_HOME", path("cache")}});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, told);
        said_ = result.out;
        return filesamples::read(path("view.png"));
    }

    // 16 bits are drawn as their upper bytes.
    static Samples upperBytes(Samples samples) {
        for (double& value : samples.values)
            value = static_cast<double>(static_cast<unsigned>(value) >> 8);
        return samples;
    }

    TemporaryFolder folder_;
    std::string said_;
};

} // namespace

TEST_F(ProgramImageGLTest, PagesBandsAndRangesAreDrawn) {
    std::vector<float> floats(300);
    for (size_t i = 0; i < floats.size(); ++i)
        floats[i] = static_cast<float>(i) * 3 - 200;
    Directory five = directory(20, 3, 5, floats);
    five.extraSamples = {0, 0};
    std::string const image = tiff({directory(9, 7, 3, bytes(189, 1)), directory(20, 3, 3, bytes(180, 50)), five});
    EXPECT_EQ(filesamples::difference(render({"--page", "2"}), filesamples::read(image, 2)), "");
    EXPECT_NE(said_.find(", page 2 of 3), "), std::string::npos) << said_;
    // A filter takes 16 bits that a range makes of samples.
    Samples const third = filesamples::read(image, 3);
    EXPECT_EQ(filesamples::difference(
                  render({"--page", "3", "--bands", "5,1,4", "--range", "-100,500", "--truncate", "0"},
                         "velmora: what of a.tif lies beyond the range is clipped, what is no number is drawn as 0\n"),
                  upperBytes(filesamples::scaled(filesamples::withBands(third, {5, 1, 4}), -100, 500))),
              "");
    EXPECT_NE(said_.find("page 3 of 3; bands 5,1,4 of 5; samples -100 to 500 of 32-bit float as 0 to 65535"),
              std::string::npos)
        << said_;
    EXPECT_EQ(filesamples::difference(render({"--page", "3", "--bands", "2", "--range", "auto", "--truncate", "0"}),
                                      upperBytes(filesamples::scaled(filesamples::withBands(third, {2}), -197, 688))),
              "");
    // A filter takes 15 of the 16 bits: this one has no effect.
    EXPECT_EQ(filesamples::difference(render({"--page", "2", "--truncate", "0"}), filesamples::read(image, 2)), "");
}

TEST_F(ProgramImageGLTest, ColoursAreConvertedAndThatIsTold) {
    Directory inks = directory(2, 1, 4, std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0, 0, 255});
    inks.photometric = 5;
    std::string const image = tiff({inks});
    Samples const drawn = render({}, "velmora: note: '" + image + "' holds CMYK: converted to sRGB of 8 bits\n");
    ASSERT_EQ(drawn.bands, 3u);
    EXPECT_GT(drawn.values[0], 240) << "paper is white";
    EXPECT_LT(drawn.values[3], 60) << "black ink is dark";
    EXPECT_NE(said_.find("CMYK converted to sRGB"), std::string::npos) << said_;
    EXPECT_EQ(filesamples::difference(render({"--to-srgb"}), drawn), "") << "and is not told where it is asked for";
    EXPECT_EQ(filesamples::difference(render({"--bands", "4"}), filesamples::withBands(filesamples::read(image), {4})),
              "");
}

// The profile exchanges red and blue, but for rounding.
TEST_F(ProgramImageGLTest, ProfilesAndOrientationsAreFollowedUnlessTheyAreToBeLeftOut) {
    Directory picture = directory(20, 10, 3, bytes(600, 1));
    picture.iccProfile = testprofiles::exchanged("Turned round");
    picture.orientation = 3;
    std::string const image = tiff({picture});
    Samples const own = filesamples::read(image);
    auto const expectShown = [&](Samples const& drawn, bool isConverted, bool isTurned) {
        ASSERT_EQ(drawn.values.size(), own.values.size());
        for (size_t pixel = 0; pixel < 200; ++pixel)
            for (size_t band = 0; band < 3; ++band) {
                size_t const from = (isTurned ? 199 - pixel : pixel) * 3 + (isConverted ? 2 - band : band);
                ASSERT_NEAR(drawn.values[pixel * 3 + band], own.values[from], isConverted ? 1 : 0) << pixel;
            }
        EXPECT_EQ(said_.find("Turned round converted to sRGB") != std::string::npos, isConverted) << said_;
        EXPECT_EQ(said_.find("turned upright (orientation 3)") != std::string::npos, isTurned) << said_;
    };
    expectShown(render({}), true, true);
    expectShown(render({"--no-icc"}), false, true);
    std::string const note = "velmora: note: '" + image +
                             "' asks to be turned or mirrored (orientation 3); its pixels are taken as they lie in the "
                             "file\n";
    expectShown(render({"--no-rotate"}, note), true, false);
    expectShown(render({"--no-icc", "--no-rotate"}, note), false, false);
    // A store keeps both, and is shown with them.
    ASSERT_EQ(runVelmora({"import", image, path("a.vlm")}).exitCode, 0);
    expectShown(renderOf(path("a.vlm"), {}), true, true);
    expectShown(renderOf(path("a.vlm"), {"--no-icc"}), false, true);
    expectShown(renderOf(path("a.vlm"), {"--no-rotate"}), true, false);
    expectShown(renderOf(path("a.vlm"), {"--no-icc", "--no-rotate"}), false, false);
    expectShown(renderOf(path("a.vlm"), {"--truncate", "0"}), true, true);
    EXPECT_EQ(renderOf(path("a.vlm"), {"--colour-map", "viridis", "--channel", "0"}).width, 20u);
    EXPECT_NE(said_.find("turned upright (orientation 3)"), std::string::npos) << said_;
    // From memory, and through a filter that has no effect.
    expectShown(render({"--zoom", "1", "--truncate", "0"}), true, true);
    Samples const enlarged = render({"--zoom", "2"});
    ASSERT_EQ(enlarged.width, 40u);
    EXPECT_NEAR(enlarged.values[0], own.values[199 * 3 + 2], 1);
    EXPECT_NE(said_.find("turned upright"), std::string::npos) << said_;
    EXPECT_FALSE(std::filesystem::exists(path("cache")));
}

TEST_F(ProgramImageGLTest, SixteenBitsAreConvertedAtTheirDepth) {
    std::vector<std::uint16_t> samples;
    for (size_t i = 0; i < 600; ++i)
        samples.push_back(static_cast<std::uint16_t>(i * i * 31));
    Directory picture = directory(20, 10, 3, samples);
    picture.iccProfile = testprofiles::exchanged("Turned round");
    std::string const image = tiff({picture});
    auto const result = runVelmora({"render", image, "-o", path("view.tif")}, {{"XDG_CACHE_HOME", path("cache")}});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    Samples const drawn = filesamples::read(path("view.tif"));
    ASSERT_EQ(drawn.values.size(), samples.size());
    for (size_t i = 0; i < samples.size(); i += 3)
        for (size_t band = 0; band < 3; ++band)
            ASSERT_NEAR(drawn.values[i + band], samples[i + 2 - band], 40) << i;
}

// Filters, and files of 16 bits, take a store's own samples.
TEST_F(ProgramImageGLTest, AStoreOf16BitsIsConvertedWhereItIsShownIn8) {
    std::vector<std::uint16_t> samples;
    for (size_t i = 0; i < 600; ++i)
        samples.push_back(static_cast<std::uint16_t>(i * i * 31));
    Directory picture = directory(20, 10, 3, samples);
    picture.iccProfile = testprofiles::exchanged("Turned round");
    picture.orientation = 3;
    std::string const image = tiff({picture});
    std::string const store = path("a.vlm");
    ASSERT_EQ(runVelmora({"import", image, store}).exitCode, 0);
    std::vector<std::string> const ranged{"--range", "0,60000"};
    EXPECT_EQ(filesamples::difference(renderOf(store, ranged), render(ranged)), "");
    std::string const notes = "velmora: note: '" + store +
                              "' is shown without its ICC profile, Turned round: its 16 bits are taken as they are; "
                              "velmora export keeps it\nvelmora: note: '" +
                              store +
                              "' asks to be turned or mirrored (orientation 3); its 16 bits are taken as they lie in "
                              "the store\n";
    renderOf(store, {"--sharpen", "1"}, notes);
    renderOf(store, {"--sharpen", "1", "--no-icc", "--no-rotate"});
    auto const kept = runVelmora({"render", store, "-o", path("kept.tif")});
    EXPECT_EQ(kept.err, notes);
    EXPECT_EQ(filesamples::difference(filesamples::read(path("kept.tif")), filesamples::read(image)), "");
}

// Other zooms than 1 need a store of images of 16 bits, which is kept.
TEST_F(ProgramImageGLTest, EachPartOfAFileHasAStoreOfItsOwn) {
    auto const deep = [](unsigned start) {
        std::vector<std::uint16_t> samples;
        for (std::uint8_t const byte : bytes(63, start))
            samples.push_back(static_cast<std::uint16_t>(byte * 257));
        return samples;
    };
    std::string const image = tiff({directory(9, 7, 1, deep(1)), directory(9, 7, 1, deep(100))});
    auto const enlarged = [&](size_t page) {
        Samples const small = upperBytes(filesamples::read(image, page));
        Samples large{18, 14, 1, {}};
        for (size_t i = 0; i < 18u * 14u; ++i)
            large.values.push_back(small.values[i / 18 / 2 * 9 + i % 18 / 2]);
        return large;
    };
    auto const stores = [&] {
        std::filesystem::directory_iterator const cache(path("cache/velmora"));
        return std::distance(begin(cache), end(cache));
    };
    for (size_t const page : {1u, 2u, 1u})
        EXPECT_EQ(filesamples::difference(render({"--page", std::to_string(page), "--zoom", "2", "--truncate", "0"}),
                                          enlarged(page)),
                  "")
            << page;
    EXPECT_EQ(stores(), 2);
    render({"--page", "1", "--range", "0,65535", "--zoom", "2", "--truncate", "0"});
    render({"--page", "1", "--range", "0,65536", "--zoom", "2", "--truncate", "0"});
    render({"--page", "1", "--bands", "1", "--zoom", "2", "--truncate", "0"});
    EXPECT_EQ(stores(), 5);
}
