// Whatever happens to the bytes of a store: either it is noticed, or nothing of the picture has changed.
#include "host/HostError.h"
#include "host/ImageReader.h"
#include "host/store/Sqlite.h"
#include "host/store/StoreCheck.h"
#include "host/store/StoreExporter.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

using testpictures::Content;
using testpictures::Picture;

namespace {

class DamagedStoreTest : public testing::Test {
protected:
    DamagedStoreTest() {
        ImportOptions options;
        options.tileSize = 32;
        options.sourceName = "picture.tif";
        // Half of it flat: tiles with samples and tiles of one value.
        std::fill_n(picture_.bytes.begin(), picture_.bytes.size() / 2, std::uint8_t{90});
        testpictures::import(picture_, path_, options);
        whole_ = readFile(path_);
        placesWithData_ = placesWithData();
    }

    // Nothing where it is refused.
    std::optional<Picture> exported() const {
        try {
            TileStore store(path_);
            exportStore(store, tiff_, [](size_t, size_t) {});
        } catch (HostError const&) {
            return std::nullopt;
        }
        ImageReader reader(tiff_, ImageReader::Samples::kAsStored);
        Picture picture{reader.width(), reader.height(), reader.bands(), 8 * reader.sampleBytes(), {}};
        reader.read({0, 0, picture.width, picture.height}, picture.bytes);
        return picture;
    }

    bool checkFindsDamage() const {
        try {
            TileStore store(path_);
            return checkStore(store, [](size_t, size_t) {}).damages > 0;
        } catch (HostError const&) {
            return true;
        }
    }

    // Of all levels; readers pass over other places.
    std::vector<std::pair<size_t, size_t>> placesWithData() const {
        TileStore store(path_);
        std::vector<std::pair<size_t, size_t>> places;
        for (size_t level = 0; level <= store.info().levels; ++level)
            for (TileAddress const& cell : store.cellsWithData(level))
                places.emplace_back(cell.column, cell.row);
        return places;
    }

    void expectNoticedOrHarmless() const {
        std::optional<Picture> const picture = exported();
        EXPECT_TRUE(!picture || *picture == picture_) << "another picture came out";
        if (!checkFindsDamage()) {
            EXPECT_TRUE(picture) << "the check finds nothing, but it cannot be exported";
            EXPECT_EQ(placesWithData(), placesWithData_) << "the check finds nothing, but parts are passed over";
        }
        std::filesystem::remove(tiff_);
        EXPECT_EQ(folder_.names(), std::vector<std::string>{"a.store"});
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.path("a.store");
    std::string tiff_ = folder_.path("out.tif");
    Picture picture_ = testpictures::picture(100, 70, 3, 8, Content::Noise);
    std::string whole_;
    std::vector<std::pair<size_t, size_t>> placesWithData_;
};

} // namespace

TEST_F(DamagedStoreTest, BytesThatChangeAreNoticedOrHarmless) {
    std::mt19937 random(5);
    for (int i = 0; i < (isLongRun() ? 5000 : 300) && !HasFailure(); ++i) {
        std::string file = whole_;
        size_t const bytes = size_t{1} << random() % 12;
        size_t const first = random() % (file.size() - bytes + 1);
        SCOPED_TRACE(std::to_string(bytes) + " bytes from " + std::to_string(first));
        for (size_t k = first; k < first + bytes; ++k)
            file[k] = static_cast<char>(random());
        writeFile(path_, file);
        expectNoticedOrHarmless();
    }
}

TEST_F(DamagedStoreTest, AnyBitOfTheDescriptionIsNoticedOrHarmless) {
    for (std::string const key : {"width", "height", "bands", "bits", "residualBits", "levels", "tileSize"}) {
        size_t const position = whole_.find(key);
        ASSERT_NE(position, std::string::npos) << key;
        for (size_t bit = 0; bit < 8 * (key.size() + 3); ++bit) {
            SCOPED_TRACE(key + ", bit " + std::to_string(bit));
            std::string file = whole_;
            file[position + bit / 8] = static_cast<char>(file[position + bit / 8] ^ (1 << bit % 8));
            writeFile(path_, file);
            expectNoticedOrHarmless();
        }
    }
}

TEST_F(DamagedStoreTest, AFileCutOffAnywhereIsNoticed) {
    std::mt19937 random(6);
    for (int i = 0; i < 60; ++i) {
        size_t const bytes = i < 20 ? static_cast<size_t>(i) * 8 : random() % whole_.size();
        SCOPED_TRACE(bytes);
        writeFile(path_, whole_.substr(0, bytes));
        EXPECT_EQ(exported(), std::nullopt);
        EXPECT_TRUE(checkFindsDamage());
    }
}
