// The levels of a view, compared with plain loops over the samples that were written.
#include "host/pyramid/PyramidTiles.h"
#include "tests/host/pyramid/PyramidFixture.h"

#include <cmath>

namespace {

// A level of a file: its samples, and pixels of the picture per sample along both axes, as fractions.
template <class Sample>
struct Plane {
    size_t width = 0;
    size_t height = 0;
    size_t bands = 0;
    std::vector<Sample> samples;
    std::uint64_t acrossPixels = 1;
    std::uint64_t acrossSamples = 1;
    std::uint64_t downPixels = 1;
    std::uint64_t downSamples = 1;
};

size_t halved(size_t side, size_t level) {
    for (size_t i = 0; i < level; ++i)
        side = (side + 1) / 2;
    return side;
}

// The samples of one axis that share pixels with sample i; the last one, if none does.
std::vector<size_t> sharing(size_t i, size_t level, size_t count, std::uint64_t pixels, std::uint64_t per) {
    std::uint64_t const step = std::uint64_t{1} << level;
    std::vector<size_t> found;
    for (std::uint64_t f = 0; f < count; ++f)
        if (f * pixels < (i + 1) * step * per && (f + 1) * pixels > i * step * per) found.push_back(f);
    if (found.empty()) found.push_back(count - 1);
    return found;
}

template <class Sample>
Sample rounded(long double sum, std::uint64_t count) {
    if constexpr (std::is_floating_point_v<Sample>)
        return static_cast<Sample>(static_cast<double>(sum) / static_cast<double>(count));
    else
        return static_cast<Sample>(std::floor(sum / count + 0.5L));
}

// Plain means. Sums of floats are doubles, added row by row.
template <class Sample>
std::vector<Sample> meansOf(Plane<Sample> const& plane, size_t width, size_t height, size_t level) {
    std::vector<Sample> made;
    for (size_t y = 0; y < halved(height, level); ++y) {
        auto const rows = sharing(y, level, plane.height, plane.downPixels, plane.downSamples);
        for (size_t x = 0; x < halved(width, level); ++x) {
            auto const columns = sharing(x, level, plane.width, plane.acrossPixels, plane.acrossSamples);
            for (size_t band = 0; band < plane.bands; ++band) {
                std::conditional_t<std::is_floating_point_v<Sample>, double, long double> sum = 0;
                for (size_t const row : rows)
                    for (size_t const column : columns)
                        sum += plane.samples.at((row * plane.width + column) * plane.bands + band);
                made.push_back(rounded<Sample>(sum, rows.size() * columns.size()));
            }
        }
    }
    return made;
}

class PyramidTilesTest : public PyramidFixture {
protected:
    static Bytes read(PyramidTiles& tiles, size_t level, Region const& region) {
        Bytes samples(region.width * region.height * tiles.facts().image.layout.pixelBytes());
        tiles.read(level, region, samples.data());
        return samples;
    }
    static Bytes readAll(PyramidTiles& tiles, size_t level) { return read(tiles, level, wholeOf(tiles.size(level))); }

    // The level is the expected picture, as a whole and region by region.
    static void expectLevel(PyramidTiles& tiles, size_t level, Bytes const& expected) {
        Size const size = tiles.size(level);
        size_t const pixelBytes = tiles.facts().image.layout.pixelBytes();
        ASSERT_EQ(expected.size(), size.width * size.height * pixelBytes);
        for (Region const& region : regionsOf(size))
            EXPECT_TRUE(read(tiles, level, region) == crop(expected, size.width, pixelBytes, region))
                << "level " << level << ", " << toText(region);
    }

    template <class Sample>
    static Plane<Sample> planeOf(Directory const& directory) {
        Plane<Sample> plane;
        plane.width = directory.width;
        plane.height = directory.height;
        plane.bands = directory.bands;
        plane.samples.resize(directory.bytes.size() / sizeof(Sample));
        std::memcpy(plane.samples.data(), directory.bytes.data(), directory.bytes.size());
        return plane;
    }

    // A picture of 101 x 67, and a quarter of it, rounded down.
    template <class Sample>
    void expectMeans() {
        for (std::uint16_t const bands : Numbers{1, 3}) {
            Directory const full = level<Sample>(101, 67, bands, 1);
            Directory const quarter = level<Sample>(25, 16, bands, 2, FILETYPE_REDUCEDIMAGE);
            PyramidTiles tiles(open(write({full, quarter}))->reader());
            Plane<Sample> const fine = planeOf<Sample>(full);
            Plane<Sample> coarse = planeOf<Sample>(quarter);
            coarse.acrossPixels = coarse.downPixels = 4;
            expectLevel(tiles, 0, full.bytes);
            expectLevel(tiles, 1, bytesOf(meansOf(fine, 101, 67, 1)));
            // 26 x 17 samples: the file has one less of both, and they are not equal.
            EXPECT_EQ(tiles.fileLevel(2), 0u);
            expectLevel(tiles, 2, bytesOf(meansOf(fine, 101, 67, 2)));
            for (size_t const level : {3u, 4u, 5u, 6u, 7u, 9u}) {
                EXPECT_EQ(tiles.fileLevel(level), 1u) << level;
                expectLevel(tiles, level, bytesOf(meansOf(coarse, 101, 67, level)));
            }
        }
    }
};

} // namespace

TEST_F(PyramidTilesTest, LevelsAreMeansOfSamplesOfEveryType) {
    expectMeans<std::uint8_t>();
    expectMeans<std::int8_t>();
    expectMeans<std::uint16_t>();
    expectMeans<std::int16_t>();
    expectMeans<std::uint32_t>();
    expectMeans<std::int32_t>();
    expectMeans<float>();
    expectMeans<double>();
}

TEST_F(PyramidTilesTest, EqualLevelsAreTheFiles) {
    std::vector<Directory> const all{level(400, 300, 3, 1), reduced(200, 150, 3, 2), reduced(100, 75, 3, 3),
                                     reduced(50, 38, 3, 4)};
    PyramidTiles tiles(open(write(all))->reader());
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_EQ(tiles.fileLevel(i), i);
        EXPECT_TRUE(tiles.isOfFile(i));
        expectLevel(tiles, i, all[i].bytes);
    }
    // Beyond the file's last.
    Plane<std::uint8_t> last = planeOf<std::uint8_t>(all[3]);
    last.acrossPixels = last.downPixels = 8;
    expectLevel(tiles, 4, bytesOf(meansOf(last, 400, 300, 4)));
    expectLevel(tiles, 9, bytesOf(meansOf(last, 400, 300, 9)));
    EXPECT_FALSE(tiles.isOfFile(4));
    EXPECT_FALSE(tiles.isOfFile(9));
    EXPECT_EQ(tiles.size(9).width, 1u);
}

TEST_F(PyramidTilesTest, ALevelWithinHalfAPercentIsTakenSampleBySample) {
    // 801 / 400 and 602 / 301: level 1 has 401 x 301 samples.
    Directory const full = level(801, 602, 1, 1);
    Directory const half = reduced(400, 301, 1, 2);
    PyramidTiles tiles(open(write({full, half}))->reader());
    ASSERT_EQ(tiles.fileLevel(1), 1u);
    Bytes expected;
    for (size_t y = 0; y < 301; ++y)
        for (size_t x = 0; x < 401; ++x)
            expected.push_back(half.bytes[y * 400 + std::min<size_t>(x, 399)]);
    expectLevel(tiles, 1, expected);
    expectLevel(tiles, 0, full.bytes);
    // Of 1000 columns 1003 are left, of 800 rows all: the columns in the middle.
    Directory const wide = level(4000, 3200, 1, 3);
    Directory const quarter = reduced(1003, 800, 1, 4);
    PyramidTiles other(open(write({wide, quarter}))->reader());
    ASSERT_EQ(other.fileLevel(2), 1u);
    Bytes taken;
    for (size_t y = 0; y < 800; ++y)
        for (size_t x = 0; x < 1000; ++x) {
            size_t column = 0;
            while ((column + 1) * 4000 <= (4 * x + 2) * 1003)
                ++column;
            taken.push_back(quarter.bytes[y * 1003 + column]);
        }
    expectLevel(other, 2, taken);
    // The same rows as columns.
    Directory const high = level(3200, 4000, 1, 5);
    Directory const low = reduced(800, 1003, 1, 6);
    PyramidTiles another(open(write({high, low}))->reader());
    ASSERT_EQ(another.fileLevel(2), 1u);
    Bytes rows;
    for (size_t y = 0; y < 1000; ++y) {
        size_t row = 0;
        while ((row + 1) * 4000 <= (4 * y + 2) * 1003)
            ++row;
        rows.insert(rows.end(), low.bytes.begin() + static_cast<std::ptrdiff_t>(row * 800),
                    low.bytes.begin() + static_cast<std::ptrdiff_t>((row + 1) * 800));
    }
    expectLevel(another, 2, rows);
}

TEST_F(PyramidTilesTest, LevelZeroIsThePictureEvenIfACopyIsNearlyAsLarge) {
    Directory const full = level(1000, 800, 1, 1);
    PyramidTiles tiles(open(write({full, reduced(998, 798, 1, 2)}))->reader());
    ASSERT_EQ(tiles.facts().levels.size(), 2u);
    EXPECT_EQ(tiles.fileLevel(0), 0u);
    expectLevel(tiles, 0, full.bytes);
}

TEST_F(PyramidTilesTest, LevelsOfOtherRatiosAreAveragedByTheirPixels) {
    struct Row {
        std::uint32_t width;
        std::uint32_t height;
        std::uint64_t pixels; // 0: the ratio of the sides
    };
    // A third; 2.5; 3.99 (301 for 1201).
    for (Row const& row : {Row{401, 301, 3}, Row{480, 360, 0}, Row{301, 226, 0}}) {
        Directory const full = level<std::uint16_t>(1201, 901, 1, 1);
        Directory const copy = level<std::uint16_t>(row.width, row.height, 1, 2, FILETYPE_REDUCEDIMAGE);
        PyramidTiles tiles(open(write({full, copy}))->reader());
        Plane<std::uint16_t> plane = planeOf<std::uint16_t>(copy);
        plane.acrossPixels = plane.downPixels = row.pixels > 0 ? row.pixels : 1201;
        if (row.pixels == 0) {
            plane.acrossSamples = row.width;
            plane.downPixels = 901;
            plane.downSamples = row.height;
        }
        if (row.width == 301) { // rounded up from a quarter
            plane.acrossPixels = plane.downPixels = 4;
            plane.acrossSamples = plane.downSamples = 1;
        }
        for (size_t const level : {3u, 5u}) {
            ASSERT_EQ(tiles.fileLevel(level), 1u);
            expectLevel(tiles, level, bytesOf(meansOf(plane, 1201, 901, level)));
        }
        EXPECT_EQ(tiles.fileLevel(1), 0u);
    }
}

// Of a strip of 7 rows one is left at a quarter of its length, and level 2 has two.
TEST_F(PyramidTilesTest, ALevelIsFineEnoughAlongBothAxesOrNotAtAll) {
    for (bool const wide : {true, false}) {
        Directory const full = wide ? level(400, 7, 1, 1) : level(7, 400, 1, 1);
        Directory const quarter = wide ? reduced(100, 1, 1, 2) : reduced(1, 100, 1, 2);
        PyramidTiles tiles(open(write({full, quarter}))->reader());
        ASSERT_EQ(tiles.facts().levels.size(), 2u);
        EXPECT_EQ(tiles.fileLevel(2), 0u);
        expectLevel(tiles, 2, bytesOf(meansOf(planeOf<std::uint8_t>(full), full.width, full.height, 2)));
        EXPECT_EQ(tiles.fileLevel(3), 1u);
    }
}

// A quarter of the length, and nearly half of the width: rows are averaged, columns are those of the file.
TEST_F(PyramidTilesTest, ALevelIsEqualAlongBothAxesOrAveraged) {
    for (bool const wide : {true, false}) {
        Directory const full = wide ? level(400, 7, 1, 1) : level(7, 400, 1, 1);
        Directory const copy = wide ? reduced(100, 3, 1, 2) : reduced(3, 100, 1, 2);
        PyramidTiles tiles(open(write({full, copy}))->reader());
        ASSERT_EQ(tiles.facts().levels.size(), 2u);
        ASSERT_EQ(tiles.fileLevel(2), 1u);
        EXPECT_FALSE(tiles.isOfFile(2));
        EXPECT_TRUE(tiles.isOfFile(0));
        Plane<std::uint8_t> plane = planeOf<std::uint8_t>(copy);
        plane.acrossPixels = wide ? 4 : 2;
        plane.downPixels = wide ? 2 : 4;
        expectLevel(tiles, 2, bytesOf(meansOf(plane, full.width, full.height, 2)));
    }
}

TEST_F(PyramidTilesTest, AlphaWeighsColoursUnlessTheyAreMultiplied) {
    for (std::uint16_t const kind : Numbers{EXTRASAMPLE_UNASSALPHA, EXTRASAMPLE_ASSOCALPHA, EXTRASAMPLE_UNSPECIFIED}) {
        Directory full = level(61, 43, 4, 1);
        full.extraSamples = {kind};
        // Some are wholly transparent.
        for (size_t i = 0; i < full.bytes.size(); i += 4)
            if (i % 24 < 12 || i < 61 * 16) full.bytes[i + 3] = 0;
        PyramidTiles tiles(open(write({full}))->reader());
        Plane<std::uint8_t> const plane = planeOf<std::uint8_t>(full);
        for (size_t const level : {1u, 2u}) {
            std::vector<std::uint8_t> expected = meansOf(plane, 61, 43, level);
            size_t const width = halved(61, level);
            for (size_t i = 0; kind == EXTRASAMPLE_UNASSALPHA && i < expected.size() / 4; ++i)
                for (size_t band = 0; band < 3; ++band) {
                    std::uint64_t products = 0;
                    std::uint64_t weights = 0;
                    for (size_t const y : sharing(i / width, level, 43, 1, 1))
                        for (size_t const x : sharing(i % width, level, 61, 1, 1)) {
                            std::uint64_t const alpha = full.bytes[(y * 61 + x) * 4 + 3];
                            products += alpha * full.bytes[(y * 61 + x) * 4 + band];
                            weights += alpha;
                        }
                    if (weights > 0)
                        expected[i * 4 + band] = static_cast<std::uint8_t>((2 * products + weights) / (2 * weights));
                }
            expectLevel(tiles, level, expected);
        }
    }
}

TEST_F(PyramidTilesTest, NodataAndWhatIsNoNumberDoNotCount) {
    Directory full = level<float>(40, 30, 1, 1);
    auto samples = noise<float>(1200, 1);
    for (size_t i = 0; i < samples.size(); ++i) {
        if (i % 3 == 0) samples[i] = std::numeric_limits<float>::quiet_NaN();
        if (i % 5 == 0 || i % 40 < 8) samples[i] = -9999;
    }
    full.bytes = bytesOf(samples);
    full.nodata = "-9999";
    PyramidTiles tiles(open(write({full}))->reader());
    // The picture itself is not changed.
    EXPECT_TRUE(readAll(tiles, 0) == full.bytes);
    Bytes const bytes = readAll(tiles, 2);
    std::vector<float> made(80);
    ASSERT_EQ(bytes.size(), 320u);
    std::memcpy(made.data(), bytes.data(), bytes.size());
    for (size_t y = 0; y < 8; ++y)
        for (size_t x = 0; x < 10; ++x) {
            double sum = 0;
            int count = 0;
            for (size_t row = 4 * y; row < std::min<size_t>(4 * y + 4, 30); ++row)
                for (size_t column = 4 * x; column < 4 * x + 4; ++column) {
                    float const sample = samples[row * 40 + column];
                    if (std::isnan(sample) || sample == -9999) continue;
                    sum += static_cast<double>(sample);
                    ++count;
                }
            EXPECT_EQ(made[y * 10 + x], count == 0 ? -9999.0F : static_cast<float>(sum / count)) << x << " " << y;
            EXPECT_TRUE(count == 0 || x >= 2);
        }
}

TEST_F(PyramidTilesTest, ChosenBandsAreAveraged) {
    Directory const full = level(50, 40, 4, 1);
    PyramidOptions options;
    options.selection.bands = {3};
    PyramidTiles tiles(open(write({full}), options)->reader());
    Plane<std::uint8_t> plane{50, 40, 1, {}};
    for (size_t i = 2; i < full.bytes.size(); i += 4)
        plane.samples.push_back(full.bytes[i]);
    expectLevel(tiles, 1, bytesOf(meansOf(plane, 50, 40, 1)));
}

TEST_F(PyramidTilesTest, LargeLevelsAreReadInStripsAndTilesOnce) {
    // 36 MB of samples, in tiles and in strips.
    struct Units {
        std::uint32_t tile;
        std::uint32_t tileHeight;
        std::uint32_t rowsPerStrip;
        std::uint64_t most;
    };
    // A tile at the border of columns may be decoded twice; of high tiles, fewer columns are held. A strip of 1.7 MB
    // may be decoded for each 8 MB of rows, and one of more than 8 MB twice.
    std::vector<Units> const all{
        {256, 256, 0, 2 * 9 * 9}, {64, 512, 0, 34 * 5}, {0, 0, 100, 22 + 5}, {0, 0, 600, 4 + 3}};
    for (Units const& units : all) {
        Directory full = level<double>(2100, 2150, 1, 1);
        full.tile = units.tile;
        full.tileHeight = units.tileHeight;
        full.rowsPerStrip = units.rowsPerStrip;
        PyramidOptions options;
        options.cacheBytes = 0;
        PyramidTiles tiles(open(write({full}), options)->reader());
        Plane<double> const plane = planeOf<double>(full);
        EXPECT_TRUE(readAll(tiles, 3) == bytesOf(meansOf(plane, 2100, 2150, 3)));
        EXPECT_LE(tiles.reader().statistics().decodedUnits, units.most) << units.tile;
    }
}

TEST_F(PyramidTilesTest, RegionsOutsideOfALevelAreRefused) {
    PyramidTiles tiles(open(write({level(41, 30, 1, 1)}))->reader());
    Bytes samples(21 * 15);
    EXPECT_EQ(failure([&] { tiles.read(1, {0, 0, 22, 1}, samples.data()); }).kind(), HostError::Kind::RegionOutside);
    EXPECT_EQ(failure([&] { tiles.read(40, {0, 0, 1, 1}, samples.data()); }).kind(), HostError::Kind::RegionOutside);
    EXPECT_NO_THROW(tiles.read(1, {0, 0, 21, 15}, samples.data()));
    EXPECT_NO_THROW(tiles.read(31, {0, 0, 1, 1}, samples.data()));
}

TEST_F(PyramidTilesTest, AFailedReadLeavesTheNextOneRight) {
    struct Stop {};
    Directory const full = level(300, 200, 1, 1);
    PyramidOptions options;
    options.cacheBytes = 0;
    PyramidTiles tiles(open(write({full}), options)->reader());
    Bytes const expected = bytesOf(meansOf(planeOf<std::uint8_t>(full), 300, 200, 2));
    for (int calls = 0; calls < 40; calls += 3) {
        int left = calls;
        tiles.reader().setCheck([&] {
            if (left-- == 0) throw Stop();
        });
        EXPECT_THROW(readAll(tiles, 2), Stop);
        tiles.reader().setCheck({});
        EXPECT_TRUE(readAll(tiles, 2) == expected) << calls;
    }
}
