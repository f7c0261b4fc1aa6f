#pragma once

#include "host/HostError.h"
#include "host/pyramid/Pyramid.h"
#include "tests/host/image/TestTiff.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

/// Pictures whose levels are unrelated to one another, so that samples show which level they were read from.
class PyramidFixture : public testing::Test {
protected:
    using Bytes = std::vector<std::uint8_t>;
    using Directory = testtiff::Directory;
    using Numbers = std::initializer_list<std::uint16_t>;

    std::string path(std::string const& name) const { return folder_.path(name); }

    /// Irregular samples over the whole range of the type; floats from -500 to 500.
    template <class Sample>
    static std::vector<Sample> noise(size_t count, std::uint32_t seed) {
        std::vector<Sample> made(count);
        std::uint64_t state = seed * 7919 + 17;
        for (Sample& sample : made) {
            state = state * 6364136223846793005ull + 1442695040888963407ull;
            if constexpr (std::is_floating_point_v<Sample>)
                sample = static_cast<Sample>(static_cast<double>(state >> 40) / 16777.216 - 500);
            else
                sample = static_cast<Sample>(state >> 32);
        }
        return made;
    }

    /// Smooth enough for lossy compression, and for levels that are recognised.
    static Bytes ramps(size_t width, size_t height, size_t bands) {
        Bytes made;
        for (size_t y = 0; y < height; ++y)
            for (size_t x = 0; x < width; ++x)
                for (size_t band = 0; band < bands; ++band)
                    made.push_back(static_cast<std::uint8_t>(
                        40 + 170 * (band == 1 ? height - y : x) / (band == 1 ? height : width) + 10 * band));
        return made;
    }

    template <class Sample>
    static Bytes bytesOf(std::vector<Sample> const& samples) {
        auto const* const first = reinterpret_cast<std::uint8_t const*>(samples.data());
        return {first, first + samples.size() * sizeof(Sample)};
    }

    /// A tiled directory of noise.
    template <class Sample = std::uint8_t>
    static Directory level(std::uint32_t width, std::uint32_t height, std::uint16_t bands, std::uint32_t seed,
                           std::uint32_t subfileType = 0) {
        Directory made =
            testtiff::directory<Sample>(width, height, bands, noise<Sample>(size_t{width} * height * bands, seed));
        made.tile = 32;
        made.tileHeight = 16;
        made.subfileType = subfileType;
        return made;
    }

    static Directory reduced(std::uint32_t width, std::uint32_t height, std::uint16_t bands, std::uint32_t seed) {
        return level(width, height, bands, seed, FILETYPE_REDUCEDIMAGE);
    }

    std::string write(std::vector<Directory> const& directories, std::string const& mode = "w",
                      std::string const& name = "a.tif") const {
        testtiff::write(path(name), directories, mode);
        return path(name);
    }

    static std::unique_ptr<Pyramid> open(std::string const& file, PyramidOptions const& options = {}) {
        PyramidOpening opening = openPyramid(file, options);
        if (!opening.pyramid) throw std::logic_error("no pyramid: " + opening.reason);
        return std::move(opening.pyramid);
    }

    static std::vector<std::string> sizesOf(PyramidFacts const& facts) {
        std::vector<std::string> sizes;
        for (PyramidLevel const& one : facts.levels)
            sizes.push_back(std::to_string(one.size.width) + "x" + std::to_string(one.size.height));
        return sizes;
    }
    using Sizes = std::vector<std::string>;

    static Bytes read(PyramidReader& reader, size_t level, Region const& region) {
        size_t const bytes = region.width * region.height * reader.facts().image.layout.pixelBytes();
        // What is not written stays 0xcd, and what is written beyond the end is seen.
        Bytes samples(bytes + 8, 0xcd);
        reader.read(level, region, samples.data());
        if (!std::equal(samples.end() - 8, samples.end(), Bytes(8, 0xcd).begin()))
            throw std::logic_error("written beyond the region");
        samples.resize(bytes);
        return samples;
    }
    static Bytes readAll(PyramidReader& reader, size_t level = 0) {
        return read(reader, level, wholeOf(reader.facts().levels.at(level).size));
    }

    /// A region of a picture of `width` pixels.
    static Bytes crop(Bytes const& picture, size_t width, size_t pixelBytes, Region const& region) {
        Bytes part;
        for (size_t y = region.y; y < region.y + region.height; ++y)
            for (size_t i = region.x * pixelBytes; i < (region.x + region.width) * pixelBytes; ++i)
                part.push_back(picture.at(y * width * pixelBytes + i));
        return part;
    }

    /// Regions that begin and end inside of tiles, at their borders, and at the picture's.
    static std::vector<Region> regionsOf(Size const& size) {
        std::vector<Region> regions{wholeOf(size), {0, 0, 1, 1}, {size.width - 1, size.height - 1, 1, 1}};
        size_t const x = size.width / 3;
        size_t const y = size.height / 3;
        regions.push_back({x, y, size.width - x, size.height - y});
        regions.push_back({x, y, (size.width - x + 1) / 2, (size.height - y + 1) / 2});
        regions.push_back({0, y, size.width, 1});
        regions.push_back({x, 0, 1, size.height});
        return regions;
    }

    /// Each region of the level is that of the picture.
    static void expectLevel(PyramidReader& reader, size_t level, Bytes const& picture) {
        Size const size = reader.facts().levels.at(level).size;
        size_t const pixelBytes = reader.facts().image.layout.pixelBytes();
        ASSERT_EQ(picture.size(), size.width * size.height * pixelBytes);
        for (Region const& region : regionsOf(size))
            EXPECT_TRUE(read(reader, level, region) == crop(picture, size.width, pixelBytes, region))
                << "level " << level << ", " << toText(region);
    }

    static HostError failure(std::function<void()> const& action) {
        try {
            action();
        } catch (HostError const& error) {
            return error;
        }
        throw std::logic_error("nothing failed");
    }

    static bool has(std::string const& text, std::string const& part) { return text.find(part) != std::string::npos; }

    TemporaryFolder folder_;
};
