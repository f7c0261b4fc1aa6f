// Pictures of many formats into stores and out of them again: what comes out is what ImageReader reads.
#include "host/store/StoreCheck.h"
#include "host/store/StoreExporter.h"
#include "host/store/StoreImporter.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/store/FormatPictures.h"

#include <gtest/gtest.h>

#include <limits>

using formatpictures::Format;

namespace {

testpictures::Picture whole(std::string const& path) {
    return formatpictures::middleOf(path, std::numeric_limits<std::size_t>::max());
}

class FormatsTest : public testing::TestWithParam<Format> {
protected:
    void expectRoundTrip(std::string const& picture) const {
        std::string const path = folder_.path("a.vlm");
        importStore([&] { return formatpictures::open(picture); }, path, ImportOptions(), [](size_t, size_t) {});
        TileStore store(path);
        StoreCheckResult const checked = checkStore(store, [](size_t, size_t) {});
        EXPECT_EQ(checked.damages, 0u);
        EXPECT_EQ(checked.tiles, storegeometry::totalTiles(store.info()));
        EXPECT_EQ(store.info().bands, GetParam().bands);
        EXPECT_EQ(store.info().bits, GetParam().bits);
        exportStore(store, folder_.path("out.tif"), [](size_t, size_t) {});
        EXPECT_TRUE(whole(folder_.path("out.tif")) == whole(picture));
    }

    TemporaryFolder folder_;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Pictures, FormatsTest, testing::ValuesIn(formatpictures::all()),
                         [](auto const& test) { return std::string(test.param.name); });

TEST_P(FormatsTest, EverySampleComesBack) {
    auto const picture = formatpictures::locate(GetParam(), folder_.path());
    if (picture.missing.empty())
        expectRoundTrip(picture.path);
    else if (formatpictures::areRequired())
        FAIL() << picture.missing;
    else
        GTEST_SKIP() << picture.missing;
}
