// Files without levels of their own, and JPEG: decoded into memory.
#include "tests/host/pyramid/PyramidFixture.h"
#include "tests/support/TestImages.h"
#include "tests/support/reading/FileSamples.h"

#include <vips/vips8>

namespace {

class MemoryPyramidTest : public PyramidFixture {
protected:
    static constexpr size_t kWidth = 90;
    static constexpr size_t kHeight = 70;

    // A tag's entry of a number in a little-endian TIFF file.
    static std::string entryOf(std::uint16_t tag, char number) {
        return {static_cast<char>(tag), static_cast<char>(tag >> 8), 3, 0, 1, 0, 0, 0, number, 0, 0, 0};
    }

    // FITS from the top row: libvips writes it from the lowest up.
    static Bytes expected16(std::string const& ending) {
        std::vector<std::uint16_t> samples;
        for (size_t row = 0; row < kHeight; ++row)
            for (size_t x = 0; x < kWidth; ++x)
                for (size_t band = 0; band < 3; ++band)
                    samples.push_back(testimages::sample16(x, ending == ".fits" ? kHeight - 1 - row : row, band));
        return bytesOf(samples);
    }
};

} // namespace

TEST_F(MemoryPyramidTest, AnyFormatIsReadAtRandomAndDecodedOnce) {
    for (std::string const ending : {".png", ".ppm", ".fits", ".v", ".jxl"}) {
        SCOPED_TRACE(ending);
        std::string const file = path("a" + ending);
        testimages::writePattern16(file, ending == ".jxl" ? "[lossless]" : "", kWidth, kHeight, 3);
        auto const pyramid = open(file);
        EXPECT_EQ(sizesOf(pyramid->facts()), Sizes{"90x70"});
        EXPECT_EQ(pyramid->facts().image.layout.type, SampleType::Unsigned16);
        EXPECT_GE(pyramid->facts().sharedBytes, kWidth * kHeight * 6);
        auto const one = pyramid->reader();
        expectLevel(*one, 0, expected16(ending));
        EXPECT_EQ(one->statistics().decodedUnits, 1u);
        EXPECT_EQ(one->statistics().decodedBytes, kWidth * kHeight * 6);
        auto const other = pyramid->reader();
        expectLevel(*other, 0, expected16(ending));
        EXPECT_EQ(other->statistics().decodedUnits, 0u);
    }
}

TEST_F(MemoryPyramidTest, OneRowOrColumnIsAPicture) {
    for (auto const& [width, height] : {std::pair<size_t, size_t>{90, 1}, {1, 70}, {1, 1}}) {
        testimages::writePattern16(path("a.png"), "", width, height, 3);
        std::vector<std::uint16_t> samples;
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x)
                for (size_t band = 0; band < 3; ++band)
                    samples.push_back(testimages::sample16(x, y, band));
        EXPECT_TRUE(readAll(*open(path("a.png"))->reader()) == bytesOf(samples)) << width << " x " << height;
    }
}

// Its samples are numbers, as those of other TIFF files: colours are not divided by alpha.
TEST_F(MemoryPyramidTest, TiffsOfOtherCompressionsAreDecodedAsAWhole) {
    Directory full = level(40, 30, 4, 1);
    full.bytes = ramps(40, 30, 4);
    full.extraSamples = {EXTRASAMPLE_ASSOCALPHA};
    full.tile = 0;
    full.rowsPerStrip = 7;
    full.compression = COMPRESSION_PIXARLOG;
    std::string const file = write({full});
    auto const pyramid = open(file);
    EXPECT_EQ(pyramid->facts().levels.front().unit.width, 40u);
    EXPECT_EQ(pyramid->facts().levels.front().unit.height, 30u);
    Bytes const samples = readAll(*pyramid->reader());
    EXPECT_TRUE(std::vector<double>(samples.begin(), samples.end()) == filesamples::readTiff(file, 1).values);
}

TEST_F(MemoryPyramidTest, WhatIsTooLargeIsToldWithAReason) {
    testimages::writePattern16(path("a.png"), "", kWidth, kHeight, 3);
    PyramidOptions options;
    options.memoryBytes = kWidth * kHeight * 6;
    EXPECT_TRUE(openPyramid(path("a.png"), options).pyramid);
    --options.memoryBytes;
    PyramidOpening const opening = openPyramid(path("a.png"), options);
    EXPECT_FALSE(opening.pyramid);
    EXPECT_EQ(opening.reason,
              "it has no smaller levels, and takes 0.0 GB as PNG decoded, more than the 0.0 GB that are "
              "decoded at once");
    // A tiled TIFF too: its coarse levels would take the whole picture. With a small level it is shown.
    options.memoryBytes = 80 * 60 - 1;
    EXPECT_FALSE(openPyramid(write({level(80, 60, 1, 1)}), options).pyramid);
    EXPECT_TRUE(openPyramid(write({level(80, 60, 1, 1), reduced(40, 30, 1, 2)}), options).pyramid);
}

// The header of a sparse file says that it is large.
TEST_F(MemoryPyramidTest, TheReasonNamesBothSizes) {
    std::string const file = write({level(64, 48, 1, 1)});
    std::string content = readFile(file);
    for (std::string const& entry : {entryOf(TIFFTAG_IMAGEWIDTH, 64), entryOf(TIFFTAG_IMAGELENGTH, 48)}) {
        size_t const at = content.find(entry);
        ASSERT_NE(at, std::string::npos);
        content.replace(at + 8, 4, std::string("\x20\x4e\x00\x00", 4)); // 20000
    }
    size_t const compression = content.find(std::string("\x03\x01\x03\x00", 4));
    ASSERT_NE(compression, std::string::npos);
    content.replace(compression + 8, 2, std::string("\x50\xc3", 2)); // of zstd: any size is possible
    writeFile(file, content);
    EXPECT_EQ(openPyramid(file).reason, "it has no smaller levels, and takes 0.4 GB as TIFF decoded, more than the "
                                        "0.3 GB that are decoded at once");
}

TEST_F(MemoryPyramidTest, JpegIsGivenSmallerByItsDecoder) {
    std::string const file = path("a.jpg");
    Bytes samples = ramps(203, 150, 3);
    vips::VImage::new_from_memory(samples.data(), samples.size(), 203, 150, 3, VIPS_FORMAT_UCHAR)
        .jpegsave(file.c_str(), vips::VImage::option()->set("Q", 95));
    auto const pyramid = open(file);
    ASSERT_EQ(pyramid->facts().levels.size(), 4u);
    EXPECT_EQ(pyramid->facts().image.format, "JPEG");
    auto const reader = pyramid->reader();
    for (size_t level = 0; level < 4; ++level) {
        Size const size = pyramid->facts().levels[level].size;
        vips::VImage const decoded =
            vips::VImage::jpegload(file.c_str(), vips::VImage::option()->set("shrink", 1 << level)).copy_memory();
        ASSERT_EQ(size.width, static_cast<size_t>(decoded.width()));
        ASSERT_EQ(size.height, static_cast<size_t>(decoded.height()));
        auto const* const first = static_cast<std::uint8_t const*>(decoded.data());
        Bytes const expected(first, first + size.width * size.height * 3);
        expectLevel(*reader, level, expected);
        // It shows the picture.
        size_t const step = size_t{1} << level;
        for (size_t y = 0; y < size.height; ++y)
            for (size_t x = 0; x < size.width; ++x)
                for (size_t band = 0; band < 3; ++band) {
                    size_t const middleX = std::min<size_t>(x * step + step / 2, 202);
                    size_t const middleY = std::min<size_t>(y * step + step / 2, 149);
                    ASSERT_NEAR(expected[(y * size.width + x) * 3 + band],
                                samples[(middleY * 203 + middleX) * 3 + band], 12);
                }
    }
    // Each size was decoded once.
    EXPECT_EQ(reader->statistics().decodedUnits, 4u);
}

// libvips rounds sides down, and ends the program where one becomes 0.
TEST_F(MemoryPyramidTest, JpegOfAFewPixelsIsGivenInTheSizesThatHaveOne) {
    for (int const width : {1, 2, 3, 4, 7, 8, 9})
        for (int const height : {1, 5, 64}) {
            Bytes samples = ramps(static_cast<size_t>(width), static_cast<size_t>(height), 3);
            vips::VImage::new_from_memory(samples.data(), samples.size(), width, height, 3, VIPS_FORMAT_UCHAR)
                .jpegsave(path("a.jpg").c_str());
            Sizes sizes;
            for (int step = 1; step <= 8 && step <= width && step <= height; step *= 2)
                sizes.push_back(std::to_string(width / step) + "x" + std::to_string(height / step));
            auto const pyramid = open(path("a.jpg"));
            EXPECT_EQ(sizesOf(pyramid->facts()), sizes);
            auto const reader = pyramid->reader();
            for (size_t level = 0; level < sizes.size(); ++level)
                EXPECT_NO_THROW(readAll(*reader, level)) << width << "x" << height << ", level " << level;
        }
}

TEST_F(MemoryPyramidTest, DamageIsNoGreyPicture) {
    testimages::writePattern8(path("a.png"), "", kWidth, kHeight, 3);
    testimages::writePattern8(path("a.jpg"), "", kWidth, kHeight, 3);
    for (std::string const name : {"a.png", "a.jpg"}) {
        auto const pyramid = open(path(name));
        std::string const content = readFile(path(name));
        truncateFile(path(name), 60);
        auto const reader = pyramid->reader();
        for (int i = 0; i < 2; ++i) {
            HostError const error = failure([&] { readAll(*reader); });
            EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
            EXPECT_TRUE(has(error.what(), "cannot read '" + path(name) + "': ")) << error.what();
        }
        writeFile(path(name), content);
        EXPECT_EQ(readAll(*reader).size(), kWidth * kHeight * 3);
    }
}

TEST_F(MemoryPyramidTest, BlankOfFitsIsNodata) {
    testimages::writePattern16(path("a.fits"), "", kWidth, kHeight, 1);
    std::string content = readFile(path("a.fits"));
    EXPECT_FALSE(open(path("a.fits"))->facts().image.nodata);
    // An empty card becomes BLANK; samples are stored less 32768.
    size_t const end = content.find("END     ");
    ASSERT_NE(end, std::string::npos);
    std::string card = "BLANK   =               -32768";
    card.resize(80, ' ');
    content.replace(end, 160, card + "END" + std::string(77, ' '));
    writeFile(path("a.fits"), content);
    auto const pyramid = open(path("a.fits"));
    EXPECT_EQ(pyramid->facts().image.nodata, 0);
    EXPECT_EQ(readAll(*pyramid->reader()).size(), kWidth * kHeight * 2);
}

TEST_F(MemoryPyramidTest, ProfilesAreKept) {
    vips::VImage image = vips::VImage::black(20, 10, vips::VImage::option()->set("bands", 3));
    image.pngsave(path("a.png").c_str(), vips::VImage::option()->set("profile", "srgb"));
    EXPECT_GT(open(path("a.png"))->facts().image.iccProfile.size(), 100u);
    image.pngsave(path("b.png").c_str());
    EXPECT_TRUE(open(path("b.png"))->facts().image.iccProfile.empty());
}

TEST_F(MemoryPyramidTest, ColoursAreConvertedOnRequest) {
    Directory inks = level(40, 30, 4, 1);
    inks.photometric = PHOTOMETRIC_SEPARATED;
    std::string const file = write({inks});
    auto const plain = open(file);
    EXPECT_EQ(plain->facts().image.colourSpace, "CMYK");
    EXPECT_EQ(plain->facts().image.layout.colours, 0u);
    EXPECT_TRUE(plain->facts().image.convertible);
    EXPECT_TRUE(readAll(*plain->reader()) == inks.bytes);
    PyramidOptions options;
    options.selection.toSrgb = true;
    auto const converted = open(file, options);
    EXPECT_EQ(converted->facts().image.layout.bands, 3u);
    EXPECT_EQ(readAll(*converted->reader()).size(), 40u * 30 * 3);
}

TEST_F(MemoryPyramidTest, ACheckStopsDecodingAndTheNextReaderGoesOn) {
    struct Stop {};
    testimages::writePattern16(path("a.png"), "", kWidth, kHeight, 3);
    auto const pyramid = open(path("a.png"));
    auto const stopped = pyramid->reader([] { throw Stop(); });
    EXPECT_THROW(readAll(*stopped), Stop);
    EXPECT_TRUE(readAll(*pyramid->reader()) == expected16(".png"));
}

TEST_F(MemoryPyramidTest, ACheckThatComesLaterStopsReading) {
    struct Stop {};
    testimages::writePattern8(path("a.png"), "", kWidth, kHeight, 3);
    auto const pyramid = open(path("a.png"));
    auto const reader = pyramid->reader();
    reader->setCheck([] { throw Stop(); });
    EXPECT_THROW(readAll(*reader), Stop);
    reader->setCheck({});
    EXPECT_EQ(readAll(*reader).size(), kWidth * kHeight * 3);
}
