// Windows bitmaps and libvips' own files, built here byte by byte.
#include "tests/host/image/ImageFixture.h"

#include <cstring>

namespace {

// Numbers of `count` bytes, little- or big-endian.
std::string number(std::uint64_t value, size_t bytes, bool bigEndian = false) {
    std::string text(bytes, '\0');
    for (size_t i = 0; i < bytes; ++i)
        text[bigEndian ? bytes - 1 - i : i] = static_cast<char>(value >> (8 * i));
    return text;
}

struct Bmp {
    std::uint32_t headerBytes = 40;
    std::int32_t width = 0;
    std::int32_t height = 0;
    unsigned bits = 24;
    unsigned compression = 0;
    unsigned colours = 0;
    std::string rest; // of the header, or masks, or the palette
    std::string pixels;

    std::string bytes() const {
        auto const side = [](std::int32_t value) { return number(static_cast<std::uint32_t>(value), 4); };
        std::string header = number(headerBytes, 4);
        if (headerBytes == 12)
            header += number(static_cast<std::uint32_t>(width), 2) + number(static_cast<std::uint32_t>(height), 2) +
                      number(1, 2) + number(bits, 2);
        else
            header += side(width) + side(height) + number(1, 2) + number(bits, 2) + number(compression, 4) +
                      std::string(12, '\0') + number(colours, 4) + std::string(4, '\0');
        header += rest;
        return "BM" + number(0, 8) + number(14 + header.size(), 4) + header + pixels;
    }
};

class BmpFileTest : public ImageFixture {
protected:
    void write(Bmp const& bmp) const { writeFile(bmp_, bmp.bytes()); }

    std::string bmp_ = path("a.bmp");
};

class VipsFileTest : public ImageFixture {
protected:
    // A libvips header, and samples.
    std::string file(std::uint32_t width, std::uint32_t height, std::uint32_t bands, std::uint32_t format,
                     std::uint32_t interpretation, std::string const& samples, std::uint32_t coding = 0,
                     bool bigEndian = false) const {
        auto const word = [=](std::uint32_t value) { return number(value, 4, bigEndian); };
        float const resolution = 1;
        std::uint32_t bits = 0;
        std::memcpy(&bits, &resolution, 4);
        std::string const magic = bigEndian ? "\x08\xf2\xa6\xb6" : "\xb6\xa6\xf2\x08";
        return magic + word(width) + word(height) + word(bands) + word(0) + word(format) + word(coding) +
               word(interpretation) + word(bits) + word(bits) + std::string(24, '\0') + samples;
    }

    void write(std::string const& content) const { writeFile(vips_, content); }

    std::string vips_ = path("a.v");
};

} // namespace

TEST_F(BmpFileTest, RowsGoUpOrDownAndEndWithFourBytes) {
    Bmp bmp;
    bmp.width = 1;
    bmp.height = 2;
    bmp.pixels = std::string("\x01\x02\x03\x00\x04\x05\x06\x00", 8);
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{6, 5, 4, 3, 2, 1}));
    expectOwnSamples(bmp_);
    bmp.height = -2;
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{3, 2, 1, 6, 5, 4}));
    expectOwnSamples(bmp_);
    bmp.headerBytes = 12;
    bmp.height = 2;
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{6, 5, 4, 3, 2, 1}));
}

TEST_F(BmpFileTest, TheFourthByteIsAlphaWhereAMaskSaysSo) {
    Bmp bmp;
    bmp.bits = 32;
    bmp.width = 2;
    bmp.height = 1;
    bmp.pixels = "\x01\x02\x03\x04\x05\x06\x07\x08";
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{3, 2, 1, 7, 6, 5}));
    // Masks of red, green, blue and alpha in a longer header.
    bmp.compression = 3;
    bmp.headerBytes = 56;
    bmp.rest = number(0xff000000, 4) + number(0xff00, 4) + number(0xff, 4) + number(0xff0000, 4);
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{4, 2, 1, 3, 8, 6, 5, 7}));
    bmp.rest = number(0xff000000, 4) + number(0xff00, 4) + number(0xff, 4) + number(0, 4);
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{4, 2, 1, 8, 6, 5}));
    // Masks after a short header.
    bmp.headerBytes = 40;
    bmp.rest = number(0xff, 4) + number(0xff00, 4) + number(0xff0000, 4);
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{1, 2, 3, 5, 6, 7}));
}

TEST_F(BmpFileTest, PalettesAreExpanded) {
    std::string const palette = number(0x010203, 4) + number(0x040506, 4) + number(0x070809, 4);
    Bmp bmp;
    bmp.colours = 3;
    bmp.rest = palette;
    bmp.width = 5;
    bmp.height = 1;
    bmp.bits = 4;
    bmp.pixels = std::string("\x01\x21\x0f\x00", 4);
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 4, 5, 6, 1, 2, 3}));
    bmp.bits = 8;
    bmp.pixels = std::string("\x02\x01\x00\x00\xff\x00\x00\x00", 8);
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{7, 8, 9, 4, 5, 6, 1, 2, 3, 1, 2, 3, 0, 0, 0}))
        << "without a colour: black";
    bmp.bits = 1;
    bmp.colours = 0;
    bmp.rest = palette.substr(0, 8);
    bmp.pixels = std::string("\x50\x00\x00\x00", 4);
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 6, 1, 2, 3}));
    bmp.headerBytes = 12;
    bmp.rest = std::string("\x03\x02\x01\x06\x05\x04", 6);
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{1, 2, 3, 4, 5, 6, 1, 2, 3, 4, 5, 6, 1, 2, 3}));
}

TEST_F(BmpFileTest, WhatIsNotReadIsSaid) {
    Bmp bmp;
    bmp.width = bmp.height = 1;
    bmp.pixels = std::string(64, 'a');
    bmp.compression = 1;
    bmp.bits = 8;
    write(bmp);
    EXPECT_EQ(refusal(bmp_),
              "cannot read '" + bmp_ + "': Windows bitmaps that are compressed are not read; save it as PNG");
    bmp.compression = 3;
    bmp.bits = 24;
    write(bmp);
    EXPECT_TRUE(has(refusal(bmp_), "that are compressed"));
    bmp.compression = 0;
    bmp.bits = 16;
    write(bmp);
    EXPECT_TRUE(has(refusal(bmp_), "of 16 bits"));
    bmp.bits = 32;
    bmp.compression = 3;
    bmp.rest = number(0x3ff00000, 4) + number(0xffc00, 4) + number(0x3ff, 4);
    write(bmp);
    EXPECT_TRUE(has(refusal(bmp_), "with colours of other than 8 bits"));
}

TEST_F(BmpFileTest, HeadersThatCannotBeAreErrors) {
    Bmp bmp;
    bmp.width = bmp.height = 1;
    bmp.pixels = "ab";
    write(bmp);
    EXPECT_TRUE(has(refusal(bmp_), "1 x 1 pixels, which are more than the file holds")) << refusal(bmp_);
    bmp.pixels = "abc";
    write(bmp);
    EXPECT_EQ(valuesOf(bmp_), (std::vector<double>{'c', 'b', 'a'})) << "the last row need not be filled up";
    for (std::int32_t const wrong : {0, -5}) {
        Bmp one = bmp;
        one.width = wrong;
        write(one);
        EXPECT_TRUE(has(refusal(bmp_), "its header says " + std::to_string(wrong) + " x 1 pixels"));
    }
    bmp.height = 0;
    write(bmp);
    EXPECT_TRUE(has(refusal(bmp_), "its header says 1 x 0 pixels"));
    bmp.height = 2147483647;
    write(bmp);
    EXPECT_TRUE(has(refusal(bmp_), "more than the file holds"));
    for (std::uint32_t const wrong : {11U, 1025U}) {
        bmp.headerBytes = wrong;
        write(bmp);
        EXPECT_TRUE(has(refusal(bmp_), "its header has " + std::to_string(wrong) + " bytes"));
    }
    writeFile(bmp_, "BM of a car");
    EXPECT_TRUE(has(refusal(bmp_), "ends before"));
    bmp = {};
    bmp.width = bmp.height = 1;
    bmp.pixels = "abcd";
    write(bmp);
    EXPECT_TRUE(has(misuse(bmp_, withPage(2)), "holds one picture"));
}

TEST_F(VipsFileTest, SamplesOfEveryTypeAreTheFiles) {
    write(file(2, 1, 3, 0, 22, "\x01\x02\x03\x04\x05\x06"));
    expectOwnSamples(vips_);
    write(file(2, 1, 2, 2, 26, "\x01\x02\x03\x04\x05\x06\x07\x08"));
    EXPECT_EQ(valuesOf(vips_), (std::vector<double>{0x201, 0x403, 0x605, 0x807}));
    write(file(2, 1, 2, 2, 26, "\x01\x02\x03\x04\x05\x06\x07\x08", 0, true));
    EXPECT_EQ(valuesOf(vips_), (std::vector<double>{0x102, 0x304, 0x506, 0x708}));
    struct Case {
        std::uint32_t format;
        size_t bytes;
        std::string type;
    };
    for (Case const& one : {Case{1, 1, "8-bit signed"}, Case{3, 2, "16-bit signed"}, Case{4, 4, "32-bit unsigned"},
                            Case{5, 4, "32-bit signed"}, Case{6, 4, "32-bit float"}, Case{8, 8, "64-bit float"}}) {
        std::string samples;
        for (size_t i = 0; i < 3 * one.bytes; ++i)
            samples += static_cast<char>(0xbf - 9 * (i % one.bytes) + 3 * (i / one.bytes));
        write(file(3, 1, 1, one.format, 1, samples));
        EXPECT_TRUE(has(refusal(vips_), "holds " + one.type + " samples from ")) << refusal(vips_);
        Samples const own = filesamples::read(vips_);
        EXPECT_EQ(
            filesamples::difference(readAll(vips_, withAutomaticRange()),
                                    filesamples::scaled(own, filesamples::smallest(own), filesamples::largest(own))),
            "")
            << one.type;
    }
}

TEST_F(VipsFileTest, BandsAreWhatLibvipsCallsThem) {
    struct Case {
        std::uint32_t bands;
        std::uint32_t interpretation;
        std::string refused; // empty: accepted
    };
    for (Case const& one : {Case{1, 1, ""},
                            Case{2, 1, ""},
                            Case{3, 1, "3 bands, grey and 2 others"},
                            Case{1, 26, ""},
                            Case{3, 22, ""},
                            Case{4, 22, ""},
                            Case{3, 17, ""},
                            Case{4, 25, ""},
                            Case{5, 22, "5 bands, RGB and 2 others"},
                            Case{1, 0, ""},
                            Case{3, 0, ""},
                            Case{2, 0, "2 bands"},
                            Case{4, 0, "4 bands"},
                            Case{1, 10, ""},
                            Case{3, 24, ""},
                            Case{1, 27, ""},
                            Case{4, 15, "CMYK"},
                            Case{3, 12, "XYZ"},
                            Case{3, 28, "linear light"},
                            Case{3, 13, "libvips' colour space 13"}}) {
        write(file(1, 1, one.bands, 0, one.interpretation, std::string(one.bands, 'a')));
        if (one.refused.empty())
            EXPECT_EQ(valuesOf(vips_), std::vector<double>(one.bands, 'a')) << one.bands << " " << one.interpretation;
        else
            EXPECT_TRUE(has(refusal(vips_), "holds " + one.refused + ";")) << refusal(vips_);
    }
}

TEST_F(VipsFileTest, HeadersThatCannotBeAreErrors) {
    write(file(1, 1, 1, 7, 1, std::string(16, 'a')));
    EXPECT_TRUE(has(refusal(vips_), "complex numbers"));
    write(file(1, 1, 4, 0, 13, "abcd", 2));
    EXPECT_TRUE(has(refusal(vips_), "packed colours"));
    for (int i = 0; i < 3; ++i) {
        std::array<std::uint32_t, 3> sides{1, 1, 1};
        sides[static_cast<size_t>(i)] = 0;
        write(file(sides[0], sides[1], sides[2], 0, 1, "a"));
        EXPECT_TRUE(has(refusal(vips_), "no size")) << i;
        sides[static_cast<size_t>(i)] = 0x80000000u;
        write(file(sides[0], sides[1], sides[2], 0, 1, "a"));
        EXPECT_TRUE(has(refusal(vips_), "no size")) << i;
    }
    write(file(2, 2, 1, 0, 1, "abc"));
    EXPECT_TRUE(has(refusal(vips_), "2 x 2 pixels, which are more than the file holds"));
    write(file(2, 2, 1, 0, 1, "abcd"));
    EXPECT_TRUE(has(misuse(vips_, withPage(2)), "holds one picture"));
}
