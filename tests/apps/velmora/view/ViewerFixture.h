#pragma once

#include "tests/apps/velmora/Process.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestImages.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

/// A folder, and pictures in it that are shown by the program.
class ViewerFixture : public testing::Test {
protected:
    static constexpr std::uint8_t kBackground = 32;

    std::string path(std::string const& name) const { return folder_.path(name); }

    /// A store of a picture of noise, RGB of 8 bits.
    std::string makeStore(std::string const& name, size_t width, size_t height) {
        picture_ = testpictures::picture(width, height, 3, 8, testpictures::Content::Noise);
        ImportOptions options;
        options.replace = true;
        options.sourceName = name;
        testpictures::import(picture_, path(name), options);
        return path(name);
    }

    std::string script(std::string const& text) const {
        writeFile(path("script.txt"), text);
        return path("script.txt");
    }

    /// What a window shows whose upper left corner is at x, y of the picture, at so many whole pixels per pixel.
    testimages::Pixels expected(std::int64_t x, std::int64_t y, size_t width, size_t height,
                                std::int64_t zoom = 1) const {
        testimages::Pixels pixels{width, height, 3, {}};
        for (std::int64_t row = 0; row < static_cast<std::int64_t>(height); ++row)
            for (std::int64_t column = 0; column < static_cast<std::int64_t>(width); ++column)
                for (size_t band = 0; band < 3; ++band)
                    pixels.samples.push_back(pictureAt(x * zoom + column, y * zoom + row, zoom, band));
        return pixels;
    }

    static void expectPixels(testimages::Pixels const& actual, testimages::Pixels const& expected) {
        EXPECT_EQ(testimages::difference(actual, expected), "");
    }

    TemporaryFolder folder_;
    testpictures::Picture picture_;

private:
    std::uint8_t pictureAt(std::int64_t x, std::int64_t y, std::int64_t zoom, size_t band) const {
        if (x < 0 || y < 0) return kBackground;
        auto const column = static_cast<size_t>(x / zoom);
        auto const row = static_cast<size_t>(y / zoom);
        if (column >= picture_.width || row >= picture_.height) return kBackground;
        return picture_.bytes[(row * picture_.width + column) * picture_.bands + band];
    }
};
