// Every change of a store's bytes is detected, or leaves the picture unchanged.
#include "host/HostError.h"
#include "host/image/ImageReader.h"
#include "host/store/StoreCheck.h"
#include "host/store/StoreExporter.h"
#include "host/store/TileOrder.h"
#include "host/store/TileStoreFormat.h"
#include "tests/host/store/DocumentedReader.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/LongRun.h"
#include "tests/support/OptimisedBuild.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

using testpictures::Picture;

namespace {

// The result of reading a whole store.
struct Content {
    std::vector<std::vector<std::int16_t>> tiles;
    std::vector<std::vector<std::pair<size_t, size_t>>> placesWithData; // by level; viewers skip the others

    bool operator==(Content const& other) const {
        return tiles == other.tiles && placesWithData == other.placesWithData;
    }
};

// The parameter is the file's version.
class DamagedStoreTest : public testing::TestWithParam<std::int64_t> {
protected:
    DamagedStoreTest() {
        ImportOptions options;
        options.sourceName = "picture.tif";
        make(testpictures::picture(70, 66, 3, 8, testpictures::Content::Noise), options);
    }

    // Half of it flat: tiles with samples and tiles of one value.
    void make(Picture picture, ImportOptions options) {
        picture_ = std::move(picture);
        options.replace = true;
        options.tileSize = 16;
        std::fill_n(picture_.bytes.begin(), picture_.bytes.size() / 2, std::uint8_t{90});
        testpictures::import(picture_, path_, options);
        if (GetParam() < 3) storefiles::rewriteAs(GetParam(), path_);
        whole_ = readFile(path_);
        content_ = content().value();
        auto const hasOneValue = [](auto const& tile) { return tile.size() == 1; };
        auto const& tiles = content_.tiles;
        EXPECT_TRUE(std::any_of(tiles.begin(), tiles.end(), hasOneValue));
        EXPECT_FALSE(std::all_of(tiles.begin(), tiles.end(), hasOneValue));
    }

    // The result of `read`; nothing if it throws what damage throws. No other exception is permitted.
    template <class Read>
    auto unlessDamaged(Read const& read) const -> std::optional<decltype(read())> {
        try {
            return read();
        } catch (HostError const& error) {
            EXPECT_TRUE(error.kind() == HostError::Kind::DamagedStore || mayBeNoStore_) << error.what();
        }
        return std::nullopt;
    }

    std::optional<Picture> exported() const {
        return unlessDamaged([&] {
            TileStore store(path_);
            exportStore(store, tiff_, [](size_t, size_t) {});
            ImageReader reader(tiff_, ImageReader::Samples::kAsStored);
            Picture picture{reader.width(), reader.height(), reader.bands(), 8 * reader.sampleBytes(), {}};
            reader.read({0, 0, picture.width, picture.height}, picture.bytes);
            std::filesystem::remove(tiff_);
            return picture;
        });
    }

    bool checkFindsDamage() const {
        auto const result = unlessDamaged([&] {
            TileStore store(path_);
            return checkStore(store, [](size_t, size_t) {}).damages;
        });
        return !result || *result > 0;
    }

    std::optional<Content> content() const {
        return unlessDamaged([&] {
            TileStore store(path_);
            Content content;
            for (size_t level = 0; level <= store.info().levels; ++level) {
                auto& places = content.placesWithData.emplace_back();
                for (TileAddress const& cell : store.cellsWithData(level))
                    places.emplace_back(cell.column, cell.row);
                tileorder::forEachPlace(store.info(), level, [&](TileAddress const& place) {
                    tileorder::forEachTileAt(store.info(), place, [&](TileAddress const& address) {
                        auto const value = store.uniformValue(address);
                        content.tiles.push_back(value ? std::vector<std::int16_t>{*value} : store.tile(address));
                    });
                });
            }
            return content;
        });
    }

    // With `all` also the export, which takes longer and is made from the same tiles.
    void expectNoticedOrHarmless(bool all) const {
        auto const read = content();
        EXPECT_TRUE(!read || *read == content_) << "other samples come out";
        bool const noticed = checkFindsDamage();
        EXPECT_TRUE(noticed || read) << "the check finds nothing, but it cannot be read";
        if (!all) return;
        auto const picture = exported();
        EXPECT_TRUE(!picture || *picture == picture_) << "another picture comes out";
        EXPECT_TRUE(noticed || picture) << "the check finds nothing, but it cannot be exported";
        EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.vlm"});
    }

    void writeBit(size_t bit) const { writeFile(path_, storefiles::withBit(whole_, bit)); }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    std::string tiff_ = folder_.path("out.tif");
    Picture picture_;
    std::string whole_;
    Content content_;
    bool mayBeNoStore_ = false; // if more than a bit of the header changes
};

std::string positionOf(size_t bit) {
    return "bit " + std::to_string(bit % 8) + " of byte " + std::to_string(bit / 8);
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Versions, DamagedStoreTest, testing::Values(1, 2, 3),
                         [](auto const& test) { return "Version" + std::to_string(test.param); });

// A few pages, so that all their bits can be tested.
TEST_P(DamagedStoreTest, AnyBitIsNoticedOrHarmless) {
    make(testpictures::picture(50, 70, 1, 8, testpictures::Content::Noise), {});
    size_t const bits = 8 * whole_.size();
    // Other bits of the bytes and other bytes of the pages each time.
    size_t const distance = !isLongRun() ? 149 : kOptimisedBuild ? 1 : 17;
    for (size_t bit = 0; bit < bits && !HasFailure(); bit += distance) {
        SCOPED_TRACE(positionOf(bit));
        writeBit(bit);
        expectNoticedOrHarmless(bit % (8 * distance) == 0);
    }
}

TEST_P(DamagedStoreTest, BytesThatChangeAreNoticedOrHarmless) {
    std::mt19937 random(5);
    for (int i = 0; i < (isLongRun() ? 5000 : 150) && !HasFailure(); ++i) {
        std::string file = whole_;
        size_t const bytes = size_t{1} << random() % 12;
        size_t const first = random() % (file.size() - bytes + 1);
        SCOPED_TRACE(std::to_string(bytes) + " bytes from " + std::to_string(first));
        for (size_t k = first; k < first + bytes; ++k)
            file[k] = static_cast<char>(random());
        writeFile(path_, file);
        mayBeNoStore_ = first < 100;
        expectNoticedOrHarmless(true);
    }
}

TEST_P(DamagedStoreTest, AnyBitOfTheDescriptionIsNoticedOrHarmless) {
    for (std::string const key : {"width", "height", "bands", "bits", "residualBits", "levels", "tileSize"}) {
        size_t const position = whole_.find(key);
        ASSERT_NE(position, std::string::npos) << key;
        for (size_t bit = 8 * position; bit < 8 * (position + key.size() + 3); ++bit) {
            SCOPED_TRACE(key + ", " + positionOf(bit));
            writeBit(bit);
            expectNoticedOrHarmless(bit % 8 == 0);
        }
    }
}

// The page that begins with 0x0a, the type of an index leaf, and has the key of the first tile with data.
TEST_P(DamagedStoreTest, AnyBitOfTheIndexIsNoticedOrHarmless) {
    size_t const pageBytes = GetParam() == 1 ? 16384 : 4096;
    std::vector<size_t> pages;
    for (size_t page = pageBytes; page < whole_.size(); page += pageBytes)
        if (whole_[page] == 0x0a) pages.push_back(page);
    ASSERT_EQ(pages.size(), 2u) << "the description's and the index's";
    size_t const distance = isLongRun() ? 1 : 3;
    for (size_t const page : pages) {
        auto const byteAt = [&](size_t place) { return size_t{static_cast<unsigned char>(whole_[page + place])}; };
        size_t const cells = 256 * byteAt(3) + byteAt(4);
        for (size_t bit = 8 * page; bit < 8 * (page + 8 + 2 * cells) && !HasFailure(); bit += distance) {
            SCOPED_TRACE(positionOf(bit));
            writeBit(bit);
            expectNoticedOrHarmless(false);
        }
    }
}

TEST_P(DamagedStoreTest, AValueThatChangesIsNoticedWhereverItIsRead) {
    std::vector<std::int64_t> const ids = DocumentedReader(path_).ids();
    storefiles::change(path_, "UPDATE tiles SET value = value + 1 WHERE value IS NOT NULL");
    TileStore store(path_);
    size_t values = 0;
    for (std::int64_t const id : ids) {
        TileAddress const address = storeformat::addressOf(id);
        auto const value = unlessDamaged([&] { return store.uniformValue(address); });
        if (value && !*value) continue; // it has data
        EXPECT_EQ(value, std::nullopt) << toText(address);
        EXPECT_EQ(unlessDamaged([&] { return store.tile(address); }), std::nullopt) << toText(address);
        ++values;
    }
    EXPECT_GT(values, 5u);
    EXPECT_EQ(exported(), std::nullopt);
    EXPECT_TRUE(checkFindsDamage());
}

TEST_P(DamagedStoreTest, ATileThatIsNotThereIsNoPlaceWithoutData) {
    storefiles::change(path_,
                       "DELETE FROM tiles WHERE id = (SELECT id FROM tiles WHERE value = 0 AND id >= 1 << 53 LIMIT 1)");
    EXPECT_TRUE(checkFindsDamage());
    EXPECT_EQ(exported(), std::nullopt);
    if (GetParam() < 3) {
        EXPECT_EQ(content(), std::nullopt) << "its rows say which places have data";
        TileStore store(path_);
        EXPECT_THROW(store.cellsWithData(1), HostError);
    }
}

// An index that lacks a tile.
TEST_P(DamagedStoreTest, PlacesThatTheIndexLeavesOutAreNoticedOrFoundInTheRows) {
    storefiles::change(
        path_, "PRAGMA writable_schema = ON; UPDATE sqlite_master SET sql = replace(sql, 'value IS NULL OR ', '')"
               " WHERE name = 'tiles_with_data'; PRAGMA writable_schema = RESET; REINDEX tiles_with_data;"
               "PRAGMA writable_schema = ON; UPDATE sqlite_master SET sql = replace(sql, 'value <> 0',"
               " 'value IS NULL OR value <> 0') WHERE name = 'tiles_with_data'");
    if (GetParam() == 3)
        EXPECT_EQ(content(), std::nullopt);
    else
        EXPECT_TRUE(content() == content_);
    TileStore store(path_);
    StoreCheckResult const result = checkStore(store, [](size_t, size_t) {});
    EXPECT_EQ(result.damages, 1u);
    EXPECT_NE(result.descriptions.at(0).find("index of level 1"), std::string::npos) << result.descriptions.at(0);
    EXPECT_EQ(exported(), picture_) << "an export needs no index";
}

TEST_P(DamagedStoreTest, AFileCutOffAnywhereIsNoticed) {
    std::mt19937 random(6);
    for (int i = 0; i < 60; ++i) {
        size_t const bytes = i < 20 ? static_cast<size_t>(i) * 8 : random() % whole_.size();
        SCOPED_TRACE(bytes);
        writeFile(path_, whole_.substr(0, bytes));
        mayBeNoStore_ = bytes < 100;
        EXPECT_EQ(exported(), std::nullopt);
        EXPECT_TRUE(checkFindsDamage());
    }
}

namespace {

class AddressedStoreTest : public testing::Test {
protected:
    AddressedStoreTest() {
        ImportOptions options;
        options.tileSize = 16;
        testpictures::import(testpictures::picture(100, 70, 1, 8, testpictures::Content::Noise), path_, options);
    }

    // Two tiles of a band are exchanged, each with its checksum.
    void swap(std::int64_t first, std::int64_t second) const {
        auto const move = [&](std::int64_t from, std::int64_t to) {
            return "UPDATE tiles SET id = " + std::to_string(to) + " WHERE id = " + std::to_string(from) + ";";
        };
        storefiles::change(path_, move(first, 1) + move(second, first) + move(1, second));
    }

    StoreCheckResult checked() const {
        TileStore store(path_);
        return checkStore(store, [](size_t, size_t) {});
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
};

} // namespace

TEST_F(AddressedStoreTest, TilesThatHaveChangedPlacesAreNoticed) {
    swap(DocumentedReader::idOf(1, 1, 0, 0, 0), DocumentedReader::idOf(1, 1, 0, 1, 1));
    StoreCheckResult const result = checked();
    EXPECT_EQ(result.damages, 2u);
    TileStore store(path_);
    EXPECT_THROW(store.tile({1, Band::HL, 0, 0, 0}), HostError);
    EXPECT_THROW(store.tile({1, Band::HL, 0, 1, 1}), HostError);
    EXPECT_EQ(store.tile({1, Band::HL, 0, 1, 0}).size(), 256u);
}

TEST_F(AddressedStoreTest, TilesOfOneValueThatHaveChangedPlacesAreNoticed) {
    Picture picture = testpictures::picture(100, 70, 1, 8, testpictures::Content::Flat);
    ImportOptions options;
    options.tileSize = 16;
    options.replace = true;
    testpictures::import(picture, path_, options);
    ASSERT_EQ(checked().damages, 0u);
    swap(DocumentedReader::idOf(1, 1, 0, 0, 0), DocumentedReader::idOf(1, 2, 0, 0, 0));
    EXPECT_EQ(checked().damages, 2u);
    TileStore store(path_);
    EXPECT_THROW(store.uniformValue({1, Band::HL, 0, 0, 0}), HostError);
    EXPECT_EQ(store.uniformValue({1, Band::HL, 0, 1, 0}), std::int16_t{0});
}
