#include "host/map/BuiltInPicture.h"
#include "tests/apps/velmora/Process.h"
#include "tests/support/LongRun.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <thread>

using testimages::Pixels;

namespace {

struct Picture {
    char const* name;
    char const* file;
    char const* options;
    size_t width;
    size_t height;
    size_t bands;
    bool wide;
};

// Odd sizes: the last tiles of each row and column are partly empty.
constexpr size_t kWidth = 613;
constexpr size_t kHeight = 457;

class ProgramRenderGLTest : public testing::Test {
protected:
    // Draws the file and compares with libvips' own crop.
    // A TIFF keeps 16 bits.
    void expectCrop(std::string const& file, Region const& region, size_t tile,
                    std::string const& output = "view.png") const {
        std::string const view = folder_.path(output);
        auto const result =
            runVelmora({"render", file, "-o", view, "--force", "-r", toText(region), "--tile", std::to_string(tile)});
        ASSERT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "") << "no progress where stderr is no terminal";
        EXPECT_EQ(testimages::difference(testimages::readByVips(view),
                                         testimages::cropByVips(file, region.x, region.y, region.width, region.height)),
                  "")
            << toText(region) << " in tiles of " << tile;
    }

    void expectSameInTiffAndPng(std::vector<std::string> const& options, size_t bands) const {
        for (std::string const name : {"view.png", "view.TIF"}) {
            std::vector<std::string> arguments = {"render", "-o", folder_.path(name), "--force"};
            arguments.insert(arguments.end(), options.begin(), options.end());
            auto const result = runVelmora(arguments);
            ASSERT_EQ(result.exitCode, 0) << result.err;
            EXPECT_EQ(result.out.rfind(folder_.path(name) + ": ", 0), 0u) << result.out;
        }
        EXPECT_EQ(readFile(folder_.path("view.TIF")).substr(0, 2), "II");
        Pixels const png = testimages::readByVips(folder_.path("view.png"));
        EXPECT_EQ(png.bands, bands);
        EXPECT_EQ(testimages::difference(testimages::readByVips(folder_.path("view.TIF")), png), "");
    }

    TemporaryFolder folder_;
};

class ProgramRenderPictureGLTest : public ProgramRenderGLTest, public testing::WithParamInterface<Picture> {
protected:
    void SetUp() override {
        Picture const& picture = GetParam();
        auto const write = picture.wide ? testimages::writePattern16 : testimages::writePattern8;
        file_ = folder_.path(picture.file);
        write(file_, picture.options, picture.width, picture.height, picture.bands);
    }

    // A PNG would show 16 bits through a range.
    static std::string output() { return GetParam().wide ? "view.tif" : "view.png"; }

    std::string file_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Formats, ProgramRenderPictureGLTest,
    testing::Values(
        Picture{"Jpeg", "a.jpg", "[Q=90]", kWidth, kHeight, 3, false},
        Picture{"GreyJpeg", "a.jpg", "[Q=90]", kWidth, kHeight, 1, false},
        Picture{"Png", "a.png", "", kWidth, kHeight, 3, false},
        Picture{"RgbaPng", "a.png", "", kWidth, kHeight, 4, false},
        Picture{"GreyPng", "a.png", "", kWidth, kHeight, 1, false},
        Picture{"GreyAlphaPng", "a.png", "", kWidth, kHeight, 2, false},
        Picture{"Png16", "a.png", "", kWidth, kHeight, 3, true},
        Picture{"GreyPng16", "a.png", "", kWidth, kHeight, 1, true},
        Picture{"TiledPyramidTiff", "a.tif", "[tile,pyramid,compression=jpeg,Q=90,tile-width=128,tile-height=128]",
                kWidth, kHeight, 3, false},
        Picture{"TiledPyramidTiff16", "a.tif", "[tile,pyramid,tile-width=64,tile-height=64]", kWidth, kHeight, 3, true},
        Picture{"Jpeg2000", "a.jp2", "[Q=48,tile-width=256,tile-height=256]", kWidth, kHeight, 3, false},
        // More than one block wide, and more than one strip high.
        Picture{"WidePng", "a.png", "", 4200, 41, 3, false}, Picture{"TallPng", "a.png", "", 41, 1200, 4, false},
        Picture{"OnePixelPng", "a.png", "", 1, 1, 3, false}),
    [](auto const& test) { return test.param.name; });

TEST_P(ProgramRenderPictureGLTest, WholePictureIsTheFile) {
    std::string const view = folder_.path(output());
    auto const result = runVelmora({"render", file_, "-o", view});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(testimages::difference(testimages::readByVips(view), testimages::readByVips(file_)), "");
}

TEST_P(ProgramRenderPictureGLTest, RegionAtOddOffsetsIsTheFilesCrop) {
    Picture const& picture = GetParam();
    size_t const x = std::min<size_t>(picture.width - 1, 13);
    size_t const y = std::min<size_t>(picture.height - 1, 7);
    Region const region{x, y, picture.width - x - (picture.width - x) / 5,
                        picture.height - y - (picture.height - y) / 5};
    // 100 pixels are no power of two; a row of 37 RGB pixels is no multiple of four bytes.
    expectCrop(file_, region, 100, output());
    expectCrop(file_, region, 37, output());
}

TEST_P(ProgramRenderPictureGLTest, LastPixelIsTheFiles) {
    Picture const& picture = GetParam();
    expectCrop(file_, {picture.width - 1, picture.height - 1, 1, 1}, 256, output());
}

TEST_F(ProgramRenderGLTest, SinglePixelsOfEveryPlaceInATileAreTheFiles) {
    std::string const file = folder_.path("a.png");
    testimages::writePattern8(file, "", kWidth, kHeight, 3);
    for (Region const& region :
         {Region{0, 0, 1, 1}, Region{255, 255, 1, 1}, Region{256, 256, 1, 1}, Region{300, 1, 1, 1}})
        expectCrop(file, region, 256);
}

TEST_F(ProgramRenderGLTest, TilesOfAnySizeGiveTheSamePicture) {
    std::string const file = folder_.path("a.png");
    testimages::writePattern8(file, "", kWidth, kHeight, 3);
    for (size_t const tile : {32u, 255u, 257u, 512u, 2048u})
        expectCrop(file, {1, 2, kWidth - 3, kHeight - 5}, tile);
    // Smaller: Zink 22 leaks a descriptor pool after 500 draws in a row, which a leak check reports.
    expectCrop(file, {301, 202, 190, 133}, 16);
}

TEST_F(ProgramRenderGLTest, RegionFarFromTheOriginIsTheBuiltInPictures) {
    Region const region{16384 - 2100, 16384 - 33, 2100, 33};
    std::string const view = folder_.path("view.png");
    auto const result = runVelmora({"render", "-o", view, "--region", toText(region)});
    ASSERT_EQ(result.exitCode, 0) << result.err;
    Pixels expected{region.width, region.height, 3, {}};
    BuiltInPicture().read(region, expected.samples);
    EXPECT_EQ(testimages::difference(testimages::readByVips(view), expected), "");
}

TEST_F(ProgramRenderGLTest, ReportsWhatItWrote) {
    auto const result = runVelmora({"render", "-o", folder_.path("view.png"), "-r", "100,100,20,10"});
    EXPECT_EQ(result.out.rfind(folder_.path("view.png") + ": 20 x 10 pixels of the built-in picture", 0), 0u)
        << result.out;
}

TEST_F(ProgramRenderGLTest, AnInterruptedRunLeavesNothingBehind) {
    for (std::string const name : {"view.png", "view.tif"}) {
        SCOPED_TRACE(name);
        TemporaryFolder const folder;
        writeFile(folder.path(name), "old");
        Process render({"render", "-o", folder.path(name), "--force"});
        auto const giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        // The second file is the temporary one: the work has begun.
        while (folder.names().size() < 2 && render.running() && std::chrono::steady_clock::now() < giveUp)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ASSERT_EQ(folder.names().size(), 2u);
        render.signal(SIGINT);
        auto const result = render.wait();
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_EQ(result.err, "velmora: interrupted; nothing was written\n");
        EXPECT_EQ(folder.names(), std::vector<std::string>{name});
        EXPECT_EQ(readFile(folder.path(name)), "old");
    }
}

TEST_F(ProgramRenderGLTest, TiffHoldsThePixelsOfThePng) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    std::string const image = folder_.path("a.png");
    std::string const store = folder_.path("a.vlm");
    for (size_t bands = 1; bands <= 4; ++bands) {
        testimages::writePattern8(image, "", kWidth, kHeight, bands);
        ASSERT_EQ(runVelmora({"import", image, store, "--force"}).exitCode, 0);
        for (std::vector<std::string> const& options : {std::vector<std::string>{image},
                                                        {image, "-r", "13,7,599,301", "--sharpen", "1"},
                                                        {store, "--zoom", "0.5"}})
            expectSameInTiffAndPng(options, bands);
    }
}

// 32 pixels show 45 samples: the nearest zoom to 0.71.
TEST_F(ProgramRenderGLTest, AnImageAtAnyZoomShowsItsNearestPixels) {
    std::string const file = folder_.path("a.png");
    std::string const view = folder_.path("view.png");
    Process::Environment const cache = {{"XDG_CACHE_HOME", folder_.path("cache")}};
    testimages::writePattern8(file, "", kWidth, kHeight, 3);
    auto const result = runVelmora({"render", file, "-o", view, "--zoom", "0.71"}, cache);
    ASSERT_EQ(result.exitCode, 0) << result.err;
    Pixels const whole = testimages::readByVips(file);
    Pixels const got = testimages::readByVips(view);
    Pixels expected{0, 0, whole.bands, {}};
    auto const sample = [](size_t pixel) { return (2 * pixel + 1) * 45 / 64; };
    for (; sample(expected.height) < kHeight; ++expected.height) {
        expected.width = 0;
        for (; sample(expected.width) < kWidth; ++expected.width) {
            for (size_t band = 0; band < whole.bands; ++band)
                expected.samples.push_back(
                    whole.samples[(sample(expected.height) * kWidth + sample(expected.width)) * whole.bands + band]);
        }
    }
    EXPECT_EQ(testimages::difference(got, expected), "");

    ASSERT_EQ(runVelmora({"render", file, "-o", view, "--force", "--zoom", "3", "-r", "100,50,40,30"}, cache).exitCode,
              0);
    EXPECT_FALSE(std::filesystem::exists(folder_.path("cache/velmora"))) << "no store is needed";
    Pixels const large = testimages::readByVips(view);
    EXPECT_EQ(large.width, 120u);
    EXPECT_EQ(large.height, 90u);
    EXPECT_EQ(large.samples[(89 * 120 + 119) * 3], whole.samples[(79 * kWidth + 139) * whole.bands]);
}

TEST_F(ProgramRenderGLTest, FiltersOfSixteenBitsAtAnyZoomLookAtAStoreThatIsKept) {
    std::string const file = folder_.path("a.png");
    std::string const view = folder_.path("view.png");
    Process::Environment const cache = {{"XDG_CACHE_HOME", folder_.path("cache")}};
    testimages::writePattern16(file, "", kWidth, kHeight, 3);
    ASSERT_EQ(runVelmora({"render", file, "-o", view, "--zoom", "0.71", "--srgb"}, cache).exitCode, 0);
    auto const stores = std::filesystem::directory_iterator(folder_.path("cache/velmora"));
    std::string const store = begin(stores)->path().string();
    ASSERT_EQ(runVelmora({"render", store, "-o", folder_.path("again.png"), "--zoom", "0.71", "--srgb"}).exitCode, 0);
    EXPECT_EQ(readFile(folder_.path("again.png")), readFile(view));
    std::filesystem::create_hard_link(store, folder_.path("same.vlm"));
    ASSERT_EQ(runVelmora({"render", file, "-o", view, "--force", "--zoom", "3", "-r", "100,50,40,30", "--srgb"}, cache)
                  .exitCode,
              0);
    EXPECT_TRUE(std::filesystem::equivalent(store, folder_.path("same.vlm"))) << "it is not made again";
}

TEST_F(ProgramRenderGLTest, RegionOfAStoreIsTheFilesAtZoomOneAndALevelBelow) {
    std::string const file = folder_.path("a.png");
    std::string const store = folder_.path("a.vlm");
    std::string const view = folder_.path("view.png");
    testimages::writePattern8(file, "", kWidth, kHeight, 3);
    ASSERT_EQ(runVelmora({"import", file, store, "--tile", "64"}).exitCode, 0);

    ASSERT_EQ(runVelmora({"render", store, "-o", view, "-r", "101,57,380,291"}).exitCode, 0);
    EXPECT_EQ(testimages::difference(testimages::readByVips(view), testimages::cropByVips(file, 101, 57, 380, 291)),
              "");

    // Samples of level 2 are four pixels apart: 101 to 480 correspond to 25 to 120, 57 to 347 to 14 to 86.
    ASSERT_EQ(runVelmora({"render", store, "-o", view, "--force", "-r", "101,57,380,291", "--zoom", "0.25"}).exitCode,
              0);
    Pixels const quarter = testimages::readByVips(view);
    EXPECT_EQ(quarter.width, 96u);
    EXPECT_EQ(quarter.height, 73u);
    ASSERT_EQ(runVelmora({"render", store, "-o", view, "--force", "--zoom", "0.25"}).exitCode, 0);
    EXPECT_EQ(testimages::difference(quarter, testimages::crop(testimages::readByVips(view), 25, 14, 96, 73)), "");
}

TEST_F(ProgramRenderGLTest, WithoutThreadsAStoreIsMadeAndDrawnAllTheSame) {
    Process::Environment const noThreads{{"LD_PRELOAD", VELMORA_NO_THREADS}};
    testimages::writePattern8(folder_.path("a.png"), "", 200, 150, 3);
    auto const made = runVelmora({"import", folder_.path("a.png"), folder_.path("a.vlm"), "--jobs", "3"}, noThreads);
    ASSERT_EQ(made.exitCode, 0) << made.err;
    auto const drawn = runVelmora({"render", folder_.path("a.vlm"), "-o", folder_.path("view.png")}, noThreads);
    ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
    EXPECT_EQ(drawn.err, "");
    EXPECT_EQ(
        testimages::difference(testimages::readByVips(folder_.path("view.png")), testimages::pattern8(200, 150, 3)),
        "");
}

namespace {

// A picture of 16 bits, and a store of it.
class ProgramRenderDeepGLTest : public ProgramRenderGLTest {
protected:
    void SetUp() override {
        testimages::writePattern16(file_, "", 301, 207, 3);
        ASSERT_EQ(runVelmora({"import", file_, store_, "--tile", "64"}).exitCode, 0);
    }

    std::string rendered(std::vector<std::string> arguments, std::string const& name) const {
        arguments.insert(arguments.begin(), "render");
        arguments.insert(arguments.end(), {"-o", folder_.path(name), "--force"});
        auto const result = runVelmora(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    void expectRefused(std::vector<std::string> arguments, std::string const& word) const {
        arguments.insert(arguments.begin(), "render");
        arguments.insert(arguments.end(), {"-o", folder_.path("refused.tif"), "--bits", "16"});
        auto const result = runVelmora(arguments);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find(word), std::string::npos) << result.err;
        EXPECT_FALSE(std::filesystem::exists(folder_.path("refused.tif")));
    }

    std::string file_ = folder_.path("a.png");
    std::string store_ = folder_.path("a.vlm");
};

bool contains(std::string const& text, std::string const& word) {
    return text.find(word) != std::string::npos;
}

} // namespace

TEST_F(ProgramRenderDeepGLTest, ATiffKeepsSixteenBits) {
    auto const all = testimages::pattern16(301, 207, 3);
    for (std::string const& picture : {file_, store_}) {
        std::string const words = rendered({picture}, "whole.tif");
        EXPECT_TRUE(contains(words, "16 bits per sample")) << words;
        EXPECT_EQ(testimages::read16ByVips(folder_.path("whole.tif")), all);
        rendered({picture, "-r", "300,206,1,1"}, "part.tiff");
        EXPECT_EQ(testimages::read16ByVips(folder_.path("part.tiff")),
                  std::vector<std::uint16_t>(all.end() - 3, all.end()));
    }
    EXPECT_TRUE(contains(rendered({store_, "--zoom", "0.5"}, "small.tif"), "16 bits per sample"));
    EXPECT_EQ(testimages::read16ByVips(folder_.path("small.tif")).size(), 151u * 104 * 3);
}

TEST_F(ProgramRenderDeepGLTest, EnhancementsAndSmoothGiveEightBits) {
    for (std::string const& picture : {file_, store_}) {
        EXPECT_TRUE(contains(rendered({picture, "--srgb"}, "c.tif"), " 8 bits per sample"));
        EXPECT_TRUE(contains(rendered({picture, "--zoom", "0.5", "--smooth"}, "d.tif"), " 8 bits per sample"));
    }
}

TEST_F(ProgramRenderDeepGLTest, EightBitsAreThoseOfARange) {
    auto const expected = testimages::pattern16InRange(301, 207, 3, 1000.5, 50000);
    std::vector<std::pair<std::vector<std::string>, std::string>> const runs = {
        {{file_, "--range", "1000.5,50000", "--bits", "8"}, "a.tif"},
        {{file_, "--range", "1000.5,50000"}, "b.png"},
        {{store_, "--range", "1000.5,50000"}, "e.tif"},
        {{store_, "--range", "1000.5,50000", "--bits", "8"}, "f.tif"},
        {{store_, "--range", "1000.5,50000"}, "g.png"}};
    for (auto const& [arguments, name] : runs) {
        std::string const words = rendered(arguments, name);
        EXPECT_TRUE(contains(words, " 8 bits per sample")) << words;
        EXPECT_THROW(testimages::read16ByVips(folder_.path(name)), std::runtime_error);
        EXPECT_EQ(testimages::difference(testimages::readByVips(folder_.path(name)), expected), "");
    }
    // Samples that are seldom are left out.
    for (std::string const& picture : {file_, store_}) {
        rendered({picture}, "c.png");
        auto const automatic = testimages::readByVips(folder_.path("c.png"));
        rendered({picture, "--range", "auto"}, "d.png");
        EXPECT_EQ(testimages::difference(testimages::readByVips(folder_.path("d.png")), automatic), "");
        EXPECT_NE(testimages::difference(automatic, testimages::pattern16InRange(301, 207, 3, 0, 65535)), "");
    }
}

TEST_F(ProgramRenderDeepGLTest, APngHasSixteenBitsWhereTheyAreAskedFor) {
    for (std::string const& picture : {file_, store_}) {
        EXPECT_TRUE(contains(rendered({picture, "--bits", "16"}, "b.png"), "16 bits per sample"));
        EXPECT_EQ(testimages::read16ByVips(folder_.path("b.png")), testimages::pattern16(301, 207, 3));
    }
}

TEST_F(ProgramRenderDeepGLTest, SixteenBitsThatAreNotThereAreRefused) {
    for (std::string const& picture : {file_, store_}) {
        expectRefused({picture, "--sharpen", "1"}, "filters");
        expectRefused({picture, "--zoom", "0.5", "--smooth"}, "--smooth");
    }
    testimages::writePattern8(folder_.path("8.png"), "", 30, 20, 3);
    expectRefused({folder_.path("8.png")}, "8 bits");
    expectRefused({file_, "--bits", "12"}, "12");
}
