// Files of this version and of older programs are as docs/STORE.md describes them.
#include "tests/host/store/DocumentedReader.h"

#include "host/image/ImageReader.h"
#include "host/store/StoreExporter.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

using testpictures::Content;
using testpictures::Picture;

namespace {

using Numbers = std::vector<std::int64_t>;

Numbers samplesOf(Picture const& picture) {
    Numbers samples;
    for (size_t i = 0; i < picture.bytes.size(); i += picture.bits / 8) {
        std::uint16_t sample = picture.bytes[i];
        if (picture.bits == 16) std::memcpy(&sample, &picture.bytes[i], 2);
        samples.push_back(sample);
    }
    return samples;
}

// Half of it flat: tiles with samples and tiles of one value.
Picture pictureOf(size_t bands, size_t bits) {
    Picture picture = testpictures::picture(83, 70, bands, bits, Content::Noise);
    std::fill_n(picture.bytes.begin(), picture.bytes.size() / 2, std::uint8_t{90});
    return picture;
}

Numbers exported(std::string const& store, std::string const& tiff) {
    TileStore opened(store);
    exportStore(opened, tiff, [](size_t, size_t) {});
    ImageReader reader(tiff, ImageReader::Samples::kAsStored);
    Picture picture{reader.width(), reader.height(), reader.bands(), 8 * reader.sampleBytes(), {}};
    reader.read({0, 0, picture.width, picture.height}, picture.bytes);
    std::filesystem::remove(tiff);
    return samplesOf(picture);
}

struct Kind {
    size_t bands;
    size_t bits;
};

class DocumentedReaderTest : public testing::TestWithParam<Kind> {
protected:
    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
    std::string tiff_ = folder_.path("out.tif");
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Pictures, DocumentedReaderTest,
                         testing::Values(Kind{1, 8}, Kind{2, 8}, Kind{3, 8}, Kind{4, 8}, Kind{1, 16}, Kind{2, 16},
                                         Kind{3, 16}, Kind{4, 16}),
                         [](auto const& test) {
                             return std::to_string(test.param.bands) + "BandsOf" + std::to_string(test.param.bits);
                         });

TEST_P(DocumentedReaderTest, GivesEverySampleOfEachVersion) {
    Picture const picture = pictureOf(GetParam().bands, GetParam().bits);
    for (std::int64_t const version : {4, 3, 2, 1}) {
        for (size_t const tileSize : {16u, 64u}) {
            SCOPED_TRACE("version " + std::to_string(version) + ", tiles of " + std::to_string(tileSize));
            ImportOptions options;
            options.tileSize = tileSize;
            options.replace = true;
            testpictures::import(picture, path_, options);
            if (version < 4) storefiles::rewriteAs(version, path_);
            DocumentedReader const reader(path_);
            EXPECT_EQ(reader.version(), version);
            EXPECT_EQ(reader.picture(), samplesOf(picture));
            EXPECT_EQ(exported(path_, tiff_), samplesOf(picture));
        }
    }
}

TEST_P(DocumentedReaderTest, TheIndexNamesTheTilesThatHaveData) {
    testpictures::import(pictureOf(GetParam().bands, GetParam().bits), path_);
    DocumentedReader const reader(path_);
    Numbers withData;
    for (std::int64_t const id : reader.ids()) {
        Numbers const tile = reader.tile(id);
        if (tile != Numbers(tile.size(), 0)) withData.push_back(id);
    }
    EXPECT_EQ(reader.idsWithData(), withData);
}

TEST(DocumentedStoreTest, ResidualsOf5BitsAreWhereTheDescriptionSays) {
    TemporaryFolder const folder;
    Picture const picture = testpictures::picture(200, 300, 3, 16, Content::Resonance);
    ImportOptions options;
    options.tileSize = 16;
    ASSERT_EQ(testpictures::import(picture, folder.path("a"), options).residualBits, 5u);
    EXPECT_EQ(DocumentedReader(folder.path("a")).picture(), samplesOf(picture));
}

namespace {

// A store that an older program has written, of a picture that is a formula.
struct OldStore {
    char const* name;
    std::int64_t version;
    std::int64_t bands;
    std::int64_t bits;
    bool hasIndex;
};

std::int64_t sampleAt(std::int64_t x, std::int64_t y, std::int64_t band, std::int64_t bits) {
    if (x < 34 && y < 34) return bits == 16 ? (90 + 20 * band) * 256 : 90 + 20 * band;
    std::int64_t const number = x * 37 + y * 91 + x * y * 5 + band * 77;
    return bits == 16 ? number * 257 % 65536 : number % 256;
}

class OldStoreTest : public testing::TestWithParam<OldStore> {
protected:
    OldStoreTest() { std::filesystem::copy_file(VELMORA_TEST_STORES "/" + std::string(GetParam().name), path_); }

    static Numbers picture() {
        Numbers samples;
        for (std::int64_t y = 0; y < 44; ++y)
            for (std::int64_t x = 0; x < 60; ++x)
                for (std::int64_t band = 0; band < GetParam().bands; ++band)
                    samples.push_back(sampleAt(x, y, band, GetParam().bits));
        return samples;
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.vlm");
};

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Files, OldStoreTest,
    testing::Values(OldStore{"version1-grey8.vlm", 1, 1, 8, false}, OldStore{"version1-rgb8.vlm", 1, 3, 8, true},
                    OldStore{"version1-greyalpha16.vlm", 1, 2, 16, true}, OldStore{"version2-rgba8.vlm", 2, 4, 8, true},
                    OldStore{"version2-rgb16.vlm", 2, 3, 16, true}, OldStore{"version3-rgb8.vlm", 3, 3, 8, true},
                    OldStore{"version3-grey16.vlm", 3, 1, 16, true}),
    [](auto const& test) {
        std::string const name = test.param.name;
        std::string const stem = name.substr(0, name.find('.'));
        return stem.substr(0, stem.find('-')) + stem.substr(stem.find('-') + 1);
    });

TEST_P(OldStoreTest, GivesEverySample) {
    DocumentedReader const reader(path_);
    EXPECT_EQ(reader.version(), GetParam().version);
    EXPECT_EQ(reader.number("bands"), GetParam().bands);
    EXPECT_EQ(reader.number("bits"), GetParam().bits);
    EXPECT_EQ(reader.picture(), picture());
    EXPECT_EQ(exported(path_, folder_.path("out.tif")), picture());
}

// Also without an index, and with a wrong one.
TEST_P(OldStoreTest, ItsRowsSayWhichPlacesHaveData) {
    TileStore store(path_);
    DocumentedReader const reader(path_);
    EXPECT_EQ(store.cellsInIndex(1).has_value(), GetParam().hasIndex);
    for (size_t level = 0; level <= store.info().levels; ++level) {
        Numbers expected; // keys of places
        for (std::int64_t const id : reader.ids()) {
            Numbers const tile = reader.tile(id);
            std::int64_t const place = id / 32;
            bool const counts = id >> 53 == static_cast<std::int64_t>(level) && tile != Numbers(tile.size(), 0);
            if (counts && (expected.empty() || expected.back() != place)) expected.push_back(place);
        }
        Numbers places;
        for (TileAddress const& cell : store.cellsWithData(level))
            places.push_back(DocumentedReader::idOf(static_cast<std::int64_t>(level), 0, 0,
                                                    static_cast<std::int64_t>(cell.column),
                                                    static_cast<std::int64_t>(cell.row)) /
                             32);
        EXPECT_EQ(places, expected) << level;
    }
}
