// What the program takes from image files, what it refuses and with which line. Nothing here needs GL: pictures are
// imported, and refusals come before there is a context or a window.
#include "host/store/TileStore.h"
#include "tests/apps/velmora/Process.h"
#include "tests/host/image/RawTiff.h"
#include "tests/host/image/TestTiff.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"
#include "tests/support/reading/FileSamples.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <limits>
#include <numeric>

using testtiff::Directory;
using testtiff::directory;

namespace {

using Arguments = std::vector<std::string>;

class ProgramImageTest : public testing::Test {
protected:
    std::string path(std::string const& name) const { return folder_.path(name); }

    // Expects the line alone, and no file made.
    void expectFailure(Arguments const& arguments, int exitCode, std::string const& line,
                       Process::Environment const& environment = {}) const {
        std::vector<std::string> const before = folder_.names();
        auto const result = runVelmora(arguments, environment);
        EXPECT_EQ(result.exitCode, exitCode) << result.err;
        EXPECT_EQ(result.err, "velmora: " + line + "\n");
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(folder_.names(), before);
    }

    // What is shown as it is, and a store or a filter would change: those are refused, the viewer fails for want of a
    // window.
    void expectShownAlone(std::string const& image, std::string const& line) const {
        expectFailure({"import", image, path("new.vlm")}, 4, line);
        expectFailure({"render", image, "-o", path("new.png"), "--sharpen", "1"}, 4, line);
        auto const result = runVelmora({"view", image}, {{"XDG_CACHE_HOME", path("cache")}});
        EXPECT_EQ(result.exitCode, 13) << result.err;
        EXPECT_EQ(result.err.rfind("velmora: no display", 0), 0u) << result.err;
    }

    // The same for each of the three commands that take an image; COMMAND in the line stands for its name.
    void expectRefused(std::string const& image, Arguments const& options, int exitCode,
                       std::string const& line) const {
        auto const with = [&](Arguments command) {
            command.insert(command.end(), options.begin(), options.end());
            return command;
        };
        auto const lineOf = [&](std::string const& command) {
            size_t const place = line.find("COMMAND");
            return place == std::string::npos ? line : line.substr(0, place) + command + line.substr(place + 7);
        };
        expectFailure(with({"import", image, path("new.vlm")}), exitCode, lineOf("import"));
        expectFailure(with({"render", image, "-o", path("new.png")}), exitCode, lineOf("render"));
        expectFailure(with({"view", image}), exitCode, lineOf("view"), {{"XDG_CACHE_HOME", path("cache")}});
    }

    // The import's messages, and the store's samples.
    std::string import(std::string const& image, Arguments const& options, std::string const& told = "") const {
        Arguments arguments{"import", image, store_, "--force"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        auto const result = runVelmora(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(result.err, told);
        return result.out;
    }

    filesamples::Samples exported() const {
        std::filesystem::remove(path("out.tif"));
        auto const result = runVelmora({"export", store_, path("out.tif")});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        return filesamples::read(path("out.tif"));
    }

    // The line of `velmora info` and its JSON entry.
    void expectTaken(std::string const& selection, double low, double high) const {
        auto const info = runVelmora({"info", store_});
        EXPECT_NE(info.out.find("\ntaken of it             " +
                                (selection.empty() ? "all, sample for sample" : selection) + "\n"),
                  std::string::npos)
            << info.out;
        auto const json = nlohmann::json::parse(runVelmora({"info", store_, "--json"}).out);
        EXPECT_EQ(json.at("selection"), selection);
        EXPECT_EQ(json.at("rangeLow"), low);
        EXPECT_EQ(json.at("rangeHigh"), high);
        StoreInfo const store = TileStore(store_).info();
        EXPECT_EQ(store.selection, selection);
        EXPECT_EQ(store.rangeLow, low);
        EXPECT_EQ(store.rangeHigh, high);
    }

    void expectStored(filesamples::Samples const& expected) const {
        EXPECT_EQ(filesamples::difference(exported(), expected), "");
    }

    std::string tiff(std::vector<Directory> const& directories) const {
        testtiff::write(path("a.tif"), directories);
        return path("a.tif");
    }

    static Directory floats() { return directory(3, 2, 1, std::vector<float>{-3.5f, 0, 17, 124172, 1, 0.5f}); }

    static Directory grey(unsigned start) {
        std::vector<std::uint8_t> samples(64);
        std::iota(samples.begin(), samples.end(), static_cast<std::uint8_t>(start));
        return directory(8, 8, 1, samples);
    }

    TemporaryFolder folder_;
    std::string store_ = path("a.vlm");
};

} // namespace

TEST_F(ProgramImageTest, OtherSamplesThanTheStoresAreTakenByRange) {
    std::string const image = tiff({floats()});
    expectShownAlone(image,
                     "'" + image +
                         "' holds 32-bit float samples from -3.5 to 124172; unsigned samples of 8 or 16 bits are kept: "
                         "choose --range "
                         "LO,HI or --range auto");
    filesamples::Samples const own = filesamples::read(image);
    std::string const all = "samples -3.5 to 124172 of 32-bit float as 0 to 65535";
    std::string const said = import(image, {"--range", "auto"});
    EXPECT_EQ(said.rfind(store_ + ": 3 x 2 pixels of a.tif (" + all + ") in 1 level, ", 0), 0u) << said;
    expectTaken(all, -3.5, 124172);
    expectStored(filesamples::scaled(own, -3.5, 124172));
    // -3.5 below, 124172 above.
    import(image, {"--range", "-1,17"}, "velmora: 'a.tif': 2 samples beyond the range clipped\n");
    expectTaken("samples -1 to 17 of 32-bit float as 0 to 65535", -1, 17);
    expectStored(filesamples::scaled(own, -1, 17));
}

TEST_F(ProgramImageTest, WhatARangeDoesNotKeepIsCountedAndTold) {
    float const none = std::numeric_limits<float>::quiet_NaN();
    float const infinity = std::numeric_limits<float>::infinity();
    std::string const image =
        tiff({directory(4, 2, 1, std::vector<float>{none, 1, 2, none, -infinity, infinity, 9, none})});
    import(image, {"--range", "1,8"},
           "velmora: 'a.tif': 3 samples beyond the range clipped, 3 samples that are no number made 0\n");
    import(image, {"--range", "auto"},
           "velmora: 'a.tif': 2 samples beyond the range clipped, 3 samples that are no number made 0\n");
    std::string const finite = tiff({directory(3, 1, 1, std::vector<float>{none, 1, 2})});
    import(finite, {"--range", "auto"}, "velmora: 'a.tif': 1 sample that is no number made 0\n");
    import(finite, {"--range", "auto"}, "velmora: 'a.tif': 1 sample that is no number made 0\n");
}

TEST_F(ProgramImageTest, OneOfSeveralPagesIsTaken) {
    std::string const image = tiff({grey(1), grey(100), grey(200)});
    expectShownAlone(image, "'" + image + "' holds 3 pages; one of them is taken: choose --page N (1 to 3)");
    expectRefused(image, {"--page", "4"}, 2, "'" + image + "' holds 3 pages; --page is 1 to 3");
    std::string const said = import(image, {"--page", "2"});
    EXPECT_NE(said.find("of a.tif (page 2 of 3) in"), std::string::npos) << said;
    expectTaken("page 2 of 3", 0, 0);
    expectStored(filesamples::read(image, 2));
}

TEST_F(ProgramImageTest, BandsAreTakenByTheirNumbers) {
    std::vector<std::uint8_t> samples(5 * 12);
    std::iota(samples.begin(), samples.end(), std::uint8_t{7});
    Directory five = directory(4, 3, 5, samples);
    five.extraSamples = {0, 0};
    std::string const image = tiff({five});
    expectShownAlone(image,
                     "'" + image +
                         "' holds 5 bands, RGB and 2 others; grey or RGB is taken, with alpha or without: choose "
                         "--bands I or I,J,K (1 to 5)");
    expectRefused(image, {"--bands", "3,6,1"}, 2, "'" + image + "' has no band 6; --bands are 1 to 5");
    for (auto const& [text, bands, said] : std::vector<std::tuple<std::string, std::vector<size_t>, std::string>>{
             {"5", {5}, "band 5 of 5"},
             {"4,3,2", {4, 3, 2}, "bands 4,3,2 of 5"},
             {"4,3,2,1", {4, 3, 2, 1}, "bands 4,3,2 and alpha 1 of 5"},
             {"2,5", {2, 5}, "bands 2 and alpha 5 of 5"}}) {
        import(image, {"--bands", text});
        expectTaken(said, 0, 0);
        expectStored(filesamples::withBands(filesamples::read(image), bands));
    }
}

TEST_F(ProgramImageTest, FourBandsWithoutAlphaAreNotTakenForIt) {
    std::vector<std::uint8_t> samples(48, 9);
    Directory four = directory(4, 3, 4, samples);
    four.extraSamples = {0};
    std::string const image = tiff({four});
    expectShownAlone(image, "'" + image +
                                "' holds 4 bands, RGB and 1 other; grey or RGB is taken, with alpha or without: choose "
                                "--bands I or I,J,K (1 to 4)");
    four.extraSamples = {2};
    import(tiff({four}), {});
    expectTaken("", 0, 0);
    expectStored(filesamples::read(image));
}

TEST_F(ProgramImageTest, ColoursAreConvertedForAStoreOnlyWhereThatIsAskedFor) {
    Directory inks = directory(2, 1, 4, std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0, 0, 255});
    inks.photometric = 5;
    std::string const image = tiff({inks});
    expectFailure({"import", image, store_}, 4,
                  "'" + image + "' holds CMYK; grey or RGB is taken, with alpha or without: choose --to-srgb");
    std::string const said = import(image, {"--to-srgb"});
    EXPECT_NE(said.find("(CMYK converted to sRGB)"), std::string::npos) << said;
    expectTaken("CMYK converted to sRGB", 0, 0);
    filesamples::Samples const rgb = exported();
    ASSERT_EQ(rgb.bands, 3u);
    EXPECT_GT(rgb.values[0], 240) << "paper is white";
    EXPECT_LT(rgb.values[3], 60) << "black ink is dark";
    expectFailure({"import", image, path("b.vlm"), "--to-srgb", "--bands", "1"}, 2,
                  "--to-srgb converts colours, --bands and --range take samples as numbers; choose one of them");
}

TEST_F(ProgramImageTest, InfoSaysWhatAnImageHolds) {
    Directory full = directory(40, 20, 4, std::vector<std::uint16_t>(3200, 7));
    full.extraSamples = {2};
    full.tile = 16;
    full.orientation = 6;
    full.nodata = "7";
    full.resolutionUnit = 3;
    full.xResolution = full.yResolution = 40000;
    full.description = "a \x1b[31mcell";
    full.iccProfile = {1, 2, 3};
    Directory half = directory(20, 10, 4, std::vector<std::uint16_t>(800, 7));
    half.extraSamples = {2};
    half.subfileType = 1;
    std::string const image = tiff({full, half});
    auto const info = runVelmora({"info", image});
    EXPECT_EQ(info.exitCode, 0) << info.err;
    EXPECT_EQ(info.err, "");
    std::string const lines = "size                    40 x 20\n"
                              "format                  TIFF\n"
                              "samples                 4 bands of 16-bit unsigned, RGB and alpha\n"
                              "levels                  40 x 20, 20 x 10\n"
                              "pixel size              0.25 x 0.25 microns\n"
                              "no data                 7\n"
                              "orientation             6\n"
                              "colour profile          without a name\n"
                              "left out                its colour profile is damaged\n"
                              "description             a \\x1b[31mcell\n"
                              "bytes                   " +
                              std::to_string(std::filesystem::file_size(image)) + "\n";
    EXPECT_EQ(info.out, lines);
    auto const json = nlohmann::json::parse(runVelmora({"info", "--json", image}).out);
    EXPECT_EQ(json.at("width"), 40);
    EXPECT_EQ(json.at("sampleType"), "16-bit unsigned");
    EXPECT_EQ(json.at("alpha"), true);
    EXPECT_EQ(json.at("nodata"), 7);
    EXPECT_EQ(json.at("micronsPerPixelY"), 0.25);
    EXPECT_EQ(json.at("levels").at(1).at("width"), 20);
    EXPECT_EQ(json.at("levels").at(0).at("tileWidth"), 16);
    EXPECT_EQ(json.at("properties").at(0).at("name"), "description");
    EXPECT_EQ(json.at("bytes"), std::filesystem::file_size(image));
    // Also of what no command takes as a whole.
    std::string const parts = tiff({floats(), directory(5, 4, 7, std::vector<std::uint8_t>(140, 1))});
    auto const two = runVelmora({"info", parts});
    EXPECT_NE(two.out.find("pages                   2\n"), std::string::npos) << two.out << two.err;
    expectFailure({"info", path("none.tif")}, 3,
                  "cannot open '" + path("none.tif") + "': no such file; check the path");
    writeFile(path("no.tif"), "no picture");
    EXPECT_EQ(runVelmora({"info", path("no.tif")}).exitCode, 4);
}

TEST_F(ProgramImageTest, AnOrientationThatIsIgnoredIsTold) {
    Directory turned = grey(5);
    turned.orientation = 3;
    std::string const image = tiff({turned});
    import(image, {},
           "velmora: note: '" + image +
               "' asks to be turned or mirrored (orientation 3); its pixels are taken as they lie in the file\n");
    expectTaken("", 0, 0);
    expectStored(filesamples::read(image));
}

TEST_F(ProgramImageTest, OptionsThatMeanNothingAreExitCode2) {
    std::string const image = tiff({grey(1)});
    std::string const end = "; see velmora COMMAND --help";
    expectRefused(image, {"--bands", "0"}, 2,
                  "--bands: '0' names no bands; write I or I,J,K, counted from 1, and one more that is to be alpha" +
                      end);
    expectRefused(image, {"--bands", "1,2,3,4,5"}, 2,
                  "--bands: '1,2,3,4,5' names 5 bands; grey is one, RGB three, and one more may be alpha" + end);
    expectRefused(image, {"--range", "7"}, 2,
                  "--range: '7' is no range; write LO,HI, for example 0,4095, or auto" + end);
    expectRefused(image, {"--range", "9,7"}, 2,
                  "--range: the range '9,7' is empty; write the smaller number first" + end);
    for (std::string const page : {"0", "-1", "x"}) {
        auto const result = runVelmora({"import", image, path("new.vlm"), "--page", page});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_NE(result.err.find("--page"), std::string::npos) << result.err;
    }
}

TEST_F(ProgramImageTest, StoresAndTheBuiltInPictureAreTakenAsTheyAre) {
    std::string const image = tiff({grey(1)});
    import(image, {});
    std::string const end =
        " is taken as it is; --page, --bands, --range and --to-srgb choose a part of an image file: "
        "leave them out";
    std::string const ofStore = "'" + store_ + "', a tile store,";
    std::string const whole =
        ofStore + " is taken whole; --page, --bands and --to-srgb choose a part of an image file: leave them out";
    for (Arguments const& option : {Arguments{"--page", "1"}, Arguments{"--bands", "1"}, Arguments{"--range", "auto"},
                                    Arguments{"--range", "0,5"}, Arguments{"--to-srgb"}}) {
        auto const with = [&](Arguments command) {
            command.insert(command.end(), option.begin(), option.end());
            return command;
        };
        if (option.front() == "--range") {
            // It shows a store's samples, in 8 bits, and no filter looks at what is shown so unless it is asked to.
            expectFailure(with({"render", store_, "-o", path("b.png"), "--bits", "16"}), 2, ofStore + end);
            expectFailure(with({"render", store_, "-o", path("b.png"), "--sharpen", "1"}), 2, ofStore + end);
        } else {
            expectFailure(with({"render", store_, "-o", path("b.png")}), 2, whole);
            expectFailure(with({"view", store_}), 2, whole);
        }
        expectFailure(with({"render", "-o", path("b.png")}), 2, "the built-in picture" + end);
        expectFailure(with({"view"}), 2, "the built-in picture" + end);
        expectFailure(with({"import", "--built-in", path("b.vlm")}), 2, "the built-in picture" + end);
    }
}

TEST_F(ProgramImageTest, AnEmptyNameIsNoFile) {
    std::string const image = tiff({grey(1)});
    for (Arguments const& arguments :
         {Arguments{"render", "", "-o", path("b.png")}, Arguments{"render", image, "-o", ""}, Arguments{"view", ""},
          Arguments{"view", image, "--screenshot", ""}, Arguments{"view", image, "--script", ""}, Arguments{"info", ""},
          Arguments{"check", ""}, Arguments{"export", "", path("b.tif")}, Arguments{"export", store_, ""},
          Arguments{"import", "", store_}, Arguments{"import", image, ""}, Arguments{"import", "--built-in", ""}}) {
        std::vector<std::string> const before = folder_.names();
        auto const result = runVelmora(arguments);
        EXPECT_EQ(result.exitCode, 2) << arguments.front();
        EXPECT_NE(result.err.find("empty"), std::string::npos) << result.err;
        EXPECT_EQ(folder_.names(), before);
    }
}

TEST_F(ProgramImageTest, NamesThatAreLeftOutAreAskedFor) {
    for (Arguments const& arguments : {Arguments{"import"}, Arguments{"import", "a.tif"}})
        expectFailure(arguments, 2,
                      "an image and a store have to be named, or --built-in and a store; see velmora import --help");
    expectFailure({"import", "--built-in"}, 2,
                  "--built-in takes one name, that of the store; see velmora import --help");
    expectFailure({}, 2, "no command given; see velmora --help");
}

// A pipe without a writer: opening it would block for ever.
TEST_F(ProgramImageTest, APipeIsNotWaitedFor) {
    std::string const pipe = path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string const line = "cannot read '" + pipe + "': it is not a regular file; copy what it gives into one";
    expectRefused(pipe, {}, 4, line);
    expectFailure({"info", pipe}, 4, line);
    expectFailure({"check", pipe}, 9, line);
    expectFailure({"export", pipe, path("b.tif")}, 9, line);
}

// A script may come through a pipe. While the program waits for it, one signal suffices.
TEST_F(ProgramImageTest, TheFirstSignalEndsTheWaitForAPipe) {
    std::string const pipe = path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        Process process({"view", "--script", pipe});
        ASSERT_TRUE(process.waitUntilIdle());
        process.signal(signal);
        auto const result = process.wait();
        EXPECT_EQ(result.exitCode, 130) << result.err;
        EXPECT_EQ(result.err, "velmora: interrupted; nothing was written\n");
    }
}

TEST_F(ProgramImageTest, AFileThatTheDiskCannotGiveIsNotCalledDamaged) {
    std::vector<std::string> images;
    for (std::string const name : {"a.png", "a.jpg", "a.tif", "a.v", "a.jp2", "a.webp", "a.fits"}) {
        testimages::writePattern8(path(name), name == std::string("a.webp") ? "[lossless]" : "", 500, 400, 3);
        images.push_back(path(name));
    }
    std::string noise = "P6\n100 100\n255\n";
    noise.resize(noise.size() + 30000, 'x');
    writeFile(path("a.ppm"), noise);
    images.push_back(path("a.ppm"));
    for (std::string const& image : images) {
        Process::Environment const broken{{"LD_PRELOAD", VELMORA_BROKEN_DISK}, {"VELMORA_BROKEN_FILE", image}};
        std::vector<std::string> const before = folder_.names();
        auto const result = runVelmora({"import", image, store_}, broken);
        EXPECT_EQ(result.exitCode, 3) << image << result.err;
        bool const fits = image == path("a.fits");
        std::string expected = "velmora: cannot read '";
        expected.append(image).append("': ").append(fits ? "error reading from FITS file" : "Input/output error");
        EXPECT_EQ(result.err, expected.append("; check the disk that the file lies on\n"));
        EXPECT_EQ(folder_.names(), before);
        EXPECT_EQ(runVelmora({"import", image, store_, "--force"}).exitCode, 0) << image;
        std::filesystem::remove(store_);
    }
}

TEST_F(ProgramImageTest, AFileThatOnlyImageMagickReadsIsExitCode4) {
    std::string sun = std::string("\x59\xa6\x6a\x95", 4);
    for (int const value : {2, 1, 24, 6, 1, 0, 0})
        sun += std::string(3, '\0') + static_cast<char>(value);
    writeFile(path("a.ras"), sun + "abcdef");
    expectRefused(
        path("a.ras"), {}, 4,
        "cannot read '" + path("a.ras") +
            "': it is in none of the formats that are read, or its start is damaged; convert it to one of FITS, "
            "PNM, PAM, PFM, BMP, VIPS, JPEG XL, PNG, WebP, JPEG, TIFF, GIF, JPEG 2000, HEIF, PDF, Radiance");
}

// A sparse file of zeros.
TEST_F(ProgramImageTest, RowsOfTilesThatWouldFillTheMemoryAreRefused) {
    writeFile(path("a.pgm"), "P5\n3000000 3000\n255\n");
    std::filesystem::resize_file(path("a.pgm"), std::filesystem::file_size(path("a.pgm")) + 3000000ull * 3000);
    expectFailure(
        {"import", path("a.pgm"), store_}, 4,
        "'a.pgm' is 3000000 pixels wide: an import with tiles of 256 samples takes about 4.5 GB of memory, more "
        "than the 4.0 GB that a picture may take; choose a smaller --tile, or cut it into narrower pictures");
}

// Its header alone is read here.
TEST_F(ProgramImageTest, AFileThatIsTooLargeToBeShownAtOnceIsDescribedAndHasNoChannels) {
    rawtiff::Directory large;
    large.tags[256] = large.tags[257] = {4, {20000}};
    large.tags[259] = {3, {50000}}; // zstd: it takes any size
    rawtiff::write(path("a.tif"), rawtiff::picture(64, 48, 1, rawtiff::Bytes(64 * 48), large, {}));
    auto const info = runVelmora({"info", path("a.tif")});
    EXPECT_EQ(info.exitCode, 0) << info.err;
    EXPECT_NE(info.out.find("size                    20000 x 20000\n"), std::string::npos) << info.out;
    EXPECT_EQ(info.out.find("levels "), std::string::npos) << info.out;
    expectFailure(
        {"render", path("a.tif"), "-o", path("a.png"), "--colour-map", "viridis"}, 2,
        "'" + path("a.tif") +
            "' cannot be shown with --channel, --z, --t, --curve, --colour-map or --invert: it has no smaller "
            "levels, and takes 0.4 GB as TIFF decoded, more than the 0.3 GB that are decoded at once; leave "
            "them out");
}
