// Each `new` fails in turn while a store is written, read, checked and exported: what was there before stays, and the
// same objects do the same work afterwards.
#include "host/image/SmallPicture.h"
#include "host/store/KeptMetadata.h"
#include "host/store/StoreCheck.h"
#include "host/store/StoreExporter.h"
#include "host/store/TileOrder.h"
#include "host/store/TileStore.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/AllocationSweep.h"
#include "tests/support/TemporaryFolder.h"

using allocationsweep::Scenario;
using allocationsweep::Threads;
using testpictures::Content;
using testpictures::Picture;

namespace {

class StoreAllocationsTest : public testing::Test {
protected:
    using Names = std::vector<std::string>;
    using Samples = std::vector<std::int16_t>;

    void SetUp() override {
        picture_.metadata = {{picturemetadata::kTag, "34665/33434", {5, 0, 1, 0, 0, 0, 125, 0, 0, 0}},
                             {picturemetadata::kProfile, "", std::vector<std::uint8_t>(3000, 7)},
                             {picturemetadata::kImage, "label", smallpicture::toPng({{2, 1}, 1, {1, 2}})},
                             {picturemetadata::kProperties, "", {'{', '"', 'a', '"', ':', '"', 'b', '"', '}'}}};
        import(path(), picture_);
    }

    static void import(std::string const& path, Picture const& picture) {
        ImportOptions options;
        options.tileSize = 32;
        options.jobs = 2;
        options.replace = true;
        testpictures::import(picture, path, options);
    }

    static void forEachTile(StoreInfo const& info, std::function<void(TileAddress const&)> const& action) {
        for (size_t level = 0; level <= info.levels; ++level)
            tileorder::forEachPlace(info, level,
                                    [&](TileAddress const& place) { tileorder::forEachTileAt(info, place, action); });
    }

    // All that a store has.
    static Samples samplesOf(TileStore& store) {
        Samples samples;
        forEachTile(store.info(), [&](TileAddress const& address) {
            auto const value = store.uniformValue(address);
            auto const tile = store.tile(address);
            if (value) samples.push_back(*value);
            samples.insert(samples.end(), tile.begin(), tile.end());
        });
        for (size_t level = 0; level <= store.info().levels; ++level)
            for (auto const& places : {store.cellsWithData(level), store.cellsInIndex(level).value()})
                for (TileAddress const& place : places)
                    samples.insert(samples.end(),
                                   {static_cast<std::int16_t>(place.column), static_cast<std::int16_t>(place.row)});
        samples.push_back(static_cast<std::int16_t>(store.storedTiles()));
        for (MetadataItem const& item : store.allMetadata())
            samples.insert(samples.end(), item.bytes.begin(), item.bytes.end());
        for (ImageProperty const& property : keptIn(store).facts.properties)
            samples.insert(samples.end(), property.value.begin(), property.value.end());
        return samples;
    }

    static Samples samplesOf(std::string const& path) {
        TileStore store(path);
        return samplesOf(store);
    }

    std::string path() const { return folder_.path("a.vlm"); }

    Picture picture_ = testpictures::picture(90, 70, 3, 16, Content::Noise);
    TemporaryFolder folder_;
};

} // namespace

TEST_F(StoreAllocationsTest, AnImportThatFailsKeepsTheOldStore) {
    Picture const other = testpictures::picture(50, 40, 1, 8, Content::Ramp);
    std::string const store = folder_.path("b.vlm");
    import(store, other);
    std::string const old = readFile(store);
    Samples const expected = samplesOf(path());
    Names const names = folder_.names();
    for (Threads const threads : {Threads::This, Threads::Others}) {
        Scenario scenario{"import", [&] { import(store, picture_); }, {}};
        scenario.threads = threads;
        scenario.check = [&] {
            EXPECT_EQ(folder_.names(), names) << "nothing is left behind";
            EXPECT_TRUE(readFile(store) == old || samplesOf(store) == expected);
            import(store, picture_);
            EXPECT_TRUE(samplesOf(store) == expected);
            writeFile(store, old);
        };
        EXPECT_GT(allocationsweep::sweep(scenario).thrown, threads == Threads::This ? 60U : 5U);
    }
}

TEST_F(StoreAllocationsTest, AStoreIsOpenedAfterwards) {
    Samples const expected = samplesOf(path());
    Scenario const scenario{"open and read", [&] { samplesOf(path()); },
                            [&] { EXPECT_TRUE(samplesOf(path()) == expected); }};
    EXPECT_GT(allocationsweep::sweep(scenario).thrown, 60U);
}

TEST_F(StoreAllocationsTest, AStoreThatIsOpenReadsTheSameAfterwards) {
    TileStore store(path());
    Samples const expected = samplesOf(store);
    Scenario const scenario{"read", [&] { samplesOf(store); }, [&] { EXPECT_TRUE(samplesOf(store) == expected); }};
    EXPECT_GT(allocationsweep::sweep(scenario).thrown, 60U);
}

TEST_F(StoreAllocationsTest, ACheckFindsNoDamageThatIsNone) {
    TileStore store(path());
    Scenario const scenario{"check", [&] { checkStore(store, [](size_t, size_t) {}); },
                            [&] { EXPECT_EQ(checkStore(store, [](size_t, size_t) {}).damages, 0U); }};
    EXPECT_GT(allocationsweep::sweep(scenario).thrown, 60U);
}

TEST_F(StoreAllocationsTest, ACheckFindsAllDamageAfterwards) {
    storefiles::change(path(), "UPDATE tiles SET crc = crc + 1 WHERE id % 3 = 0; DELETE FROM tiles WHERE id % 7 = 1");
    TileStore store(path());
    auto const check = [&] { return checkStore(store, [](size_t, size_t) {}); };
    auto const expected = check();
    ASSERT_GT(expected.damages, 10U);
    Scenario const scenario{"check of a damaged store", [&] { check(); },
                            [&] {
                                auto const again = check();
                                EXPECT_EQ(again.damages, expected.damages);
                                EXPECT_EQ(again.descriptions, expected.descriptions);
                            }};
    EXPECT_GT(allocationsweep::sweep(scenario).thrown, 60U);
}

TEST_F(StoreAllocationsTest, AnExportThatFailsKeepsTheOldFile) {
    TileStore store(path());
    OutputFile file(folder_.path("a.tif"));
    file.replace = true;
    auto const work = [&] { exportStore(store, file, [](size_t, size_t) {}); };
    work();
    std::string const expected = readFile(file.path);
    Names const names = folder_.names();
    Scenario const scenario{"export", work, [&] {
                                std::string const now = readFile(file.path);
                                EXPECT_TRUE(now == "old" || now == expected);
                                EXPECT_EQ(folder_.names(), names) << "nothing is left behind";
                                work();
                                EXPECT_TRUE(readFile(file.path) == expected);
                                writeFile(file.path, "old");
                            }};
    EXPECT_GT(allocationsweep::sweep(scenario).thrown, 60U);
}
