// FITS files, built here card by card.
#include "tests/host/image/ImageFixture.h"

#include <fitsio.h>

#include <cstring>

namespace {

constexpr size_t kBlock = 2880;

std::string card(std::string const& key, std::string const& value) {
    std::string text = key;
    text.resize(8, ' ');
    text += "= " + std::string(value.size() < 20 ? 20 - value.size() : 0, ' ') + value;
    text.resize(80, ' ');
    return text;
}

std::string padded(std::string text, char with) {
    text.resize((text.size() + kBlock - 1) / kBlock * kBlock, with);
    return text;
}

struct Unit {
    int bitpix = 8;
    std::vector<std::string> axes;
    std::string data; // big-endian
    std::vector<std::pair<std::string, std::string>> more = {};
    bool isExtension = false;

    std::string bytes() const {
        std::string header = isExtension ? card("XTENSION", "'IMAGE   '") : card("SIMPLE", "T");
        header += card("BITPIX", std::to_string(bitpix)) + card("NAXIS", std::to_string(axes.size()));
        for (size_t i = 0; i < axes.size(); ++i)
            header += card("NAXIS" + std::to_string(i + 1), axes[i]);
        if (isExtension) header += card("PCOUNT", "0") + card("GCOUNT", "1");
        for (auto const& [key, value] : more)
            header += card(key, value);
        return padded(header + "END", ' ') + padded(data, '\0');
    }
};

class FitsReadingTest : public ImageFixture {
protected:
    void write(std::vector<Unit> const& units) const {
        std::string file;
        for (Unit const& unit : units)
            file += unit.bytes();
        writeFile(fits_, file);
    }

    std::string fits_ = path("a.fits");
};

std::string shorts(std::vector<int> const& values) {
    std::string bytes;
    for (int const value : values) {
        bytes += static_cast<char>(value >> 8);
        bytes += static_cast<char>(value);
    }
    return bytes;
}

} // namespace

TEST_F(FitsReadingTest, SamplesAreTheFilesFromItsFirstRowOn) {
    write({{8, {"3", "2"}, "abcdef"}});
    EXPECT_EQ(valuesOf(fits_), (std::vector<double>{'a', 'b', 'c', 'd', 'e', 'f'}));
    // The offset that marks unsigned integers.
    write({{16, {"2", "1"}, shorts({-32768, 32767}), {{"BZERO", "32768"}}}});
    EXPECT_EQ(valuesOf(fits_), (std::vector<double>{0, 65535}));
    expectOwnSamples(fits_);
}

TEST_F(FitsReadingTest, OtherSamplesAreRefusedAndTakenByRange) {
    write({{16, {"3", "1"}, shorts({-5, 0, 300})}});
    EXPECT_TRUE(has(refusal(fits_), "holds 16-bit signed samples from -5 to 300;"));
    EXPECT_EQ(valuesOf(fits_, withRange(-5, 300)), (std::vector<double>{0, 1074, 65535})); // 65535 * 5 / 305 is 1074.3
    write({{8, {"3", "1"}, "\x01\x80\xff", {{"BZERO", "-128"}}}});
    EXPECT_TRUE(has(refusal(fits_), "8-bit signed samples from -127 to 127"));
    write({{16, {"3", "1"}, shorts({-5, 0, 300}), {{"BSCALE", "0.5"}, {"BZERO", "1"}}}});
    EXPECT_TRUE(has(refusal(fits_), "32-bit float samples from -1.5 to 151")) << refusal(fits_);
    std::string const ints("\xff\xff\xff\xfe\x00\x01\x00\x00", 8);
    write({{32, {"2", "1"}, ints}});
    EXPECT_TRUE(has(refusal(fits_), "32-bit signed samples from -2 to 65536"));
    write({{32, {"2", "1"}, ints, {{"BZERO", "2147483648"}}}});
    EXPECT_TRUE(has(refusal(fits_), "32-bit unsigned samples from 2147483646 to 2147549184"));
    write({{-32, {"2", "1"}, std::string("\x3f\xc0\x00\x00\xff\xc0\x00\x00", 8)}});
    EXPECT_TRUE(has(refusal(fits_), "32-bit float samples from 1.5 to 1.5")) << "and one that is no number";
    write({{-64, {"1", "1"}, std::string("\x3f\xf8\x00\x00\x00\x00\x00\x00", 8)}});
    EXPECT_TRUE(has(refusal(fits_), "64-bit float samples from 1.5 to 1.5"));
    write({{64, {"1", "1"}, std::string(8, '\x01')}});
    EXPECT_TRUE(has(refusal(fits_, withRange(0, 1)), "integers of 64 bits, which are not read"));
}

TEST_F(FitsReadingTest, PlanesOfACubeAreBands) {
    write({{8, {"2", "1", "4"}, "abcdefgh"}});
    EXPECT_EQ(refusal(fits_),
              "'" + fits_ +
                  "' holds 4 bands; grey or RGB is taken, with alpha or without: choose --bands I or I,J,K "
                  "(1 to 4)");
    EXPECT_EQ(valuesOf(fits_, withBands({4, 1, 3})), (std::vector<double>{'g', 'a', 'e', 'h', 'b', 'f'}));
    write({{8, {"2", "1", "3"}, "abcdef"}});
    EXPECT_EQ(valuesOf(fits_), (std::vector<double>{'a', 'c', 'e', 'b', 'd', 'f'})) << "three are red, green and blue";
    write({{8, {"2", "1", "1", "1"}, "ab"}});
    EXPECT_EQ(valuesOf(fits_), (std::vector<double>{'a', 'b'}));
    write({{8, {"2"}, "ab"}});
    EXPECT_EQ(valuesOf(fits_), (std::vector<double>{'a', 'b'}));
    write({{8, {"1", "1", "1", "2"}, "ab"}});
    EXPECT_TRUE(has(refusal(fits_), "2 samples along its axis 4"));
    write({{8, std::vector<std::string>(10, "1"), "a"}});
    EXPECT_TRUE(has(refusal(fits_), "10 axes"));
}

TEST_F(FitsReadingTest, ExtensionsArePages) {
    Unit second{8, {"1", "2"}, "xy"};
    second.isExtension = true;
    Unit third{16, {"1", "1"}, shorts({258}), {{"BZERO", "32768"}}};
    third.isExtension = true;
    write({{8, {"2", "1"}, "ab"}, second, third});
    EXPECT_EQ(refusal(fits_), "'" + fits_ + "' holds 3 pictures; one of them is taken: choose --page N (1 to 3)");
    for (size_t page = 1; page <= 3; ++page)
        expectOwnSamples(fits_, withPage(page), page);
    EXPECT_EQ(valuesOf(fits_, withPage(3)), (std::vector<double>{33026}));
    EXPECT_TRUE(has(misuse(fits_, withPage(4)), "--page is 1 to 3"));
    // A first HDU without pixels is no page, nor is a table.
    write({{8, {}, ""}, second});
    EXPECT_EQ(valuesOf(fits_), (std::vector<double>{'x', 'y'}));
    write({{8, {}, ""}});
    EXPECT_TRUE(has(refusal(fits_), "it holds tables, but no picture"));
}

TEST_F(FitsReadingTest, CompressedPicturesArePagesToo) {
    fitsfile* file = nullptr;
    int status = 0;
    std::vector<short> const pixels{1, 2, 3, 400, 5, 6};
    std::array<long, 2> sides{3, 2};
    fits_create_file(&file, fits_.c_str(), &status);
    fits_set_compression_type(file, RICE_1, &status);
    fits_create_img(file, SHORT_IMG, 2, sides.data(), &status);
    fits_write_img(file, TSHORT, 1, 6, const_cast<short*>(pixels.data()), &status);
    fits_close_file(file, &status);
    ASSERT_EQ(status, 0);
    EXPECT_TRUE(has(refusal(fits_), "16-bit signed samples from 1 to 400"));
    EXPECT_EQ(valuesOf(fits_, withRange(0, 65535)), (std::vector<double>{1, 2, 3, 400, 5, 6}));
}

TEST_F(FitsReadingTest, RegionsAreReadInAnyOrder) {
    write({{8, {"4", "3"}, "abcdefghijkl"}});
    ImageReader reader(fits_, lossless());
    EXPECT_EQ(samplesOf(reader, {1, 1, 2, 2}).values, (std::vector<double>{'f', 'g', 'j', 'k'}));
    EXPECT_EQ(samplesOf(reader, {0, 0, 1, 3}).values, (std::vector<double>{'a', 'e', 'i'}));
}

TEST_F(FitsReadingTest, MoreThanTheFileHoldsIsRefusedBeforeItIsRead) {
    write({{8, {"3000", "3"}, std::string(8999, 'a')}});
    EXPECT_EQ(valuesOf(fits_).size(), 9000u) << "what is written behind the data is there to fill a block";
    write({{-32, {"2000000000", "2000000000"}, "abc"}});
    EXPECT_TRUE(has(refusal(fits_), "2000000000 x 2000000000 pixels of 1 bands, which are more than the file holds"))
        << refusal(fits_);
    write({{8, {"3000", "2", "2"}, std::string(8000, 'a')}});
    EXPECT_TRUE(has(refusal(fits_), "3000 x 2 pixels of 2 bands")) << refusal(fits_);
    for (std::string const wrong : {"0", "-3", "99999999999"}) {
        write({{8, {wrong, "2"}, "ab"}});
        EXPECT_EQ(refusal(fits_).rfind("cannot read '" + fits_ + "': ", 0), 0u) << refusal(fits_);
    }
}

TEST_F(FitsReadingTest, BracketsInAFileNameAreNotPartsOfIt) {
    std::string const name = path("a[2].fits");
    write({{8, {"2", "1"}, "ab"}});
    std::filesystem::rename(fits_, name);
    EXPECT_EQ(valuesOf(name), (std::vector<double>{'a', 'b'}));
}

TEST_F(FitsReadingTest, KeywordsSayWhatWasObserved) {
    Unit unit{8, {"2", "1"}, "ab"};
    unit.more = {{"OBJECT", "'M 31    '"}, {"EXPTIME", "30.5"}, {"NOTHING", "1"}};
    write({unit});
    EXPECT_EQ(propertiesOf(fits_), (std::vector<std::string>{"object: M 31", "exposure in seconds: 30.5"}));
}
