#include "host/image/ImageReader.h"
#include "host/HostError.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>
#include <vips/vips8>

#include <cstring>
#include <limits>

using testimages::Pixels;
using vips::VImage;

namespace {

Pixels readStrips(PixelSource& source, size_t rowsAtOnce) {
    Pixels pixels{source.width(), source.height(), source.bands(), {}};
    std::vector<std::uint8_t> strip;
    for (size_t y = 0; y < source.height(); y += rowsAtOnce) {
        source.read({0, y, source.width(), std::min(rowsAtOnce, source.height() - y)}, strip);
        pixels.samples.insert(pixels.samples.end(), strip.begin(), strip.end());
    }
    return pixels;
}

Pixels readAll(std::string const& path, size_t rowsAtOnce = 64) {
    ImageReader reader(path);
    return readStrips(reader, rowsAtOnce);
}

// The error of opening and reading the whole file.
HostError failure(std::string const& path) {
    try {
        readAll(path);
    } catch (HostError const& error) {
        return error;
    }
    throw std::logic_error(path + " was read without an error");
}

class ImageReaderTest : public testing::Test {
protected:
    std::string path(std::string const& name) const { return folder_.path(name); }

    TemporaryFolder folder_;
};

} // namespace

struct Format {
    char const* name;
    char const* file;
    char const* options;
    size_t bands;
    bool wide;
};

class ImageReaderFormatTest : public ImageReaderTest, public testing::WithParamInterface<Format> {
protected:
    void write(size_t width, size_t height) const {
        Format const& format = GetParam();
        auto const write = format.wide ? testimages::writePattern16 : testimages::writePattern8;
        write(path(format.file), format.options, width, height, format.bands);
    }

    Pixels expected(size_t width, size_t height) const {
        auto const make = GetParam().wide ? testimages::pattern16UpperBytes : testimages::pattern8;
        return make(width, height, GetParam().bands);
    }
};

INSTANTIATE_TEST_SUITE_P(
    Lossless, ImageReaderFormatTest,
    testing::Values(Format{"PngRgb", "a.png", "", 3, false}, Format{"PngRgba", "a.png", "", 4, false},
                    Format{"PngGrey", "a.png", "", 1, false}, Format{"PngGreyAlpha", "a.png", "", 2, false},
                    Format{"PngRgb16", "a.png", "", 3, true}, Format{"PngRgba16", "a.png", "", 4, true},
                    Format{"PngGrey16", "a.png", "", 1, true}, Format{"PngGreyAlpha16", "a.png", "", 2, true},
                    Format{"TiffStrips", "a.tif", "[compression=lzw]", 3, false},
                    Format{"TiffPyramid", "a.tif", "[tile,pyramid,compression=deflate,tile-width=64,tile-height=64]", 3,
                           false},
                    Format{"TiffPyramid16", "a.tif", "[tile,pyramid,tile-width=64,tile-height=64]", 3, true},
                    Format{"Jpeg2000", "a.jp2", "[lossless,tile-width=128,tile-height=128]", 3, false},
                    Format{"Ppm", "a.ppm", "", 3, false}, Format{"WebP", "a.webp", "[lossless]", 3, false}),
    [](auto const& test) { return test.param.name; });

TEST_P(ImageReaderFormatTest, PixelsAreTheFiles) {
    write(333, 201);
    EXPECT_EQ(testimages::difference(readAll(path(GetParam().file)), expected(333, 201)), "");
}

TEST_P(ImageReaderFormatTest, PixelsAreTheSameInStripsOfAnyHeight) {
    write(150, 131);
    for (size_t const rows : {1u, 7u, 65u, 131u})
        EXPECT_EQ(testimages::difference(readAll(path(GetParam().file), rows), expected(150, 131)), "") << rows;
}

TEST_P(ImageReaderFormatTest, ASinglePixelIsRead) {
    write(1, 1);
    EXPECT_EQ(testimages::difference(readAll(path(GetParam().file)), expected(1, 1)), "");
}

TEST_P(ImageReaderFormatTest, ARegionInTheMiddleIsRead) {
    write(200, 180);
    ImageReader reader(path(GetParam().file));
    Pixels pixels{33, 101, GetParam().bands, {}};
    reader.read({117, 70, 33, 101}, pixels.samples);
    EXPECT_EQ(testimages::difference(pixels, testimages::crop(expected(200, 180), 117, 70, 33, 101)), "");
}

TEST_P(ImageReaderFormatTest, AFileCutOffIsAnErrorAndNotGreyPixels) {
    write(640, 480);
    // A quarter: the smaller levels at the end of a pyramid are not needed.
    truncateFile(path(GetParam().file), 25);
    HostError const error = failure(path(GetParam().file));
    EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
    std::string const text = error.what();
    EXPECT_EQ(text.rfind("cannot read '" + path(GetParam().file) + "': ", 0), 0u) << text;
    EXPECT_EQ(text.find('\n'), std::string::npos);
}

TEST_F(ImageReaderTest, JpegPixelsAreThoseThatLibvipsDecodes) {
    testimages::writePattern8(path("a.jpg"), "[Q=85]", 301, 203, 3);
    EXPECT_EQ(testimages::difference(readAll(path("a.jpg")), testimages::readByVips(path("a.jpg"))), "");
}

TEST_F(ImageReaderTest, GreyJpegStaysGrey) {
    testimages::writePattern8(path("a.jpg"), "", 64, 48, 1);
    EXPECT_EQ(ImageReader(path("a.jpg")).bands(), 1u);
    EXPECT_EQ(testimages::difference(readAll(path("a.jpg")), testimages::readByVips(path("a.jpg"))), "");
}

TEST_F(ImageReaderTest, TruncatedJpegIsAnErrorAndNotGreyPixels) {
    testimages::writePattern8(path("a.jpg"), "", 640, 480, 3);
    truncateFile(path("a.jpg"), 60);
    EXPECT_EQ(failure(path("a.jpg")).kind(), HostError::Kind::UnreadableImage);
}

TEST_F(ImageReaderTest, TiledFilesAreReadInAnyOrder) {
    testimages::writePattern8(path("a.tif"), "[tile,pyramid,tile-width=64,tile-height=64]", 500, 400, 3);
    Pixels const expected = testimages::pattern8(500, 400, 3);
    ImageReader reader(path("a.tif"));
    for (Region const& region : {Region{400, 350, 100, 50}, Region{0, 0, 70, 70}, Region{499, 0, 1, 400}}) {
        Pixels part{region.width, region.height, 3, {}};
        reader.read(region, part.samples);
        EXPECT_EQ(
            testimages::difference(part, testimages::crop(expected, region.x, region.y, region.width, region.height)),
            "");
    }
}

// Tiled: libvips does not cache what it reads sequentially.
TEST_F(ImageReaderTest, AFileThatChangedIsReadAnew) {
    for (size_t const width : {200u, 300u}) {
        testimages::writePattern8(path("a.tif"), "[tile,tile-width=64,tile-height=64]", width, 100, 3);
        EXPECT_EQ(ImageReader(path("a.tif")).width(), width);
    }
}

TEST_F(ImageReaderTest, DescriptionNamesBandsSamplesAndFormat) {
    testimages::writePattern16(path("a.png"), "", 4, 4, 3);
    EXPECT_EQ(ImageReader(path("a.png")).description(), "3 bands of 16-bit unsigned samples, PNG");
    testimages::writePattern8(path("a.v"), "", 4, 4, 1);
    EXPECT_EQ(ImageReader(path("a.v")).description(), "1 band of 8-bit unsigned samples, VIPS");
    ImageReader::Options options;
    options.selection.bands = {3};
    EXPECT_EQ(ImageReader(path("a.png"), options).description(),
              "3 bands of 16-bit unsigned samples, PNG, band 3 of 3");
}

TEST_F(ImageReaderTest, LibvipsOwnFormatIsRead) {
    testimages::writePattern8(path("a.v"), "", 40, 30, 3);
    EXPECT_EQ(testimages::difference(readAll(path("a.v")), testimages::pattern8(40, 30, 3)), "");
}

// The same float file twice: in strips, whose rows are read once, and in tiles.
class ImageReaderRangeTest : public ImageReaderTest, public testing::WithParamInterface<char const*> {
protected:
    static constexpr size_t kWidth = 90;
    static constexpr size_t kHeight = 1200; // more rows than libvips keeps

    static double sample(size_t x, size_t y) { return static_cast<double>(x) - 2.0 * static_cast<double>(y); }

    static std::uint16_t expected(size_t x, size_t y) {
        // From -2398 to 89, in whole numbers: 2487 steps.
        auto const above = static_cast<std::uint32_t>(sample(x, y) + 2398);
        return static_cast<std::uint16_t>((2 * 65535 * above + 2487) / (2 * 2487));
    }

    std::string write() const {
        std::vector<float> samples;
        for (size_t y = 0; y < kHeight; ++y)
            for (size_t x = 0; x < kWidth; ++x)
                samples.push_back(static_cast<float>(sample(x, y)));
        VImage::new_from_memory(samples.data(), samples.size() * sizeof(float), kWidth, kHeight, 1, VIPS_FORMAT_FLOAT)
            .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_B_W)))
            .write_to_file((path("a.tif") + GetParam()).c_str());
        return path("a.tif");
    }

    static ImageReader::Options automatic(ImageReader::Samples samples = ImageReader::Samples::kAsStored) {
        ImageReader::Options options;
        options.samples = samples;
        options.selection.automaticRange = true;
        return options;
    }

    static void expectRow(ImageReader& reader, size_t y) {
        std::vector<std::uint8_t> bytes;
        reader.read({0, y, kWidth, 1}, bytes);
        std::vector<std::uint16_t> row(kWidth);
        ASSERT_EQ(bytes.size(), 2 * kWidth);
        std::memcpy(row.data(), bytes.data(), bytes.size());
        for (size_t x = 0; x < kWidth; ++x)
            ASSERT_EQ(row[x], expected(x, y)) << x << "," << y;
    }
};

INSTANTIATE_TEST_SUITE_P(Layouts, ImageReaderRangeTest,
                         testing::Values("[compression=lzw]", "[tile,tile-width=64,tile-height=64]"),
                         [](auto const& test) { return test.index == 0 ? "Strips" : "Tiles"; });

TEST_P(ImageReaderRangeTest, TheRangeIsThatOfTheWholePictureWhateverIsReadFirst) {
    std::string const file = write();
    ImageReader asked(file, automatic());
    EXPECT_EQ(asked.selection().text, "samples -2398 to 89 of 32-bit float as 0 to 65535");
    EXPECT_EQ(asked.selection().rangeLow, -2398);
    EXPECT_EQ(asked.selection().rangeHigh, 89);
    for (size_t y = 0; y < kHeight; ++y)
        expectRow(asked, y);
    ImageReader unasked(file, automatic());
    expectRow(unasked, 150);
    EXPECT_EQ(unasked.description(),
              "1 band of 32-bit float samples, TIFF, samples -2398 to 89 of 32-bit float as 0 to 65535");
}

TEST_P(ImageReaderRangeTest, RowsFartherUpAreReadAgain) {
    ImageReader reader(write(), automatic());
    for (size_t const y : {150u, 3u, 1199u, 1199u, 0u})
        expectRow(reader, y);
}

TEST_P(ImageReaderRangeTest, TheRangeIsFoundOutOnce) {
    int calls = 0;
    ImageReader::Options options = automatic();
    options.check = [&calls] { ++calls; };
    ImageReader reader(write(), options);
    reader.selection();
    int const found = calls;
    for (size_t y = 0; y < 5; ++y)
        expectRow(reader, y);
    EXPECT_LT(calls - found, found);
}

TEST_P(ImageReaderRangeTest, EightBitsAreTheUpperByteOfSixteen) {
    ImageReader reader(write(), automatic(ImageReader::Samples::kEightBits));
    EXPECT_EQ(reader.sampleBytes(), 1u);
    std::vector<std::uint8_t> row;
    reader.read({0, 7, kWidth, 1}, row);
    for (size_t x = 0; x < kWidth; ++x)
        ASSERT_EQ(row[x], expected(x, 7) >> 8) << x;
}

TEST_F(ImageReaderTest, APictureWithoutAFiniteSampleHasNoRangeOfItsOwn) {
    std::vector<float> samples(6, std::numeric_limits<float>::quiet_NaN());
    samples[3] = std::numeric_limits<float>::infinity();
    auto const write = [&] {
        VImage::new_from_memory(samples.data(), samples.size() * sizeof(float), 6, 1, 1, VIPS_FORMAT_FLOAT)
            .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_B_W)))
            .write_to_file(path("a.tif").c_str());
    };
    write();
    EXPECT_EQ(
        std::string(failure(path("a.tif")).what()),
        "'" + path("a.tif") +
            "' holds 32-bit float samples of which none is a finite number; unsigned samples of 8 or 16 bits are kept: "
            "choose --range LO,HI or --range auto");
    ImageReader::Options options;
    options.selection.automaticRange = true;
    try {
        ImageReader(path("a.tif"), options).selection();
        FAIL();
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
        EXPECT_EQ(std::string(error.what()),
                  "'" + path("a.tif") +
                      "' holds no sample that is a finite number; there is no range from the smallest to "
                      "the largest: choose --range LO,HI");
    }
    // One sample is a range of one value.
    samples[1] = 4;
    write();
    ImageReader reader(path("a.tif"), options);
    EXPECT_EQ(reader.selection().text, "samples 4 to 8 of 32-bit float as 0 to 65535");
    EXPECT_EQ(readStrips(reader, 1).samples, (std::vector<std::uint8_t>{0, 0, 0, 255, 0, 0}));
}

TEST_F(ImageReaderTest, SamplesBeyondAnyRangeAreSaid) {
    std::vector<double> samples{0, -1e301, 5};
    ImageReader::Options options;
    options.selection.automaticRange = true;
    for (int i = 0; i < 2; ++i) {
        VImage::new_from_memory(samples.data(), samples.size() * sizeof(double), 3, 1, 1, VIPS_FORMAT_DOUBLE)
            .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_B_W)))
            .write_to_file(path("a.v").c_str());
        ImageReader reader(path("a.v"), options);
        EXPECT_THROW(reader.selection(), HostError);
        samples = {0, 1e301, 5};
    }
}

// 30 million pixels. libvips would cache all rows down to the region.
TEST_F(ImageReaderTest, ARegionFarDownTakesNoMemoryForTheRowsAboveIt) {
    constexpr size_t kRows = 60000;
    VImage::black(500, static_cast<int>(kRows)).write_to_file(path("a.jpg").c_str());
    ImageReader reader(path("a.jpg"));
    std::vector<std::uint8_t> pixels;
    // The second region is farther up, and needs a second start.
    for (size_t const y : {kRows - 50, kRows - 100}) {
        reader.read({10, y, 400, 50}, pixels);
        EXPECT_EQ(pixels, std::vector<std::uint8_t>(20000));
        EXPECT_LT(vips_tracked_get_mem(), 10'000'000u) << y;
    }
}

TEST_F(ImageReaderTest, RowsAreReadOnceOnTheWayDown) {
    testimages::writePattern8(path("a.png"), "", 300, 4000, 3);
    ImageReader::Options options;
    int calls = 0;
    options.check = [&calls] { ++calls; };
    ImageReader whole(path("a.png"), options);
    readStrips(whole, 4000);
    int const atOnce = calls;
    calls = 0;
    ImageReader inStrips(path("a.png"), options);
    readStrips(inStrips, 100);
    // One more request per strip, no second start, and no row a second time.
    EXPECT_LE(calls, atOnce + 40);
}

TEST_F(ImageReaderTest, OfTiledFilesRowsAboveARegionAreNotRead) {
    testimages::writePattern8(path("a.tif"), "[tile,tile-width=64,tile-height=64]", 70, 9000, 1);
    ImageReader::Options options;
    int calls = 0;
    options.check = [&calls] { ++calls; };
    ImageReader reader(path("a.tif"), options);
    calls = 0;
    std::vector<std::uint8_t> pixels;
    reader.read({0, 8960, 70, 40}, pixels);
    EXPECT_LT(calls, 100) << "of 140 rows of tiles";
}

// More samples than are converted at once, and more bytes.
TEST_F(ImageReaderTest, ALargeRegionIsThePictureToItsLastRow) {
    testimages::writePattern8(path("a.png"), "", 1900, 1500, 3);
    EXPECT_EQ(testimages::difference(readAll(path("a.png"), 1500), testimages::pattern8(1900, 1500, 3)), "");
    testimages::writePattern16(path("b.png"), "", 1900, 1500, 3);
    EXPECT_EQ(testimages::difference(readAll(path("b.png"), 1500), testimages::pattern16UpperBytes(1900, 1500, 3)), "");
    ImageReader deep(path("b.png"), ImageReader::Samples::kAsStored);
    std::vector<std::uint8_t> bytes;
    deep.read({0, 0, 1900, 1500}, bytes);
    std::vector<std::uint16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    EXPECT_TRUE(samples == testimages::pattern16(1900, 1500, 3));
    ImageReader::Options options;
    options.selection.bands = {2};
    ImageReader band(path("a.png"), options);
    Pixels const rgb = testimages::pattern8(1900, 1500, 3);
    Pixels green{1900, 1500, 1, {}};
    for (size_t i = 1; i < rgb.samples.size(); i += 3)
        green.samples.push_back(rgb.samples[i]);
    EXPECT_EQ(testimages::difference(readStrips(band, 1500), green), "");
}

// Sequential pictures, in formats of libvips and in text form.
TEST_F(ImageReaderTest, ARowFarDownIsThatRow) {
    std::string text = "P2\n1 200\n255\n";
    for (int y = 0; y < 200; ++y)
        text += std::to_string(y) + "\n";
    writeFile(path("a.pgm"), text);
    testimages::writePattern8(path("a.png"), "", 1, 200, 1);
    std::vector<std::uint8_t> pixels;
    for (size_t const y : {1u, 63u, 64u, 65u, 130u, 199u}) {
        ImageReader(path("a.pgm")).read({0, y, 1, 1}, pixels);
        EXPECT_EQ(pixels, std::vector<std::uint8_t>{static_cast<std::uint8_t>(y)});
        ImageReader(path("a.png")).read({0, y, 1, 1}, pixels);
        EXPECT_EQ(pixels, std::vector<std::uint8_t>{testimages::sample8(0, y, 0)});
    }
}

TEST_F(ImageReaderTest, ColoursAreConvertedWhereNothingElseIsAskedFor) {
    std::vector<std::uint8_t> const inks{0, 0, 0, 0, 0, 0, 0, 255};
    VImage::new_from_memory(const_cast<std::uint8_t*>(inks.data()), inks.size(), 2, 1, 4, VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_CMYK)))
        .write_to_file(path("a.tif").c_str());
    EXPECT_EQ(readAll(path("a.tif")).bands, 3u);
    EXPECT_EQ(ImageReader(path("a.tif")).notes().size(), 1u);
    // A range in the file's own samples.
    ImageReader::Options options;
    options.selection.range = SampleRange{0, 255};
    EXPECT_THROW(ImageReader(path("a.tif"), options), HostError);
}

TEST_F(ImageReaderTest, ReadingCanBeStoppedOnTheWayDown) {
    VImage::black(100, 5000).write_to_file(path("a.png").c_str());
    struct Stopped {};
    int calls = 0;
    ImageReader::Options options;
    options.check = [&calls] {
        if (++calls > 40) throw Stopped();
    };
    ImageReader reader(path("a.png"), options);
    ASSERT_LT(calls, 40);
    std::vector<std::uint8_t> pixels;
    EXPECT_THROW(reader.read({0, 4900, 100, 100}, pixels), Stopped);
    // And in later reads.
    ImageReader other(path("a.png"));
    other.whileReading([] { throw Stopped(); });
    EXPECT_THROW(other.read({0, 4900, 100, 100}, pixels), Stopped);
}

TEST_F(ImageReaderTest, BracketsInAFileNameAreNotOptions) {
    testimages::writePattern8(path("plain.png"), "", 9, 8, 3);
    std::filesystem::rename(path("plain.png"), path("scan[page=2].png"));
    EXPECT_EQ(testimages::difference(readAll(path("scan[page=2].png")), testimages::pattern8(9, 8, 3)), "");
}

TEST_F(ImageReaderTest, AMissingFileIsNamed) {
    HostError const error = failure(path("none.png"));
    EXPECT_EQ(error.kind(), HostError::Kind::MissingFile);
    EXPECT_EQ(error.what(), "cannot open '" + path("none.png") + "': no such file; check the path");
}

TEST_F(ImageReaderTest, AFolderIsNoImage) {
    EXPECT_EQ(failure(folder_.path()).kind(), HostError::Kind::UnreadableImage);
}

TEST_F(ImageReaderTest, AnEmptyFileIsNoImage) {
    writeFile(path("a.png"), "");
    EXPECT_EQ(failure(path("a.png")).kind(), HostError::Kind::UnreadableImage);
}

TEST_F(ImageReaderTest, AFileOfAnotherKindIsNoImage) {
    writeFile(path("a.dat"), std::string(5000, '\x07'));
    EXPECT_EQ(failure(path("a.dat")).kind(), HostError::Kind::UnreadableImage);
}

TEST_F(ImageReaderTest, OneFailureLeavesNoTraceInTheNextMessage) {
    writeFile(path("first.dat"), std::string(5000, '\x07'));
    writeFile(path("second.dat"), std::string(5000, '\x07'));
    failure(path("first.dat"));
    EXPECT_EQ(std::string(failure(path("second.dat")).what()).find("first.dat"), std::string::npos);
}
