// A damaged store is drawn as it was stored, or drawing fails.
#include "host/HostError.h"
#include "host/store/TileOrder.h"
#include "host/store/TileStore.h"
#include "host/view/PictureView.h"
#include "tests/host/store/StoreFiles.h"
#include "tests/host/view/PictureRendererFixture.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <chrono>

using testpictures::Content;
using testpictures::Picture;

namespace {

class DamagedStoreGLTest : public PictureRendererFixture {
protected:
    // Half of it flat: places with data and without, and tiles of one value other than 0.
    DamagedStoreGLTest() {
        Picture picture = testpictures::picture(50, 70, 1, 8, Content::Noise);
        std::fill_n(picture.bytes.begin(), picture.bytes.size() / 2, std::uint8_t{90});
        info_ = import(picture, 16);
    }

    void remember() {
        whole_ = readFile(path());
        drawn_ = drawn().value();
    }

    template <class Draw>
    std::optional<Bytes> unlessDamaged(Draw const& draw) const {
        try {
            return draw();
        } catch (HostError const& error) {
            EXPECT_EQ(error.kind(), HostError::Kind::DamagedStore) << error.what();
        }
        return std::nullopt;
    }

    // Drawn by `velmora render`.
    std::optional<Bytes> drawn() const {
        return unlessDamaged([&] { return renderedWhole(info_, 0); });
    }

    // In a window, where coarser levels come first.
    std::optional<Bytes> shown() const {
        return unlessDamaged([&] {
            PictureView view(instance_, path(), {});
            View whole;
            whole.zoom = Zoom::nearest(1.0, info_.levels);
            whole.width = info_.width;
            whole.height = info_.height;
            view.show(whole);
            while (!view.complete())
                if (!view.advance(std::chrono::milliseconds(50))) view.wait(std::chrono::milliseconds(50));
            Bytes grey;
            Bytes const rgba = view.pixels();
            for (size_t i = 0; i < rgba.size(); i += 4)
                grey.push_back(rgba[i]);
            return grey;
        });
    }

    void expectNoticedOrAsBefore() const {
        auto const file = drawn();
        EXPECT_TRUE(!file || *file == drawn_) << "other pixels in a file";
        auto const window = shown();
        EXPECT_TRUE(!window || *window == drawn_) << "other pixels in a window";
    }

    StoreInfo info_;
    std::string whole_;
    Bytes drawn_;
};

} // namespace

TEST_F(DamagedStoreGLTest, AnyBitIsNoticedOrChangesNoPixel) {
    for (std::int64_t const version : {3, 2}) {
        if (version == 2) storefiles::rewriteAs(2, path());
        remember();
        size_t const distance = isExhaustiveRun() ? 31 : isSampleRun() ? 10007 : 1009;
        for (size_t bit = 0; bit < 8 * whole_.size() && !HasFailure(); bit += distance) {
            SCOPED_TRACE("version " + std::to_string(version) + ", bit " + std::to_string(bit % 8) + " of byte " +
                         std::to_string(bit / 8));
            writeFile(path(), storefiles::withBit(whole_, bit));
            expectNoticedOrAsBefore();
        }
        writeFile(path(), whole_);
    }
}

TEST_F(DamagedStoreGLTest, TilesOfOneValueAreNotDrawnWithAnother) {
    for (std::int64_t const version : {3, 2, 1}) {
        SCOPED_TRACE(version);
        import(testpictures::picture(100, 70, 1, 8, Content::Flat), 16);
        if (version < 3) storefiles::rewriteAs(version, path());
        storefiles::change(path(), "UPDATE tiles SET value = 0");
        EXPECT_EQ(drawn(), std::nullopt);
        EXPECT_EQ(shown(), std::nullopt);
    }
}

TEST_F(DamagedStoreGLTest, PlacesThatTheIndexLeavesOutAreDrawnOrNoticed) {
    for (std::int64_t const version : {3, 2}) {
        SCOPED_TRACE(version);
        if (version == 2) storefiles::rewriteAs(2, path());
        remember();
        storefiles::change(path(), "PRAGMA writable_schema = ON;"
                                   "UPDATE sqlite_master SET sql = replace(sql, 'value IS NULL OR ', '')"
                                   " WHERE name = 'tiles_with_data'; PRAGMA writable_schema = RESET;"
                                   "REINDEX tiles_with_data; PRAGMA writable_schema = ON;"
                                   "UPDATE sqlite_master SET sql = replace(sql, 'value <> 0',"
                                   " 'value IS NULL OR value <> 0') WHERE name = 'tiles_with_data'");
        EXPECT_EQ(drawn(), version == 3 ? std::nullopt : std::optional(drawn_));
        EXPECT_EQ(shown(), version == 3 ? std::nullopt : std::optional(drawn_));
        writeFile(path(), whole_);
    }
}
