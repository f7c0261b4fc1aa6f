// Compressed formats: what is taken from them, what is refused, and that damage is an error.
#include "tests/host/image/ImageFixture.h"
#include "tests/host/image/TestCodecs.h"
#include "tests/host/image/TestTiff.h"
#include "tests/support/TestImages.h"

#include <tiffio.h>
#include <vips/vips8>
#include <zlib.h>

using testcodecs::number;
using vips::VImage;

namespace {

class CodecReadingTest : public ImageFixture {
protected:
    // Frames one below the other, libvips' form of animations.
    std::string animation(std::string const& name, std::string const& options, int frames) const {
        std::vector<std::uint8_t> samples;
        for (int i = 0; i < frames * 16 * 16; ++i)
            for (int band = 0; band < 3; ++band)
                samples.push_back(static_cast<std::uint8_t>(50 * (i / 256) + 10 * band));
        VImage image = VImage::new_from_memory(samples.data(), samples.size(), 16, 16 * frames, 3, VIPS_FORMAT_UCHAR)
                           .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_sRGB)));
        image.set("page-height", 16);
        image.write_to_file((path(name) + options).c_str());
        return path(name);
    }

    std::string write(std::string const& name, std::string const& content) const {
        writeFile(path(name), content);
        return path(name);
    }

    // Every pixel of such a frame.
    static void expectFrame(std::string const& file, size_t page) {
        // libvips' GIF writer leaves out pixels that stay from frame to frame, and so makes alpha.
        Samples const samples = filesamples::withBands(readAll(file, withPage(page)), {1, 2, 3});
        ASSERT_EQ(samples.values.size(), 768u);
        for (size_t i = 0; i < samples.values.size(); ++i)
            ASSERT_EQ(samples.values[i], 50.0 * static_cast<double>(page - 1) + 10.0 * static_cast<double>(i % 3)) << i;
    }
};

std::string chunk(std::string const& name, std::string const& content) {
    auto const* const bytes = reinterpret_cast<Bytef const*>(name.data());
    uLong crc = crc32(crc32(0, nullptr, 0), bytes, static_cast<uInt>(name.size()));
    crc = crc32(crc, reinterpret_cast<Bytef const*>(content.data()), static_cast<uInt>(content.size()));
    return number(content.size(), 4) + name + content + number(crc, 4);
}

std::string deflated(std::string const& bytes) {
    uLongf size = compressBound(static_cast<uLong>(bytes.size()));
    std::string packed(size, '\0');
    compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<Bytef const*>(bytes.data()),
             static_cast<uLong>(bytes.size()));
    packed.resize(size);
    return packed;
}

// A PNG of 8-bit grey, with additional chunks before its pixels.
std::string png(std::uint32_t width, std::uint32_t height, std::string const& rows, std::string const& more = "",
                char interlaced = 0) {
    std::string const header = number(width, 4) + number(height, 4) + std::string("\x08\x00\x00\x00", 4) + interlaced;
    return "\x89PNG\r\n\x1a\n" + chunk("IHDR", header) + more + chunk("IDAT", deflated(rows)) + chunk("IEND", "");
}

// Objects one after the other; libpoppler finds them without the cross-reference table.
std::string pdf(int pages) {
    std::string text = "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n2 0 obj<</Type/Pages/Count " +
                       std::to_string(pages) + "/Kids[";
    for (int i = 0; i < pages; ++i)
        text += std::to_string(3 + i) + " 0 R ";
    text += "]>>endobj\n";
    for (int i = 0; i < pages; ++i)
        text += std::to_string(3 + i) + " 0 obj<</Type/Page/Parent 2 0 R/MediaBox[0 0 " + std::to_string(20 + 10 * i) +
                " 30]>>endobj\n";
    return text + "trailer<</Root 1 0 R>>\n%%EOF\n";
}

} // namespace

TEST_F(CodecReadingTest, FramesArePages) {
    for (std::string const& file : {animation("a.gif", "", 3), animation("a.webp", "[lossless]", 3)}) {
        EXPECT_EQ(refusal(file), "'" + file + "' holds 3 frames; one of them is taken: choose --page N (1 to 3)");
        for (size_t page = 1; page <= 3; ++page) {
            expectFrame(file, page);
            EXPECT_EQ(ImageReader(file, withPage(page)).selection().text, "frame " + std::to_string(page) + " of 3");
        }
        EXPECT_EQ(misuse(file, withPage(4)), "'" + file + "' holds 3 frames; --page is 1 to 3");
    }
    for (std::string const& file : {animation("a.gif", "", 1), animation("a.webp", "[lossless]", 1)})
        expectFrame(file, 1);
}

TEST_F(CodecReadingTest, OfAnAnimatedPngTheFirstFrameIsTakenWhereItIsAskedFor) {
    std::string const rows("\x00\x05\x06\x00\x07\x08", 6);
    std::string const file = write("a.png", png(2, 2, rows, chunk("acTL", number(4, 4) + number(0, 4))));
    EXPECT_EQ(refusal(file), "'" + file + "' holds 4 frames; one of them is taken: choose --page N (1 to 4)");
    EXPECT_EQ(valuesOf(file, withPage(1)), (std::vector<double>{5, 6, 7, 8}));
    EXPECT_EQ(misuse(file, withPage(2)), "of the 4 frames of '" + file + "' the first alone is read; --page is 1");
    EXPECT_TRUE(has(misuse(file, withPage(5)), "--page is 1 to 4"));
    for (std::string const& more :
         {std::string(), chunk("acTL", number(1, 4) + number(0, 4)), chunk("tEXt", "acTL"), chunk("acTL", "")}) {
        write("a.png", png(2, 2, rows, more));
        EXPECT_EQ(valuesOf(file), (std::vector<double>{5, 6, 7, 8}));
    }
    // A chunk after the pixels has no effect.
    std::string late = png(2, 2, rows);
    late.insert(late.size() - 12, chunk("acTL", number(4, 4) + number(0, 4)));
    write("a.png", late);
    EXPECT_EQ(valuesOf(file), (std::vector<double>{5, 6, 7, 8}));
}

TEST_F(CodecReadingTest, APngThatClaimsMoreThanItsFileHoldsIsRefused) {
    std::string const file = write("a.png", png(8000000, 1000, std::string(100, '\0')));
    EXPECT_TRUE(has(refusal(file), "its header says 8000000 x 1000 pixels, which are more than the file holds"))
        << refusal(file);
    // The largest picture that the file can hold.
    std::string const black = png(9000, 9000, std::string(9000 * 9001, '\0'));
    write("a.png", black);
    EXPECT_EQ(ImageReader(file, lossless()).width(), 9000u);
}

// The rows exist: 60 MB of zeros, compressed.
TEST_F(CodecReadingTest, RowsThatWouldFillTheMemoryAreRefused) {
    std::string const file = write("a.png", png(6000000, 10, std::string(10 * 6000001, '\0')));
    EXPECT_EQ(ImageReader(file, lossless()).width(), 6000000u);
    write("a.png", png(6000, 10000, std::string(size_t{10000} * 6001, '\0'), "", 1));
    EXPECT_EQ(ImageReader(file, lossless()).width(), 6000u);
    // An interlaced picture is held whole: 4.5 GB.
    // NOLINTNEXTLINE(bugprone-string-constructor)
    write("a.png", png(90000, 50000, std::string(60000000, '\0'), chunk("tEXt", std::string(4500000, 'x')), 1));
    EXPECT_EQ(refusal(file),
              "'" + file +
                  "' (90000 x 50000 pixels, PNG) takes about 4.5 GB of memory to read, more than the 4.0 GB "
                  "that a picture may take; make a tiled TIFF of it, or cut it into parts, with another "
                  "program");
}

TEST_F(CodecReadingTest, PagesOfAPdfAreDrawnAndThatIsTold) {
    std::string const file = write("a.pdf", pdf(2));
    EXPECT_EQ(refusal(file), "'" + file + "' holds 2 pages; one of them is taken: choose --page N (1 to 2)");
    ImageReader reader(file, withPage(2));
    EXPECT_EQ(reader.width(), 30u);
    EXPECT_EQ(reader.height(), 30u);
    EXPECT_EQ(reader.selection().text, "page 2 of 2; drawn at 72 pixels per inch");
    EXPECT_EQ(reader.notes(),
              std::vector<std::string>{"'" + file + "' has no pixels of its own and is drawn at 72 pixels per inch"});
    EXPECT_EQ(reader.pixelsPerMillimetreX(), 0);
    write("a.pdf", pdf(1));
    EXPECT_EQ(ImageReader(file, lossless()).width(), 20u);
}

// Tiles and levels as in a scanner's TIFF; OpenSlide has no alpha for the rest.
TEST_F(CodecReadingTest, SlidesHaveNoAlphaNoPagesAndASizeOfTheirPixels) {
    auto const tiles = [](std::uint32_t side) {
        std::vector<std::uint8_t> samples(size_t{side} * side * 3);
        for (size_t i = 0; i < samples.size(); ++i)
            samples[i] = static_cast<std::uint8_t>(i * 7 + i / 900);
        auto made = testtiff::directory(side, side, 3, samples);
        made.tile = 16;
        made.compression = COMPRESSION_LZW;
        made.description =
            "Aperio Image Library v1\r\n" + std::to_string(side) + "x" + std::to_string(side) + "|MPP = 0.2500";
        return made;
    };
    std::string const slide = path("a.svs");
    // The second directory is a reduced-size copy of the whole.
    auto thumbnail = tiles(16);
    thumbnail.tile = 0;
    testtiff::write(slide, {tiles(64), thumbnail, tiles(32)});
    ImageReader const reader(slide, lossless());
    EXPECT_EQ(reader.bands(), 3u);
    EXPECT_DOUBLE_EQ(reader.pixelsPerMillimetreX(), 4000);
    EXPECT_TRUE(has(reader.description(), "slide")) << reader.description();
    EXPECT_EQ(filesamples::difference(readAll(slide), filesamples::readTiff(slide, 1)), "");
    EXPECT_TRUE(has(misuse(slide, withPage(2)), "holds one picture"));
    // What the scanner says, without the places of levels.
    std::vector<std::string> const properties = propertiesOf(slide);
    EXPECT_EQ(std::count(properties.begin(), properties.end(), "openslide.vendor: aperio"), 1);
    EXPECT_EQ(std::count(properties.begin(), properties.end(), "aperio.MPP: 0.2500"), 1);
    for (std::string const& line : properties)
        EXPECT_NE(line.rfind("openslide.level", 0), 0u) << line;
}

TEST_F(CodecReadingTest, PhotographsSayHowTheyWereTaken) {
    testimages::writePattern8(path("a.jpg"), "", 8, 6, 3);
    EXPECT_TRUE(propertiesOf(path("a.jpg")).empty());
    VImage image = VImage::new_from_file(path("a.jpg").c_str()).copy_memory();
    image.set("exif-ifd0-Make", "Maker");
    image.set("exif-ifd2-ExposureTime", "1/125");
    image.set("exif-ifd2-ISOSpeedRatings", "400");
    image.write_to_file(path("b.jpg").c_str());
    auto const properties = propertiesOf(path("b.jpg"));
    for (std::string const line : {"make: Maker", "exposure in seconds: 1/125", "ISO speed: 400"})
        EXPECT_EQ(std::count(properties.begin(), properties.end(), line), 1) << line;
}

TEST_F(CodecReadingTest, PhotographsSayHowTheyAreToBeTurned) {
    for (std::string const name : {"a.jpg", "a.webp"}) {
        testimages::writePattern8(path(name), "", 8, 6, 3);
        VImage image = VImage::new_from_file(path(name).c_str()).copy_memory();
        image.set("orientation", 8);
        image.write_to_file(path("turned-" + std::string(name)).c_str());
        ImageReader const reader(path("turned-" + std::string(name)), lossless());
        EXPECT_EQ(reader.notes(), std::vector<std::string>{
                                      "'" + path("turned-" + std::string(name)) +
                                      "' asks to be turned or mirrored (orientation 8); its pixels are taken as they "
                                      "lie in the file"});
        EXPECT_EQ(reader.width(), 8u);
        EXPECT_TRUE(ImageReader(path(name), lossless()).notes().empty()) << name;
    }
}

TEST_F(CodecReadingTest, PngSaysItToo) {
    std::string const rows("\x00\x05\x06\x00\x07\x08", 6);
    auto const exif = [](bool bigEndian, unsigned tag, unsigned orientation) {
        auto const order = [&](std::string const& bytes) {
            return bigEndian ? bytes : std::string(bytes.rbegin(), bytes.rend());
        };
        auto const word = [&](unsigned value) { return order(number(value, 2)); };
        auto const wide = [&](unsigned value) { return order(number(value, 4)); };
        // Two entries, a different one first.
        return (bigEndian ? "MM" : "II") + word(42) + wide(8) + word(2) + word(256) + word(3) + wide(1) + word(2) +
               word(0) + word(tag) + word(3) + wide(1) + word(orientation) + word(0) + wide(0);
    };
    auto const notes = [&](std::string const& block) {
        return ImageReader(write("a.png", png(2, 2, rows, chunk("eXIf", block))), lossless()).notes().size();
    };
    for (bool const bigEndian : {false, true}) {
        EXPECT_EQ(notes(exif(bigEndian, 274, 6)), 1u);
        for (unsigned const upright : {1U, 0U, 9U})
            EXPECT_EQ(notes(exif(bigEndian, 274, upright)), 0u) << upright;
        EXPECT_EQ(notes(exif(bigEndian, 275, 6)), 0u);
        EXPECT_EQ(notes(exif(bigEndian, 274, 6).substr(0, 24)), 0u) << "cut off";
    }
}

TEST_F(CodecReadingTest, InksOfAJpegAreRefusedConvertedOrTakenAsTheyAre) {
    std::vector<std::uint8_t> const inks{0, 0, 0, 0, 0, 0, 0, 255, 10, 200, 30, 40};
    VImage::new_from_memory(const_cast<std::uint8_t*>(inks.data()), inks.size(), 3, 1, 4, VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_CMYK)))
        .write_to_file((path("a.jpg") + "[Q=100]").c_str());
    EXPECT_EQ(refusal(path("a.jpg")),
              "'" + path("a.jpg") + "' holds CMYK; grey or RGB is taken, with alpha or without: choose --to-srgb");
    EXPECT_EQ(filesamples::difference(readAll(path("a.jpg"), withBands({1, 2, 4})),
                                      filesamples::withBands(filesamples::read(path("a.jpg")), {1, 2, 4})),
              "");
    auto const rgb = valuesOf(path("a.jpg"), toSrgb());
    ASSERT_EQ(rgb.size(), 9u);
    for (size_t band = 0; band < 3; ++band) {
        EXPECT_GT(rgb[band], 240) << "paper is white";
        EXPECT_LT(rgb[3 + band], 60) << "black ink is dark";
    }
    EXPECT_LT(rgb[7] + 50, rgb[6]) << "magenta ink takes green away";
}

// Radiance's linear light, by sRGB's formula.
TEST_F(CodecReadingTest, LightIsConvertedByTheFormula) {
    std::vector<float> light(300);
    for (size_t i = 0; i < light.size(); ++i)
        light[i] = static_cast<float>(i) / 200;
    VImage::new_from_memory(light.data(), light.size() * 4, 100, 1, 3, VIPS_FORMAT_FLOAT)
        .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_scRGB)))
        .write_to_file(path("a.hdr").c_str());
    std::string const file = path("a.hdr");
    EXPECT_EQ(refusal(file),
              "'" + file + "' holds linear light; grey or RGB is taken, with alpha or without: choose --to-srgb");
    Samples expected = filesamples::read(file);
    for (double& value : expected.values) {
        double const linear = std::min(value, 1.0);
        value = 255 * (linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055);
    }
    EXPECT_EQ(filesamples::difference(readAll(file, toSrgb()), expected, 1), "");
    EXPECT_EQ(
        ImageReader(file, shown()).notes(),
        std::vector<std::string>{"'" + file +
                                 "' holds linear light: converted to sRGB of 8 bits; what is brighter than white is "
                                 "clipped"});
    // Or taken as plain numbers.
    Samples const own = filesamples::read(file);
    EXPECT_EQ(filesamples::difference(readAll(file, withRange(0, 1.5)), filesamples::scaled(own, 0, 1.5)), "");
}

// By the CIE's formulas, for libvips' daylight.
TEST_F(CodecReadingTest, LabIsConvertedByTheFormula) {
    std::vector<float> const lab{0, 0, 0, 100, 0, 0, 50, 0, 0, 60, 30, -20, 30, -10, 25, 80, 5, 60};
    VImage::new_from_memory(const_cast<float*>(lab.data()), lab.size() * 4, 6, 1, 3, VIPS_FORMAT_FLOAT)
        .copy(VImage::option()->set("interpretation", static_cast<int>(VIPS_INTERPRETATION_LAB)))
        .write_to_file(path("a.tif").c_str());
    Samples expected{6, 1, 3, {}};
    for (size_t i = 0; i < lab.size(); i += 3) {
        auto const light = [](double f) { return f > 6.0 / 29 ? f * f * f : (f - 4.0 / 29) * 3 * 36 / 841; };
        double const fy = (static_cast<double>(lab[i]) + 16) / 116;
        double const x = 0.95047 * light(fy + static_cast<double>(lab[i + 1]) / 500);
        double const y = light(fy);
        double const z = 1.08883 * light(fy - static_cast<double>(lab[i + 2]) / 200);
        for (double const linear :
             {3.2404542 * x - 1.5371385 * y - 0.4985314 * z, -0.9692660 * x + 1.8760108 * y + 0.0415560 * z,
              0.0556434 * x - 0.2040259 * y + 1.0572252 * z}) {
            double const kept = std::clamp(linear, 0.0, 1.0);
            expected.values.push_back(255 *
                                      (kept <= 0.0031308 ? 12.92 * kept : 1.055 * std::pow(kept, 1 / 2.4) - 0.055));
        }
    }
    EXPECT_EQ(filesamples::difference(readAll(path("a.tif"), toSrgb()), expected, 1.5), "");
    EXPECT_TRUE(has(refusal(path("a.tif")), "holds Lab;"));
}

TEST_F(CodecReadingTest, DamageInTheMiddleIsAnErrorAndNotGrey) {
    // WebP and JPEG 2000 have no checksum.
    for (std::string const name : {"a.jpg", "a.png", "a.jxl"}) {
        testimages::writePattern8(path(name), name == std::string("a.jpg") ? "[Q=90]" : "", 640, 480, 3);
        std::string file = readFile(path(name));
        ASSERT_EQ(readAll(path(name)).width, 640u) << name;
        for (size_t i = file.size() / 2; i < file.size() / 2 + 200; ++i)
            file[i] = static_cast<char>(0xff - (i % 7));
        writeFile(path(name), file);
        EXPECT_TRUE(has(refusal(path(name)), "undamaged")) << name;
    }
}

// A user does not know libvips' functions and callbacks: the message leaves them out.
TEST_F(CodecReadingTest, ErrorsOfDecodersNameNoFunctions) {
    for (std::string const name : {"a.jpg", "a.png", "a.webp", "a.gif", "a.jp2", "a.avif"}) {
        testimages::writePattern8(path(name), "", 160, 120, 3);
        truncateFile(path(name), 50);
        std::string const text = refusal(path(name));
        for (std::string const function : {"source_", "load", "vips", "Vips", "webp: ", "heif: "})
            EXPECT_FALSE(has(text.substr(text.rfind(name)), function)) << text;
        EXPECT_TRUE(has(text, "': ") && !has(text, "': ;") && has(text, "; check that it is an undamaged image"))
            << text;
    }
}

// The decoder fills a truncated JPEG tile with grey, and reports it.
TEST_F(CodecReadingTest, DamageInATileOfJpegIsAnErrorAndNotGrey) {
    testimages::writePattern8(path("a.tif"), "[tile,tile-width=256,tile-height=256,compression=jpeg,Q=90]", 512, 512,
                              3);
    std::string file = readFile(path("a.tif"));
    size_t const scan = file.find("\xff\xda", file.size() / 4);
    ASSERT_NE(scan, std::string::npos);
    for (size_t i = scan + 2000; i < scan + 2400; ++i)
        file[i] = static_cast<char>(i % 3 == 0 ? 0xff : 0xd9);
    writeFile(path("a.tif"), file);
    EXPECT_TRUE(has(refusal(path("a.tif")), "undamaged"));
}

// Bytes between two segments of a JPEG have no meaning.
TEST_F(CodecReadingTest, BytesThatHoldNothingAreNoDamage) {
    testimages::writePattern8(path("a.jpg"), "", 64, 48, 3);
    std::string file = readFile(path("a.jpg"));
    size_t const table = file.find("\xff\xc4");
    ASSERT_NE(table, std::string::npos);
    auto const before = valuesOf(path("a.jpg"));
    std::string const whole = file;
    file.insert(table, "abc");
    writeFile(path("a.jpg"), file);
    EXPECT_EQ(valuesOf(path("a.jpg")), before);
    // The last numbers of the scan's header, which a baseline file does not use.
    file = whole;
    size_t const scan = file.find("\xff\xda");
    ASSERT_NE(scan, std::string::npos);
    size_t const components = static_cast<unsigned char>(file[scan + 4]);
    ASSERT_EQ(file[scan + 6 + 2 * components], 63);
    file[scan + 6 + 2 * components] = 0;
    writeFile(path("a.jpg"), file);
    EXPECT_EQ(valuesOf(path("a.jpg")), before);
}

TEST_F(CodecReadingTest, FilesThatOnlyOtherLoadersOfLibvipsTakeAreRefused) {
    std::string const end =
        "': it is in none of the formats that are read, or its start is damaged; convert it to one of "
        "FITS, PNM, PAM, PFM, BMP, VIPS, JPEG XL, PNG, WebP, JPEG, TIFF, GIF, JPEG 2000, HEIF, "
        "PDF, Radiance";
    // Sun's raster files, which ImageMagick reads: eight numbers and pixels.
    std::string const sun = number(0x59a66a95, 4) + number(2, 4) + number(1, 4) + number(24, 4) + number(6, 4) +
                            number(1, 4) + number(0, 8) + "abcdef";
    for (auto const& [name, content] : std::vector<std::pair<std::string, std::string>>{
             {"a.ras", sun},
             {"a.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='4' height='4'/>"},
             {"a.csv", "1,2\n3,4\n"},
             {"a.mat", "2 2\n1 2\n3 4\n"},
             {"a.dat", std::string(3000, '\x07')},
             {"a.miff", "id=ImageMagick  version=1.0\n"}}) {
        std::string const file = write(name, content);
        EXPECT_EQ(refusal(file), std::string("cannot read '").append(file).append(end));
    }
    std::string const empty = write("a.png", "");
    EXPECT_EQ(refusal(empty), "cannot read '" + empty + "': the file is empty; copy or save the picture once more");
}

TEST_F(CodecReadingTest, NothingIsReadByALoaderThatIsBlocked) {
    std::string const file = write("a.ppm", "P6\n1 1\n255\nabc");
    EXPECT_EQ(valuesOf(file).size(), 3u) << "which starts libvips or not";
    testimages::writePattern8(path("a.png"), "", 4, 4, 3);
    EXPECT_EQ(readAll(path("a.png")).width, 4u);
    for (char const* const loader : {"magickload", "ppmload", "svgload", "csvload", "matrixload", "vipsload",
                                     "fitsload", "matload", "analyzeload", "jxlload"}) {
        VImage image;
        try {
            VImage::call(loader, VImage::option()->set("filename", file.c_str())->set("out", &image));
            ADD_FAILURE() << loader;
        } catch (vips::VError const& error) {
            EXPECT_TRUE(has(error.what(), "operation is blocked")) << error.what();
        }
        vips_error_clear();
    }
    // The library opens the file before it checks the type, and leaks 95 bytes if it is of another.
    VipsOperation* const exr = vips_operation_new("openexrload");
    ASSERT_NE(exr, nullptr);
    EXPECT_NE(vips_operation_get_flags(exr) & VIPS_OPERATION_BLOCKED, 0);
    g_object_unref(exr);
}

TEST_F(CodecReadingTest, APngWithoutImageDataIsNoPicture) {
    std::string const header = number(16, 4) + number(16, 4) + std::string("\x08\x02\0\0\0", 5);
    EXPECT_NE(refusal(write("a.png", "\x89PNG\r\n\x1a\n" + chunk("IHDR", header))), "");
}
