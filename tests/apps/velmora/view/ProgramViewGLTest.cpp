// The viewer with SDL's driver "offscreen", whose windows are surfaces of EGL that nobody sees. It finds its display
// among EGL's devices (EGL_EXT_device_enumeration), which Mesa's drivers have and ANGLE has not: on ANGLE there is no
// window to test, and that the program says so is what is tested there. Its windows keep the surface that they were
// made with: ProgramViewWindowTest.cpp resizes one.
#include "tests/apps/velmora/view/ViewerFixture.h"

#include "host/display/ColourMap.h"
#include "host/store/Sqlite.h"
#include "host/store/TileStore.h"
#include "tests/apps/velmora/Restricted.h"
#include "tests/host/image/TestProfiles.h"
#include "tests/host/image/TestTiff.h"
#include "tests/host/store/HostileStores.h"
#include "tests/support/LongRun.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <thread>
#include <tiff.h>

namespace {

class ProgramViewGLTest : public ViewerFixture {
protected:
    void SetUp() override {
        if (runsOn("ANGLE")) GTEST_SKIP() << "SDL's driver offscreen needs EGL devices, which ANGLE does not list";
        // Something has been opened before.
        std::filesystem::create_directories(path("state/velmora"));
        writeFile(path("state/velmora/recent"), "");
    }

    Process::Environment environment() const {
        return {{"SDL_VIDEODRIVER", "offscreen"}, {"XDG_CACHE_HOME", path("cache")}, {"XDG_STATE_HOME", path("state")}};
    }

    Process::Result view(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "view");
        return runVelmora(arguments, environment());
    }

    // The window at the end.
    testimages::Pixels shown(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--screenshot", path("shown.png"), "--force"});
        auto const result = view(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return testimages::readByVips(path("shown.png"));
    }

    // The window after a script, whose last line has to be a screenshot under the name shown.png.
    testimages::Pixels after(std::string const& text, std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(),
                         {"--force", "--script", script(text + "wait\nscreenshot " + path("shown.png") + "\nquit\n")});
        auto const result = view(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return testimages::readByVips(path("shown.png"));
    }

    void expectFailure(Process::Result const& result, int exitCode, std::vector<std::string> const& words) const {
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        EXPECT_EQ(result.err.rfind("velmora: ", 0), 0u) << result.err;
        for (auto const& word : words)
            EXPECT_NE(result.err.find(word), std::string::npos) << word << " in " << result.err;
    }

    std::vector<std::string> cached() const {
        std::vector<std::string> names;
        if (std::filesystem::exists(path("cache/velmora")))
            for (auto const& entry : std::filesystem::directory_iterator(path("cache/velmora")))
                names.push_back(entry.path().filename().string());
        return names;
    }
};

size_t numberAfter(std::string const& text, std::string const& name) {
    auto const place = text.find(name);
    if (place == std::string::npos) return 0;
    size_t number = 0;
    std::istringstream(text.substr(place + name.size())) >> number;
    return number;
}

} // namespace

TEST_F(ProgramViewGLTest, ABareWindowShowsThePicturesOwnPixels) {
    std::string const store = makeStore("a.vlm", 700, 500);
    expectPixels(shown({store, "--bare", "--size", "320x200", "--at", "350,250,1"}), expected(190, 150, 320, 200));
    expectPixels(shown({store, "--bare", "--size", "321x201", "--at", "10,490,1"}), expected(-150, 390, 321, 201));
    expectPixels(shown({store, "--bare", "--size", "320x200", "--at", "350,250,5"}), expected(318, 230, 320, 200, 5));
}

TEST_F(ProgramViewGLTest, PicturesOfAnyShapeAreShown) {
    for (auto const& [width, height] : std::vector<std::pair<size_t, size_t>>{{1, 1}, {1, 5000}, {3000, 2}}) {
        std::string const store = makeStore("a.vlm", width, height);
        std::string const at = std::to_string(width / 2) + "," + std::to_string(height / 2) + ",1";
        expectPixels(
            shown({store, "--bare", "--size", "200x100", "--at", at}),
            expected(static_cast<std::int64_t>(width / 2) - 100, static_cast<std::int64_t>(height / 2) - 50, 200, 100));
    }
}

TEST_F(ProgramViewGLTest, HandAndKeysMoveThePicture) {
    std::string const store = makeStore("a.vlm", 500, 450);
    std::vector<std::string> const arguments{store, "--bare", "--size", "320x200", "--at", "250,225,1"};
    expectPixels(after("drag 100 100 87 131\n", arguments), expected(103, 94, 320, 200));
    expectPixels(after("wait\nkey right\nkey down\nkey down\n", arguments), expected(130, 175, 320, 200));
    expectPixels(after("wheel 160 100 4\nwheel 160 100 -9\nkey 1\n", arguments), expected(90, 125, 320, 200));
    // About the pixel under the cursor: 90 + 20, 125 + 30 stays where it is.
    expectPixels(after("wheel 20 30 1\n", arguments), expected(100, 140, 320, 200, 2));
}

TEST_F(ProgramViewGLTest, TheOverlayLeavesThePictureAlone) {
    std::string const store = makeStore("a.vlm", 500, 450);
    // Between the panels, which stand in the corners.
    auto const middle = [](testimages::Pixels const& window) { return testimages::crop(window, 260, 200, 150, 100); };
    std::vector<std::string> const arguments{store, "--size", "640x480", "--at", "250,225,1"};
    auto const before = shown(arguments);
    expectPixels(middle(before), middle(expected(-70, -15, 640, 480)));
    EXPECT_NE(testimages::difference(before, expected(-70, -15, 640, 480)), "") << "something is drawn over it";
    expectPixels(middle(after("wait\nkey d\nkey m\nkey ?\nwait\nkey d\nkey m\nkey ?\n", arguments)), middle(before));
    EXPECT_NE(testimages::difference(middle(after("key ?\n", arguments)), middle(before)), "") << "the help is there";
}

TEST_F(ProgramViewGLTest, WordsOutOfAFileCannotUpsetThePanels) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    // The upper left corner, where the name and the line below it stand.
    auto const corner = [this](std::string const& sourceName) {
        ImportOptions options;
        options.replace = true;
        options.sourceName = sourceName;
        testpictures::import(testpictures::picture(300, 200, 3, 8, testpictures::Content::Flat), path("a\xFF\n.vlm"),
                             options);
        return testimages::crop(shown({path("a\xFF\n.vlm"), "--size", "640x480"}), 8, 8, 140, 38);
    };
    auto const plain = corner("a b");
    EXPECT_NE(testimages::difference(plain, corner("a c")), "") << "the name is there";
    std::string const bad = "\xEF\xBF\xBD";
    expectPixels(corner("a\nb\x1B\xFF"), corner("a" + bad + "b" + bad + bad));
    expectPixels(corner(std::string(100000, 'x')), corner(std::string(120, 'x') + "..."));
}

TEST_F(ProgramViewGLTest, AClickInTheSmallPictureGoesThere) {
    // 200 pixels show 800: the click is 50, 70 of the small picture, which ends 18 and 16 before the window's corner.
    std::string const store = makeStore("a.vlm", 800, 800);
    int const x = 640 - 18 - 200 + 50;
    int const y = 480 - 16 - 200 + 70;
    std::string const place = " " + std::to_string(x) + " " + std::to_string(y);
    std::string const click = "drag" + place + place;
    auto const window = after("key 1\nwait\n" + click + "\n", {store, "--size", "640x480"});
    expectPixels(testimages::crop(window, 270, 190, 100, 100),
                 testimages::crop(expected(200 - 320, 280 - 240, 640, 480), 270, 190, 100, 100));
}

TEST_F(ProgramViewGLTest, KeysSwitchEnhancements) {
    std::string const store = makeStore("a.vlm", 300, 200);
    std::vector<std::string> const plain{store, "--bare", "--size", "300x200", "--at", "150,100,1"};
    auto const before = shown(plain);
    std::vector<testimages::Pixels> all{before};
    for (std::string const key : {"e", "g", "c"}) {
        std::string const press = "key " + key + "\n";
        auto const on = after(press, plain);
        for (auto const& other : all)
            EXPECT_NE(testimages::difference(on, other), "") << key;
        all.push_back(on);
        std::string twice = press;
        twice.append("wait\n").append(press);
        expectPixels(after(twice, plain), before);
    }
    // The command line's own, off and on again.
    auto given = plain;
    given.insert(given.end(), {"--sharpen", "2"});
    expectPixels(shown(given), all[1]);
    expectPixels(after("key e\n", given), before);
}

TEST_F(ProgramViewGLTest, EnhancementsAreThoseOfRender) {
    std::string const store = makeStore("a.vlm", 300, 200);
    std::vector<std::string> const filters{"--clahe", "3", "--gamma", "1.6,200,3000", "--sharpen", "2"};
    std::vector<std::string> render{"render", store, "-o", path("render.png")};
    std::vector<std::string> arguments{store, "--bare", "--size", "300x200", "--at", "150,100,1"};
    render.insert(render.end(), filters.begin(), filters.end());
    arguments.insert(arguments.end(), filters.begin(), filters.end());
    ASSERT_EQ(runVelmora(render).exitCode, 0);
    expectPixels(shown(arguments), testimages::readByVips(path("render.png")));
}

TEST_F(ProgramViewGLTest, ZoomsAreThoseOfRender) {
    // Two fifths are 350 x 250 samples of level 1, of which 40 show in 32 pixels: what fits the window.
    std::string const store = makeStore("a.vlm", 700, 500);
    ASSERT_EQ(runVelmora({"render", store, "-o", path("render.png"), "--zoom", "0.4"}).exitCode, 0);
    auto const rendered = testimages::readByVips(path("render.png"));
    EXPECT_EQ(rendered.width, 280u);
    std::vector<std::string> arguments{store, "--bare", "--size", "280x200"};
    expectPixels(shown(arguments), rendered);

    ASSERT_EQ(runVelmora({"render", store, "-o", path("smooth.png"), "--zoom", "0.4", "--smooth"}).exitCode, 0);
    auto const smooth = testimages::readByVips(path("smooth.png"));
    EXPECT_NE(testimages::difference(smooth, rendered), "");
    expectPixels(after("wait\nkey b\n", arguments), smooth);
    arguments.emplace_back("--smooth");
    expectPixels(shown(arguments), smooth);
    expectPixels(after("wait\nkey b\n", arguments), rendered);
}

TEST_F(ProgramViewGLTest, AZoomThatIsNoStepIsNamed) {
    std::string const store = makeStore("a.vlm", 700, 500);
    auto const printed = [&](std::string const& zoom) {
        auto const result = view(
            {store, "--bare", "--size", "100x80", "--at", "300,200," + zoom, "--screenshot", path("a.png"), "--force"});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return result.out;
    };
    EXPECT_EQ(printed("0.75"), "zoom 0.744186, the nearest step to 0.75\n");
    EXPECT_EQ(printed("0.5"), "");
    auto const drawn = runVelmora({"render", store, "-o", path("b.png"), "--zoom", "0.75"});
    EXPECT_NE(drawn.out.find("zoom 0.744186, the nearest step to 0.75"), std::string::npos) << drawn.out;
}

TEST_F(ProgramViewGLTest, TheAutomaticToneOfDeepPicturesIsAGamma) {
    // Half of the rows are 800, half 40000: the points are these.
    picture_ = testpictures::picture(500, 500, 1, 16, testpictures::Content::Flat);
    std::vector<std::uint16_t> samples(500 * 500, 800);
    std::fill(samples.begin() + 250 * 500, samples.end(), std::uint16_t{40000});
    std::memcpy(picture_.bytes.data(), samples.data(), picture_.bytes.size());
    testpictures::import(picture_, path("a.vlm"));
    auto const middle = [](testimages::Pixels const& window) { return testimages::crop(window, 200, 190, 150, 100); };
    std::vector<std::string> arguments{path("a.vlm"), "--size", "640x480", "--at", "250,250,1", "--gamma", "1,0,65535"};
    auto const dark = middle(shown(arguments));
    // The button lies in the panel in the upper right corner.
    auto const automatic = middle(after("wait\ndrag 403 95 403 95\n", arguments));
    EXPECT_EQ(automatic.samples.front(), 0) << "black";
    EXPECT_EQ(automatic.samples.back(), 255) << "white";
    EXPECT_NE(testimages::difference(automatic, dark), "");
    expectPixels(middle(after("wait\ndrag 403 95 403 95\nwait\nkey g\n", arguments)), dark);
    arguments.back() = "1,800,40000";
    expectPixels(middle(shown(arguments)), automatic);
}

TEST_F(ProgramViewGLTest, AStoreOf16BitsOpensInItsAutomaticRangeAsRenderDrawsIt) {
    // As a camera of 12 bits writes them.
    picture_ = testpictures::picture(400, 300, 1, 16, testpictures::Content::Noise);
    for (size_t i = 1; i < picture_.bytes.size(); i += 2)
        picture_.bytes[i] &= 0x0fU;
    testpictures::import(picture_, path("a.vlm"));
    for (std::vector<std::string> const& options :
         {std::vector<std::string>(), {"--range", "100,300"}, {"--colour-map", "viridis", "--curve", "asinh"}}) {
        std::vector<std::string> render{"render", path("a.vlm"), "-o", path("a.png"), "--force"};
        std::vector<std::string> window{path("a.vlm"), "--bare", "--size", "200x100", "--at", "200,150,1"};
        render.insert(render.end(), options.begin(), options.end());
        window.insert(window.end(), options.begin(), options.end());
        auto const drawn = runVelmora(render);
        ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
        auto whole = testimages::readByVips(path("a.png"));
        if (whole.bands == 1) {
            testimages::Pixels const grey = whole;
            whole = {grey.width, grey.height, 3, {}};
            for (std::uint8_t const sample : grey.samples)
                whole.samples.insert(whole.samples.end(), 3, sample);
        }
        expectPixels(shown(window), testimages::crop(whole, 100, 100, 200, 100));
        auto const brightest = *std::max_element(whole.samples.begin(), whole.samples.end());
        EXPECT_GE(brightest, 250) << "12 of 16 bits are dark";
    }
}

TEST_F(ProgramViewGLTest, AnImageOfEightBitsIsShownFromItsFile) {
    for (std::string const name : {"a.png", "a.jpg", "a.tif"}) {
        testimages::writePattern8(path(name), name == "a.tif" ? "[tile,pyramid,tile_width=128,tile_height=128]" : "",
                                  400, 300, 3);
        auto const whole = testimages::readByVips(path(name));
        expectPixels(shown({path(name), "--bare", "--size", "200x100", "--at", "200,150,1"}),
                     testimages::crop(whole, 100, 100, 200, 100));
    }
    EXPECT_FALSE(std::filesystem::exists(path("cache/velmora"))) << "nothing is written";
}

TEST_F(ProgramViewGLTest, WhatAWindowShowsOfAFileIsWhatRenderDraws) {
    std::string const tiles = "[tile,pyramid,tile_width=128,tile_height=128]";
    testimages::writePattern8(path("8.tif"), tiles, 1700, 1300, 3);
    testimages::writePattern16(path("16.tif"), tiles, 1700, 1300, 3);
    std::vector<std::pair<std::string, std::string>> const runs = {
        {"8.tif", "0.4"}, {"8.tif", "0.2"}, {"8.tif", "2"}, {"16.tif", "0.2"}, {"16.tif", "1"}};
    for (auto const& [name, zoom] : runs) {
        SCOPED_TRACE(name + " at " + zoom);
        auto const drawn = runVelmora({"render", path(name), "-o", path("whole.png"), "--force", "--zoom", zoom});
        ASSERT_EQ(drawn.exitCode, 0) << drawn.err;
        auto const whole = testimages::readByVips(path("whole.png"));
        // As large as what is drawn: all of it.
        size_t const width = std::min<size_t>(whole.width, 600);
        size_t const height = std::min<size_t>(whole.height, 400);
        auto const window = shown({path(name), "--bare", "--size", std::to_string(width) + "x" + std::to_string(height),
                                   "--at", "850,650," + zoom});
        expectPixels(window,
                     testimages::crop(whole, (whole.width - width) / 2, (whole.height - height) / 2, width, height));
    }
}

TEST_F(ProgramViewGLTest, AFileIsShownUprightInTheColoursOfItsProfile) {
    auto const show = [&](auto const& samples, std::vector<std::string> const& options) {
        auto directory = testtiff::directory(120, 80, 3, samples);
        directory.orientation = 6;
        directory.iccProfile = testprofiles::exchanged("Turned round");
        testtiff::write(path("a.tif"), {directory});
        std::vector<std::string> render{"render", path("a.tif"), "-o", path("whole.png"), "--force"};
        render.insert(render.end(), options.begin(), options.end());
        auto const drawn = runVelmora(render);
        EXPECT_EQ(drawn.exitCode, 0) << drawn.err;
        std::vector<std::string> window{path("a.tif"), "--bare", "--size", "80x120", "--at", "40,60,1"};
        window.insert(window.end(), options.begin(), options.end());
        auto const pixels = shown(window);
        expectPixels(pixels, testimages::readByVips(path("whole.png")));
        return pixels;
    };
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint16_t> words;
    for (unsigned i = 0; i < 120u * 80 * 3; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(i % 3 == 0 ? 200 : i % 240));
        words.push_back(static_cast<std::uint16_t>(bytes.back() * 16));
    }
    auto const converted = show(bytes, {});
    auto const own = show(bytes, {"--no-icc"});
    for (size_t i = 0; i < own.samples.size(); i += 3) {
        EXPECT_EQ(own.samples[i], 200) << i;
        ASSERT_NEAR(converted.samples[i + 2], 200, 1) << i;
    }
    // The ends of the range come from the converted samples.
    show(words, {});
    show(words, {"--range", "0,4000"});
}

TEST_F(ProgramViewGLTest, AnImageOfSixteenBitsIsShownInARangeAtOnce) {
    testimages::writePattern16(path("a.png"), "", 400, 300, 3);
    std::vector<std::string> const arguments{path("a.png"), "--bare", "--size", "200x100", "--at", "200,150,1"};
    auto const with = [&](std::vector<std::string> const& more) {
        auto all = arguments;
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    auto const part = [](testimages::Pixels const& whole) { return testimages::crop(whole, 100, 100, 200, 100); };
    expectPixels(shown(with({"--range", "0,65535"})), part(testimages::pattern16InRange(400, 300, 3, 0, 65535)));
    expectPixels(shown(with({"--range", "1000.5,20000"})),
                 part(testimages::pattern16InRange(400, 300, 3, 1000.5, 20000)));
    // Samples that are seldom are left out.
    auto const automatic = shown(arguments);
    EXPECT_NE(testimages::difference(automatic, part(testimages::pattern16InRange(400, 300, 3, 0, 65535))), "");
    expectPixels(shown(with({"--range", "auto"})), automatic);
    EXPECT_EQ(cached(), std::vector<std::string>());
}

TEST_F(ProgramViewGLTest, OneChannelHasCurvesAndColourMaps) {
    testimages::writePattern16(path("a.png"), "", 400, 300, 1);
    std::vector<std::string> const arguments{path("a.png"), "--bare",    "--size",  "200x100",
                                             "--at",        "200,150,1", "--range", "0,65535"};
    auto const with = [&](std::vector<std::string> const& more) {
        auto all = arguments;
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    auto const grey = testimages::pattern16InRange(400, 300, 1, 0, 65535);
    auto const mapped = [&](auto const& colourOf) {
        testimages::Pixels pixels{400, 300, 3, {}};
        for (std::uint8_t const byte : grey.samples)
            for (std::uint8_t const one : colourOf(byte))
                pixels.samples.push_back(one);
        return testimages::crop(pixels, 100, 100, 200, 100);
    };
    using Bytes = std::array<std::uint8_t, 3>;
    expectPixels(shown(with({"--invert"})), mapped([](std::uint8_t byte) {
                     auto const dark = static_cast<std::uint8_t>(255 - byte);
                     return Bytes{dark, dark, dark};
                 }));
    ColourMap const magma = colourmap::named("magma");
    expectPixels(shown(with({"--colour-map", "magma"})), mapped([&](std::uint8_t byte) { return magma[byte]; }));
    auto const bent = shown(with({"--curve", "log"}));
    auto const straight = shown(arguments);
    size_t brighter = 0;
    for (size_t i = 0; i < bent.samples.size(); ++i) {
        ASSERT_GE(bent.samples[i], straight.samples[i]);
        if (bent.samples[i] > straight.samples[i]) ++brighter;
    }
    EXPECT_GT(brighter, bent.samples.size() / 2);
    testimages::writePattern16(path("b.png"), "", 400, 300, 3);
    auto const refused = view({path("b.png"), "--bare", "--colour-map", "magma", "--screenshot", path("none.png")});
    expectFailure(refused, 2, {"a colour map is for one channel", "3", "--channel", "--bands"});
    EXPECT_FALSE(std::filesystem::exists(path("none.png")));
}

namespace {

// Two channels of two slices, 16 bits.
class ProgramStackGLTest : public ProgramViewGLTest {
protected:
    static constexpr size_t kWidth = 120;
    static constexpr size_t kHeight = 100;

    ProgramStackGLTest() {
        std::vector<testtiff::Directory> pages;
        for (unsigned page = 0; page < 4; ++page) {
            std::vector<std::uint16_t> samples;
            for (unsigned i = 0; i < kWidth * kHeight; ++i)
                samples.push_back(static_cast<std::uint16_t>((i * 7919 + page * 4111) % 5000));
            pages_.push_back(samples);
            pages.push_back(testtiff::directory<std::uint16_t>(kWidth, kHeight, 1, samples));
        }
        pages.front().description =
            R"(<OME><Image><Pixels SizeC="2" SizeZ="2" DimensionOrder="XYCZT"><Channel/><Channel/></Pixels></Image>)"
            "</OME>";
        testtiff::write(file_, pages);
    }

    // A channel of a slice in the range 1000 to 4000, in proportion to the colour.
    static testimages::Pixels coloured(std::vector<std::uint16_t> const& samples, std::array<int, 3> const& colour) {
        testimages::Pixels pixels{kWidth, kHeight, 3, {}};
        for (std::uint16_t const sample : samples) {
            double const share = std::min(std::max((sample - 1000) / 3000.0, 0.0), 1.0);
            int const byte = static_cast<int>(std::floor(255 * share + 0.5));
            for (int const full : colour)
                pixels.samples.push_back(static_cast<std::uint8_t>((2 * full * byte + 255) / 510));
        }
        return pixels;
    }

    std::vector<std::string> window(std::vector<std::string> const& more) const {
        std::vector<std::string> all{file_, "--bare", "--size", "120x100", "--at", "60,50,1"};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }

    testimages::Pixels rendered(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), {"render", file_, "-o", path("drawn.png"), "--force"});
        auto const result = runVelmora(arguments, environment());
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return testimages::readByVips(path("drawn.png"));
    }

    std::string file_ = path("stack.ome.tif");
    std::vector<std::vector<std::uint16_t>> pages_;
};

} // namespace

TEST_F(ProgramStackGLTest, ChannelsAndSlicesAreThoseOfRender) {
    std::vector<std::string> const chosen{"--channel", "1:FF8040:1000,4000", "--z", "1"};
    auto const expected = coloured(pages_[3], {255, 128, 64});
    expectPixels(shown(window(chosen)), expected);
    expectPixels(rendered(chosen), expected);
    expectPixels(shown(window({})), rendered({}));
    expectPixels(shown(window({"--z", "1"})), rendered({"--z", "1"}));
    EXPECT_NE(testimages::difference(rendered({"--z", "1"}), rendered({})), "");
    EXPECT_EQ(cached(), std::vector<std::string>());
}

TEST_F(ProgramStackGLTest, TheClosingLineSaysWhatIsDrawn) {
    auto const said = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"render", file_, "-o", path("drawn.png"), "--force"});
        return runVelmora(arguments, environment()).out;
    };
    auto const expectWords = [](std::string const& line, std::string const& words) {
        EXPECT_NE(line.find("(120 x 100, 2 bands of 16-bit unsigned, TIFF, " + words + "), 8 bits per sample"),
                  std::string::npos)
            << line;
    };
    expectWords(said({}), "z 0 of 0 to 1, each in a range of its own");
    expectWords(said({"--z", "1", "--channel", "1:1000,4000"}),
                "z 1 of 0 to 1, 1 of 2 channels, samples from 1000 to 4000");
    expectWords(said({"--range", "0,99.5"}), "z 0 of 0 to 1, samples from 0 to 99.5");
}

TEST_F(ProgramStackGLTest, KeysMoveThroughSlices) {
    std::vector<std::string> const chosen{"--channel", "0:FFFFFF:1000,4000"};
    auto const first = coloured(pages_[0], {255, 255, 255});
    auto const second = coloured(pages_[2], {255, 255, 255});
    expectPixels(after("wait\nkey PageDown\n", window(chosen)), second);
    expectPixels(after("wait\nkey PageDown\nkey PageDown\n", window(chosen)), second);
    expectPixels(after("wait\nkey PageDown\nkey PageUp\nkey PageUp\nkey .\nkey ,\n", window(chosen)), first);
}

// The field for white begins at 456, 122 in a window of 800 pixels.
TEST_F(ProgramStackGLTest, EndsOfRangesAreTyped) {
    auto const picture = [&](std::string const& text, std::string const& range) {
        auto const window =
            after("wait\n" + text, {file_, "--page", "3", "--range", range, "--size", "800x600", "--at", "60,50,1"});
        return testimages::crop(window, 340, 250, kWidth, kHeight);
    };
    auto const expected = picture("", "1000,2500");
    std::string const field = "drag 500 132 500 132\nkey Ctrl+A\n";
    expectPixels(picture(field + "type 2500\nwait\nkey Return\n", "1000,4000"), expected);
    // Letters are no commands while they are typed, and what is no range changes nothing.
    expectPixels(picture(field + "key q\ntype 900\nwait\nkey Return\n", "1000,2500"), expected);
}

// The panel's histogram begins at 456, 43 in a window of 800 pixels, and is 160 wide.
TEST_F(ProgramStackGLTest, TheEndsOfTheHistogramAreDragged) {
    auto const picture = [&](std::string const& text) {
        auto const window = after(
            "wait\n" + text, {file_, "--page", "3", "--range", "1000,4000", "--size", "800x600", "--at", "60,50,1"});
        return testimages::crop(window, 340, 250, kWidth, kHeight);
    };
    auto const before = coloured(pages_[2], {255, 255, 255});
    expectPixels(picture("drag 600 26 538 26\n"), before);
    auto const brighter = picture("drag 600 60 538 60\n");
    auto const darker = picture("drag 460 60 538 60\n");
    size_t different = 0;
    for (size_t i = 0; i < before.samples.size(); ++i) {
        ASSERT_GE(brighter.samples[i], before.samples[i]) << "white is lower";
        ASSERT_LE(darker.samples[i], before.samples[i]) << "black is higher";
        bool const isMoved = brighter.samples[i] != before.samples[i] && darker.samples[i] != before.samples[i];
        if (isMoved) ++different;
    }
    EXPECT_GT(different, before.samples.size() / 4);
}

TEST_F(ProgramStackGLTest, APageIsAPictureOfItsOwn) {
    expectPixels(rendered({"--page", "3", "--range", "1000,4000"}), [&] {
        auto grey = coloured(pages_[2], {255, 255, 255});
        testimages::Pixels one{kWidth, kHeight, 1, {}};
        for (size_t i = 0; i < grey.samples.size(); i += 3)
            one.samples.push_back(grey.samples[i]);
        return one;
    }());
    expectFailure(view({file_, "--page", "3", "--z", "1", "--screenshot", path("none.png")}), 2,
                  {"--z is 0: the picture has no others"});
}

// A window of 640 x 480 whose panel of channels ends above the part that is compared. A drag of no length is a click.
class ProgramPanelGLTest : public ProgramViewGLTest {
protected:
    void writeChannels(std::uint16_t bands, unsigned pages) const {
        std::vector<testtiff::Directory> directories;
        for (unsigned page = 0; page < pages; ++page) {
            std::vector<std::uint16_t> samples;
            for (unsigned i = 0; i < 300 * 200u * bands; ++i)
                samples.push_back(static_cast<std::uint16_t>(i * (7919 + page) % 4000));
            auto directory = testtiff::directory<std::uint16_t>(300, 200, bands, samples);
            directory.photometric = 1;
            directory.extraSamples.assign(bands - 1u, 0);
            directories.push_back(directory);
        }
        testtiff::write(path("a.tif"), directories);
    }

    static testimages::Pixels part(testimages::Pixels const& window) {
        return testimages::crop(window, 30, 230, 300, 100);
    }

    testimages::Pixels clicked(std::vector<std::array<int, 2>> const& places) const {
        std::string text = "wait\n";
        for (auto const& [x, y] : places) {
            std::string const place = " " + std::to_string(x) + " " + std::to_string(y);
            text += "drag" + place + place + "\nwait\n";
        }
        return part(after(text, {path("a.tif"), "--size", "640x480", "--range", "0,4000"}));
    }

    testimages::Pixels asked(std::vector<std::string> const& options) const {
        std::vector<std::string> arguments{path("a.tif"), "--size", "640x480", "--range", "0,4000"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return part(shown(arguments));
    }
};

TEST_F(ProgramPanelGLTest, ColourMapsAreChosenByAClick) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    writeChannels(1, 1);
    expectPixels(clicked({{365, 207}}), asked({"--colour-map", "viridis"}));
    expectPixels(clicked({{365, 207}, {598, 207}}), asked({"--colour-map", "viridis", "--invert"}));
    expectPixels(clicked({{365, 207}, {314, 207}}), asked({}));
}

TEST_F(ProgramPanelGLTest, AChannelIsShownAloneByAClickAndAllByAnother) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    writeChannels(3, 2);
    auto const all = asked({});
    expectPixels(clicked({{442, 105}}), asked({"--channel", "1"}));
    expectPixels(clicked({{442, 105}, {442, 105}}), all);
    expectPixels(clicked({{442, 105}, {442, 131}}), asked({"--channel", "2"}));
    // A channel is off; its controls are there and not; the other page.
    expectPixels(clicked({{478, 79}}), asked({"--channel", "1", "--channel", "2"}));
    expectPixels(clicked({{537, 79}, {537, 79}}), all);
    expectPixels(clicked({{580, 53}}), asked({"--z", "1"}));
}

TEST_F(ProgramPanelGLTest, AColourIsChosenAndAlphaTakenAwayByAClick) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    testimages::writePattern16(path("a.tif"), "", 300, 200, 4);
    auto const all = asked({});
    auto const withoutAlpha = asked({"--bands", "1,2,3"});
    ASSERT_NE(testimages::difference(all, withoutAlpha), "");
    expectPixels(clicked({{470, 131}}), withoutAlpha);
    // Red's square opens a choice of colours, in which black is dragged to; a click beside it closes it.
    expectPixels(part(after("wait\ndrag 542 52 542 52\nwait\ndrag 420 190 309 303\nwait\ndrag 25 300 25 300\n",
                            {path("a.tif"), "--size", "640x480", "--range", "0,4000"})),
                 asked({"--channel", "1", "--channel", "2"}));
}

TEST_F(ProgramPanelGLTest, TheTonesOfAStoreOf16BitsAreTyped) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    testimages::writePattern16(path("a.png"), "", 300, 200, 3);
    auto const seen = [&](std::string const& script, std::string const& gamma) {
        std::vector<std::string> const start{path("a.png"), "--size", "640x480", "--sharpen", "1"};
        if (!script.empty()) return part(after("wait\n" + script, start));
        auto arguments = start;
        arguments.insert(arguments.end(), {"--gamma", gamma});
        return part(shown(arguments));
    };
    std::string const white = "drag 443 52 443 52\nwait\nkey Ctrl+A\ntype 30000\nwait\nkey Return\nwait\n";
    expectPixels(seen(white, ""), seen("", "1,0,30000"));
    // The white point stays above the black one.
    std::string const black = "drag 443 27 443 27\nwait\nkey Ctrl+A\ntype 40000\nwait\nkey Return\nwait\n";
    expectPixels(seen(white + black, ""), seen("", "1,40000,40001"));
}

TEST_F(ProgramStackGLTest, WhatTheFileHoldsIsTold) {
    auto page = testtiff::directory<std::uint16_t>(kWidth, kHeight, 1, pages_.front());
    std::vector<testtiff::Directory> pages(4, page);
    pages.front().description =
        R"(<OME><Image><Pixels SizeC="2" SizeZ="2" DimensionOrder="XYCZT" PhysicalSizeX="0.5" PhysicalSizeY="0.25">)"
        R"(<Channel Name="DAPI"/><Channel Name="FITC"/></Pixels></Image></OME>)";
    testtiff::write(file_, pages);
    auto const told = runVelmora({"info", file_}, environment());
    for (std::string const line :
         {"stack                   2 channels, 2 slices, 1 time\n", "channels                DAPI, FITC\n",
          "pixel size              0.5 x 0.25 microns\n"})
        EXPECT_NE(told.out.find(line), std::string::npos) << told.out;
    auto const json = runVelmora({"info", file_, "--json"}, environment());
    for (std::string const line :
         {"\"DAPI\",\n    \"FITC\"", "\"micronsPerPixelX\": 0.5,", "\"micronsPerPixelY\": 0.25,", "\"slices\": 2,"})
        EXPECT_NE(json.out.find(line), std::string::npos) << json.out;
}

TEST_F(ProgramStackGLTest, WhatThePictureLacksIsRefused) {
    auto const refused = [&](std::vector<std::string> arguments, std::vector<std::string> const& words) {
        arguments.insert(arguments.end(), {"--screenshot", path("none.png")});
        expectFailure(view(arguments), 2, words);
    };
    refused({file_, "--z", "2"}, {"--z is 0 to 1"});
    refused({file_, "--t", "1"}, {"--t is 0"});
    refused({file_, "--channel", "2"}, {"no channel 2", "0 to 1"});
    refused({file_, "--channel", "x"}, {"--channel", "is no channel"});
    refused({file_, "--z", "-1"}, {"--z"});
    std::string const store = makeStore("a.vlm", 40, 30);
    refused({store, "--channel", "7"}, {"no channel 7"});
    refused({store, "--z", "1"}, {"a tile store", "one slice", "--z and --t"});
    refused({store, "--page", "2", "--range", "1,2"}, {"a tile store", "--page", "leave them out"});
    refused({"--curve", "log"}, {"the built-in picture", "--curve"});
    auto inks = testtiff::directory(40, 30, 4, std::vector<std::uint8_t>(40 * 30 * 4, 99));
    inks.photometric = 5;
    testtiff::write(path("inks.tif"), {inks});
    refused({path("inks.tif"), "--curve", "log"}, {"inks.tif", "cannot be shown", "--curve"});
    EXPECT_FALSE(std::filesystem::exists(path("none.png")));
    auto const drawn =
        runVelmora({"render", file_, "-o", path("none.tif"), "--bits", "16", "--channel", "0"}, environment());
    expectFailure(drawn, 2, {"--bits 16 keeps samples", "--channel"});
}

// Filters look at the samples themselves.
TEST_F(ProgramViewGLTest, TheFirstStartSaysHowToMoveUntilSomeoneDoes) {
    std::string const store = makeStore("a.vlm", 900, 700);
    std::vector<std::string> const arguments{store, "--size", "900x600"};
    auto const bottom = [](testimages::Pixels const& window) { return testimages::crop(window, 250, 540, 400, 60); };
    auto const later = bottom(after("wait\n", arguments));
    std::filesystem::remove(path("state/velmora/recent"));
    EXPECT_NE(testimages::difference(bottom(after("wait\n", arguments)), later), "");
    expectPixels(bottom(after("wait\n", arguments)), later);
    std::filesystem::remove(path("state/velmora/recent"));
    expectPixels(bottom(after("wait\nkey x\n", arguments)), later);
    std::filesystem::remove(path("state/velmora/recent"));
    auto const alone = testimages::crop(shown(arguments), 250, 540, 400, 60);
    expectPixels(alone, later);
}

TEST_F(ProgramViewGLTest, PanelsAndWhatLiesAroundThePictureAreDarkOrLight) {
    std::string const store = makeStore("a.vlm", 40, 30);
    std::vector<std::string> const arguments{store, "--size", "600x400"};
    auto const dark = after("wait\n", arguments);
    auto lightArguments = arguments;
    lightArguments.push_back("--light");
    auto const light = after("wait\n", lightArguments);
    auto const around = [](testimages::Pixels const& window) { return window.samples[3 * (600 * 150 + 3)]; };
    EXPECT_EQ(around(dark), 32);
    EXPECT_EQ(around(light), 232);
    expectPixels(after("wait\nkey l\nwait\n", arguments), light);
    expectPixels(after("wait\nkey l\nwait\nkey l\nwait\n", arguments), dark);
    // The status, upper left, of which words are a small part.
    auto const panel = [](testimages::Pixels const& window) { return window.samples[3 * (600 * 12 + 20)]; };
    EXPECT_LT(panel(dark), 64);
    EXPECT_GT(panel(light), 200);
}

// A label of one colour, that nothing else in the window has.
TEST_F(ProgramViewGLTest, ThePanelOfASlideHasItsLabel) {
    auto const page = [](std::uint32_t width, std::uint32_t height, std::array<std::uint8_t, 3> const& colour) {
        std::vector<std::uint8_t> samples;
        for (std::uint32_t i = 0; i < width * height; ++i)
            samples.insert(samples.end(), colour.begin(), colour.end());
        auto made = testtiff::directory(width, height, 3, samples);
        made.compression = COMPRESSION_LZW;
        made.description = "Aperio Image Library v1\r\n" + std::to_string(width) + "x" + std::to_string(height);
        return made;
    };
    auto full = page(300, 200, {200, 190, 210});
    full.tile = 64;
    auto label = page(60, 24, {10, 240, 30});
    label.description = "Aperio Image Library v1\nlabel 60x24 \r\n";
    testtiff::write(path("a.svs"), {full, page(30, 20, {200, 190, 210}), label});
    auto const labelled = [](testimages::Pixels const& window) {
        size_t pixels = 0;
        for (size_t i = 0; i < window.samples.size(); i += 3)
            if (window.samples[i] == 10 && window.samples[i + 1] == 240 && window.samples[i + 2] == 30) ++pixels;
        return pixels;
    };
    std::vector<std::string> const arguments{path("a.svs"), "--size", "900x600"};
    EXPECT_EQ(labelled(shown(arguments)), 0u);
    EXPECT_GT(labelled(after("wait\nkey p\n", arguments)), 1000u);
    auto const told = runVelmora({"info", path("a.svs")});
    EXPECT_NE(told.out.find("other images            label, thumbnail\n"), std::string::npos) << told.out;
    auto const json = runVelmora({"info", path("a.svs"), "--json"});
    EXPECT_NE(json.out.find("\"otherImages\": [\n    \"label\",\n    \"thumbnail\"\n  ]"), std::string::npos)
        << json.out;
    // A store has kept it.
    ASSERT_EQ(runVelmora({"import", path("a.svs"), path("a.vlm")}).exitCode, 0);
    EXPECT_GT(labelled(after("wait\nkey p\n", {path("a.vlm"), "--size", "900x600"})), 1000u);
}

TEST_F(ProgramViewGLTest, ThePixelUnderTheCursorIsCopiedAndThatIsTold) {
    std::string const store = makeStore("a.vlm", 900, 700);
    std::vector<std::string> const arguments{store, "--size", "900x600"};
    auto const bottom = [](testimages::Pixels const& window) { return testimages::crop(window, 250, 540, 400, 60); };
    auto const before = bottom(after("wait\nwheel 300 200 0\nwait\n", arguments));
    auto const copied = bottom(after("wait\nwheel 300 200 0\nkey Ctrl+C\nwait\n", arguments));
    EXPECT_NE(testimages::difference(copied, before), "");
    auto const other = bottom(after("wait\nwheel 310 220 0\nkey Ctrl+C\nwait\n", arguments));
    EXPECT_NE(testimages::difference(other, copied), "") << "another pixel";
    expectPixels(bottom(after("wait\nwheel 300 200 0\nkey Ctrl+C\nwait\nkey escape\nwait\n", arguments)), before);
}

TEST_F(ProgramViewGLTest, AFileThatIsDroppedIsOpened) {
    testimages::writePattern8(path("a.png"), "", 90, 60, 3);
    testimages::writePattern8(path("b.png"), "", 50, 70, 1);
    writeFile(path("no.png"), "no picture");
    std::vector<std::string> const start{path("a.png"), "--size", "200x100", "--bare"};
    auto const first = shown({path("a.png"), "--size", "200x100", "--bare"});
    auto const second = shown({path("b.png"), "--size", "200x100", "--bare"});
    ASSERT_NE(testimages::difference(first, second), "");
    expectPixels(after("wait\ndrop " + path("b.png") + "\n", start), second);
    expectPixels(after("wait\ndrop " + path("b.png") + "\nwait\ndrop " + path("a.png") + "\n", start), first);
    // What was asked for of the first is not for the second.
    std::vector<std::string> const part{path("a.png"), "--size", "200x100", "--bare", "--bands", "2", "--at", "9,9,3"};
    expectPixels(after("wait\ndrop " + path("b.png") + "\n", part), second);
    // So is what is left out of the next one.
    std::vector<testtiff::Directory> pages;
    for (std::uint32_t const side : {70u, 30u}) {
        pages.push_back(testtiff::directory<std::uint8_t>(side, side, 1, std::vector<std::uint8_t>(side * side, 99)));
        pages.back().photometric = PHOTOMETRIC_MINISBLACK;
    }
    testtiff::write(path("two.tif"), pages);
    auto telling = start;
    telling.insert(telling.end(), {"--script", script("wait\ndrop " + path("two.tif") + "\nwait\nquit\n")});
    auto const told = view(telling);
    EXPECT_EQ(told.exitCode, 0) << told.err;
    EXPECT_NE(told.err.find("two.tif' holds 2 pages"), std::string::npos) << told.err;
    EXPECT_NE(testimages::difference(after("wait\ndrop " + path("no.png") + "\n", {path("a.png"), "--size", "640x480"}),
                                     shown({path("a.png"), "--size", "640x480"})),
              "")
        << "the message in the window";
    // What cannot be opened leaves the picture, and is told.
    for (std::string const& wrong : std::vector<std::string>{path("no.png"), path("nothing.png"), path("")}) {
        auto arguments = start;
        arguments.insert(arguments.end(),
                         {"--force", "--script",
                          script("wait\ndrop " + wrong + "\nwait\nscreenshot " + path("shown.png") + "\nquit\n")});
        auto const result = view(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err.rfind("velmora: cannot ", 0), 0u) << result.err;
        expectPixels(testimages::readByVips(path("shown.png")), first);
    }
}

TEST_F(ProgramViewGLTest, AnnotationsAreDrawnOverThePicture) {
    std::string const store = makeStore("a.vlm", 640, 480);
    // A green area whose outline runs along the middle of the window.
    writeFile(
        path("a.geojson"),
        R"({"type":"Feature","geometry":{"type":"Polygon","coordinates":[[[320,100],[600,100],[600,400],[320,400]]]},)"
        R"("properties":{"name":"Area","color":[0,255,0]}})");
    std::vector<std::string> const plain{store, "--size", "640x480"};
    std::vector<std::string> annotated = plain;
    annotated.insert(annotated.end(), {"--annotations", path("a.geojson")});
    testimages::Pixels const with = shown(annotated);
    auto const sampleAt = [&](size_t x, size_t y, size_t band) {
        return with.samples.at((y * with.width + x) * 3 + band);
    };
    for (size_t y = 110; y < 390; ++y)
        for (size_t const x : {319U, 320U}) {
            EXPECT_EQ(sampleAt(x, y, 0), 0) << x << "," << y;
            EXPECT_EQ(sampleAt(x, y, 1), 255) << x << "," << y;
        }
    // The same where they are dropped on the window; and nothing of them where they are switched off.
    std::string const drop = "wait\ndrop " + path("a.geojson") + "\nwait\n";
    expectPixels(after(drop, plain), with);
    testimages::Pixels const off = after(drop + "key a\n", plain);
    EXPECT_NE(testimages::difference(off, with), "");
    expectPixels(after(drop + "key a\nwait\nkey a\n", plain), with);
    // Another picture has none.
    testimages::writePattern8(path("b.png"), "", 300, 200, 3);
    expectPixels(after(drop + "drop " + path("b.png") + "\n", plain), shown({path("b.png"), "--size", "640x480"}));
}

TEST_F(ProgramViewGLTest, AnnotationsThatCannotBeReadAreTold) {
    std::string const store = makeStore("a.vlm", 640, 480);
    writeFile(path("bad.geojson"), R"({"type":"Feature","geometry":{"type":"Point","coordinates":[1]}})");
    writeFile(path("nowhere.geojson"), R"({"type":"Feature","geometry":null})");
    std::vector<std::string> const plain{store, "--size", "640x480"};
    expectFailure(view({store, "--annotations", path("bad.geojson"), "--screenshot", path("b.png")}), 4,
                  {"bad.geojson", "feature 1: a position is no pair of numbers"});
    EXPECT_FALSE(std::filesystem::exists(path("b.png")));
    expectFailure(view({store, "--annotations", path("none.geojson")}), 3, {"none.geojson"});
    expectFailure(view({store, "--annotations", path("bad.geojson"), "--bare"}), 2, {"--bare", "--annotations"});
    EXPECT_NE(testimages::difference(after("wait\ndrop " + path("bad.geojson") + "\n", plain), shown(plain)), "")
        << "the message in the window";
    auto const told =
        view({store, "--annotations", path("nowhere.geojson"), "--screenshot", path("c.png"), "--size", "640x480"});
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_NE(told.err.find("note: 'nowhere.geojson' has 1 feature without a geometry"), std::string::npos) << told.err;
}

TEST_F(ProgramViewGLTest, WhatCannotBeImportedLeavesThePictureBefore) {
    testimages::writePattern8(path("a.png"), "", 90, 60, 3);
    testimages::writePattern16(path("b.png"), "", 90, 60, 3);
    testimages::writePattern16(path("c.png"), "", 90, 60, 3);
    std::string const whole = readFile(path("c.png"));
    writeFile(path("c.png"), whole.substr(0, whole.size() - 200));
    // Filters look at the 16 bits themselves, in a store.
    std::vector<std::string> const start{path("a.png"), "--size", "200x100", "--bare", "--sharpen", "1"};
    auto const first = shown(start);
    auto const second = shown({path("b.png"), "--size", "200x100", "--bare", "--sharpen", "1"});
    std::filesystem::remove_all(path("cache"));
    expectPixels(after("wait\ndrop " + path("b.png") + "\n", start), second);
    EXPECT_EQ(cached().size(), 1u);
    auto arguments = start;
    arguments.insert(arguments.end(),
                     {"--force", "--script",
                      script("wait\ndrop " + path("c.png") + "\nwait\nscreenshot " + path("shown.png") + "\nquit\n")});
    auto const result = view(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_NE(result.err.find("cannot read '" + path("c.png")), std::string::npos) << result.err;
    expectPixels(testimages::readByVips(path("shown.png")), first);
    EXPECT_EQ(cached().size(), 1u);
}

TEST_F(ProgramViewGLTest, APathThatIsTypedIsOpened) {
    testimages::writePattern8(path("a.png"), "", 200, 100, 3);
    testimages::writePattern8(path("b.png"), "", 200, 100, 1);
    auto const middle = [](testimages::Pixels const& pixels) { return testimages::crop(pixels, 90, 30, 40, 40); };
    std::string const open = "wait\nkey o\nwait\n";
    std::string typed = "key Ctrl+A\n";
    std::string const name = path("b.png");
    for (size_t i = 0; i < name.size(); i += 20)
        typed += "type " + name.substr(i, 20) + "\nwait\n";
    std::vector<std::string> const start{path("a.png"), "--size", "200x100"};
    auto const opened = after(open + typed + "key Return\n", start);
    expectPixels(middle(opened), middle(shown({path("b.png"), "--size", "200x100"})));
    // What is cut out of the field can be put back.
    expectPixels(middle(after(open + typed + "key Ctrl+A\nkey Ctrl+X\nwait\nkey Ctrl+V\nwait\nkey Return\n", start)),
                 middle(opened));
    // Escape closes the panel, and then the window; a key is a letter in the field.
    auto const before = shown(start);
    expectPixels(middle(after(open + "key q\nwait\nkey Escape\n", start)), middle(before));
    EXPECT_NE(testimages::difference(middle(after(open, start)), middle(before)), "");
    EXPECT_EQ(readFile(path("state/velmora/recent")), path("a.png") + "\n" + path("b.png") + "\n");
}

TEST_F(ProgramViewGLTest, AFolderThatIsTypedIsEntered) {
    std::filesystem::create_directory(path("in"));
    testimages::writePattern8(path("a.png"), "", 200, 100, 3);
    testimages::writePattern8(path("in/b.png"), "", 200, 100, 1);
    std::string script = "wait\nkey o\nwait\nkey Ctrl+A\n";
    std::string const folder = path("in");
    for (size_t i = 0; i < folder.size(); i += 20)
        script += "type " + folder.substr(i, 20) + "\nwait\n";
    // Below the picture that was opened last, the path and "../".
    script += "key Return\nwait\ndrag 124 176 124 176\nwait\n";
    expectPixels(testimages::crop(after(script, {path("a.png"), "--size", "640x480"}), 200, 100, 100, 100),
                 testimages::crop(shown({path("in/b.png"), "--size", "640x480"}), 200, 100, 100, 100));
}

TEST_F(ProgramViewGLTest, EscapeLeavesWhatIsOpenAndThenTheWindow) {
    testimages::writePattern8(path("a.png"), "", 90, 60, 3);
    std::string const text = "wait\nkey o\nwait\nkey Escape\nwait\nscreenshot " + path("open.png") +
                             "\nkey Escape\nwait\nscreenshot " + path("left.png") + "\n";
    auto const result = view({path("a.png"), "--size", "640x480", "--script", script(text)});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(std::filesystem::exists(path("open.png")));
    EXPECT_FALSE(std::filesystem::exists(path("left.png")));
}

TEST_F(ProgramViewGLTest, ASmallWindowShowsThePictureAndNoPanels) {
    testimages::writePattern8(path("a.png"), "", 900, 700, 3);
    for (std::string const size : {"320x240", "479x500", "700x359"})
        expectPixels(shown({path("a.png"), "--size", size}), shown({path("a.png"), "--size", size, "--bare"}));
    EXPECT_NE(testimages::difference(shown({path("a.png"), "--size", "480x360"}),
                                     shown({path("a.png"), "--size", "480x360", "--bare"})),
              "");
    // What is asked for is shown.
    EXPECT_NE(testimages::difference(after("wait\nkey ?\n", {path("a.png"), "--size", "320x240"}),
                                     shown({path("a.png"), "--size", "320x240", "--bare"})),
              "");
}

// Letters that are missing would all be the same box.
TEST_F(ProgramViewGLTest, NamesAreShownInTheirScript) {
    testimages::writePattern8(path("a.png"), "", 90, 60, 3);
    std::vector<testimages::Pixels> names;
    for (std::string const name :
         {"\u03b1\u03b2\u03b3", "\u03c8\u03c9\u03c7", "\u0436\u044f\u0444", "\u00e4\u00f6\u00fc"}) {
        std::filesystem::copy_file(path("a.png"), path(name + ".png"));
        names.push_back(testimages::crop(shown({path(name + ".png"), "--size", "600x400"}), 8, 8, 60, 24));
        for (size_t other = 0; other + 1 < names.size(); ++other)
            EXPECT_NE(testimages::difference(names.back(), names[other]), "") << name << " and " << other;
    }
    // Opened in a window that had other letters.
    auto const opened =
        after("wait\ndrop " + path("\u03b1\u03b2\u03b3.png") + "\n", {path("a.png"), "--size", "600x400"});
    expectPixels(testimages::crop(opened, 8, 8, 60, 24), names.front());
}

// DejaVu Sans has none of them: they would all be the same sign.
TEST_F(ProgramViewGLTest, LettersThatThePanelsFontLacksAreTheSystems) {
    std::vector<testimages::Pixels> names;
    for (std::string const name : {"\u0915\u0916.png", "\u0917\u0918.png"}) {
        testimages::writePattern8(path(name), "", 90, 60, 3);
        names.push_back(testimages::crop(shown({path(name), "--size", "600x400"}), 8, 8, 60, 24));
    }
    EXPECT_NE(testimages::difference(names[0], names[1]), "");
    // Where there are no fonts, other signs stand for them.
    auto bare = environment();
    bare["FONTCONFIG_FILE"] = path("fonts.conf");
    writeFile(path("fonts.conf"), "<?xml version=\"1.0\"?><fontconfig></fontconfig>");
    std::vector<testimages::Pixels> signs;
    for (std::string const name : {"\u0915\u0916.png", "\u0917\u0918.png"}) {
        auto const result =
            runVelmora({"view", path(name), "--size", "600x400", "--screenshot", path("shown.png"), "--force"}, bare);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        signs.push_back(testimages::crop(testimages::readByVips(path("shown.png")), 8, 8, 60, 24));
    }
    EXPECT_EQ(testimages::difference(signs[0], signs[1]), "");
    EXPECT_NE(testimages::difference(signs[0], names[0]), "");
}

TEST_F(ProgramViewGLTest, WhatTheFileSaysIsShown) {
    auto directory = testtiff::directory(120, 80, 1, std::vector<std::uint8_t>(9600, 9));
    std::vector<testimages::Pixels> panels;
    for (std::string const text : {"", "a cell", "\u03b1 cell"}) {
        directory.description = text;
        testtiff::write(path("a.tif"), {directory});
        panels.push_back(
            testimages::crop(after("wait\nkey p\n", {path("a.tif"), "--size", "600x400"}), 8, 120, 250, 160));
        for (size_t other = 0; other + 1 < panels.size(); ++other)
            EXPECT_NE(testimages::difference(panels.back(), panels[other]), "") << text;
    }
    auto const away = after("wait\nkey p\nkey p\n", {path("a.tif"), "--size", "600x400"});
    expectPixels(away, shown({path("a.tif"), "--size", "600x400"}));
}

TEST_F(ProgramViewGLTest, TheViewIsSavedUnderANameThatIsFree) {
    testimages::writePattern8(path("a.png"), "", 400, 300, 3);
    std::filesystem::path const before = std::filesystem::current_path();
    std::filesystem::create_directory(path("here"));
    std::filesystem::current_path(path("here"));
    auto const result = view({path("a.png"), "--size", "200x100", "--at", "200,150,1", "--script",
                              script("wait\nkey s\nkey Ctrl+S\nwait\nquit\n")});
    std::filesystem::permissions(path("here"), std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    std::filesystem::current_path(before);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    auto const expected = shown({path("a.png"), "--size", "200x100", "--at", "200,150,1", "--bare"});
    expectPixels(testimages::readByVips(path("here/a-view.png")), expected);
    expectPixels(testimages::readByVips(path("here/a-view-2.png")), expected);
    std::filesystem::permissions(path("here"), std::filesystem::perms::owner_all);
}

TEST_F(ProgramViewGLTest, ARulerIsDrawnAndMovesNothing) {
    testimages::writePattern8(path("a.png"), "", 400, 300, 3);
    std::vector<std::string> const start{path("a.png"), "--size", "800x600", "--at", "200,150,1"};
    auto const before = shown(start);
    auto const corner = [](testimages::Pixels const& pixels) { return testimages::crop(pixels, 420, 200, 60, 60); };
    auto const line = [](testimages::Pixels const& pixels) { return testimages::crop(pixels, 310, 230, 40, 40); };
    auto const measured = after("wait\nkey r\ndrag 300 250 360 250\n", start);
    expectPixels(corner(measured), corner(before));
    EXPECT_NE(testimages::difference(line(measured), line(before)), "");
    auto const away = after("wait\nkey r\ndrag 300 250 360 250\nkey r\n", start);
    expectPixels(line(away), line(before));
    auto const moved = after("wait\nkey r\nkey r\ndrag 300 250 360 250\n", start);
    EXPECT_NE(testimages::difference(corner(moved), corner(before)), "");
}

TEST_F(ProgramViewGLTest, AnImageOfSixteenBitsIsImportedOnceForFilters) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    testimages::writePattern16(path("a.png"), "", 400, 300, 3);
    std::vector<std::string> const arguments{path("a.png"), "--bare",    "--size",     "200x100",
                                             "--at",        "200,150,1", "--truncate", "0"};
    auto const wanted = testimages::crop(testimages::pattern16UpperBytes(400, 300, 3), 100, 100, 200, 100);
    expectPixels(shown(arguments), wanted);
    ASSERT_EQ(cached().size(), 1u);
    std::string const store = path("cache/velmora/" + cached().front());
    EXPECT_EQ(TileStore(store).info().sourceName, "a.png");
    std::filesystem::create_hard_link(store, path("same.vlm"));
    expectPixels(shown(arguments), wanted);
    EXPECT_TRUE(std::filesystem::equivalent(store, path("same.vlm")));
    // What is there under the name and cannot be read is made again.
    truncateFile(store, 10);
    expectPixels(shown(arguments), wanted);
    EXPECT_EQ(cached().size(), 1u);
    // The image is another one now.
    testimages::writePattern16(path("a.png"), "", 500, 300, 3);
    shown(arguments);
    EXPECT_EQ(cached().size(), 2u);
    // A small cache has room for what is shown alone.
    auto small = arguments;
    small.insert(small.end(), {"--bands", "1", "--cache-size", "1kB"});
    small.insert(small.end(), {"--screenshot", path("shown.png"), "--force"});
    auto const result = view(small);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find("more than --cache-size 1.0 kB"), std::string::npos) << result.err;
    EXPECT_EQ(cached().size(), 1u);
}

TEST_F(ProgramViewGLTest, WithoutThreadsAnImageIsImportedAndShownAllTheSame) {
    testimages::writePattern8(path("8.png"), "", 400, 300, 3);
    testimages::writePattern16(path("16.png"), "", 400, 300, 3);
    auto withoutThreads = environment();
    withoutThreads["LD_PRELOAD"] = VELMORA_NO_THREADS;
    for (std::string const name : {"8.png", "16.png"}) {
        std::vector<std::string> arguments{"view", path(name),  "--bare",       "--size",          "200x100",
                                           "--at", "200,150,1", "--screenshot", path("shown.png"), "--force"};
        if (name == "16.png") arguments.insert(arguments.end(), {"--truncate", "0"});
        auto const result = runVelmora(arguments, withoutThreads);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        auto const whole =
            name == "8.png" ? testimages::pattern8(400, 300, 3) : testimages::pattern16UpperBytes(400, 300, 3);
        expectPixels(testimages::readByVips(path("shown.png")), testimages::crop(whole, 100, 100, 200, 100));
    }
}

TEST_F(ProgramViewGLTest, BandsOfAnImageAreShown) {
    testimages::writePattern8(path("a.tif"), "", 40, 30, 3);
    auto const pattern = testimages::pattern8(40, 30, 3);
    auto const wanted = [&](size_t red, size_t green, size_t blue) {
        testimages::Pixels swapped = pattern;
        for (size_t i = 0; i < swapped.samples.size(); ++i)
            swapped.samples[i] = pattern.samples[i / 3 * 3 + (i % 3 == 0 ? red : i % 3 == 1 ? green : blue)];
        return swapped;
    };
    std::vector<std::string> const arguments{path("a.tif"), "--bare", "--size", "40x30", "--at", "20,15,1"};
    auto const with = [&](std::string const& bands) {
        auto all = arguments;
        all.insert(all.end(), {"--bands", bands});
        return all;
    };
    expectPixels(shown(arguments), pattern);
    expectPixels(shown(with("3,1,2")), wanted(2, 0, 1));
    expectPixels(shown(with("2,2,2")), wanted(1, 1, 1));
    expectPixels(shown(with("3,1,2")), wanted(2, 0, 1));
}

// The built-in picture takes seconds. It is photographed until there is something of it to be seen.
TEST_F(ProgramViewGLTest, APictureThatIsBeingImportedIsSeen) {
    std::string text;
    for (int i = 0; i < 600; ++i)
        text += "sleep 100\nscreenshot " + path("growing.png") + "\n";
    Process process({"view", "--size", "300x300", "--bare", "--force", "--script", script(text)}, environment());
    bool seen = false;
    while (process.running() && !seen) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        if (!std::filesystem::exists(path("growing.png"))) continue;
        auto const window = testimages::readByVips(path("growing.png"));
        // In the middle, near the upper end.
        seen = window.samples[(6 * 300 + 150) * 3] != kBackground;
    }
    EXPECT_TRUE(seen);
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().exitCode, 130);
}

// Keys move it to the left until its right end is in the middle of the window, where it stays when the store is there.
TEST_F(ProgramViewGLTest, APictureThatIsBeingImportedIsMoved) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    testimages::writePattern16(path("a.tif"), "", 4000, 3000, 3);
    std::string text;
    for (int i = 0; i < 2000; ++i)
        text += "sleep 15\nkey right\nscreenshot " + path("moved.png") + "\n";
    Process process({"view", path("a.tif"), "--truncate", "0", "--jobs", "1", "--size", "300x300", "--bare", "--force",
                     "--script", script(text + "quit\n")},
                    environment());
    bool isMoved = false;
    bool isBack = false;
    std::filesystem::file_time_type seen;
    auto const isImported = [this] {
        auto const names = cached();
        return std::any_of(names.begin(), names.end(),
                           [](std::string const& name) { return std::filesystem::path(name).extension() == ".vlm"; });
    };
    // Some of ten pixels beside one another.
    auto const isPicture = [](testimages::Pixels const& window, size_t x) {
        auto const first = window.samples.begin() + static_cast<std::ptrdiff_t>((70 * 300 + x) * 3);
        return std::any_of(first, first + 30, [](std::uint8_t sample) { return sample != kBackground; });
    };
    while (process.running() && !isImported()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        std::error_code missing;
        auto const written = std::filesystem::last_write_time(path("moved.png"), missing);
        if (missing || written == seen) continue;
        seen = written;
        auto const window = testimages::readByVips(path("moved.png"));
        bool const isAtItsEnd = isPicture(window, 30) && !isPicture(window, 200);
        isMoved = isMoved || (isAtItsEnd && !isImported());
        isBack = isBack || (isMoved && isPicture(window, 200));
    }
    EXPECT_TRUE(isMoved);
    EXPECT_FALSE(isBack);
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_FALSE(isPicture(testimages::readByVips(path("moved.png")), 200)) << "with the store";
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().exitCode, 130);
}

TEST_F(ProgramViewGLTest, AWindowThatIsClosedStopsItsImport) {
    auto const result = view({"--size", "300x300", "--script", script("sleep 300\nkey q\n")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_TRUE(std::filesystem::exists(path("cache/velmora")));
    EXPECT_TRUE(cached().empty());
}

TEST_F(ProgramViewGLTest, AnInterruptedImportLeavesNothing) {
    Process process({"view", "--size", "300x300"}, environment());
    while (process.running() && cached().empty())
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    process.signal(SIGINT);
    expectFailure(process.wait(), 130, {"interrupted"});
    EXPECT_TRUE(cached().empty());
}

TEST_F(ProgramViewGLTest, AMinimisedWindowDrawsNothingAndComesBack) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    std::string const store = makeStore("a.vlm", 700, 500);
    std::vector<std::string> const arguments{store, "--bare", "--size", "320x200", "--at", "350,250,1"};
    expectPixels(after("wait\nminimise\nsleep 50\nkey right\nrestore\n", arguments), expected(230, 150, 320, 200));
    expectFailure(view({store, "--script", script("minimise\nsleep 20\nscreenshot " + path("b.png"))}), 2,
                  {"minimised"});
    EXPECT_FALSE(std::filesystem::exists(path("b.png")));
}

TEST_F(ProgramViewGLTest, WaitingForAMinimisedWindowEnds) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    std::string const store = makeStore("a.vlm", 700, 500);
    std::vector<std::string> const arguments{store, "--bare", "--size", "320x200", "--at", "350,250,1"};
    expectPixels(after("minimise\nwait\nwait\nrestore\n", arguments), expected(190, 150, 320, 200));
    // An import goes on unseen.
    testimages::writePattern16(path("a.png"), "", 400, 300, 3);
    expectPixels(after("minimise\nwait\nrestore\n",
                       {path("a.png"), "--bare", "--size", "200x100", "--at", "200,150,1", "--truncate", "0"}),
                 testimages::crop(testimages::pattern16UpperBytes(400, 300, 3), 100, 100, 200, 100));
}

TEST_F(ProgramViewGLTest, NothingIsDrawnWhereNothingChanges) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    std::string const store = makeStore("a.vlm", 700, 500);
    for (std::string const pause : {"sleep 1500\n", "minimise\nsleep 1500\nrestore\n"}) {
        auto const result =
            view({store, "--size", "320x200", "--report", "--script", script("wait\n" + pause + "quit")});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        size_t const frames = numberAfter(result.out, "frames drawn");
        EXPECT_GE(frames, 1u) << result.out;
        EXPECT_LE(frames, 40u) << result.out;
    }
}

TEST_F(ProgramViewGLTest, TheReportSaysWhatWasMeasured) {
    std::string const store = makeStore("a.vlm", 700, 500);
    auto const result = view({store, "--size", "320x200", "--report", "--script", script("wait\nquit\n")});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    for (std::string const name : {"first picture", "full detail", "largest resident memory"})
        EXPECT_GT(numberAfter(result.out, name), 0u) << result.out;
}

TEST_F(ProgramViewGLTest, ADamagedStoreIsShownWithStripesAndAScreenshotOfThemIsNoSuccess) {
    std::string const store = makeStore("a.vlm", 1300, 700);
    sqlite::Database(store, sqlite::Database::Mode::ReadWrite)
        .execute("UPDATE tiles SET crc = crc + 1 WHERE id = (SELECT min(id) FROM tiles WHERE data IS NOT NULL)");
    // The finest tile in the upper left corner: that of 512 x 512 pixels.
    auto const striped =
        view({store, "--bare", "--size", "100x80", "--at", "100,100,1", "--screenshot", path("a.png")});
    EXPECT_EQ(striped.exitCode, 10);
    EXPECT_EQ(std::count(striped.err.begin(), striped.err.end(), '\n'), 2) << striped.err;
    EXPECT_NE(striped.err.find("does not match its checksum"), std::string::npos) << striped.err;
    EXPECT_NE(striped.err.find("striped"), std::string::npos) << striped.err;
    EXPECT_NE(striped.err.find("a.png' has stripes"), std::string::npos) << striped.err;
    auto const window = testimages::readByVips(path("a.png"));
    for (size_t i = 0; i < window.samples.size(); i += 3) {
        ASSERT_EQ(window.samples[i], window.samples[i + 2]);
        ASSERT_TRUE(window.samples[i] == 0 || window.samples[i] == 255);
        ASSERT_EQ(window.samples[i + 1], 0);
    }
    // Elsewhere it is as it should be.
    expectPixels(shown({store, "--bare", "--size", "200x100", "--at", "900,600,1"}), expected(800, 550, 200, 100));
    // Who only looks is told once, and goes on.
    auto const looked = view({store, "--size", "300x200", "--at", "100,100,1", "--script",
                              script("wait\nkey e\nwait\nkey -\nwait\nkey m\nwait\nquit\n")});
    EXPECT_EQ(looked.exitCode, 0) << looked.err;
    EXPECT_EQ(std::count(looked.err.begin(), looked.err.end(), '\n'), 1) << looked.err;
    expectFailure(runVelmora({"render", store, "-o", path("b.png")}), 10, {"does not match its checksum"});
    EXPECT_FALSE(std::filesystem::exists(path("b.png")));
}

TEST_F(ProgramViewGLTest, NoOtherFileIsWritten) {
    std::string const store = makeStore("a.vlm", 70, 50);
    shown({store});
    EXPECT_FALSE(std::filesystem::exists("imgui.ini"));
    EXPECT_TRUE(cached().empty()) << "and none of a store";
}

TEST_F(ProgramViewGLTest, AScreenshotReplacesFilesOnlyByForceAndNeverTheInput) {
    std::string const store = makeStore("a.vlm", 70, 50);
    writeFile(path("b.png"), "mine");
    expectFailure(view({store, "--screenshot", path("b.png")}), 6, {"b.png", "exists already", "--force"});
    expectFailure(view({store, "--script", script("screenshot " + path("b.png"))}), 6, {"b.png", "exists already"});
    EXPECT_EQ(readFile(path("b.png")), "mine");
    EXPECT_EQ(view({store, "--screenshot", path("b.png"), "--force"}).exitCode, 0);
    EXPECT_EQ(testimages::readByVips(path("b.png")).width, 1280u);

    testimages::writePattern8(path("c.png"), "", 40, 30, 3);
    std::filesystem::create_symlink("c.png", path("link.png"));
    std::string const before = readFile(path("c.png"));
    for (std::string const name : {"c.png", "link.png"}) {
        expectFailure(view({path("c.png"), "--screenshot", path(name), "--force"}), 6, {"it is the input itself"});
        expectFailure(view({path("c.png"), "--force", "--script", script("screenshot " + path(name))}), 6,
                      {"it is the input itself"});
    }
    EXPECT_EQ(readFile(path("c.png")), before);
    EXPECT_TRUE(cached().empty()) << "refused before anything is done";
}

TEST_F(ProgramViewGLTest, AScreenshotIsAPngFile) {
    std::string const store = makeStore("a.vlm", 70, 50);
    for (std::string const name : {"b.tif", "b.jpg", "b"}) {
        expectFailure(view({store, "--screenshot", path(name)}), 2, {name, ".png"});
        expectFailure(view({store, "--script", script("screenshot " + path(name))}), 2, {name, ".png"});
        EXPECT_FALSE(std::filesystem::exists(path(name)));
    }
    expectFailure(view({store, "--screenshot", "/dev/null"}), 6, {"it is a device"});
}

TEST_F(ProgramViewGLTest, AScreenshotIsAsPrivateAsThePicture) {
    std::string const store = makeStore("a.vlm", 70, 50);
    std::filesystem::permissions(store, std::filesystem::perms(0600));
    EXPECT_EQ(view({store, "--screenshot", path("b.png")}).exitCode, 0);
    EXPECT_EQ(std::filesystem::status(path("b.png")).permissions(), std::filesystem::perms(0600));
}

TEST_F(ProgramViewGLTest, EveryFailureHasItsExitCode) {
    std::string const store = makeStore("a.vlm", 70, 50);
    writeFile(path("text.txt"), "no picture");
    expectFailure(view({path("none.tif")}), 3, {"none.tif"});
    expectFailure(view({store, "--script", path("none.txt")}), 3, {"none.txt"});
    expectFailure(view({path("text.txt")}), 4, {"text.txt"});
    expectFailure(view({store, "--screenshot", path("none/a.png")}), 6, {"none/a.png"});
    expectFailure(view({store, "--script", script("dance")}), 2, {"line 1", "dance"});
    for (std::vector<std::string> const& wrong : std::vector<std::vector<std::string>>{{"--size", "100"},
                                                                                       {"--size", "0x5"},
                                                                                       {"--size", "5x5x5"},
                                                                                       {"--size", "99999x5"},
                                                                                       {"--at", "1,2"},
                                                                                       {"--at", "1,2,0"},
                                                                                       {"--at", "1,2,nan"},
                                                                                       {"--memory", "0"},
                                                                                       {"--gpu-memory", "x"},
                                                                                       {"--jobs", "0"},
                                                                                       {"--gamma", "1"}})
        expectFailure(view(wrong), 2, {wrong.front()});
    truncateFile(store, 60);
    EXPECT_NE(view({store, "--screenshot", path("b.png")}).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(path("b.png")));
}

// Drivers address gigabytes, whatever is shown.
TEST_F(ProgramViewGLTest, FilesThatAreMadeToHoldItUpAreDamageAtOnce) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    for (auto const& hostile : hostilestores::all()) {
        SCOPED_TRACE(hostile.name);
        std::filesystem::remove(path("a.vlm"));
        hostile.make(path("a.vlm"));
        auto const result = runRestricted({"view", path("a.vlm"), "--screenshot", path("b.png")}, environment(),
                                          8'000'000'000, std::chrono::seconds(30));
        expectFailure(result, 10, {"is damaged"});
    }
    EXPECT_FALSE(std::filesystem::exists(path("b.png")));
}

TEST(ProgramViewErrorsGLTest, WithoutADisplayRenderIsNamed) {
    // Without a choice SDL would take to a window that nobody sees, or, where it can, to the console.
    std::vector<std::string> drivers{"x11"};
    if (!std::filesystem::exists("/dev/dri")) drivers.emplace_back("");
    for (std::string const& driver : drivers) {
        auto const result =
            runVelmora({"view"}, {{"SDL_VIDEODRIVER", driver}, {"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}});
        EXPECT_EQ(result.exitCode, 13) << result.err;
        EXPECT_EQ(result.err.rfind("velmora: no display", 0), 0u) << result.err;
        EXPECT_NE(result.err.find("velmora render"), std::string::npos) << result.err;
    }
}

TEST(ProgramViewErrorsGLTest, WithoutAContextTheDriverIsNamed) {
    if (!runsOn("ANGLE")) GTEST_SKIP() << "there is one here";
    auto const result = runVelmora({"view"}, {{"SDL_VIDEODRIVER", "offscreen"}});
    EXPECT_EQ(result.exitCode, 7) << result.err;
    EXPECT_NE(result.err.find("no OpenGL ES 3 context for a window"), std::string::npos) << result.err;
}
