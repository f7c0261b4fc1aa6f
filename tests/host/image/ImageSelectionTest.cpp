#include "host/image/ImageSelection.h"

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

namespace {

std::string wrongBands(std::string const& text) {
    try {
        imageselection::parseBands(text);
    } catch (std::invalid_argument const& error) {
        return error.what();
    }
    return "";
}

std::string wrongRange(std::string const& text) {
    ImageSelection selection;
    try {
        imageselection::parseRange(text, selection);
    } catch (std::invalid_argument const& error) {
        return error.what();
    }
    return "";
}

} // namespace

TEST(ImageSelectionTest, BandsAreOneToFourNumbers) {
    using Bands = std::vector<size_t>;
    EXPECT_EQ(imageselection::parseBands("1"), Bands{1});
    EXPECT_EQ(imageselection::parseBands("17,2"), (Bands{17, 2}));
    EXPECT_EQ(imageselection::parseBands("4,3,2"), (Bands{4, 3, 2}));
    EXPECT_EQ(imageselection::parseBands("1,1,1,1"), (Bands{1, 1, 1, 1}));
    for (std::string const text : {"", "0", "1,", ",1", "1,,2", "a", "1.5", "-1", "1 2", " 1", "1,0,2"})
        EXPECT_EQ(wrongBands(text),
                  "'" + text +
                      "' names no bands; write I or I,J,K, counted from 1, and one more that is to be "
                      "alpha");
    EXPECT_EQ(wrongBands("1,2,3,4,5"), "'1,2,3,4,5' names 5 bands; grey is one, RGB three, and one more may be alpha");
}

TEST(ImageSelectionTest, ARangeIsTwoNumbersOrAuto) {
    ImageSelection selection;
    imageselection::parseRange("-3.5,124172", selection);
    EXPECT_EQ(selection.range->low, -3.5);
    EXPECT_EQ(selection.range->high, 124172);
    EXPECT_FALSE(selection.automaticRange);
    EXPECT_TRUE(selection.hasRange());
    imageselection::parseRange("-1e300,1e300", selection);
    EXPECT_EQ(selection.range->high, 1e300);
    ImageSelection automatic;
    imageselection::parseRange("auto", automatic);
    EXPECT_TRUE(automatic.automaticRange);
    EXPECT_TRUE(automatic.hasRange());
    EXPECT_FALSE(automatic.range);
    for (std::string const text : {"", "1", "1,", ",2", "1,2,3", "a,b", "1 ,2", "1,2x", "automatic", "nan,1", "1,nan"})
        EXPECT_EQ(wrongRange(text), "'" + text + "' is no range; write LO,HI, for example 0,4095, or auto");
    for (std::string const text : {"2,2", "3,2"})
        EXPECT_EQ(wrongRange(text), "the range '" + text + "' is empty; write the smaller number first");
    for (std::string const text : {"0,inf", "-inf,0", "0,1.1e300", "-1.1e300,0"})
        EXPECT_EQ(wrongRange(text), "the range '" + text + "' reaches beyond 1e300; choose a smaller one");
}

TEST(ImageSelectionTest, EachSelectionHasAnIdentityOfItsOwn) {
    std::vector<ImageSelection> all(10);
    all[1].page = 1;
    all[2].page = 2;
    all[3].bands = {1};
    all[4].bands = {1, 2};
    all[5].bands = {12};
    all[6].range = SampleRange{1, 2};
    all[7].range = SampleRange{12, 13};
    all[8].automaticRange = true;
    all[9].toSrgb = true;
    std::set<std::string> identities;
    for (ImageSelection const& one : all) {
        EXPECT_TRUE(identities.insert(one.identity()).second) << one.identity();
        EXPECT_EQ(one.isEmpty(), &one == &all.front());
        ImageSelection const copy = one;
        EXPECT_EQ(copy.identity(), one.identity());
    }
    ImageSelection close = all[6];
    close.range->high = 2.0000000000000004;
    EXPECT_NE(close.identity(), all[6].identity());
    EXPECT_EQ(all[0].identity(), "");
}

TEST(ImageSelectionTest, BandsAreToldWithTheirAlpha) {
    EXPECT_EQ(imageselection::toText(std::vector<size_t>{3}), "3");
    EXPECT_EQ(imageselection::toText(std::vector<size_t>{3, 1}), "3 and alpha 1");
    EXPECT_EQ(imageselection::toText(std::vector<size_t>{4, 3, 2}), "4,3,2");
    EXPECT_EQ(imageselection::toText(std::vector<size_t>{4, 3, 2, 5}), "4,3,2 and alpha 5");
}

TEST(ImageSelectionTest, NumbersAreToldAsShortAsTheyCanBe) {
    EXPECT_EQ(imageselection::toText(-3.5), "-3.5");
    EXPECT_EQ(imageselection::toText(0.1), "0.1");
    EXPECT_EQ(imageselection::toText(124172.0), "124172");
    EXPECT_EQ(imageselection::toText(static_cast<double>(0.1f), SampleType::Float32), "0.1");
    EXPECT_EQ(imageselection::toText(static_cast<double>(0.1f)), "0.10000000149011612");
    EXPECT_EQ(imageselection::toText(0.1, SampleType::Float32), "0.1") << "no number of 32 bits";
    EXPECT_EQ(imageselection::toText(1e300, SampleType::Float32), "1e+300");
}
