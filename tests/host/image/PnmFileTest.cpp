// Netpbm's files, built here byte by byte.
#include "tests/host/image/ImageFixture.h"

#include <cstring>

namespace {

class PnmFileTest : public ImageFixture {
protected:
    void write(std::string const& content) const { writeFile(pnm_, content); }

    std::vector<double> values() const { return valuesOf(pnm_); }

    std::string pnm_ = path("a.pnm");
};

std::string floats(std::vector<float> const& values, bool bigEndian) {
    std::string bytes;
    for (float const value : values) {
        std::string four(4, '\0');
        std::memcpy(four.data(), &value, 4);
        bytes += bigEndian ? std::string(four.rbegin(), four.rend()) : four;
    }
    return bytes;
}

} // namespace

TEST_F(PnmFileTest, EveryKindHasItsSamples) {
    write("P5\n3 2\n255\n\x01\x02\x03\x04\x05\xff");
    EXPECT_EQ(values(), (std::vector<double>{1, 2, 3, 4, 5, 255}));
    write("P6 1 2 255\n\x01\x02\x03\x04\x05\x06");
    EXPECT_EQ(values(), (std::vector<double>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(ImageReader(pnm_, lossless()).bands(), 3u);
    write(std::string("P5\n2 1\n65535\n\x01\x00\x00\x02", 17));
    EXPECT_EQ(values(), (std::vector<double>{256, 2}));
    write("P2\n3 2\n300\n1 2 3\n 4 5\n300\n");
    EXPECT_EQ(values(), (std::vector<double>{1, 2, 3, 4, 5, 300}));
    write("P2\n2 1\n255\n0 255");
    EXPECT_EQ(ImageReader(pnm_, lossless()).sampleBytes(), 1u);
    EXPECT_EQ(values(), (std::vector<double>{0, 255}));
    write("P3\n1 1\n255\n7 8 9\n");
    EXPECT_EQ(values(), (std::vector<double>{7, 8, 9}));
    // A 1 is black.
    write("P1\n3 2\n1 0 1\n001\n");
    EXPECT_EQ(values(), (std::vector<double>{0, 255, 0, 255, 255, 0}));
    write("P4\n10 2\n\xaa\x80\x55\x40");
    EXPECT_EQ(values(),
              (std::vector<double>{0, 255, 0, 255, 0, 255, 0, 255, 0, 255, 255, 0, 255, 0, 255, 0, 255, 0, 255, 0}));
}

TEST_F(PnmFileTest, AFewBitsOfSixteenStayTheNumbersThatTheyAre) {
    write(std::string("P5\n2 1\n4095\n\x0f\xff\x00\x07", 16));
    EXPECT_EQ(values(), (std::vector<double>{4095, 7}));
    write("P5\n2 1\n15\n\x0f\x03");
    EXPECT_EQ(values(), (std::vector<double>{15, 3}));
    write("P5\n2 1\n256\n" + std::string("\x01\x00\x00\x07", 4));
    EXPECT_EQ(values(), (std::vector<double>{256, 7})) << "two bytes per sample from 256 on";
}

TEST_F(PnmFileTest, CommentsAndBlanksOfAnyKindLieInTheHeader) {
    write("P5 # kind\n#\n 2\t#width\n1 \r\n 255\n\x01\x02");
    EXPECT_EQ(values(), (std::vector<double>{1, 2}));
    // One blank ends the header: the next byte is a sample, though it looks like a blank.
    write("P5\n2 1\n255\n\n ");
    EXPECT_EQ(values(), (std::vector<double>{10, 32}));
}

TEST_F(PnmFileTest, PamsSayWhatTheirSamplesAre) {
    auto const pam = [](std::string const& depth, std::string const& tuple, std::string const& samples) {
        return "P7\nWIDTH 1\nHEIGHT 2\n# comment\nDEPTH " + depth + "\nMAXVAL 255\n" +
               (tuple.empty() ? "" : "TUPLTYPE " + tuple + "\n") + "ENDHDR\n" + samples;
    };
    struct Case {
        std::string depth;
        std::string tuple;
        std::string samples;
    };
    for (Case const& one :
         {Case{"1", "GRAYSCALE", "\x01\x02"}, Case{"1", "", "\x01\x02"},
          Case{"2", "GRAYSCALE_ALPHA", "\x01\x02\x03\x04"}, Case{"3", "RGB", "\x01\x02\x03\x04\x05\x06"},
          Case{"3", "", "\x01\x02\x03\x04\x05\x06"}, Case{"4", "RGB_ALPHA", "\x01\x02\x03\x04\x05\x06\x07\x08"}}) {
        write(pam(one.depth, one.tuple, one.samples));
        EXPECT_EQ(values(), std::vector<double>(one.samples.begin(), one.samples.end())) << one.tuple;
    }
    for (Case const& one : {Case{"2", "", "\x01\x02\x03\x04"}, Case{"4", "", "\x01\x02\x03\x04\x05\x06\x07\x08"},
                            Case{"4", "RGB", "\x01\x02\x03\x04\x05\x06\x07\x08"}}) {
        write(pam(one.depth, one.tuple, one.samples));
        EXPECT_TRUE(has(refusal(pnm_), one.depth + " bands")) << refusal(pnm_);
        EXPECT_EQ(valuesOf(pnm_, withBands({2})), (std::vector<double>{2, one.depth == "2" ? 4.0 : 6.0}));
    }
    write(pam("4", "CMYK", "\x01\x02\x03\x04\x05\x06\x07\x08"));
    EXPECT_TRUE(has(refusal(pnm_, shown()), "holds CMYK")) << refusal(pnm_, shown());
    // Zeros and ones are black and white.
    write("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE\nENDHDR\n" + std::string("\x00\x01", 2));
    EXPECT_EQ(values(), (std::vector<double>{0, 255}));
}

TEST_F(PnmFileTest, PfmsComeFromTheTopThoughTheirLowestRowIsFirst) {
    for (bool const bigEndian : {false, true}) {
        std::string const scale = bigEndian ? "1.0" : "-1.0";
        write("Pf\n2 3\n" + scale + "\n" + floats({0, 1, 2, 3, 4, 5}, bigEndian));
        EXPECT_EQ(valuesOf(pnm_, withRange(0, 65535)), (std::vector<double>{4, 5, 2, 3, 0, 1}));
        write("PF\n1 2\n" + scale + "\n" + floats({0, 1, 2, 3, 4, 5}, bigEndian));
        EXPECT_EQ(valuesOf(pnm_, withRange(0, 65535)), (std::vector<double>{3, 4, 5, 0, 1, 2}));
    }
    EXPECT_TRUE(has(refusal(pnm_), "32-bit float samples from 0 to 5"));
}

TEST_F(PnmFileTest, PicturesThatFollowOneAnotherArePages) {
    std::string const first = "P5\n1 1\n255\n\x07";
    write(first + "P6\n1 1\n255\n\x01\x02\x03" + "P4\n3 1\n\xa0");
    EXPECT_EQ(refusal(pnm_), "'" + pnm_ + "' holds 3 pictures; one of them is taken: choose --page N (1 to 3)");
    EXPECT_EQ(valuesOf(pnm_, withPage(1)), (std::vector<double>{7}));
    EXPECT_EQ(valuesOf(pnm_, withPage(2)), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(valuesOf(pnm_, withPage(3)), (std::vector<double>{0, 255, 0}));
    EXPECT_EQ(ImageReader(pnm_, withPage(2)).selection().text, "picture 2 of 3");
    EXPECT_TRUE(has(misuse(pnm_, withPage(4)), "--page is 1 to 3"));
    // Trailing bytes that are no picture are no page.
    write(first + "\n");
    EXPECT_EQ(values(), (std::vector<double>{7}));
    write(first + "P5");
    EXPECT_EQ(values(), (std::vector<double>{7}));
}

TEST_F(PnmFileTest, RegionsAreReadInAnyOrderAndThoseOfTextToo) {
    std::string const bytes = "abcdefghijkl";
    std::string text = "P2\n4 3\n255\n";
    for (char const c : bytes)
        text += std::to_string(c) + " ";
    for (std::string const& content : {"P5\n4 3\n255\n" + bytes, text}) {
        write(content);
        ImageReader reader(pnm_, lossless());
        EXPECT_EQ(samplesOf(reader, {1, 1, 2, 2}).values, (std::vector<double>{'f', 'g', 'j', 'k'}));
        EXPECT_EQ(samplesOf(reader, {0, 0, 1, 3}).values, (std::vector<double>{'a', 'e', 'i'}));
        EXPECT_EQ(samplesOf(reader, {3, 2, 1, 1}).values, (std::vector<double>{'l'}));
    }
    write("P4\n12 2\n\x12\x30\x4d\xe0");
    ImageReader reader(pnm_, lossless());
    EXPECT_EQ(samplesOf(reader, {7, 0, 3, 2}).values, (std::vector<double>{255, 255, 255, 0, 0, 0}));
}

TEST_F(PnmFileTest, DamageIsAnErrorAndNeverBlackOrWhite) {
    for (std::string const& content :
         {std::string("P5\n3 2\n255\n\x01\x02\x03\x04\x05"), std::string("P4\n10 2\n\xaa\x80\x55"),
          std::string("P1\n3 2\n1 0 1 0 0"), std::string("P2\n3 2\n255\n1 2 3 4 5"), std::string("P2\n2 1\n255\n1 x"),
          std::string("P2\n2 1\n255\n1 256"), std::string("P1\n2 1\n1 2"), std::string("P2\n2 1\n255\n1 -1"),
          std::string("Pf\n2 1\n-1\n\x01\x02\x03")}) {
        write(content);
        EXPECT_EQ(refusal(pnm_).rfind("cannot read '" + pnm_ + "': ", 0), 0u) << content;
    }
}

TEST_F(PnmFileTest, HeadersThatCannotBeAreErrors) {
    for (std::string const& content :
         {std::string("P5\n0 2\n255\n"), std::string("P5\n-1 2\n255\n"), std::string("P5\n2 x\n255\n"),
          std::string("P5\n2 2\n0\n"), std::string("P5\n2 2\n65536\n"), std::string("P5\n99999999999 2\n255\n"),
          std::string("P5\n2"), std::string("P5\n1 1\n255"),
          std::string("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nENDHDR\n\x01"), std::string("P7\nWIDTH 1\nCOLOURS 3\n"),
          std::string("P7\nWIDTH 1\nHEIGHT 1\n"), std::string("Pf\n1 1\n0\n\x01\x02\x03\x04"),
          std::string("Pf\n1 1\nbig\n\x01\x02\x03\x04")}) {
        write(content);
        EXPECT_EQ(refusal(pnm_).rfind("cannot read '" + pnm_ + "': ", 0), 0u) << content;
    }
}

TEST_F(PnmFileTest, MoreThanTheFileHoldsIsRefusedBeforeItIsRead) {
    for (std::string const& content :
         {std::string("P5\n2000000000 2000000000\n255\n\x01"), std::string("P6\n2147483648 1\n65535\n\x01"),
          std::string("P4\n2000000000 9\n\x01"), std::string("P3\n2000000000 2\n255\n1"),
          std::string("PF\n2147483648 2147483648\n1\n\x01")}) {
        write(content);
        EXPECT_TRUE(has(refusal(pnm_), "more than the file holds")) << refusal(pnm_);
    }
}
