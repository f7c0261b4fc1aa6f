// Levels and layouts of TIFF files, which are written here with libtiff: samples are compared with those that were
// written.
#include "host/pyramid/TiffPyramid.h"

#include "tests/host/pyramid/PyramidFixture.h"
#include "tests/support/reading/FileSamples.h"

#include <algorithm>

namespace {

class TiffPyramidTest : public PyramidFixture {
protected:
    // The tiles or strips are read that the file has: it is not decoded as a whole.
    static void expectOwnUnits(Pyramid const& pyramid, Directory const& full) {
        Size const unit = pyramid.facts().levels.front().unit;
        EXPECT_EQ(unit.width, full.tile > 0 ? full.tile : full.width);
        EXPECT_EQ(unit.height, full.tile == 0 ? full.rowsPerStrip : full.tileHeight == 0 ? full.tile : full.tileHeight);
    }

    // Any layout of samples of one type comes back.
    template <class Sample>
    void expectSamples(SampleType type) {
        for (std::uint16_t const bands : Numbers{1, 2, 3, 5})
            for (bool const apart : {false, true})
                for (std::uint32_t const tile : {0u, 32u}) {
                    SCOPED_TRACE(std::to_string(bands) + " bands, apart " + std::to_string(apart) + ", tile " +
                                 std::to_string(tile));
                    Directory full = level<Sample>(70, 50, bands, 1);
                    full.planesApart = apart;
                    full.tile = tile;
                    full.rowsPerStrip = 7;
                    full.photometric = bands == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
                    if (bands == 5) full.extraSamples = {0, 0, 0, 0};
                    if (bands == 2) full.extraSamples = {0};
                    auto const pyramid = open(write({full}, bands == 2 ? "wb" : "w"));
                    EXPECT_EQ(pyramid->facts().image.layout.type, type);
                    EXPECT_EQ(pyramid->facts().image.layout.bands, bands);
                    expectOwnUnits(*pyramid, full);
                    expectLevel(*pyramid->reader(), 0, full.bytes);
                }
    }

    // Modulo 2^bits: the least of signed samples has no counterpart.
    template <class Sample>
    void expectInverted(Sample white) {
        auto const samples = noise<Sample>(40 * 20, 3);
        Directory full = level<Sample>(40, 20, 1, 3);
        full.photometric = PHOTOMETRIC_MINISWHITE;
        std::vector<Sample> expected;
        for (Sample const sample : samples) {
            if constexpr (std::is_floating_point_v<Sample>)
                expected.push_back(white - sample);
            else
                expected.push_back(
                    static_cast<Sample>(static_cast<std::uint64_t>(white) - static_cast<std::uint64_t>(sample)));
        }
        auto const pyramid = open(write({full}));
        expectOwnUnits(*pyramid, full);
        expectLevel(*pyramid->reader(), 0, bytesOf(expected));
    }

    Bytes packed(size_t width, size_t height, unsigned bits) const {
        return noise<std::uint8_t>((width * bits + 7) / 8 * height, 5);
    }

    // Numbers of 1, 2 or 4 bits, the first in the highest bits.
    static std::vector<unsigned> unpack(Bytes const& bytes, size_t width, size_t height, unsigned bits) {
        size_t const rowBytes = (width * bits + 7) / 8;
        std::vector<unsigned> numbers;
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x) {
                unsigned number = 0;
                for (unsigned bit = 0; bit < bits; ++bit) {
                    size_t const at = x * bits + bit;
                    number = number * 2 + ((bytes.at(y * rowBytes + at / 8) >> (7 - at % 8)) & 1u);
                }
                numbers.push_back(number);
            }
        return numbers;
    }

    static void patch(std::string const& file, size_t at, std::string const& bytes) {
        std::string content = readFile(file);
        content.replace(at, bytes.size(), bytes);
        writeFile(file, content);
    }

    static size_t number(std::string const& content, size_t at, size_t bytes) {
        size_t value = 0;
        for (size_t i = bytes; i-- > 0;)
            value = value * 256 + static_cast<std::uint8_t>(content.at(at + i));
        return value;
    }

    // The offset of a tag's entry in the first directory of a little-endian file.
    static size_t entryOf(std::string const& content, std::uint16_t tag) {
        size_t const directory = number(content, 4, 4);
        for (size_t i = 0; i < number(content, directory, 2); ++i)
            if (number(content, directory + 2 + 12 * i, 2) == tag) return directory + 2 + 12 * i;
        throw std::logic_error("no such tag");
    }

    // Where a value of a tag lies in the file, and its bytes.
    struct Place {
        size_t at;
        size_t bytes;
    };
    static Place placeOf(std::string const& content, std::uint16_t tag, size_t index) {
        size_t const entry = entryOf(content, tag);
        size_t const bytes = number(content, entry + 2, 2) == 3 ? 2 : 4;
        bool const isInside = number(content, entry + 4, 4) * bytes <= 4;
        return {(isInside ? entry + 8 : number(content, entry + 8, 4)) + index * bytes, bytes};
    }
    static size_t valueOf(std::string const& content, std::uint16_t tag, size_t index) {
        Place const place = placeOf(content, tag, index);
        return number(content, place.at, place.bytes);
    }
    static void setValue(std::string const& file, std::uint16_t tag, size_t index, std::uint32_t value) {
        Place const place = placeOf(readFile(file), tag, index);
        patch(file, place.at, word(value).substr(0, place.bytes));
    }

    static std::string word(std::uint32_t value) {
        std::string bytes;
        for (int i = 0; i < 4; ++i)
            bytes += static_cast<char>(value >> (8 * i));
        return bytes;
    }

    static void setNumber(std::string const& file, std::uint16_t tag, std::uint32_t value) {
        size_t const entry = entryOf(readFile(file), tag);
        patch(file, entry + 2, std::string("\x04\x00\x01\x00\x00\x00", 6) + word(value));
    }
};

} // namespace

TEST_F(TiffPyramidTest, SamplesOfEveryTypeComeBackInTilesAndStripsAndPlanes) {
    expectSamples<std::uint8_t>(SampleType::Unsigned8);
    expectSamples<std::int8_t>(SampleType::Signed8);
    expectSamples<std::uint16_t>(SampleType::Unsigned16);
    expectSamples<std::int16_t>(SampleType::Signed16);
    expectSamples<std::uint32_t>(SampleType::Unsigned32);
    expectSamples<std::int32_t>(SampleType::Signed32);
    expectSamples<float>(SampleType::Float32);
    expectSamples<double>(SampleType::Float64);
}

TEST_F(TiffPyramidTest, LosslessCompressionsComeBack) {
    for (std::uint16_t const compression :
         Numbers{COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE, COMPRESSION_DEFLATE,
                 COMPRESSION_PACKBITS, COMPRESSION_ZSTD, COMPRESSION_LZMA, COMPRESSION_WEBP})
        for (std::string const mode : {"w", "w8", "wb", "wb8"}) {
            SCOPED_TRACE(std::to_string(compression) + " " + mode);
            Directory full = level(70, 50, 3, 1);
            Directory half = reduced(35, 25, 3, 2);
            full.compression = half.compression = compression;
            auto const pyramid = open(write({full, half}, mode));
            EXPECT_EQ(pyramid->facts().image.format, "TIFF");
            EXPECT_EQ(pyramid->facts().image.pages, 1u);
            ASSERT_EQ(sizesOf(pyramid->facts()), (Sizes{"70x50", "35x25"}));
            auto const reader = pyramid->reader();
            expectLevel(*reader, 0, full.bytes);
            expectLevel(*reader, 1, half.bytes);
        }
}

TEST_F(TiffPyramidTest, JpegIsDecodedToRedGreenAndBlue) {
    for (bool const subsampled : {false, true})
        for (std::uint32_t const tile : {0u, 48u}) {
            Directory full = testtiff::directory(100, 70, 3, ramps(100, 70, 3));
            full.compression = COMPRESSION_JPEG;
            full.photometric = PHOTOMETRIC_YCBCR;
            full.subsampled = subsampled;
            full.tile = tile;
            full.rowsPerStrip = 16;
            std::string const file = write({full});
            auto const pyramid = open(file);
            EXPECT_EQ(pyramid->facts().image.layout.colours, 3u);
            expectOwnUnits(*pyramid, full);
            auto const reader = pyramid->reader();
            auto const whole = readAll(*reader);
            auto const decoded = filesamples::readTiff(file, 1);
            EXPECT_TRUE(std::vector<double>(whole.begin(), whole.end()) == decoded.values);
            // And near to what was written, so that colours are not left as YCbCr.
            double distances = 0;
            for (size_t i = 0; i < whole.size(); ++i)
                distances += std::abs(whole[i] - full.bytes[i]);
            EXPECT_LT(distances / static_cast<double>(whole.size()), 3);
            expectLevel(*reader, 0, whole);
        }
}

TEST_F(TiffPyramidTest, FewBitsAndInvertedGreyBecomeWholeSamples) {
    for (unsigned const bits : {1u, 2u, 4u, 8u})
        for (std::uint16_t const photometric : Numbers{PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE})
            for (std::uint32_t const tile : {0u, 16u}) {
                SCOPED_TRACE(std::to_string(bits) + " bits, " + std::to_string(photometric));
                Directory full;
                full.width = 37;
                full.height = 21;
                full.bits = static_cast<std::uint16_t>(bits);
                full.photometric = photometric;
                full.bytes = packed(37, 21, bits);
                full.tile = tile;
                full.rowsPerStrip = 4;
                unsigned const most = (1u << bits) - 1;
                Bytes expected;
                for (unsigned const number : unpack(full.bytes, 37, 21, bits)) {
                    unsigned const grey = number * 255 / most;
                    expected.push_back(
                        static_cast<std::uint8_t>(photometric == PHOTOMETRIC_MINISWHITE ? 255 - grey : grey));
                }
                auto const pyramid = open(write({full}));
                EXPECT_EQ(pyramid->facts().image.layout.type, SampleType::Unsigned8);
                EXPECT_EQ(pyramid->facts().image.layout.colours, 1u);
                expectOwnUnits(*pyramid, full);
                expectLevel(*pyramid->reader(), 0, expected);
            }
}

TEST_F(TiffPyramidTest, SamplesOfEveryTypeAreInvertedWhereZeroIsWhite) {
    expectInverted<std::uint8_t>(0xff);
    expectInverted<std::int8_t>(-1);
    expectInverted<std::uint16_t>(0xffff);
    expectInverted<std::int16_t>(0x7fff);
    expectInverted<std::uint32_t>(0xffffffff);
    expectInverted<std::int32_t>(0x7fffffff);
    expectInverted<float>(1);
    expectInverted<double>(1);
}

TEST_F(TiffPyramidTest, SamplesOfOtherNumbersOfBitsAreRefused) {
    Directory full = level(64, 32, 1, 1);
    full.compression = COMPRESSION_ZSTD;
    std::string const file = write({full});
    for (std::uint32_t const bits : {3u, 5u, 7u, 12u}) {
        setValue(file, TIFFTAG_BITSPERSAMPLE, 0, bits);
        HostError const error = failure([&] { open(file); });
        EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
        EXPECT_TRUE(has(error.what(), "samples of " + std::to_string(bits) + " bits in a TIFF are not read"))
            << error.what();
    }
}

// libvips reads some of them; there is nothing between the two ways.
TEST_F(TiffPyramidTest, SamplesThatLibtiffAloneDoesNotDecodeAreNotItsOwn) {
    auto const refused = [&](std::string const& file) {
        InputFile input(file);
        return !tiffpyramid::open(input, {}, 100000);
    };
    Directory full = level(64, 32, 1, 1);
    full.compression = COMPRESSION_ZSTD;
    std::string const file = write({full});
    EXPECT_FALSE(refused(file));
    for (auto const& [format, bits] : {std::pair{SAMPLEFORMAT_INT, 4u},
                                       {SAMPLEFORMAT_INT, 1u},
                                       {SAMPLEFORMAT_IEEEFP, 16u},
                                       {SAMPLEFORMAT_VOID, 8u}}) {
        setValue(file, TIFFTAG_SAMPLEFORMAT, 0, static_cast<std::uint32_t>(format));
        setValue(file, TIFFTAG_BITSPERSAMPLE, 0, bits);
        EXPECT_TRUE(refused(file)) << format << ", " << bits << " bits";
    }
    Directory lab = level(64, 32, 3, 1);
    lab.photometric = PHOTOMETRIC_CIELAB;
    EXPECT_TRUE(refused(write({lab}))) << "Lab, which libvips converts";
}

TEST_F(TiffPyramidTest, SixteenBitsInWhichZeroIsWhiteAreInvertedWithoutTheirAlpha) {
    Directory full = level<std::uint16_t>(40, 20, 2, 3);
    full.photometric = PHOTOMETRIC_MINISWHITE;
    full.extraSamples = {EXTRASAMPLE_UNASSALPHA};
    auto samples = noise<std::uint16_t>(1600, 3);
    for (size_t i = 0; i < samples.size(); i += 2)
        samples[i] = static_cast<std::uint16_t>(65535 - samples[i]);
    for (bool const apart : {false, true}) {
        full.planesApart = apart;
        auto const pyramid = open(write({full}));
        EXPECT_TRUE(pyramid->facts().image.layout.alpha);
        expectLevel(*pyramid->reader(), 0, bytesOf(samples));
    }
}

TEST_F(TiffPyramidTest, PalettesBecomeColoursOrGrey) {
    for (unsigned const bits : {1u, 2u, 4u, 8u})
        for (bool const grey : {false, true})
            for (unsigned const scale : {1u, 257u}) { // 257: colours of 16 bits with equal bytes
                size_t const colours = size_t{1} << bits;
                Directory full;
                full.width = 45;
                full.height = 33;
                full.bits = static_cast<std::uint16_t>(bits);
                full.photometric = PHOTOMETRIC_PALETTE;
                full.bytes = packed(45, 33, bits);
                full.tile = 16;
                auto const entry = [&](size_t index, size_t band) {
                    return static_cast<unsigned>((index * 40 + (grey ? 0 : band * 70) + 9) % 256);
                };
                for (size_t band = 0; band < 3; ++band)
                    for (size_t i = 0; i < colours; ++i)
                        full.palette.push_back(static_cast<std::uint16_t>(scale * entry(i, band)));
                Bytes expected;
                for (unsigned const index : unpack(full.bytes, 45, 33, bits))
                    for (size_t band = 0; band < (grey ? 1 : 3); ++band)
                        expected.push_back(static_cast<std::uint8_t>(entry(index, band)));
                auto const pyramid = open(write({full}));
                EXPECT_EQ(pyramid->facts().image.layout.bands, grey ? 1u : 3u);
                expectOwnUnits(*pyramid, full);
                expectLevel(*pyramid->reader(), 0, expected);
            }
}

TEST_F(TiffPyramidTest, ReducedCopiesAreLevelsOfAnyRatio) {
    // 2, 3.99 and 4 times as large; out of order in the file.
    std::vector<Directory> const all{level(400, 300, 1, 1), reduced(25, 19, 1, 4), reduced(200, 150, 1, 2),
                                     reduced(50, 38, 1, 3)};
    auto const pyramid = open(write(all));
    ASSERT_EQ(sizesOf(pyramid->facts()), (Sizes{"400x300", "200x150", "50x38", "25x19"}));
    auto const reader = pyramid->reader();
    expectLevel(*reader, 0, all[0].bytes);
    expectLevel(*reader, 1, all[2].bytes);
    expectLevel(*reader, 2, all[3].bytes);
    expectLevel(*reader, 3, all[1].bytes);
    EXPECT_EQ(reader->facts().levels[1].unit.width, 32u);
    EXPECT_EQ(reader->facts().levels[1].unit.height, 16u);
}

TEST_F(TiffPyramidTest, SubDirectoriesAreLevelsOfTheirPage) {
    Directory first = level(80, 60, 1, 1);
    first.subDirectories = 2;
    Directory second = level(90, 60, 1, 4);
    second.subDirectories = 1;
    std::vector<Directory> const all{first, reduced(40, 30, 1, 2), reduced(20, 15, 1, 3), second,
                                     reduced(45, 30, 1, 5)};
    for (std::string const mode : {"w", "w8"}) {
        std::string const file = write(all, mode, "a.ome.tif");
        auto const one = open(file);
        EXPECT_EQ(one->facts().image.pages, 2u);
        ASSERT_EQ(sizesOf(one->facts()), (Sizes{"80x60", "40x30", "20x15"}));
        expectLevel(*one->reader(), 2, all[2].bytes);
        PyramidOptions options;
        options.selection.page = 2;
        auto const two = open(file, options);
        ASSERT_EQ(sizesOf(two->facts()), (Sizes{"90x60", "45x30"}));
        expectLevel(*two->reader(), 0, all[3].bytes);
        expectLevel(*two->reader(), 1, all[4].bytes);
    }
}

TEST_F(TiffPyramidTest, TiledPagesOfDecreasingSizeAreLevels) {
    std::vector<Directory> all{level(160, 120, 3, 1), level(80, 60, 3, 2), level(40, 30, 3, 3)};
    std::string const file = write(all);
    auto const pyramid = open(file);
    ASSERT_EQ(sizesOf(pyramid->facts()), (Sizes{"160x120", "80x60", "40x30"}));
    EXPECT_EQ(pyramid->facts().image.pages, 1u);
    for (size_t i = 0; i < 3; ++i)
        expectLevel(*pyramid->reader(), i, all[i].bytes);
    // A chosen page counts as one of three.
    PyramidOptions options;
    options.selection.page = 2;
    auto const second = open(file, options);
    EXPECT_EQ(second->facts().image.pages, 3u);
    ASSERT_EQ(sizesOf(second->facts()), (Sizes{"80x60", "40x30"}));
    expectLevel(*second->reader(), 0, all[1].bytes);
    // Pages that are about as large, or in strips, are pictures of their own.
    all[1] = level(159, 119, 3, 2);
    all[2].tile = 0;
    auto const pages = open(write(all));
    EXPECT_EQ(sizesOf(pages->facts()), (Sizes{"160x120"}));
    EXPECT_EQ(pages->facts().image.pages, 3u);
}

TEST_F(TiffPyramidTest, CopiesOfAnotherShapeOrLayoutAreNoLevels) {
    Directory thumbnail = reduced(40, 40, 3, 2);
    Directory other = reduced(80, 60, 1, 3);
    Directory deep = level<std::uint16_t>(40, 30, 3, 4, FILETYPE_REDUCEDIMAGE);
    Directory larger = reduced(320, 240, 3, 5);
    Directory equal = reduced(160, 120, 3, 6);
    Directory mask = level(80, 60, 3, 8, FILETYPE_REDUCEDIMAGE | FILETYPE_MASK);
    Directory whole = level(160, 120, 3, 1);
    Directory half = reduced(80, 60, 3, 7);
    auto const pyramid = open(write({whole, thumbnail, other, deep, larger, equal, mask, half}));
    ASSERT_EQ(sizesOf(pyramid->facts()), (Sizes{"160x120", "80x60"}));
    expectLevel(*pyramid->reader(), 1, half.bytes);
    // A label beside the picture.
    auto const labelled = open(write({whole, level(50, 60, 3, 2)}));
    EXPECT_EQ(sizesOf(labelled->facts()), (Sizes{"160x120"}));
    EXPECT_EQ(labelled->facts().image.pages, 2u);
}

// Rounding makes copies of one width, and narrower ones that are higher.
TEST_F(TiffPyramidTest, CopiesWithoutAShorterSideThanTheOneBeforeAreNoLevels) {
    Directory const full = level(400, 300, 1, 1);
    Directory const high = reduced(40, 31, 1, 2);
    Directory const low = reduced(40, 30, 1, 3);
    Directory const narrow = reduced(39, 30, 1, 4);
    auto const pyramid = open(write({full, high, low, narrow}));
    ASSERT_EQ(sizesOf(pyramid->facts()), (Sizes{"400x300", "40x31", "40x30", "39x30"}));
    expectLevel(*pyramid->reader(), 2, low.bytes);
    expectLevel(*pyramid->reader(), 3, narrow.bytes);
    EXPECT_EQ(sizesOf(open(write({full, low, high}))->facts()), (Sizes{"400x300", "40x30"}));
    EXPECT_EQ(sizesOf(open(write({full, low, reduced(39, 31, 1, 5)}))->facts()), (Sizes{"400x300", "40x30"}));
    EXPECT_EQ(sizesOf(open(write({full, low, low}))->facts()), (Sizes{"400x300", "40x30"}));
}

TEST_F(TiffPyramidTest, CopiesBelongToThePageBeforeThem) {
    std::vector<Directory> const all{level(80, 60, 1, 1), reduced(40, 30, 1, 2), level(88, 66, 1, 3),
                                     reduced(44, 33, 1, 4)};
    std::string const file = write(all);
    PyramidOptions options;
    options.selection.page = 1;
    auto const first = open(file, options);
    EXPECT_EQ(sizesOf(first->facts()), (Sizes{"80x60", "40x30"}));
    options.selection.page = 2;
    auto const second = open(file, options);
    EXPECT_EQ(sizesOf(second->facts()), (Sizes{"88x66", "44x33"}));
    expectLevel(*second->reader(), 1, all[3].bytes);
    // The only page may come last.
    auto const only = open(write({reduced(40, 30, 1, 2), level(80, 60, 1, 1)}));
    EXPECT_EQ(sizesOf(only->facts()), (Sizes{"80x60", "40x30"}));
}

TEST_F(TiffPyramidTest, MasksBetweenCopiesAreSteppedOver) {
    Directory const whole = level(160, 120, 1, 1);
    Directory const mask = level(160, 120, 1, 2, FILETYPE_MASK);
    Directory const half = reduced(80, 60, 1, 3);
    auto const pyramid = open(write({whole, mask, half}));
    EXPECT_EQ(sizesOf(pyramid->facts()), (Sizes{"160x120", "80x60"}));
    expectLevel(*pyramid->reader(), 1, half.bytes);
}

TEST_F(TiffPyramidTest, FactsAreTheFiles) {
    Directory full = level(40, 30, 4, 1);
    full.extraSamples = {EXTRASAMPLE_UNASSALPHA};
    full.orientation = ORIENTATION_RIGHTTOP;
    full.resolutionUnit = RESUNIT_CENTIMETER;
    full.xResolution = 40000;
    full.yResolution = 20000;
    full.nodata = "-9999.5";
    full.iccProfile = noise<std::uint8_t>(300, 2);
    auto const pyramid = open(write({full}));
    PyramidFacts const& facts = pyramid->facts();
    EXPECT_TRUE(facts.image.layout.alpha);
    EXPECT_EQ(facts.image.layout.colours, 3u);
    EXPECT_EQ(facts.image.orientation, 6);
    EXPECT_DOUBLE_EQ(facts.image.pixelsPerMillimetreX, 4000);
    EXPECT_DOUBLE_EQ(facts.image.pixelsPerMillimetreY, 2000);
    EXPECT_EQ(facts.image.nodata, -9999.5);
    EXPECT_EQ(facts.image.iccProfile, full.iccProfile);
    EXPECT_FALSE(facts.isMultiplied);
    EXPECT_GT(facts.readerBytes, 32u * 16 * 4);
    EXPECT_EQ(facts.sharedBytes, 0u);

    full = level(40, 30, 4, 1);
    full.extraSamples = {EXTRASAMPLE_ASSOCALPHA};
    full.xResolution = full.yResolution = 72;
    full.resolutionUnit = RESUNIT_INCH;
    full.nodata = "none";
    auto const other = open(write({full}));
    EXPECT_TRUE(other->facts().isMultiplied);
    EXPECT_EQ(other->facts().image.pixelsPerMillimetreX, 0);
    EXPECT_FALSE(other->facts().image.nodata);
    EXPECT_TRUE(other->facts().image.iccProfile.empty());
    expectLevel(*other->reader(), 0, full.bytes);
}

TEST_F(TiffPyramidTest, OrientationsThatDoNotExistAreUpright) {
    Directory full = level(40, 30, 1, 1);
    full.orientation = ORIENTATION_LEFTBOT;
    std::string const file = write({full});
    EXPECT_EQ(open(file)->facts().image.orientation, 8);
    for (std::uint32_t const orientation : {0u, 9u, 65535u}) {
        setValue(file, TIFFTAG_ORIENTATION, 0, orientation);
        EXPECT_EQ(open(file)->facts().image.orientation, 1) << orientation;
    }
}

// A reader holds a decoded tile, what it is decoded from, and its samples.
TEST_F(TiffPyramidTest, TheMemoryOfAReaderIsThatOfItsLargestTile) {
    Directory full = level(40, 30, 4, 1);
    full.tile = 1024;
    full.tileHeight = 512;
    Directory half = reduced(20, 15, 4, 2);
    std::uint64_t const tileBytes = 1024 * 512 * 4;
    std::uint64_t const handleBytes = 1 << 20; // of libtiff
    for (auto const& directories : {std::vector<Directory>{full}, {full, half}}) {
        std::uint64_t const bytes = open(write(directories))->facts().readerBytes;
        EXPECT_EQ(bytes, 3 * tileBytes + directories.size() * handleBytes);
    }
    std::swap(full.tile, half.tile);
    std::swap(full.tileHeight, half.tileHeight);
    EXPECT_EQ(open(write({full, half}))->facts().readerBytes, 3 * tileBytes + 2 * handleBytes);
}

TEST_F(TiffPyramidTest, TilesOfMoreSamplesThan128MegabytesOfDoublesAreNotDecodedOneByOne) {
    for (std::uint32_t const height : {4096u, 4112u}) {
        Directory full = level(40, 30, 1, 1);
        full.compression = COMPRESSION_ADOBE_DEFLATE;
        full.tile = 4096;
        full.tileHeight = height;
        auto const pyramid = open(write({full}));
        EXPECT_EQ(pyramid->facts().levels.front().unit.width, height == 4096 ? 4096u : 40u);
        EXPECT_TRUE(readAll(*pyramid->reader()) == full.bytes);
    }
}

TEST_F(TiffPyramidTest, PhysicalSizesOfOmeAreTaken) {
    Directory full = level(40, 30, 1, 1);
    full.description =
        R"(<?xml version="1.0"?><OME><Image><Pixels PhysicalSizeX="0.25" PhysicalSizeY="0.5"/></Image></OME>)";
    auto const pyramid = open(write({full}));
    EXPECT_DOUBLE_EQ(pyramid->facts().image.pixelsPerMillimetreX, 4000);
    EXPECT_DOUBLE_EQ(pyramid->facts().image.pixelsPerMillimetreY, 2000);
}

TEST_F(TiffPyramidTest, APlaneOfOmeTakenAloneHasThePixelsOfAll) {
    // Three planes of the first image, and a page that is not one of them.
    std::vector<Directory> all{level(40, 30, 1, 1), level(40, 30, 1, 2), level(40, 30, 1, 3), level(44, 33, 1, 4)};
    all.front().description = R"(<OME><Image><Pixels SizeC="1" SizeZ="3" SizeT="1" DimensionOrder="XYZCT")"
                              R"( PhysicalSizeX="0.25" PhysicalSizeY="0.5"/></Image></OME>)";
    std::string const file = write(all);
    for (size_t const page : {1U, 2U, 3U, 4U}) {
        PyramidOptions options;
        options.selection.page = page;
        auto const pyramid = open(file, options);
        EXPECT_DOUBLE_EQ(pyramid->facts().image.pixelsPerMillimetreX, page == 4 ? 0 : 4000) << page;
        EXPECT_DOUBLE_EQ(pyramid->facts().image.pixelsPerMillimetreY, page == 4 ? 0 : 2000) << page;
    }
}

TEST_F(TiffPyramidTest, BandsAreTakenInTheirOrder) {
    Directory const full = level<std::uint16_t>(50, 40, 5, 1);
    PyramidOptions options;
    options.selection.bands = {5, 2, 2, 1};
    auto const pyramid = open(write({full}), options);
    SampleFormat const& layout = pyramid->facts().image.layout;
    EXPECT_EQ(layout.bands, 4u);
    EXPECT_EQ(layout.colours, 3u);
    EXPECT_TRUE(layout.alpha);
    auto const samples = noise<std::uint16_t>(10000, 1);
    std::vector<std::uint16_t> expected;
    for (size_t i = 0; i < samples.size(); i += 5)
        for (size_t const band : {4u, 1u, 1u, 0u})
            expected.push_back(samples[i + band]);
    expectLevel(*pyramid->reader(), 0, bytesOf(expected));
    EXPECT_EQ(pyramid->facts().image.colourSpace, "");
    options.selection.bands = {3, 4};
    SampleFormat const grey = open(path("a.tif"), options)->facts().image.layout;
    EXPECT_EQ(grey.colours, 1u);
    EXPECT_TRUE(grey.alpha);
    options.selection.bands = {6};
    HostError const error = failure([&] { open(path("a.tif"), options); });
    EXPECT_EQ(error.kind(), HostError::Kind::Usage);
    EXPECT_TRUE(has(error.what(), "has no band 6; --bands are 1 to 5")) << error.what();
}

TEST_F(TiffPyramidTest, ChosenBandsAreNoLongerColoursOfAnotherSpace) {
    Directory inks = level(50, 40, 4, 1);
    inks.photometric = PHOTOMETRIC_SEPARATED;
    PyramidOptions options;
    options.selection.bands = {2};
    PyramidFacts const facts = open(write({inks}), options)->facts();
    EXPECT_EQ(facts.image.colourSpace, "");
    EXPECT_FALSE(facts.image.convertible);
    EXPECT_EQ(facts.image.layout.colours, 1u);
    EXPECT_FALSE(facts.image.layout.alpha);
    Directory rgba = level(50, 40, 4, 1);
    rgba.extraSamples = {EXTRASAMPLE_ASSOCALPHA};
    EXPECT_TRUE(open(write({rgba}))->facts().isMultiplied);
    EXPECT_FALSE(open(write({rgba}), options)->facts().isMultiplied);
}

// Of other compressions than JPEG the samples are those of the file, where each pixel has all three.
TEST_F(TiffPyramidTest, BrightnessAndColoursAreReadWhereTheyAreNotSubsampled) {
    Directory full = level(48, 32, 3, 1);
    full.photometric = PHOTOMETRIC_YCBCR;
    full.compression = COMPRESSION_ZSTD;
    std::string const file = write({full});
    auto const pyramid = open(file);
    EXPECT_EQ(pyramid->facts().image.colourSpace, "YCbCr");
    EXPECT_EQ(pyramid->facts().image.layout.colours, 0u);
    expectOwnUnits(*pyramid, full);
    expectLevel(*pyramid->reader(), 0, full.bytes);
    for (std::uint32_t const across : {1u, 2u})
        for (std::uint32_t const down : {1u, 2u}) {
            setValue(file, TIFFTAG_YCBCRSUBSAMPLING, 0, across);
            setValue(file, TIFFTAG_YCBCRSUBSAMPLING, 1, down);
            if (across * down == 1)
                expectLevel(*open(file)->reader(), 0, full.bytes);
            else
                EXPECT_EQ(failure([&] { open(file); }).kind(), HostError::Kind::UnreadableImage);
        }
}

TEST_F(TiffPyramidTest, OtherRegionsAndLevelsAndPagesAreRefused) {
    std::string const file = write({level(40, 30, 1, 1), reduced(20, 15, 1, 2)});
    auto const reader = open(file)->reader();
    Bytes samples(40 * 30);
    for (Region const& region : {Region{0, 0, 41, 1}, Region{0, 30, 1, 1}, Region{5, 5, 0, 1}}) {
        HostError const error = failure([&] { reader->read(0, region, samples.data()); });
        EXPECT_EQ(error.kind(), HostError::Kind::RegionOutside);
        EXPECT_TRUE(has(error.what(), "leaves the picture of 40 x 30 pixels")) << error.what();
    }
    EXPECT_EQ(failure([&] { reader->read(1, {0, 0, 21, 1}, samples.data()); }).kind(), HostError::Kind::RegionOutside);
    EXPECT_EQ(failure([&] { reader->read(2, {0, 0, 1, 1}, samples.data()); }).kind(), HostError::Kind::RegionOutside);
    PyramidOptions options;
    options.selection.page = 2;
    HostError const error = failure([&] { open(file, options); });
    EXPECT_EQ(error.kind(), HostError::Kind::Usage);
    EXPECT_TRUE(has(error.what(), "holds one picture; --page is 1")) << error.what();
}

TEST_F(TiffPyramidTest, ADamagedTileFailsItsReadsAlone) {
    for (std::uint16_t const compression : Numbers{COMPRESSION_ADOBE_DEFLATE, COMPRESSION_ZSTD, COMPRESSION_JPEG}) {
        SCOPED_TRACE(compression);
        // Noise does not compress: each tile is long, and lies at a place of its own.
        Directory full = level(64, 64, 3, 1);
        full.compression = compression;
        if (compression == COMPRESSION_JPEG) full.photometric = PHOTOMETRIC_YCBCR;
        std::string const file = write({full});
        Bytes const whole = readAll(*open(file)->reader());
        std::string const intact = readFile(file);
        size_t const second = valueOf(intact, TIFFTAG_TILEOFFSETS, 1);
        size_t const length = valueOf(intact, TIFFTAG_TILEBYTECOUNTS, 1);
        ASSERT_GT(length, 200u);
        // zstd has no checksums: the start of its frame alone is noticed.
        patch(file, second + (compression == COMPRESSION_ZSTD ? 0 : length / 2), std::string(100, '\xff'));
        auto const pyramid = open(file);
        auto const reader = pyramid->reader();
        Bytes samples(64 * 64 * 3);
        for (int i = 0; i < 2; ++i) {
            HostError const error = failure([&] { reader->read(0, {0, 0, 64, 64}, samples.data()); });
            EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
            EXPECT_TRUE(has(error.what(), "cannot read '" + file + "': ")) << error.what();
            EXPECT_TRUE(has(error.what(), "; check that it is an undamaged image in a format that is read"));
            // The tiles beside it and below.
            EXPECT_TRUE(read(*reader, 0, {0, 0, 32, 64}) == crop(whole, 64, 3, {0, 0, 32, 64}));
            EXPECT_TRUE(read(*reader, 0, {0, 16, 64, 48}) == crop(whole, 64, 3, {0, 16, 64, 48}));
        }
    }
}

TEST_F(TiffPyramidTest, AJpegTileThatEndsTooSoonIsNotFilledWithGrey) {
    Directory full = level(64, 64, 3, 1);
    full.compression = COMPRESSION_JPEG;
    full.photometric = PHOTOMETRIC_YCBCR;
    std::string const file = write({full});
    Bytes const whole = readAll(*open(file)->reader());
    // libjpeg warns, and goes on.
    size_t const length = valueOf(readFile(file), TIFFTAG_TILEBYTECOUNTS, 1);
    setValue(file, TIFFTAG_TILEBYTECOUNTS, 1, static_cast<std::uint32_t>(length / 2));
    auto const reader = open(file)->reader();
    HostError const error = failure([&] { readAll(*reader); });
    EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
    EXPECT_TRUE(has(error.what(), "Premature end of JPEG file")) << error.what();
    EXPECT_TRUE(read(*reader, 0, {0, 0, 32, 64}) == crop(whole, 64, 3, {0, 0, 32, 64}));
}

TEST_F(TiffPyramidTest, AFileThatEndsBeforeATileIsDamagedThereAlone) {
    for (std::uint16_t const compression : Numbers{COMPRESSION_NONE, COMPRESSION_ZSTD}) {
        Directory full = level(64, 64, 1, 1);
        full.compression = compression;
        std::string const file = write({full});
        // The third tile of four rows of two.
        setValue(file, TIFFTAG_TILEOFFSETS, 2, static_cast<std::uint32_t>(readFile(file).size() - 20));
        auto const reader = open(file)->reader();
        EXPECT_EQ(failure([&] { readAll(*reader); }).kind(), HostError::Kind::UnreadableImage);
        EXPECT_TRUE(read(*reader, 0, {0, 0, 64, 16}) == crop(full.bytes, 64, 1, {0, 0, 64, 16}));
        EXPECT_TRUE(read(*reader, 0, {32, 0, 32, 64}) == crop(full.bytes, 64, 1, {32, 0, 32, 64}));
    }
}

TEST_F(TiffPyramidTest, AFileThatIsCutWhileItIsOpenIsNoticed) {
    std::string const file = write({level(64, 64, 1, 1)});
    auto const pyramid = open(file);
    truncateFile(file, 30);
    EXPECT_TRUE(
        has(failure([&] { pyramid->reader(); }).what(), "it has changed while it was being read; open it once more"));
    EXPECT_EQ(failure([&] { open(file); }).kind(), HostError::Kind::UnreadableImage);
}

TEST_F(TiffPyramidTest, AFileThatIsReplacedIsNoticed) {
    std::string const file = write({level(64, 64, 1, 1)});
    PyramidOptions options;
    options.cacheBytes = 0;
    auto const pyramid = open(file, options);
    Directory other = level(64, 64, 1, 2);
    other.photometric = PHOTOMETRIC_MINISWHITE;
    write({other});
    auto const reader = pyramid->reader();
    EXPECT_TRUE(has(failure([&] { readAll(*reader); }).what(), "it has changed while it was being read"));
    // It is put back.
    write({level(64, 64, 1, 1)});
    EXPECT_TRUE(readAll(*reader) == level(64, 64, 1, 1).bytes);
}

TEST_F(TiffPyramidTest, SizesInAHeaderAreNotTrusted) {
    struct Case {
        std::uint16_t tag;
        std::uint32_t value;
    };
    for (Case const& one : {Case{TIFFTAG_IMAGEWIDTH, 0x7fffffff}, Case{TIFFTAG_IMAGEWIDTH, 0xffffffff},
                            Case{TIFFTAG_IMAGELENGTH, 0xfffffff0}, Case{TIFFTAG_TILEWIDTH, 0x7ffffff0},
                            Case{TIFFTAG_TILELENGTH, 0xfffffff0}, Case{TIFFTAG_TILELENGTH, 0},
                            Case{TIFFTAG_SAMPLESPERPIXEL, 65535}, Case{TIFFTAG_BITSPERSAMPLE, 64}})
        for (std::uint16_t const compression : Numbers{COMPRESSION_NONE, COMPRESSION_ZSTD}) {
            SCOPED_TRACE(std::to_string(one.tag) + " " + std::to_string(one.value));
            Directory full = level(64, 64, 1, 1);
            full.compression = compression;
            std::string const file = write({full});
            setNumber(file, one.tag, one.value);
            EXPECT_EQ(failure([&] {
                          PyramidOpening const opening = openPyramid(file);
                          // A picture too large for its smallest level to be decoded at once is no damaged one.
                          if (!opening.pyramid) throw HostError(HostError::Kind::UnreadableImage, opening.reason);
                          readAll(*opening.pyramid->reader());
                      }).kind(),
                      HostError::Kind::UnreadableImage);
        }
}

TEST_F(TiffPyramidTest, SubDirectoriesThatLeadNowhereOrInACircleAreNoLevels) {
    Directory first = level(80, 60, 1, 1);
    first.subDirectories = 2;
    std::string const file = write({first, reduced(40, 30, 1, 2), reduced(20, 15, 1, 3)});
    std::string const content = readFile(file);
    size_t const entry = entryOf(content, TIFFTAG_SUBIFD);
    std::uint32_t list = 0;
    std::memcpy(&list, &content[entry + 8], 4);
    std::uint32_t own = 0;
    std::memcpy(&own, &content[4], 4);
    for (std::uint32_t const place : {0u, 3u, own, 0xffffffffu, static_cast<std::uint32_t>(content.size() - 2)}) {
        writeFile(file, content);
        patch(file, list, word(place));
        auto const pyramid = open(file);
        EXPECT_EQ(sizesOf(pyramid->facts()), (Sizes{"80x60", "20x15"})) << place;
        expectLevel(*pyramid->reader(), 1, level(20, 15, 1, 3).bytes);
    }
}

TEST_F(TiffPyramidTest, ColoursOfPagesThatAreSlicesAreColours) {
    Directory page = level<std::uint8_t>(70, 50, 3, 1);
    page.photometric = PHOTOMETRIC_RGB;
    auto const pyramid = open(write({page, page, page}));
    EXPECT_EQ(pyramid->facts().stack.slices, 3u);
    EXPECT_EQ(pyramid->facts().image.layout.colours, 3u);
    EXPECT_TRUE(pyramid->facts().image.layout.isPlain());
}

TEST_F(TiffPyramidTest, PagesInACircleEnd) {
    std::string const file = write({level(80, 60, 1, 1), reduced(40, 30, 1, 2)});
    std::string const content = readFile(file);
    std::uint32_t first = 0;
    std::memcpy(&first, &content[4], 4);
    std::uint16_t count = 0;
    std::memcpy(&count, &content[first], 2);
    std::uint32_t second = 0;
    std::memcpy(&second, &content[first + 2 + 12 * count], 4);
    std::uint16_t more = 0;
    std::memcpy(&more, &content[second], 2);
    patch(file, second + 2 + 12 * more, word(first));
    auto const pyramid = open(file);
    EXPECT_EQ(sizesOf(pyramid->facts()), (Sizes{"80x60", "40x30"}));
}

TEST_F(TiffPyramidTest, TilesThatAFileLeavesOutAreNodataIfItStatesOne) {
    for (bool const stated : {true, false}) {
        Directory full = level<std::int16_t>(64, 32, 1, 1);
        if (stated) full.nodata = "-32000";
        std::string const file = write({full});
        setValue(file, TIFFTAG_TILEOFFSETS, 1, 0);
        setValue(file, TIFFTAG_TILEBYTECOUNTS, 1, 0);
        auto const reader = open(file)->reader();
        if (!stated) {
            EXPECT_EQ(failure([&] { readAll(*reader); }).kind(), HostError::Kind::UnreadableImage);
            continue;
        }
        auto samples = noise<std::int16_t>(64 * 32, 1);
        for (size_t y = 0; y < 16; ++y)
            std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(y * 64 + 32), 32, std::int16_t{-32000});
        expectLevel(*reader, 0, bytesOf(samples));
    }
}

// At offset 0 lies the file's header.
TEST_F(TiffPyramidTest, TilesWithoutAPlaceOrWithoutALengthAreDamaged) {
    for (std::uint16_t const compression : Numbers{COMPRESSION_NONE, COMPRESSION_ZSTD})
        for (bool const stated : {true, false})
            for (std::uint16_t const tag : Numbers{TIFFTAG_TILEOFFSETS, TIFFTAG_TILEBYTECOUNTS}) {
                SCOPED_TRACE(std::to_string(compression) + " " + std::to_string(stated) + " " + std::to_string(tag));
                Directory full = level(64, 32, 1, 1);
                full.compression = compression;
                if (stated) full.nodata = "7";
                std::string const file = write({full});
                setValue(file, tag, 1, 0);
                auto const reader = open(file)->reader();
                EXPECT_EQ(failure([&] { readAll(*reader); }).kind(), HostError::Kind::UnreadableImage);
                EXPECT_TRUE(read(*reader, 0, {0, 0, 32, 32}) == crop(full.bytes, 64, 1, {0, 0, 32, 32}));
            }
}

TEST_F(TiffPyramidTest, TilesAreDecodedOnceAndSharedByReaders) {
    Directory const full = level(128, 64, 3, 1); // 4 x 4 tiles of 32 x 16
    std::string const file = write({full});
    auto const pyramid = open(file);
    auto const one = pyramid->reader();
    auto const other = pyramid->reader();
    EXPECT_TRUE(read(*one, 0, {0, 0, 40, 16}) == crop(full.bytes, 128, 3, {0, 0, 40, 16}));
    EXPECT_EQ(one->statistics().decodedUnits, 2u);
    EXPECT_EQ(one->statistics().decodedBytes, 2u * 32 * 16 * 3);
    EXPECT_TRUE(read(*other, 0, {33, 3, 70, 10}) == crop(full.bytes, 128, 3, {33, 3, 70, 10}));
    EXPECT_EQ(other->statistics().decodedUnits, 2u);
    EXPECT_EQ(other->statistics().cachedUnits, 1u);
    // Two tiles stay.
    PyramidOptions options;
    options.cacheBytes = 2 * 32 * 16 * 3;
    auto const small = open(file, options)->reader();
    for (int i = 0; i < 2; ++i)
        readAll(*small);
    EXPECT_EQ(small->statistics().decodedUnits, 32u);
    EXPECT_EQ(small->statistics().cachedUnits, 0u);
    read(*small, 0, {64, 48, 64, 16});
    EXPECT_EQ(small->statistics().cachedUnits, 2u);
}

TEST_F(TiffPyramidTest, ACheckStopsOpeningAndReading) {
    struct Stop {};
    std::string const file = write({level(128, 64, 3, 1)});
    int calls = 0;
    PyramidOptions options;
    options.check = [&] {
        if (++calls > 3) throw Stop();
    };
    EXPECT_THROW(openPyramid(file, options), Stop);
    auto const pyramid = open(file);
    calls = 0;
    auto const reader = pyramid->reader(options.check);
    EXPECT_THROW(readAll(*reader), Stop);
    EXPECT_THROW(readAll(*reader), Stop);
    // It goes on afterwards.
    reader->setCheck({});
    EXPECT_TRUE(readAll(*reader) == level(128, 64, 3, 1).bytes);
}
