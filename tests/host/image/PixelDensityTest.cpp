// Which files state the physical size of a pixel.
#include "host/image/PixelDensity.h"

#include "tests/host/image/ImageFixture.h"
#include "tests/host/image/TestTiff.h"
#include "tests/support/TestImages.h"

#include <tiffio.h>
#include <vips/vips8>

#include <limits>

using pixeldensity::Origin;

namespace {

constexpr double kInch = 25.4;

double counted(Origin origin, double dotsPerInchX, double dotsPerInchY) {
    ImageFacts facts;
    pixeldensity::set(facts, origin, dotsPerInchX / kInch, dotsPerInchY / kInch);
    EXPECT_EQ(facts.pixelsPerMillimetreX > 0, facts.pixelsPerMillimetreY > 0);
    return facts.pixelsPerMillimetreX * kInch;
}

bool counts(Origin origin, double dotsPerInch) {
    return counted(origin, dotsPerInch, dotsPerInch) > 0;
}

class PixelDensityTest : public ImageFixture {
protected:
    // A file of one pixel with a density.
    std::string file(std::string const& name, double dotsPerInch, std::string const& options = "") const {
        std::uint8_t const pixel = 7;
        vips::VImage::new_from_memory(const_cast<std::uint8_t*>(&pixel), 1, 1, 1, 1, VIPS_FORMAT_UCHAR)
            .copy(vips::VImage::option()
                      ->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_B_W))
                      ->set("xres", dotsPerInch / kInch)
                      ->set("yres", dotsPerInch / kInch))
            .write_to_file((path(name) + options).c_str());
        return path(name);
    }

    double tiff(std::uint16_t unit, double resolution, std::string const& description = "") const {
        auto directory = testtiff::directory(1, 1, 1, std::vector<std::uint8_t>{7});
        directory.resolutionUnit = unit;
        directory.xResolution = resolution;
        directory.yResolution = resolution;
        directory.description = description;
        testtiff::write(path("a.tif"), {directory});
        ImageReader const reader(path("a.tif"), lossless());
        EXPECT_EQ(reader.pixelsPerMillimetreX(), reader.pixelsPerMillimetreY());
        return reader.pixelsPerMillimetreX();
    }
};

std::string ome(std::string const& attributes) {
    return R"(<?xml version="1.0"?><OME><Image ID="Image:0"><Pixels ID="Pixels:0" )" + attributes +
           R"( SizeX="1"><Channel/></Pixels></Image></OME>)";
}

} // namespace

TEST_F(PixelDensityTest, WhatPrintersAndScreensHaveIsNoPhysicalSize) {
    for (double const density : {72.0, 96.0, 150.0, 180.0, 240.0, 300.0, 350.0})
        for (double const rounded : {density, density * 1.004, density * 0.996}) {
            EXPECT_FALSE(counts(Origin::Hint, rounded)) << rounded;
            EXPECT_FALSE(counts(Origin::Tag, rounded)) << rounded;
            EXPECT_TRUE(counts(Origin::Instrument, rounded)) << rounded;
        }
    for (double const coarse : {1.0, 25.4, 71.0}) {
        EXPECT_FALSE(counts(Origin::Tag, coarse)) << coarse;
        EXPECT_TRUE(counts(Origin::Instrument, coarse)) << coarse;
    }
    for (double const scanned : {100.0, 200.0, 400.0, 600.0, 1200.0, 2400.0, 100000.0})
        EXPECT_TRUE(counts(Origin::Tag, scanned)) << scanned;
    for (double const density : {100.0, 600.0, 1200.0})
        EXPECT_FALSE(counts(Origin::Hint, density)) << density;
    for (double const density : {1201.0, 25400.0})
        EXPECT_TRUE(counts(Origin::Hint, density)) << density;
}

TEST_F(PixelDensityTest, BothAxesHaveToHaveOne) {
    EXPECT_EQ(counted(Origin::Tag, 72, 600), 0);
    EXPECT_EQ(counted(Origin::Tag, 600, 72), 0);
    EXPECT_NEAR(counted(Origin::Tag, 600, 800), 600, 1e-9);
    EXPECT_EQ(counted(Origin::Instrument, 0, 600), 0);
    EXPECT_EQ(counted(Origin::Instrument, 600, 0), 0);
}

// The importer reports that the store cannot hold it.
TEST_F(PixelDensityTest, ASizeThatCannotBeIsHandedOn) {
    for (double const nonsense : {-3.0, 1e-9, 1e13, std::numeric_limits<double>::infinity()})
        for (auto const& [x, y] : std::vector<std::pair<double, double>>{{nonsense, 600}, {600, nonsense}}) {
            ImageFacts facts;
            pixeldensity::set(facts, Origin::Instrument, x, y);
            EXPECT_EQ(facts.pixelsPerMillimetreX, x);
            EXPECT_EQ(facts.pixelsPerMillimetreY, y);
        }
}

TEST_F(PixelDensityTest, JpegPngAndVipsSayHowLargeTheyAreToBePrinted) {
    for (double const density : {72.0, 96.0, 150.0, 300.0, 600.0})
        for (std::string const& name : {file("a.jpg", density), file("a.png", density), file("a.v", density)}) {
            EXPECT_EQ(ImageReader(name, lossless()).pixelsPerMillimetreX(), 0) << name << density;
            EXPECT_EQ(ImageReader(name, lossless()).pixelsPerMillimetreY(), 0) << name << density;
        }
    // Above any print density: a microscope's.
    for (std::string const& name : {file("a.jpg", 25400), file("a.png", 25400), file("a.v", 25400)})
        EXPECT_NEAR(ImageReader(name, lossless()).pixelsPerMillimetreX(), 1000, 0.01) << name;
}

TEST_F(PixelDensityTest, FormatsWithoutDensityHaveNone) {
    for (std::string const& name : {file("a.webp", 25400, "[lossless]"), file("a.gif", 25400), file("a.jp2", 25400),
                                    file("a.fits", 25400), file("a.pgm", 25400), file("a.avif", 25400)})
        EXPECT_EQ(ImageReader(name, lossless()).pixelsPerMillimetreX(), 0) << name;
}

TEST_F(PixelDensityTest, TiffSaysItWithAUnit) {
    EXPECT_EQ(tiff(RESUNIT_CENTIMETER, 40000), 4000);
    EXPECT_NEAR(tiff(RESUNIT_INCH, 2540), 100, 1e-4);
    EXPECT_EQ(tiff(RESUNIT_NONE, 40000), 0);
    EXPECT_EQ(tiff(0, 0), 0);
    EXPECT_EQ(tiff(RESUNIT_INCH, 300), 0);
    EXPECT_EQ(tiff(RESUNIT_CENTIMETER, 118.11), 0) << "300 dots per inch, converted";
    EXPECT_EQ(tiff(RESUNIT_CENTIMETER, 10), 0) << "what libvips writes where nothing is known";
}

TEST_F(PixelDensityTest, OmeSaysItInItsDescription) {
    auto const size = [](std::string const& value, std::string const& unit) {
        std::string const unitX = unit.empty() ? "" : " PhysicalSizeXUnit=\"" + unit + "\"";
        std::string const unitY = unit.empty() ? "" : " PhysicalSizeYUnit=\"" + unit + "\"";
        return ome("PhysicalSizeX=\"" + value + "\"" + unitX + " PhysicalSizeY=\"" + value + "\"" + unitY);
    };
    EXPECT_DOUBLE_EQ(tiff(0, 0, size("0.25", "")), 4000);
    for (std::string const micrometre : {"\xc2\xb5m", "\xce\xbcm", "&#181;m", "&#xB5;m", "um"})
        EXPECT_DOUBLE_EQ(tiff(0, 0, size("0.25", micrometre)), 4000) << micrometre;
    EXPECT_DOUBLE_EQ(tiff(0, 0, size("250", "nm")), 4000);
    EXPECT_DOUBLE_EQ(tiff(0, 0, size("250000", "pm")), 4000);
    EXPECT_DOUBLE_EQ(tiff(0, 0, size("0.5", "mm")), 2);
    EXPECT_DOUBLE_EQ(tiff(0, 0, size("0.5", "cm")), 0.2);
    EXPECT_DOUBLE_EQ(tiff(0, 0, size("2", "m")), 0.0005);
    // It has precedence over the tag, into which programs write anything.
    EXPECT_DOUBLE_EQ(tiff(RESUNIT_CENTIMETER, 10000, size("0.25", "")), 4000);
    for (std::string const& nothing :
         {size("0.25", "pixel"), size("0", ""), size("-1", ""), size("much", ""), ome(""), std::string("<OME>"),
          ome("PhysicalSizeX=\"0.25\""), std::string(R"(PhysicalSizeX="0.25" PhysicalSizeY="0.25")")})
        EXPECT_EQ(tiff(RESUNIT_CENTIMETER, 10000, nothing), 1000) << nothing;
}
