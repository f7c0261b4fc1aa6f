// Pictures of many formats into stores and out of them again: the samples equal those of independent readers.
#include "host/store/StoreCheck.h"
#include "host/store/StoreExporter.h"
#include "host/store/StoreImporter.h"
#include "tests/host/store/FormatPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>

using filesamples::Samples;
using formatpictures::Format;

namespace {

// Of what the product itself makes of colours, where nothing else tells.
Samples converted(std::string const& path, formatpictures::Choice const& choice) {
    auto const picture = formatpictures::middleOf(path, std::numeric_limits<size_t>::max(), choice);
    return {picture.width, picture.height, picture.bands, {picture.bytes.begin(), picture.bytes.end()}};
}

class FormatsTest : public testing::TestWithParam<Format> {
protected:
    void expectRoundTrip(std::string const& picture) const {
        Format const& format = GetParam();
        std::string const path = folder_.path("a.vlm");
        importStore([&] { return formatpictures::open(picture, format.choice); }, path, ImportOptions(),
                    [](size_t, size_t) {});
        TileStore store(path);
        StoreCheckResult const checked = checkStore(store, [](size_t, size_t) {});
        EXPECT_EQ(checked.damages, 0u);
        EXPECT_EQ(checked.tiles, storegeometry::totalTiles(store.info()));
        EXPECT_EQ(store.info().bands, format.bands);
        EXPECT_EQ(store.info().bits, format.bits);
        exportStore(store, folder_.path("out.tif"), [](size_t, size_t) {});
        Samples const expected = *format.choice.converted == '\0' ? formatpictures::expected(picture, format.choice)
                                                                  : converted(picture, format.choice);
        EXPECT_EQ(filesamples::difference(filesamples::read(folder_.path("out.tif")), expected), "");
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
