#include "host/ImageReader.h"
#include "host/HostError.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/TestImages.h"

#include <gtest/gtest.h>
#include <vips/vips8>

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

// What opening and reading the whole file fails with.
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
    // A quarter: of a pyramid, the smaller levels at the end may be missing without harm.
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

// Tiled: what libvips reads in sequence it does not remember anyway.
TEST_F(ImageReaderTest, AFileThatChangedIsReadAnew) {
    for (size_t const width : {200u, 300u}) {
        testimages::writePattern8(path("a.tif"), "[tile,tile-width=64,tile-height=64]", width, 100, 3);
        EXPECT_EQ(ImageReader(path("a.tif")).width(), width);
    }
}

TEST_F(ImageReaderTest, FloatingPointGreyIsClippedTo8Bits) {
    std::vector<float> const samples{-5.0f, 0.0f, 7.0f, 200.0f, 255.0f, 900.0f};
    VImage::new_from_memory(const_cast<float*>(samples.data()), samples.size() * sizeof(float), 6, 1, 1,
                            VIPS_FORMAT_FLOAT)
        .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_B_W)))
        .write_to_file(path("a.tif").c_str());
    EXPECT_EQ(readAll(path("a.tif")).samples, (std::vector<std::uint8_t>{0, 0, 7, 200, 255, 255}));
}

// Frames of an instrument: bands that stand for no colour, of samples that are no bytes.
TEST_F(ImageReaderTest, FloatingPointBandsWithoutColourAreClippedTo8Bits) {
    std::vector<float> const samples{-5.0f, 3.0f, 900.0f, 1.0f, 2.0f, 4.0f, 7.0f, 255.0f, 80.0f, 5.0f, 6.0f, 8.0f};
    for (auto const& [bands, expected] : std::vector<std::pair<int, std::vector<std::uint8_t>>>{
             {2, {0, 3, 255, 1, 2, 4, 7, 255, 80, 5, 6, 8}}, {6, {0, 3, 255, 7, 255, 80}}}) {
        VImage::new_from_memory(const_cast<float*>(samples.data()), samples.size() * sizeof(float), 12 / bands, 1,
                                bands, VIPS_FORMAT_FLOAT)
            .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_MULTIBAND)))
            .write_to_file(path("a.v").c_str());
        EXPECT_EQ(readAll(path("a.v")).samples, expected) << bands;
    }
}

TEST_F(ImageReaderTest, CmykIsShownAsRgb) {
    std::vector<std::uint8_t> const samples{0, 0, 0, 0, 0, 0, 0, 255};
    VImage::new_from_memory(const_cast<std::uint8_t*>(samples.data()), samples.size(), 2, 1, 4, VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_CMYK)))
        .write_to_file(path("a.tif").c_str());
    Pixels const pixels = readAll(path("a.tif"));
    ASSERT_EQ(pixels.bands, 3u);
    for (size_t band = 0; band < 3; ++band) {
        EXPECT_GT(pixels.samples[band], 240) << "paper is white";
        EXPECT_LT(pixels.samples[3 + band], 60) << "black ink is dark";
    }
}

TEST_F(ImageReaderTest, OfMoreThanFourBandsTheFirstThreeAreShown) {
    testimages::writePattern8(path("a.tif"), "", 40, 30, 6);
    Pixels const pixels = readAll(path("a.tif"));
    EXPECT_EQ(testimages::difference(pixels, testimages::pattern8(40, 30, 3)), "");
}

TEST_F(ImageReaderTest, DescriptionNamesTheNativeFormat) {
    testimages::writePattern16(path("a.png"), "", 4, 4, 3);
    EXPECT_EQ(ImageReader(path("a.png")).description(), "3 bands of ushort, rgb16, pngload");
}

TEST_F(ImageReaderTest, LibvipsOwnFormatIsRead) {
    testimages::writePattern8(path("a.v"), "", 40, 30, 3);
    EXPECT_EQ(testimages::difference(readAll(path("a.v")), testimages::pattern8(40, 30, 3)), "");
    EXPECT_EQ(ImageReader(path("a.v")).description(), "3 bands of uchar, srgb, vips");
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
