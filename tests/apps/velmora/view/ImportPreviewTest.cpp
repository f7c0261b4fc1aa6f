#include "apps/velmora/view/ImportPreview.h"

#include "host/HostError.h"
#include "tests/host/store/TestPictures.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

using testpictures::Content;

namespace {

using Rgba = std::array<std::uint8_t, 4>;

Rgba at(ImportPreview::Image const& image, size_t x, size_t y) {
    std::uint8_t const* const texel = &image.rgba[(y * image.width + x) * 4];
    return {texel[0], texel[1], texel[2], texel[3]};
}

// What a pixel of a picture looks like, from its bytes.
Rgba shown(testpictures::Picture const& picture, size_t x, size_t y) {
    auto const band = [&](size_t index) {
        size_t const sample = (y * picture.width + x) * picture.bands + index;
        if (picture.bits == 8) return picture.bytes[sample];
        int const value = picture.bytes[2 * sample] + 256 * picture.bytes[2 * sample + 1]; // a little-endian machine
        return static_cast<std::uint8_t>(value / 256);
    };
    switch (picture.bands) {
    case 1:
        return {band(0), band(0), band(0), 255};
    case 2:
        return {band(0), band(0), band(0), band(1)};
    case 3:
        return {band(0), band(1), band(2), 255};
    default:
        return {band(0), band(1), band(2), band(3)};
    }
}

} // namespace

TEST(ImportPreviewTest, WhatIsReadPassesAndIsKept) {
    for (size_t const bits : {8u, 16u})
        for (size_t const bands : {1u, 2u, 3u, 4u}) {
            auto const picture = testpictures::picture(37, 21, bands, bits, Content::Noise);
            auto const growing = std::make_shared<ImportPreview>();
            auto const watched = ImportPreview::watch(growing, testpictures::source(picture));
            std::vector<std::uint8_t> pixels;
            watched->read({0, 0, 37, 21}, pixels);
            EXPECT_EQ(pixels, picture.bytes);
            EXPECT_EQ(watched->bands(), bands);
            EXPECT_EQ(watched->sampleBytes(), bits / 8);
            size_t seen = 0;
            auto const image = growing->takeNew(seen);
            ASSERT_EQ(image.width, 37u);
            ASSERT_EQ(image.height, 21u);
            for (size_t y = 0; y < 21; ++y)
                for (size_t x = 0; x < 37; ++x)
                    ASSERT_EQ(at(image, x, y), shown(picture, x, y)) << x << ", " << y << ", " << bands << " bands";
        }
}

TEST(ImportPreviewTest, ALargePictureIsThinnedTheSameHoweverItIsRead) {
    auto const picture = testpictures::picture(3000, 700, 3, 8, Content::Noise);
    for (size_t const rows : {1u, 7u, 128u, 700u}) {
        auto const growing = std::make_shared<ImportPreview>();
        auto const watched = ImportPreview::watch(growing, testpictures::source(picture));
        std::vector<std::uint8_t> pixels;
        for (size_t y = 0; y < 700; y += rows)
            watched->read({0, y, 3000, std::min<size_t>(rows, 700 - y)}, pixels);
        size_t seen = 0;
        auto const image = growing->takeNew(seen);
        ASSERT_EQ(image.width, 1000u);
        ASSERT_EQ(image.height, 234u);
        for (size_t y = 0; y < image.height; ++y)
            for (size_t x = 0; x < image.width; ++x)
                ASSERT_EQ(at(image, x, y), shown(picture, 3 * x, 3 * y)) << x << ", " << y;
    }
}

TEST(ImportPreviewTest, RowsThatAreNotThereYetAreTransparent) {
    auto const picture = testpictures::picture(40, 40, 3, 8, Content::Noise);
    auto const growing = std::make_shared<ImportPreview>();
    auto const watched = ImportPreview::watch(growing, testpictures::source(picture));
    size_t seen = 0;
    EXPECT_TRUE(growing->takeNew(seen).rgba.empty()) << "nothing has been read";
    std::vector<std::uint8_t> pixels;
    watched->read({0, 0, 40, 10}, pixels);
    auto const image = growing->takeNew(seen);
    EXPECT_EQ(at(image, 39, 9), shown(picture, 39, 9));
    EXPECT_EQ(at(image, 0, 10), (Rgba{0, 0, 0, 0}));
    EXPECT_TRUE(growing->takeNew(seen).rgba.empty()) << "nothing is new";
    watched->read({0, 10, 40, 30}, pixels);
    EXPECT_EQ(at(growing->takeNew(seen), 0, 10), shown(picture, 0, 10));
}

TEST(ImportPreviewTest, ThinPicturesKeepARow) {
    auto const picture = testpictures::picture(1, 5000, 1, 8, Content::Ramp);
    auto const growing = std::make_shared<ImportPreview>();
    std::vector<std::uint8_t> pixels;
    ImportPreview::watch(growing, testpictures::source(picture))->read({0, 0, 1, 5000}, pixels);
    size_t seen = 0;
    auto const image = growing->takeNew(seen);
    EXPECT_EQ(image.width, 1u);
    EXPECT_EQ(image.height, 1000u);
    EXPECT_EQ(at(image, 0, 999), shown(picture, 0, 4995));
}

TEST(ImportPreviewTest, AFailureOfTheSourcePasses) {
    auto const picture = testpictures::picture(4, 4, 1, 8, Content::Ramp);
    auto const growing = std::make_shared<ImportPreview>();
    auto const watched = ImportPreview::watch(growing, testpictures::source(picture));
    std::vector<std::uint8_t> pixels;
    EXPECT_THROW(watched->read({0, 0, 5, 5}, pixels), HostError);
    size_t seen = 0;
    EXPECT_TRUE(growing->takeNew(seen).rgba.empty());
}

TEST(ImportPreviewTest, OneThreadReadsWhileAnotherLooksOn) {
    auto const picture = testpictures::picture(64, 512, 3, 8, Content::Noise);
    auto const growing = std::make_shared<ImportPreview>();
    std::thread reader([&] {
        auto const watched = ImportPreview::watch(growing, testpictures::source(picture));
        std::vector<std::uint8_t> pixels;
        for (size_t y = 0; y < 512; ++y)
            watched->read({0, y, 64, 1}, pixels);
    });
    size_t seen = 0;
    ImportPreview::Image image;
    while (image.rgba.empty() || at(image, 63, 511)[3] == 0) {
        auto newer = growing->takeNew(seen);
        if (!newer.rgba.empty()) image = std::move(newer);
    }
    reader.join();
    for (size_t y = 0; y < 512; ++y)
        ASSERT_EQ(at(image, y % 64, y), shown(picture, y % 64, y));
}
