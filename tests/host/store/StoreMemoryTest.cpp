#include "host/store/StoreMemory.h"

#include "host/HostError.h"
#include "host/MemoryBudget.h"
#include "host/store/ColourPlanes.h"
#include "host/store/PlaneTransform.h"
#include "host/store/StoreExporter.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sys/resource.h>
#include <sys/sysinfo.h>

namespace {

StoreInfo infoOf(size_t width, size_t height, size_t bands, size_t bits, size_t tileSize = 256) {
    StoreInfo info;
    info.width = width;
    info.height = height;
    info.bands = bands;
    info.bits = bits;
    info.residualBits = bits == 16 ? 3 : 0;
    info.tileSize = tileSize;
    info.sourceName = "wide.tif";
    return info;
}

StoreInfo allLevelsOf(size_t width, size_t height, size_t bands, size_t bits, size_t tileSize) {
    StoreInfo info = infoOf(width, height, bands, bits, tileSize);
    info.levels = storegeometry::autoLevels(width, height, tileSize);
    return info;
}

// The capacities of an import's parts, by their own count.
std::uint64_t heldBytes(StoreInfo const& info) {
    std::uint64_t samples = 0;
    for (size_t plane = 0; plane < info.bands; ++plane) {
        samples += PlaneTransform(info, plane, [](RawTile&&) {}).bufferedSamples();
        if (info.residualBits > 0)
            samples += TileRowWriter(info, 0, Band::Residual, plane, [](RawTile&&) {}).bufferedSamples();
    }
    return 2 * samples + info.width * info.bands * (info.bits / 8 + 4);
}

// Limits the process's memory for its lifetime.
class AddressLimit {
public:
    explicit AddressLimit(rlim_t bytes) {
        getrlimit(RLIMIT_AS, &before_);
        rlimit const limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_AS, &limit);
    }
    AddressLimit(AddressLimit const&) = delete;
    AddressLimit& operator=(AddressLimit const&) = delete;
    ~AddressLimit() { setrlimit(RLIMIT_AS, &before_); }

private:
    rlimit before_{};
};

} // namespace

// 10000 pixels, so bands of 5002 samples in 20 tiles of 256, at one level. Of 2 bytes each: a row of the plane, 14 of
// the bands, and of each of the four bands a row of tiles.
TEST(StoreMemoryTest, AnExportTakesRowsOfTheWaveletAndRowsOfTiles) {
    size_t const plane = 2 * (10000 + 14 * 5002 + 4 * 20 * 256 * 256);
    EXPECT_EQ(storememory::exportBytes(infoOf(10000, 5000, 1, 8)), plane + 10000);
    EXPECT_EQ(storememory::exportBytes(infoOf(10000, 5000, 3, 8)), 3 * plane + 30000);
}

// Level 2: bands of 2504 samples in 10 tiles, and LL there.
TEST(StoreMemoryTest, EachLevelHasItsOwn) {
    StoreInfo info = infoOf(10000, 5000, 1, 8);
    info.levels = 2;
    EXPECT_EQ(storememory::exportBytes(info),
              2 * (10000 + 14 * 5002 + 3 * 20 * 256 * 256 + 14 * 2504 + 4 * 10 * 256 * 256) + 10000);
}

// 40 tiles of the picture's own samples.
TEST(StoreMemoryTest, ResidualsHaveTheirOwn) {
    size_t const plane = 2 * (10000 + 14 * 5002 + 4 * 20 * 256 * 256);
    EXPECT_EQ(storememory::exportBytes(infoOf(10000, 5000, 1, 16)), plane + 2 * (10000 + 40 * 256 * 256) + 20000);
}

TEST(StoreMemoryTest, ALowPicturesTilesAreNotFull) {
    EXPECT_EQ(storememory::exportBytes(infoOf(10000, 10, 1, 8)), 2 * (10000 + 14 * 5002 + 4 * 20 * 256 * 8) + 10000)
        << "bands of 8 rows";
}

TEST(StoreMemoryTest, AnImportMayTakeWhatAPictureMay) {
    StoreInfo info = infoOf(668000, 100000, 2, 16, 494);
    info.levels = 1;
    ASSERT_EQ(storememory::importBytes(info), memorybudget::kPictureBytes);
    EXPECT_NO_THROW(storememory::requireForImport(info));
    info.width += 494;
    EXPECT_THROW(storememory::requireForImport(info), HostError);
}

TEST(StoreMemoryTest, ThereIsWhatTheMachineHasOrWhatTheProcessMayTake) {
    struct sysinfo machine {};
    ASSERT_EQ(sysinfo(&machine), 0);
    size_t const all = machine.totalram * machine.mem_unit;
    rlimit limit{};
    getrlimit(RLIMIT_AS, &limit);
    EXPECT_EQ(memorybudget::availableBytes(), std::min<size_t>(all, limit.rlim_cur));
    size_t const half = all / 2;
    AddressLimit const less(half);
    EXPECT_EQ(memorybudget::availableBytes(), half);
}

// A flat picture of 134217728 x 2048 pixels is a file of few megabytes; if all its tiles had data, a row of them would
// have 550 GB.
TEST(StoreMemoryTest, AnExportForWhichThereIsNoMemoryTakesNone) {
    TemporaryFolder const folder;
    std::string const path = folder.path("a.vlm");
    ImportOptions options;
    options.tileSize = 2048;
    testpictures::import(testpictures::picture(40, 30, 1, 8, testpictures::Content::Flat), path, options);
    storefiles::change(path,
                       "UPDATE meta SET value = '134217728' WHERE key = 'width';"
                       "UPDATE meta SET value = '2048' WHERE key = 'height';"
                       "WITH RECURSIVE r(n) AS (SELECT 4 UNION ALL SELECT n + 4 FROM r LIMIT 140000)"
                       " INSERT OR IGNORE INTO tiles SELECT (1 << 53) + (n / 16) * 32 + n % 16, 0, 0, NULL FROM r");
    storefiles::sealDescription(path);
    TileStore store(path);
    ASSERT_GT(storememory::exportBytes(store.info()), 550'000'000'000);
    try {
        exportStore(store, folder.path("out.tif"), [](size_t, size_t) {});
        FAIL() << "it is exported";
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::OutOfMemory);
        EXPECT_NE(std::string(error.what()).find("rows of 134217728 pixels"), std::string::npos) << error.what();
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"a.vlm"});
}

TEST(StoreMemoryTest, AnImportTakesWhatItsPartsHold) {
    for (size_t const tileSize : {16u, 64u, 256u, 2048u})
        for (size_t const bands : {1u, 3u, 4u})
            for (size_t const bits : {8u, 16u})
                for (size_t const height : {1u, 40u, 3000u}) {
                    StoreInfo const info = allLevelsOf(5000, height, bands, bits, tileSize);
                    EXPECT_EQ(storememory::importBytes(info), heldBytes(info))
                        << tileSize << " " << bands << " " << bits << " " << height;
                }
}

TEST(StoreMemoryTest, ImportsOfWhatPeopleHaveFit) {
    EXPECT_NO_THROW(storememory::requireForImport(allLevelsOf(300000, 300000, 4, 16, 256)));
    EXPECT_NO_THROW(storememory::requireForImport(allLevelsOf(800000, 500000, 3, 8, 256)));
}

TEST(StoreMemoryTest, AnImportThatTakesMoreIsRefusedAndSmallerTilesAreTheWayOut) {
    StoreInfo info = allLevelsOf(8000000, 1000, 3, 8, 256);
    try {
        storememory::requireForImport(info);
        FAIL();
    } catch (HostError const& error) {
        EXPECT_EQ(error.kind(), HostError::Kind::UnreadableImage);
        EXPECT_EQ(
            std::string(error.what()),
            "'wide.tif' is 8000000 pixels wide: an import with tiles of 256 samples takes about " +
                memorybudget::toText(storememory::importBytes(info)) +
                " of memory, more than the 4.0 GB that a picture may take; choose a smaller --tile, or cut it into "
                "narrower pictures");
    }
    info.tileSize = 16;
    EXPECT_NO_THROW(storememory::requireForImport(info));
}

TEST(StoreMemoryTest, TheBudgetItselfIsEnoughForAnImport) {
    StoreInfo info = allLevelsOf(1, 1000000, 1, 8, 256);
    std::uint64_t const each = storememory::importBytes(allLevelsOf(2000000, 1000000, 1, 8, 256)) / 2000000;
    // The widest picture that fits, found by bisection.
    size_t fits = 1;
    size_t refused = 2 * memorybudget::kPictureBytes / each;
    while (refused - fits > 1) {
        info = allLevelsOf((fits + refused) / 2, 1000000, 1, 8, 256);
        (storememory::importBytes(info) <= 4'000'000'000 ? fits : refused) = info.width;
    }
    EXPECT_NO_THROW(storememory::requireForImport(allLevelsOf(fits, 1000000, 1, 8, 256)));
    EXPECT_THROW(storememory::requireForImport(allLevelsOf(refused, 1000000, 1, 8, 256)), HostError);
}

TEST(MemoryBudgetTest, IsToldInGigabytes) {
    EXPECT_EQ(memorybudget::toText(4'000'000'000), "4.0 GB");
    EXPECT_EQ(memorybudget::toText(12'340'000'000), "12.3 GB");
    EXPECT_EQ(memorybudget::toText(50'000'000), "0.1 GB");
}
