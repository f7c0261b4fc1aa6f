// JPEG XL and JPEG 2000 properties that libvips does not report: frames, channels, which of them is alpha.
#include "tests/host/image/ImageFixture.h"
#include "tests/host/image/TestCodecs.h"
#include "tests/support/FailingThreads.h"

#include <thread>

using testcodecs::box;
using testcodecs::number;

namespace {

class JxlAndJp2ReadingTest : public ImageFixture {
protected:
    std::string write(std::string const& name, std::string const& content) const {
        writeFile(path(name), content);
        return path(name);
    }
};

} // namespace

TEST_F(JxlAndJp2ReadingTest, JpegXlHasItsSamplesAndFrames) {
    testcodecs::JpegXl picture;
    picture.width = 2;
    picture.height = 2;
    picture.frames = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}};
    std::string const file = write("a.jxl", testcodecs::jpegXl(picture));
    EXPECT_EQ(valuesOf(file), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    picture.frames.push_back({21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32});
    picture.frames.push_back({41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51, 52});
    write("a.jxl", testcodecs::jpegXl(picture));
    EXPECT_EQ(refusal(file), "'" + file + "' holds 3 frames; one of them is taken: choose --page N (1 to 3)");
    for (size_t page = 1; page <= 3; ++page)
        EXPECT_EQ(valuesOf(file, withPage(page)),
                  std::vector<double>(picture.frames[page - 1].begin(), picture.frames[page - 1].end()));
    EXPECT_TRUE(has(misuse(file, withPage(4)), "--page is 1 to 3"));
}

// Several groups of 256 x 256 pixels, which threads decode one by one.
TEST_F(JxlAndJp2ReadingTest, JpegXlIsReadWithTheThreadsThatTheSystemGives) {
    testcodecs::JpegXl picture;
    picture.width = 700;
    picture.height = 600;
    picture.colours = 1;
    picture.frames.emplace_back();
    for (size_t i = 0; i < 700 * 600; ++i)
        picture.frames[0].push_back(static_cast<std::uint8_t>(i * i / 700 + i));
    std::string const file = write("a.jxl", testcodecs::jpegXl(picture));
    std::vector<double> const values(picture.frames[0].begin(), picture.frames[0].end());
    EXPECT_TRUE(valuesOf(file) == values);
    for (size_t const given : {0u, 1u}) {
        ThreadLimit const limit(given);
        EXPECT_TRUE(valuesOf(file) == values) << given;
        // With one core no thread is requested.
        EXPECT_EQ(ThreadLimit::refused() > 0, std::thread::hardware_concurrency() > 1) << given;
    }
}

TEST_F(JxlAndJp2ReadingTest, JpegXlOfAnyBandsAndBitsIsRead) {
    testcodecs::JpegXl grey;
    grey.width = 3;
    grey.height = 1;
    grey.colours = 1;
    grey.alpha = true;
    grey.frames = {{7, 255, 8, 0, 9, 3}};
    std::string const file = write("a.jxl", testcodecs::jpegXl(grey));
    EXPECT_EQ(valuesOf(file), (std::vector<double>{7, 255, 8, 0, 9, 3}));
    EXPECT_EQ(ImageReader(file, lossless()).bands(), 2u);
    std::vector<std::uint16_t> const wide{0, 300, 65535};
    auto const* bytes = reinterpret_cast<std::uint8_t const*>(wide.data());
    grey.alpha = false;
    grey.bits = 16;
    grey.frames = {{bytes, bytes + 6}};
    write("a.jxl", testcodecs::jpegXl(grey));
    EXPECT_EQ(valuesOf(file), (std::vector<double>{0, 300, 65535}));
    std::vector<float> const floats{-0.5f, 0.25f, 3};
    bytes = reinterpret_cast<std::uint8_t const*>(floats.data());
    grey.bits = 32;
    grey.frames = {{bytes, bytes + 12}};
    write("a.jxl", testcodecs::jpegXl(grey));
    EXPECT_TRUE(has(refusal(file), "32-bit float samples from -0.5 to 3")) << refusal(file);
    EXPECT_EQ(valuesOf(file, withRange(0, 1)), (std::vector<double>{0, 16384, 65535}));
}

TEST_F(JxlAndJp2ReadingTest, ChannelsOfJpegXlThatAreNotReadAreSaid) {
    testcodecs::JpegXl picture;
    picture.width = picture.height = 1;
    picture.otherChannel = true;
    picture.frames = {{1, 2, 3}};
    std::string const file = write("a.jxl", testcodecs::jpegXl(picture));
    for (bool const alpha : {false, true}) {
        picture.alpha = alpha;
        picture.frames = {alpha ? std::vector<std::uint8_t>{1, 2, 3, 4} : std::vector<std::uint8_t>{1, 2, 3}};
        write("a.jxl", testcodecs::jpegXl(picture));
        EXPECT_EQ(refusal(file),
                  "cannot read '" + file + "': it has channels beside colours and alpha, which are not read");
    }
}

// The decoder applies it: nothing is ignored.
TEST_F(JxlAndJp2ReadingTest, JpegXlIsTurnedUpright) {
    testcodecs::JpegXl picture;
    picture.width = 2;
    picture.height = 1;
    picture.colours = 1;
    picture.orientation = 6;
    picture.frames = {{1, 2}};
    std::string const file = write("a.jxl", testcodecs::jpegXl(picture));
    ImageReader const reader(file, lossless());
    EXPECT_EQ(reader.width(), 1u);
    EXPECT_EQ(reader.height(), 2u);
    EXPECT_TRUE(reader.notes().empty());
    EXPECT_EQ(valuesOf(file), (std::vector<double>{1, 2}));
}

TEST_F(JxlAndJp2ReadingTest, Jpeg2000SaysWhichOfItsComponentsIsAlpha) {
    testcodecs::Jpeg2000 picture;
    picture.width = 2;
    picture.height = 1;
    picture.components = {{1, 2}, {3, 4}, {5, 6}, {7, 8}};
    std::string const codestream = testcodecs::jpeg2000(path("a.j2k"), picture);
    auto const channel = [](unsigned index, unsigned kind, unsigned of) {
        return number(index, 2) + number(kind, 2) + number(of, 2);
    };
    std::string const colours = channel(0, 0, 1) + channel(1, 0, 2) + channel(2, 0, 3);
    EXPECT_TRUE(has(refusal(path("a.j2k")), "4 bands, RGB and 1 other")) << refusal(path("a.j2k"));
    auto const file = [&](std::string const& boxes) {
        return write("a.jp2", testcodecs::jp2File(codestream, picture, boxes));
    };
    EXPECT_TRUE(has(refusal(file("")), "4 bands, RGB and 1 other"));
    EXPECT_EQ(valuesOf(file(box("cdef", number(4, 2) + colours + channel(3, 1, 0)))),
              (std::vector<double>{1, 3, 5, 7, 2, 4, 6, 8}));
    // In any order.
    EXPECT_EQ(valuesOf(file(box("cdef", number(4, 2) + channel(3, 1, 0) + colours))).size(), 8u);
    for (unsigned const kind : {0U, 3U, 65535U})
        EXPECT_TRUE(has(refusal(file(box("cdef", number(4, 2) + colours + channel(3, kind, 0)))), "4 bands")) << kind;
    EXPECT_TRUE(has(refusal(file(box("cdef", number(4, 2) + colours + channel(3, 2, 0))), shown()),
                    "colours multiplied by their alpha"));
}

TEST_F(JxlAndJp2ReadingTest, Jpeg2000OfAPaletteIsNotRead) {
    testcodecs::Jpeg2000 picture;
    picture.width = 2;
    picture.height = 1;
    picture.components = {{1, 0}};
    std::string const codestream = testcodecs::jpeg2000(path("a.j2k"), picture);
    std::string const palette = number(2, 2) + number(3, 1) + std::string("\x07\x07\x07", 3) + "abcdef";
    std::string const map = number(0, 2) + number(1, 1) + number(0, 1) + number(0, 2) + number(1, 1) + number(1, 1) +
                            number(0, 2) + number(1, 1) + number(2, 1);
    std::string const file =
        write("a.jp2", testcodecs::jp2File(codestream, picture, box("pclr", palette) + box("cmap", map)));
    EXPECT_EQ(refusal(file), "cannot read '" + file + "': JPEG 2000 with a palette is not read; make RGB of it");
}

TEST_F(JxlAndJp2ReadingTest, Jpeg2000OfAnyBitsKeepsItsNumbersWhereTheyAreChosenByRange) {
    testcodecs::Jpeg2000 picture;
    picture.width = 3;
    picture.height = 1;
    std::string const file = path("a.j2k");
    picture.bits = 12;
    picture.components = {{0, 7, 4095}};
    testcodecs::jpeg2000(file, picture);
    EXPECT_EQ(valuesOf(file), (std::vector<double>{0, 112, 65520}))
        << "12 bits fill 16, as in other formats that are decoded";
    expectOwnSamples(file);
    picture.bits = 4;
    picture.components = {{0, 7, 15}};
    testcodecs::jpeg2000(file, picture);
    expectOwnSamples(file);
    picture.bits = 12;
    picture.isSigned = true;
    picture.components = {{-2048, 7, 2047}};
    testcodecs::jpeg2000(file, picture);
    EXPECT_TRUE(has(refusal(file), "16-bit signed samples from -2048 to 2047")) << refusal(file);
    picture.bits = 7;
    picture.components = {{-64, 7, 63}};
    testcodecs::jpeg2000(file, picture);
    EXPECT_TRUE(has(refusal(file), "8-bit signed samples from -64 to 63")) << refusal(file);
    picture.bits = 20;
    picture.isSigned = false;
    picture.components = {{3, 7, 1048575}};
    testcodecs::jpeg2000(file, picture);
    EXPECT_TRUE(has(refusal(file), "32-bit unsigned samples from 3 to 1048575")) << refusal(file);
    write("a.jp2", testcodecs::jp2File(readFile(file), picture, ""));
    EXPECT_TRUE(has(refusal(path("a.jp2")), "32-bit unsigned samples from 3 to 1048575"));
}

TEST_F(JxlAndJp2ReadingTest, TheResolutionOfJpeg2000IsThatOfItsCapture) {
    testcodecs::Jpeg2000 picture;
    picture.width = 1;
    picture.height = 1;
    picture.components = {{1}};
    std::string const codestream = testcodecs::jpeg2000(path("a.j2k"), picture);
    // Down: 4000 * 10^3 pixels a metre. Across: 3 / 2 * 10^6.
    std::string const density =
        number(4000, 2) + number(1, 2) + number(3, 2) + number(2, 2) + number(3, 1) + number(6, 1);
    auto const file = [&](std::string const& boxes) {
        return write("a.jp2", testcodecs::jp2File(codestream, picture, boxes));
    };
    ImageReader const reader(file(box("res ", box("resc", density))), lossless());
    EXPECT_DOUBLE_EQ(reader.pixelsPerMillimetreX(), 1500);
    EXPECT_DOUBLE_EQ(reader.pixelsPerMillimetreY(), 4000);
    EXPECT_EQ(ImageReader(file(box("res ", box("resd", density))), lossless()).pixelsPerMillimetreX(), 0)
        << "for display";
    std::string const nothing = number(4000, 2) + number(0, 2) + density.substr(4);
    EXPECT_EQ(ImageReader(file(box("res ", box("resc", nothing))), lossless()).pixelsPerMillimetreY(), 0);
}
