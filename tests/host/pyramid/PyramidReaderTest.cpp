// Bands, slices and times that a reader takes: of interleaved bands, and of planes that are pages of their own.
#include "host/pyramid/PyramidTiles.h"
#include "tests/host/pyramid/PyramidFixture.h"

#include <algorithm>

namespace {

using Sample = std::uint16_t;
constexpr size_t kWidth = 80;
constexpr size_t kHeight = 60;
constexpr size_t kChannels = 3;
constexpr size_t kSlices = 2;
constexpr size_t kTimes = 2;
constexpr size_t kPlanes = kChannels * kSlices * kTimes;

class PyramidReaderTest : public PyramidFixture {
protected:
    // Pages of one channel each, with a level of half the size, in the order c, z, t.
    static std::vector<Directory> planes(std::uint16_t subDirectories = 1) {
        std::vector<Directory> pages;
        for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
            pages.push_back(level<Sample>(kWidth, kHeight, 1, plane));
            pages.back().subDirectories = subDirectories;
            pages.push_back(level<Sample>(kWidth / 2, kHeight / 2, 1, 100 + plane, FILETYPE_REDUCEDIMAGE));
        }
        // In OME-XML, copies in the chain of pages would count as pages.
        if (subDirectories == 0) pages.front().description = "ImageJ=1\nchannels=3\nslices=2\nframes=2\n";
        if (subDirectories > 0)
            pages.front().description =
                R"(<OME><Image><Pixels DimensionOrder="XYCZT" SizeC="3" SizeZ="2" SizeT="2" PhysicalSizeX="0.5")"
                R"( PhysicalSizeY="0.5"><Channel Name="A" Color="255"/><Channel Name="B"/><Channel Name="C"/>)"
                "</Pixels></Image></OME>";
        return pages;
    }

    static size_t planeAt(size_t channel, StackPosition const& at) {
        return (at.time * kSlices + at.slice) * kChannels + channel;
    }

    // The samples of some bands, interleaved, of those of each band.
    static Bytes interleaved(std::vector<Bytes> const& bands, size_t sampleBytes) {
        Bytes result;
        for (size_t at = 0; at < bands.front().size(); at += sampleBytes)
            for (Bytes const& band : bands)
                result.insert(result.end(), band.begin() + static_cast<std::ptrdiff_t>(at),
                              band.begin() + static_cast<std::ptrdiff_t>(at + sampleBytes));
        return result;
    }

    static Bytes expected(std::vector<Directory> const& pages, size_t level, std::vector<size_t> const& channels,
                          StackPosition const& at) {
        std::vector<Bytes> bands;
        for (size_t const channel : channels)
            bands.push_back(pages.at(2 * planeAt(channel, at) + level).bytes);
        return interleaved(bands, sizeof(Sample));
    }

    void expectStack(std::vector<Directory> const& pages, std::string const& mode) {
        auto const pyramid = open(write(pages, mode, "a.ome.tif"));
        PyramidFacts const& facts = pyramid->facts();
        ASSERT_EQ(sizesOf(facts), (Sizes{"80x60", "40x30"}));
        EXPECT_EQ(facts.image.layout.bands, kChannels);
        EXPECT_EQ(facts.image.layout.colours, 0u);
        EXPECT_FALSE(facts.image.layout.alpha);
        EXPECT_EQ(facts.stack.planes, kChannels);
        EXPECT_EQ(facts.stack.slices, kSlices);
        EXPECT_EQ(facts.stack.times, kTimes);
        EXPECT_EQ(facts.image.pages, kPlanes);
        auto const reader = pyramid->reader();
        for (size_t level : {0u, 1u})
            expectLevel(*reader, level, expected(pages, level, {0, 1, 2}, {}));
        for (StackPosition const& at : {StackPosition{1, 0}, StackPosition{0, 1}, StackPosition{1, 1}}) {
            reader->take({2, 0}, at);
            EXPECT_EQ(reader->facts().image.layout.bands, 2u);
            for (size_t level : {0u, 1u})
                expectLevel(*reader, level, expected(pages, level, {2, 0}, at));
        }
        // Each reader for itself.
        expectLevel(*pyramid->reader(), 0, expected(pages, 0, {0, 1, 2}, {}));
    }
};

TEST_F(PyramidReaderTest, PagesArePlanesOfOnePicture) {
    expectStack(planes(), "w");
    expectStack(planes(), "wb8");
    PyramidFacts const facts = open(write(planes()))->facts();
    ASSERT_EQ(facts.image.bands.size(), kChannels);
    EXPECT_EQ(facts.image.bands[2].name, "C");
    EXPECT_EQ(facts.image.pixelsPerMillimetreX, 2000);
}

TEST_F(PyramidReaderTest, CopiesThatFollowAPageAreItsLevels) {
    expectStack(planes(0), "w");
}

TEST_F(PyramidReaderTest, OnlyThePlanesThatAreTakenAreDecoded) {
    auto const pyramid = open(write(planes()));
    auto const reader = pyramid->reader();
    reader->take({1}, {1, 0});
    readAll(*reader, 1);
    // 40 x 30 samples in tiles of 32 x 16.
    EXPECT_EQ(reader->statistics().decodedUnits, 4u);
    reader->take({1, 2}, {1, 0});
    readAll(*reader, 1);
    EXPECT_EQ(reader->statistics().decodedUnits, 8u);
    EXPECT_EQ(reader->statistics().cachedUnits, 4u);
}

// As many rows as fit into memory with the bands of one plane, not of all.
TEST_F(PyramidReaderTest, RegionsOfManyPlanesAreReadAtOnce) {
    std::vector<Directory> pages;
    for (std::uint32_t page = 0; page < 60; ++page)
        pages.push_back(level(64, 64, 1, page));
    pages.front().description = "ImageJ=1\nchannels=60\n";
    for (Directory& page : pages)
        page.tile = page.tileHeight = 64;
    PyramidOptions options;
    options.cacheBytes = 1; // nothing is kept
    auto const reader = open(write(pages), options)->reader();
    ASSERT_EQ(reader->facts().stack.planes, 60u);
    reader->take({7, 59}, {});
    EXPECT_TRUE(readAll(*reader) == interleaved({pages[7].bytes, pages[59].bytes}, 1));
    EXPECT_EQ(reader->statistics().decodedUnits, 2u);
}

// More handles than are kept open at a time.
TEST_F(PyramidReaderTest, StacksOfManyPlanesAreReadBackAndForth) {
    std::vector<Directory> pages;
    for (std::uint32_t page = 0; page < 50; ++page)
        pages.push_back(level(33, 17, 1, page));
    PyramidOptions options;
    options.cacheBytes = 1; // nothing is kept
    auto const reader = open(write(pages), options)->reader();
    EXPECT_EQ(reader->facts().stack.slices, 50u);
    for (size_t i = 0; i < 150; ++i) {
        size_t const page = i * 37 % 50;
        reader->take({0}, {page, 0});
        ASSERT_TRUE(readAll(*reader) == pages[page].bytes) << page;
    }
}

TEST_F(PyramidReaderTest, LevelsThatAPlaneLacksAreNone) {
    auto pages = planes(0);
    pages.pop_back();
    auto const pyramid = open(write(pages));
    EXPECT_EQ(sizesOf(pyramid->facts()), (Sizes{"80x60"}));
    auto const reader = pyramid->reader();
    reader->take({2}, {1, 1});
    expectLevel(*reader, 0, expected(pages, 0, {2}, {1, 1}));
}

TEST_F(PyramidReaderTest, PlanesInOtherTilesAreRefused) {
    auto pages = planes();
    pages[2].tile = 16;
    auto const reader = open(write(pages))->reader();
    reader->take({0, 2}, {});
    readAll(*reader);
    reader->take({1}, {});
    HostError const error = failure([&] { readAll(*reader); });
    EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
    EXPECT_TRUE(has(error.what(), "its pages keep their samples in different ways; choose one with --page N"))
        << error.what();
    reader->take({0}, {});
    readAll(*reader);
}

// How planes lie in a file does not matter where there is one.
TEST_F(PyramidReaderTest, PagesOfOneBandMayLieApartOrTogether) {
    auto pages = planes();
    pages[2].planesApart = true;
    auto const pyramid = open(write(pages));
    expectLevel(*pyramid->reader(), 0, expected(pages, 0, {0, 1, 2}, {}));
}

// A file that is opened once more is read from its start.
TEST_F(PyramidReaderTest, TheDirectoriesOf32PlanesStayOpen) {
    std::vector<Directory> pages;
    for (std::uint32_t page = 0; page < 32; ++page)
        pages.push_back(level(32, 16, 1, page));
    PyramidOptions options;
    options.cacheBytes = 1; // nothing is kept
    auto const reader = open(write(pages), options)->reader();
    ASSERT_EQ(reader->facts().stack.slices, 32u);
    auto const readsOfAll = [&] {
        size_t reads = 0;
        reader->setCheck([&] { ++reads; });
        for (size_t page = 0; page < pages.size(); ++page) {
            reader->take({0}, {page, 0});
            readAll(*reader);
        }
        reader->setCheck({});
        return reads;
    };
    size_t const first = readsOfAll();
    size_t const second = readsOfAll();
    EXPECT_LT(second, first / 2);
    EXPECT_EQ(readsOfAll(), second);
}

TEST_F(PyramidReaderTest, AChosenPageIsAPictureOfItsOwn) {
    auto const pages = planes();
    PyramidOptions options;
    options.selection.page = 5;
    auto const pyramid = open(write(pages), options);
    EXPECT_EQ(pyramid->facts().stack.pages(), 1u);
    EXPECT_EQ(pyramid->facts().image.layout.bands, 1u);
    EXPECT_TRUE(pyramid->facts().image.bands.empty());
    expectLevel(*pyramid->reader(), 0, pages[8].bytes);
}

TEST_F(PyramidReaderTest, ChosenBandsAreTakenOfPlanes) {
    auto const pages = planes();
    PyramidOptions options;
    options.selection.bands = {3, 1, 2};
    auto const pyramid = open(write(pages), options);
    EXPECT_EQ(pyramid->facts().image.layout.colours, 3u);
    ASSERT_EQ(pyramid->facts().image.bands.size(), 3u);
    EXPECT_EQ(pyramid->facts().image.bands[0].name, "C");
    EXPECT_EQ(pyramid->facts().image.bands[1].name, "A");
    auto const reader = pyramid->reader();
    expectLevel(*reader, 0, expected(pages, 0, {2, 0, 1}, {}));
    reader->take({1}, {0, 1});
    expectLevel(*reader, 0, expected(pages, 0, {0}, {0, 1}));
}

TEST_F(PyramidReaderTest, BandsAreTakenOfInterleavedSamples) {
    Directory const full = level<Sample>(kWidth, kHeight, 5, 1);
    auto const pyramid = [&] {
        Directory directory = full;
        directory.photometric = PHOTOMETRIC_MINISBLACK;
        directory.extraSamples = {0, 0, 0, 0};
        return open(write({directory}));
    }();
    std::vector<Bytes> bands(5);
    for (size_t i = 0; i < full.bytes.size(); ++i)
        bands[i / sizeof(Sample) % 5].push_back(full.bytes[i]);
    auto const reader = pyramid->reader();
    reader->take({3}, {});
    expectLevel(*reader, 0, bands[3]);
    reader->take({4, 0, 4}, {});
    expectLevel(*reader, 0, interleaved({bands[4], bands[0], bands[4]}, sizeof(Sample)));
}

// Means of colours weighed by alpha need all bands: the meaning of bands is kept where all are taken.
TEST_F(PyramidReaderTest, BandsThatAreAllTakenKeepTheirMeaning) {
    Directory rgba = level(64, 64, 4, 1);
    rgba.photometric = PHOTOMETRIC_RGB;
    rgba.extraSamples = {EXTRASAMPLE_UNASSALPHA};
    auto const pyramid = open(write({rgba}));
    PyramidTiles whole(pyramid->reader());
    PyramidTiles taken(pyramid->reader());
    taken.take({0, 1, 2, 3}, {});
    EXPECT_TRUE(taken.facts().image.layout.alpha);
    EXPECT_EQ(taken.facts().image.layout.colours, 3u);
    auto const half = [](PyramidTiles& tiles) {
        Bytes samples(32 * 32 * tiles.facts().image.layout.pixelBytes());
        tiles.read(1, {0, 0, 32, 32}, samples.data());
        return samples;
    };
    EXPECT_TRUE(half(taken) == half(whole));
    taken.take({0, 1, 2}, {});
    EXPECT_FALSE(taken.facts().image.layout.alpha);
    EXPECT_EQ(taken.facts().image.layout.colours, 0u);
    // Plain means: (a + b + c + d + 2) / 4.
    Bytes const means = half(taken);
    for (size_t i = 0; i < 32 * 32 * 3; ++i) {
        size_t const x = i / 3 % 32 * 2;
        size_t const y = i / 96 * 2;
        unsigned sum = 2;
        for (size_t const row : {y, y + 1})
            for (size_t const column : {x, x + 1})
                sum += rgba.bytes[(row * 64 + column) * 4 + i % 3];
        ASSERT_EQ(means[i], sum / 4) << i;
    }
}

TEST_F(PyramidReaderTest, SmallestLevelsOfManyPlanesAreMeasuredOneByOne) {
    auto const pages = planes();
    PyramidOptions options;
    options.memoryBytes = 40 * 30 * sizeof(Sample);
    EXPECT_TRUE(openPyramid(write(pages), options).pyramid);
    --options.memoryBytes;
    EXPECT_FALSE(openPyramid(write(pages), options).pyramid);
}

} // namespace
