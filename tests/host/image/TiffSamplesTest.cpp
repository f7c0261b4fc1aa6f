// Samples, bands and colours of TIFF files: which are taken unchanged, which are refused, and the effect of options.
#include "tests/host/image/TiffFixture.h"

#include <tiffio.h>

#include <numeric>

using testtiff::Directory;
using testtiff::directory;

namespace {

class TiffSamplesTest : public TiffFixture {};

} // namespace

TEST_F(TiffSamplesTest, AlphaIsWhereTheFileSaysSo) {
    write({rgba({EXTRASAMPLE_UNASSALPHA})});
    expectOwnSamples(tiff_);
    EXPECT_EQ(ImageReader(tiff_, lossless()).bands(), 4u);
    for (std::vector<std::uint16_t> const& extra : {std::vector<std::uint16_t>{EXTRASAMPLE_UNSPECIFIED}, {}}) {
        write({rgba(extra)});
        EXPECT_EQ(refusal(tiff_), "'" + tiff_ +
                                      "' holds 4 bands, RGB and 1 other; grey or RGB is taken, with alpha or without: "
                                      "choose --bands I or I,J,K (1 to 4)");
        // Alpha, because the user says so.
        EXPECT_EQ(filesamples::difference(readAll(tiff_, withBands({1, 2, 3, 4})), filesamples::read(tiff_)), "");
        EXPECT_EQ(ImageReader(tiff_, withBands({1, 2, 3, 4})).selection().text, "bands 1,2,3 and alpha 4 of 4");
    }
}

TEST_F(TiffSamplesTest, TwoBandsAreGreyAndAlphaWhereTheFileSaysSo) {
    Directory two = directory(4, 3, 2, bytes(24));
    two.extraSamples = {EXTRASAMPLE_UNASSALPHA};
    write({two});
    expectOwnSamples(tiff_);
    two.extraSamples = {EXTRASAMPLE_UNSPECIFIED};
    write({two});
    EXPECT_EQ(refusal(tiff_),
              "'" + tiff_ +
                  "' holds 2 bands, grey and 1 other; grey or RGB is taken, with alpha or without: choose "
                  "--bands I or I,A (1 to 2, A is alpha)");
    EXPECT_EQ(filesamples::difference(readAll(tiff_, withBands({2, 1})),
                                      filesamples::withBands(filesamples::read(tiff_), {2, 1})),
              "");
    EXPECT_EQ(ImageReader(tiff_, withBands({2, 1})).selection().text, "bands 2 and alpha 1 of 2");
}

TEST_F(TiffSamplesTest, BandsBehindAlphaAreNotLeftOut) {
    Directory five = directory(4, 3, 5, bytes(60));
    five.extraSamples = {EXTRASAMPLE_UNASSALPHA, EXTRASAMPLE_UNSPECIFIED};
    write({five});
    EXPECT_TRUE(has(refusal(tiff_), "5 bands, RGB with alpha and 1 other"));
    five.extraSamples = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNSPECIFIED};
    write({five});
    EXPECT_TRUE(has(refusal(tiff_), "5 bands, RGB and 2 others"));
    EXPECT_EQ(filesamples::difference(readAll(tiff_, withBands({5, 1, 4})),
                                      filesamples::withBands(filesamples::read(tiff_), {5, 1, 4})),
              "");
    EXPECT_EQ(misuse(tiff_, withBands({6})), "'" + tiff_ + "' has no band 6; --bands are 1 to 5");
}

TEST_F(TiffSamplesTest, ThreeBandsOfGreyAreNotRgb) {
    Directory three = directory(4, 3, 3, bytes(36));
    three.photometric = PHOTOMETRIC_MINISBLACK;
    three.extraSamples = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNSPECIFIED};
    write({three});
    EXPECT_TRUE(has(refusal(tiff_), "3 bands, grey and 2 others"));
}

TEST_F(TiffSamplesTest, ColoursMultipliedByAlphaAreKeptOrDividedAndNotDividedUnseen) {
    for (std::string const mode : {"wl", "wb", "w8"}) {
        std::vector<std::uint8_t> const samples{100, 50, 0, 200, 10, 20, 30, 255, 0, 0, 0, 0, 60, 7, 9, 60};
        Directory multiplied = directory(4, 1, 4, samples);
        multiplied.extraSamples = {EXTRASAMPLE_ASSOCALPHA};
        write({multiplied}, mode);
        EXPECT_EQ(refusal(tiff_), "'" + tiff_ +
                                      "' holds colours multiplied by their alpha; grey or RGB is taken, with alpha or "
                                      "without: choose --to-srgb");
        EXPECT_EQ(valuesOf(tiff_, withBands({1, 2, 3, 4})), std::vector<double>(samples.begin(), samples.end()))
            << mode;
        // 255 * 100 / 200 is 127.5.
        std::vector<double> const divided{127, 63, 0, 200, 10, 20, 30, 255, 0, 0, 0, 0, 255, 29, 38, 60};
        for (Options const& options : {toSrgb(), shown()})
            EXPECT_EQ(valuesOf(tiff_, options), divided) << mode;
        EXPECT_EQ(ImageReader(tiff_, toSrgb()).selection().text, "colours multiplied by their alpha converted to sRGB");
        EXPECT_EQ(ImageReader(tiff_, shown()).notes().size(), 1u);
        EXPECT_TRUE(ImageReader(tiff_, toSrgb()).notes().empty()) << "it was asked for";
    }
}

// The word that marks premultiplied colours lies apart from its directory.
TEST_F(TiffSamplesTest, ColoursMultipliedByOneOfThreeExtraBandsAreKept) {
    Directory multiplied = directory(3, 2, 6, bytes(36));
    multiplied.extraSamples = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_ASSOCALPHA};
    for (std::string const mode : {"wl", "wb", "w8"}) {
        write({multiplied}, mode);
        EXPECT_EQ(filesamples::difference(readAll(tiff_, withBands({1, 2, 3, 6})),
                                          filesamples::withBands(filesamples::read(tiff_), {1, 2, 3, 6})),
                  "")
            << mode;
    }
}

TEST_F(TiffSamplesTest, SignedFloatAndLongSamplesAreRefusedAndTakenByRange) {
    auto const expectRange = [&](auto const& samples, std::string const& what, std::string const& type) {
        write({directory(static_cast<std::uint32_t>(samples.size()), 1, 1, samples)});
        EXPECT_EQ(refusal(tiff_),
                  "'" + tiff_ + "' holds " + what +
                      "; unsigned samples of 8 or 16 bits are kept: choose --range LO,HI or --range auto");
        Samples const own = filesamples::read(tiff_);
        double const low = filesamples::smallest(own);
        double const high = filesamples::largest(own);
        EXPECT_EQ(filesamples::difference(readAll(tiff_, withAutomaticRange()), filesamples::scaled(own, low, high)),
                  "");
        EXPECT_EQ(filesamples::difference(readAll(tiff_, withRange(-1, 7)), filesamples::scaled(own, -1, 7)), "");
        auto const selection = ImageReader(tiff_, withRange(-1, 7)).selection();
        EXPECT_EQ(selection.text, "samples -1 to 7 of " + type + " as 0 to 65535");
        EXPECT_EQ(selection.rangeLow, -1);
        EXPECT_EQ(selection.rangeHigh, 7);
        EXPECT_EQ(ImageReader(tiff_, withRange(-1, 7)).sampleBytes(), 2u);
    };
    expectRange(std::vector<std::int8_t>{-128, -1, 0, 3, 127}, "8-bit signed samples from -128 to 127", "8-bit signed");
    expectRange(std::vector<std::int16_t>{-3000, 0, 5, 30000}, "16-bit signed samples from -3000 to 30000",
                "16-bit signed");
    expectRange(std::vector<std::int32_t>{-2147483647 - 1, 0, 5, 2147483647},
                "32-bit signed samples from -2147483648 to 2147483647", "32-bit signed");
    expectRange(std::vector<std::uint32_t>{9899, 0, 5, 4294967295u}, "32-bit unsigned samples from 0 to 4294967295",
                "32-bit unsigned");
    expectRange(std::vector<float>{-3.5f, 0, 5, 124172, 0.1f}, "32-bit float samples from -3.5 to 124172",
                "32-bit float");
}

TEST_F(TiffSamplesTest, FloatsOfRgbAreNoLightUnlessTheUserSaysSo) {
    write({directory(1, 1, 3, std::vector<float>{0.25f, 17, 255})});
    EXPECT_EQ(refusal(tiff_, shown()),
              "'" + tiff_ +
                  "' holds 32-bit float samples from 0.25 to 255; unsigned samples of 8 or 16 bits are kept: choose "
                  "--range LO,HI or --range auto, or --to-srgb for light from 0 to 1");
    // 0.25 of white is 137 in sRGB: 255 * (1.055 * 0.25^(1/2.4) - 0.055) is 136.96.
    EXPECT_EQ(valuesOf(tiff_, toSrgb()), (std::vector<double>{137, 255, 255}));
    EXPECT_EQ(ImageReader(tiff_, toSrgb()).selection().text, "linear light converted to sRGB");
    EXPECT_EQ(ImageReader(tiff_, toSrgb()).sampleBytes(), 1u);
}

TEST_F(TiffSamplesTest, ColourSpacesAreRefusedAndConverted) {
    struct Case {
        std::uint16_t photometric;
        std::uint16_t bands;
        std::string name;
    };
    for (Case const& one : {Case{PHOTOMETRIC_SEPARATED, 4, "CMYK"}, Case{PHOTOMETRIC_CIELAB, 3, "Lab"}}) {
        Directory colours = directory(2, 2, one.bands, bytes(size_t{4} * one.bands, 20));
        colours.photometric = one.photometric;
        write({colours});
        EXPECT_EQ(refusal(tiff_), "'" + tiff_ + "' holds " + one.name +
                                      "; grey or RGB is taken, with alpha or without: choose --to-srgb");
        for (Options const& options : {toSrgb(), shown()}) {
            ImageReader const reader(tiff_, options);
            EXPECT_EQ(reader.bands(), 3u);
            EXPECT_EQ(reader.sampleBytes(), 1u);
        }
        EXPECT_EQ(ImageReader(tiff_, toSrgb()).selection().text, one.name + " converted to sRGB");
        EXPECT_EQ(ImageReader(tiff_, shown()).notes(),
                  std::vector<std::string>{"'" + tiff_ + "' holds " + one.name + ": converted to sRGB of 8 bits"});
        EXPECT_EQ(valuesOf(tiff_, toSrgb()), valuesOf(tiff_, shown()));
    }
    Directory light = directory(2, 2, 3, std::vector<float>{1, 1, 1, 0, 0, 0, 0.2f, 0.2f, 0.2f, 0.5f, 0.4f, 0.3f});
    light.photometric = PHOTOMETRIC_LOGLUV;
    light.compression = COMPRESSION_SGILOG;
    write({light});
    EXPECT_TRUE(has(refusal(tiff_), "holds LogLuv;")) << refusal(tiff_);
    EXPECT_EQ(ImageReader(tiff_, toSrgb()).sampleBytes(), 1u);
}

TEST_F(TiffSamplesTest, PlainColoursStayWhatTheyAreWhereAConversionIsAskedFor) {
    std::vector<std::uint16_t> const wide{7, 300, 65535};
    for (Directory const& plain : {grey(8), directory(1, 1, 3, wide)}) {
        write({plain});
        expectOwnSamples(tiff_, toSrgb());
        ImageReader reader(tiff_, toSrgb());
        EXPECT_EQ(reader.selection().text, "");
        EXPECT_TRUE(reader.notes().empty());
    }
}

TEST_F(TiffSamplesTest, ColourSpacesThatNothingConvertsAreTakenByBands) {
    // Brightness and two colour differences, uncompressed: libvips takes them for red, green and blue.
    Directory other = directory(2, 2, 3, bytes(12));
    for (auto const& [photometric, name] : std::vector<std::pair<std::uint16_t, std::string>>{
             {PHOTOMETRIC_YCBCR, "YCbCr"}, {PHOTOMETRIC_ICCLAB, "colours of TIFF's kind 9"}}) {
        other.photometric = photometric;
        write({other});
        for (Options const& options : {lossless(), shown(), toSrgb()})
            EXPECT_EQ(refusal(tiff_, options), "'" + tiff_ + "' holds " + name +
                                                   "; grey or RGB is taken, with alpha or without: choose --bands I or "
                                                   "I,J,K (1 to 3)");
    }
    Directory inks = directory(2, 2, 4, bytes(16));
    inks.photometric = PHOTOMETRIC_SEPARATED;
    inks.inkSet = INKSET_MULTIINK;
    write({inks});
    EXPECT_TRUE(has(refusal(tiff_, shown()), "holds inks"));
    EXPECT_EQ(
        filesamples::difference(readAll(tiff_, withBands({4})), filesamples::withBands(filesamples::read(tiff_), {4})),
        "");
}

TEST_F(TiffSamplesTest, InksAreTakenByBandsWithoutConversion) {
    Directory colours = directory(2, 2, 4, bytes(16));
    colours.photometric = PHOTOMETRIC_SEPARATED;
    write({colours});
    for (Options options : {lossless(), shown()}) {
        options.selection.bands = {4, 2, 1};
        EXPECT_EQ(filesamples::difference(readAll(tiff_, options),
                                          filesamples::withBands(filesamples::read(tiff_), {4, 2, 1})),
                  "");
    }
    Options both = withBands({4});
    both.selection.toSrgb = true;
    EXPECT_TRUE(has(misuse(tiff_, both), "choose one of them"));
    both = withRange(0, 1);
    both.selection.toSrgb = true;
    EXPECT_TRUE(has(misuse(tiff_, both), "choose one of them"));
}

TEST_F(TiffSamplesTest, RangesAndBandsGoTogether) {
    std::vector<float> samples(60);
    std::iota(samples.begin(), samples.end(), -7.25f);
    Directory five = directory(4, 3, 5, samples);
    five.extraSamples = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNSPECIFIED};
    write({five});
    EXPECT_EQ(refusal(tiff_),
              "'" + tiff_ +
                  "' holds 5 bands, RGB and 2 others and 32-bit float samples from -7.25 to 51.75; grey or "
                  "RGB of unsigned 8 or 16 bits is taken: choose --bands I or I,J,K (1 to 5) and --range LO,HI or "
                  "--range auto");
    // Range of the selected bands.
    EXPECT_TRUE(has(refusal(tiff_, withBands({2})), "samples from -6.25 to 48.75"));
    Options options = withBands({2});
    options.selection.automaticRange = true;
    Samples const own = filesamples::withBands(filesamples::read(tiff_), {2});
    EXPECT_EQ(filesamples::difference(readAll(tiff_, options), filesamples::scaled(own, -6.25, 48.75)), "");
    EXPECT_EQ(ImageReader(tiff_, options).selection().text,
              "band 2 of 5; samples -6.25 to 48.75 of 32-bit float as 0 to 65535");
}

TEST_F(TiffSamplesTest, RangesTakeNoAlpha) {
    write({rgba({EXTRASAMPLE_UNASSALPHA})});
    EXPECT_EQ(misuse(tiff_, withRange(0, 100)),
              "'" + tiff_ +
                  "' is taken with alpha, which --range cannot scale; choose bands of colour "
                  "alone, for example --bands 1,2,3");
    Options options = withRange(0, 100);
    options.selection.bands = {3, 4};
    EXPECT_TRUE(has(misuse(tiff_, options), "is taken with alpha"));
    options.selection.bands = {1, 2, 3};
    EXPECT_EQ(ImageReader(tiff_, options).bands(), 3u);
}

TEST_F(TiffSamplesTest, ARangeOfBytesMakesSixteenBitsToo) {
    write({grey(8)});
    EXPECT_EQ(filesamples::difference(readAll(tiff_, withRange(20, 90)),
                                      filesamples::scaled(filesamples::read(tiff_), 20, 90)),
              "");
}

TEST_F(TiffSamplesTest, BitsAndPalettesOfBytesAreExpandedWithoutAWord) {
    for (std::uint16_t const bits : std::vector<std::uint16_t>{1, 2, 4}) {
        Directory few = directory(16, 2, 1, bytes(size_t{4} * bits));
        few.bits = bits;
        write({few});
        expectOwnSamples(tiff_);
        few.photometric = PHOTOMETRIC_MINISWHITE;
        write({few});
        expectOwnSamples(tiff_);
    }
    Directory indexed = directory(3, 1, 1, std::vector<std::uint8_t>{0, 2, 1});
    indexed.photometric = PHOTOMETRIC_PALETTE;
    indexed.palette.resize(768);
    for (size_t i = 0; i < 3; ++i)
        for (size_t band = 0; band < 3; ++band)
            indexed.palette[256 * band + i] = static_cast<std::uint16_t>(257 * (50 * i + 7 * band));
    write({indexed});
    EXPECT_EQ(valuesOf(tiff_), (std::vector<double>{0, 7, 14, 100, 107, 114, 50, 57, 64}));
    for (std::uint16_t& value : indexed.palette)
        value = static_cast<std::uint16_t>(value & 0xff00u);
    write({indexed});
    EXPECT_EQ(valuesOf(tiff_), (std::vector<double>{0, 7, 14, 100, 107, 114, 50, 57, 64})) << "upper bytes alone";
    for (std::uint16_t& value : indexed.palette)
        value = static_cast<std::uint16_t>(value >> 8);
    write({indexed});
    EXPECT_EQ(valuesOf(tiff_), (std::vector<double>{0, 7, 14, 100, 107, 114, 50, 57, 64})) << "lower bytes alone";
    // Grey gives one band.
    for (size_t i = 0; i < 256; ++i)
        for (size_t band = 0; band < 3; ++band)
            indexed.palette[256 * band + i] = static_cast<std::uint16_t>(257 * (255 - i));
    write({indexed});
    EXPECT_EQ(valuesOf(tiff_), (std::vector<double>{255, 253, 254}));
}

// libvips takes them for damage.
TEST_F(TiffSamplesTest, SamplesOfBitsThatTiffIsNotReadWithAreNamed) {
    auto const expectNotRead = [&](std::uint16_t bits, std::uint16_t format, std::string const& line) {
        Directory odd = directory(8, 1, 1, std::vector<std::uint8_t>(bits));
        odd.bits = bits;
        odd.sampleFormat = format;
        write({odd});
        EXPECT_EQ(refusal(tiff_), "cannot read '" + tiff_ + "': " + line);
    };
    std::string const end = " bits in a TIFF are not read; save it with ";
    expectNotRead(12, SAMPLEFORMAT_UINT, "samples of 12" + end + "16 bits per sample");
    expectNotRead(24, SAMPLEFORMAT_UINT, "samples of 24" + end + "32 bits per sample");
    expectNotRead(64, SAMPLEFORMAT_INT, "samples of 64" + end + "32 bits per sample");
    expectNotRead(16, SAMPLEFORMAT_IEEEFP, "floats of 16" + end + "32 bits per sample");
    expectNotRead(64, SAMPLEFORMAT_IEEEFP, "floats of 64" + end + "32 bits per sample");
    expectNotRead(64, SAMPLEFORMAT_COMPLEXIEEEFP,
                  "complex numbers in a TIFF are not read; save their real parts alone");
    expectNotRead(32, SAMPLEFORMAT_COMPLEXINT, "complex numbers in a TIFF are not read; save their real parts alone");
}

TEST_F(TiffSamplesTest, OneBandIsTheOnlyOneToChoose) {
    Directory mosaic = directory(2, 2, 1, bytes(4));
    mosaic.photometric = 32803;
    write({mosaic});
    EXPECT_TRUE(has(refusal(tiff_), "choose --bands 1")) << refusal(tiff_);
    EXPECT_FALSE(has(refusal(tiff_), "1 to 1")) << refusal(tiff_);
    EXPECT_EQ(misuse(tiff_, withBands({2})), "'" + tiff_ + "' has no band 2; --bands are 1");
}

TEST_F(TiffSamplesTest, APaletteThatBytesCannotHoldIsRefused) {
    Directory indexed = directory(3, 1, 1, std::vector<std::uint8_t>{0, 2, 1});
    indexed.photometric = PHOTOMETRIC_PALETTE;
    indexed.palette.resize(768, 0xffff);
    indexed.palette[256 + 2] = 0x1235;
    write({indexed});
    for (Options const& options : {lossless(), shown()})
        EXPECT_EQ(refusal(tiff_, options),
                  "cannot read '" + tiff_ +
                      "': its palette has colours of 16 bits, which are not read; make RGB of it");
}
