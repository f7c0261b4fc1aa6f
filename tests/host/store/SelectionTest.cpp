// The description of the part of a file from which a store was made.
#include "host/store/Sqlite.h"
#include "host/store/TileStore.h"
#include "tests/host/store/SourceOf.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

// A picture and its metadata.
class PartSource final : public SourceOf {
public:
    PartSource(std::unique_ptr<PixelSource> source, Selection part)
        : SourceOf(std::move(source)), part_(std::move(part)) {}

    Selection selection() override { return part_; }

private:
    Selection part_;
};

class SelectionTest : public testing::Test {
protected:
    StoreInfo imported(PixelSource::Selection const& part) const {
        auto const picture = testpictures::picture(20, 10, 1, 8, testpictures::Content::Noise);
        ImportOptions options;
        options.replace = true;
        StoreInfo const said =
            importStore([&] { return std::make_unique<PartSource>(testpictures::source(picture), part); }, store_,
                        options, [](size_t, size_t) {});
        StoreInfo read = TileStore(store_).info();
        EXPECT_EQ(said.selection, read.selection);
        EXPECT_EQ(said.rangeLow, read.rangeLow);
        EXPECT_EQ(said.rangeHigh, read.rangeHigh);
        return read;
    }

    void change(std::string const& statement) const {
        sqlite::Database(store_, sqlite::Database::Mode::ReadWrite).execute(statement);
    }

    TemporaryFolder folder_;
    std::string store_ = folder_.path("a.vlm");
};

} // namespace

TEST_F(SelectionTest, IsKeptToTheLastBit) {
    StoreInfo const info = imported({"page 3 of 15; samples", -3.5000000000000004, 1e300});
    EXPECT_EQ(info.selection, "page 3 of 15; samples");
    EXPECT_EQ(info.rangeLow, -3.5000000000000004);
    EXPECT_EQ(info.rangeHigh, 1e300);
    StoreInfo const below = imported({"samples", -9, -0.5});
    EXPECT_EQ(below.rangeLow, -9);
    EXPECT_EQ(below.rangeHigh, -0.5);
    EXPECT_EQ(imported({}).selection, "");
    EXPECT_EQ(imported({}).rangeHigh, 0);
}

TEST_F(SelectionTest, StoresFromBeforeItHaveNone) {
    imported({"page 3 of 15", 1, 2});
    change("DELETE FROM meta WHERE key IN ('selection', 'rangeLow', 'rangeHigh')");
    storefiles::sealDescription(store_);
    StoreInfo const info = TileStore(store_).info();
    EXPECT_EQ(info.selection, "");
    EXPECT_EQ(info.rangeLow, 0);
    EXPECT_EQ(info.rangeHigh, 0);
}
