#include "host/output/TiffWriter.h"
#include "host/HostError.h"
#include "host/image/ImageReader.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <memory>

using testimages::Pixels;

namespace {

using Names = std::vector<std::string>;

void write(std::string const& path, Pixels const& pixels, size_t rows) {
    OutputFile file(path);
    file.replace = true;
    TiffWriter tiff(file, {pixels.width, pixels.height, pixels.bands, 8, 0, 0});
    for (size_t y = 0; y < rows; ++y)
        tiff.writeRows(&pixels.samples[std::min(y, pixels.height - 1) * pixels.width * pixels.bands], 1);
    tiff.finish();
}

// From the file's tags; 0 without them. ImageReader ignores print densities.
double pixelsPerMillimetreOf(std::string const& path) {
    std::unique_ptr<TIFF, decltype(&TIFFClose)> const tiff(TIFFOpen(path.c_str(), "r"), &TIFFClose);
    float pixels = 0;
    std::uint16_t unit = 0;
    if (TIFFGetField(tiff.get(), TIFFTAG_XRESOLUTION, &pixels) != 1) return 0;
    EXPECT_EQ(TIFFGetField(tiff.get(), TIFFTAG_RESOLUTIONUNIT, &unit), 1);
    EXPECT_EQ(unit, RESUNIT_CENTIMETER);
    return static_cast<double>(pixels) / 10;
}

} // namespace

TEST(TiffWriterTest, RowsAreReadBackAsWritten) {
    TemporaryFolder const folder;
    for (size_t bands = 1; bands <= 4; ++bands) {
        Pixels const pixels = testimages::pattern8(2000, 145, bands);
        write(folder.path("a.tif"), pixels, pixels.height);
        EXPECT_EQ(testimages::difference(testimages::readByVips(folder.path("a.tif")), pixels), "") << bands;
    }
    EXPECT_EQ(folder.names(), Names{"a.tif"});
}

TEST(TiffWriterTest, SixteenBitsAndTheResolutionAreReadBackAsWritten) {
    TemporaryFolder const folder;
    std::vector<std::uint8_t> rows(50 * 40 * 3 * 2);
    for (size_t y = 0, i = 0; y < 40; ++y)
        for (size_t x = 0; x < 50; ++x)
            for (size_t band = 0; band < 3; ++band, i += 2) {
                std::uint16_t const sample = testimages::sample16(x, y, band);
                std::memcpy(&rows[i], &sample, 2);
            }
    TiffWriter tiff(folder.path("a.tif"), {50, 40, 3, 16, 0.25, 0.5});
    tiff.writeRows(rows.data(), 1);
    tiff.writeRows(&rows[50 * 6], 39);
    tiff.finish();
    ImageReader reader(folder.path("a.tif"), ImageReader::Samples::kAsStored);
    std::vector<std::uint8_t> read;
    reader.read({0, 0, 50, 40}, read);
    EXPECT_EQ(read, rows);
    EXPECT_EQ(reader.pixelsPerMillimetreX(), 4000);
    EXPECT_EQ(reader.pixelsPerMillimetreY(), 2000);
}

TEST(TiffWriterTest, AResolutionThatIsNoFractionOfTwoWordsIsLeftOut) {
    TemporaryFolder const folder;
    auto const resolution = [&](double micronsX, double micronsY) {
        TiffWriter::Format const format{1, 1, 1, 8, micronsX, micronsY};
        OutputFile file(folder.path("a.tif"));
        file.replace = true;
        TiffWriter tiff(file, format);
        std::uint8_t const pixel = 7;
        tiff.writeRows(&pixel, 1);
        tiff.finish();
        double const read = pixelsPerMillimetreOf(file.path);
        EXPECT_EQ(format.hasResolution(), read > 0);
        return read;
    };
    EXPECT_DOUBLE_EQ(resolution(1e-5, 1), 1e8);
    EXPECT_NEAR(resolution(1e12, 1), 1e-9, 1e-10);
    for (double const nonsense : {0.0, 1e-300, 2e-6, 1e300}) {
        EXPECT_EQ(resolution(nonsense, 1), 0) << nonsense;
        EXPECT_EQ(resolution(1, nonsense), 0) << nonsense;
    }
}

// Bytes 2 and 3 are the version: 42, or 43 for BigTIFF. The picture is never finished, so it needs no rows.
TEST(TiffWriterTest, WhatMayPass4GiBIsBigTiff) {
    TemporaryFolder const folder;
    for (auto const& [height, version] : std::vector<std::pair<size_t, char>>{{30'000, 42}, {50'000, 43}}) {
        TiffWriter tiff(folder.path("a.tif"), {40'000, height, 3, 8, 0, 0});
        std::string const file = readFile(folder.path(folder.names().at(0)));
        EXPECT_EQ(file.at(2), version) << height;
    }
    EXPECT_EQ(folder.names(), Names{});
}

TEST(TiffWriterTest, MissingRowsAreAnErrorAndLeaveNoFile) {
    TemporaryFolder const folder;
    try {
        write(folder.path("a.tif"), testimages::pattern8(20, 20, 3), 19);
        FAIL() << "nothing was thrown";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::UnwritableOutput);
    }
    EXPECT_EQ(folder.names(), Names{});
}

TEST(TiffWriterTest, MoreRowsThanThePictureHasAreAnError) {
    TemporaryFolder const folder;
    EXPECT_THROW(write(folder.path("a.tif"), testimages::pattern8(20, 20, 3), 20 + 1), HostError);
    EXPECT_EQ(folder.names(), Names{});
}

TEST(TiffWriterTest, AMissingFolderIsAnUnwritableOutput) {
    TemporaryFolder const folder;
    EXPECT_THROW(TiffWriter(folder.path("none/a.tif"), {2, 2, 3, 8, 0, 0}), HostError);
}
