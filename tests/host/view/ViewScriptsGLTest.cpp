// Random scripts of what a user does to a view while threads load its tiles. Whatever came before, a view that
// completes shows the right frame. Run with ThreadSanitizer, too.
#include "host/HostError.h"
#include "host/store/Sqlite.h"
#include "host/store/TileStoreFormat.h"
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <optional>

using pictureview::describe;
using pictureview::frameOf;
using pictureview::levelsOf;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

constexpr size_t kSteps = 60;

class ViewScriptsGLTest : public PictureViewFixture {
protected:
    void SetUp() override {
        if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
        info_ = import(picture_);
        levels_ = levelsOf(picture_, info_.levels);
    }

    void play(std::uint32_t seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random_.seed(seed);
        open();
        for (size_t step = 0; step < kSteps && !HasFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            try {
                act();
            } catch (HostError const& error) {
                // A thread has met the damaged tile, and hands its failure over here.
                EXPECT_TRUE(isDamaged_) << error.what();
                EXPECT_NE(std::string(error.what()).find("damaged"), std::string::npos) << error.what();
            }
        }
        view_.reset(); // as it is, while threads load
    }

    // Whatever the scripts have met.
    void expectFailure() {
        open();
        view_->show({Zoom(), 300, 300, 20, 20, false});
        EXPECT_THROW(completed(*view_), HostError);
        view_.reset();
    }

    void damage() {
        // Of the finest level: only views of that place meet it.
        TileAddress const address{1, Band::HH, 0, 2, 2};
        sqlite::Database(path(), sqlite::Database::Mode::ReadWrite)
            .execute("UPDATE tiles SET crc = crc + 1 WHERE id = " + std::to_string(storeformat::keyOf(address)));
        isDamaged_ = true;
    }

    static std::uint32_t scripts() { return isExhaustiveRun() ? 500 : 10; }

    size_t frames() const { return frames_; }
    size_t unfinished() const { return unfinished_; }

private:
    size_t anyOf(size_t count) { return random_() % count; }

    // In place of the one there is, whose threads may be at work.
    void open() {
        if (view_ && view_->statistics().waiting > 0) ++unfinished_;
        view_.reset();
        PictureView::Options chosen = options();
        chosen.threads = 1 + anyOf(4);
        chosen.hostBytes = anyOf(2) == 0 ? 1 : 256 * 1000 * 1000;
        chosen.gpuBytes = anyOf(2) == 0 ? 1 : 256 * 1000 * 1000;
        chosen.enhanceCoarserLevels = anyOf(2) == 0;
        view_.emplace(instance_, path(), chosen);
        isEnhanced_ = false;
    }

    void act() {
        switch (anyOf(12)) {
        case 0:
            return open();
        case 1:
            isEnhanced_ = !isEnhanced_;
            return view_->enhance(isEnhanced_ ? std::vector<enhancement::Step>{enhancement::Sharpen{1.0}}
                                              : std::vector<enhancement::Step>());
        case 2:
            instance_->clearTiles();
            return;
        case 3:
            view_->wait(1ms);
            return;
        case 4:
            view_->pixels(); // of what is there
            return;
        case 5:
            view_->show(randomView(info_));
            return expectFrame();
        case 6:
        case 7:
        case 8:
            view_->advance(std::chrono::milliseconds(anyOf(3)));
            return;
        default:
            view_->show(randomView(info_));
            return;
        }
    }

    void expectFrame() {
        Bytes const frame = completed(*view_);
        if (isEnhanced_) return;
        EXPECT_TRUE(frame == frameOf(levels_, view_->view())) << describe(view_->view());
        ++frames_;
    }

    Picture const picture_ = testpictures::picture(1700, 1200, 1, 8, Content::Noise);
    StoreInfo info_;
    std::vector<pictureview::Level> levels_;
    std::optional<PictureView> view_;
    bool isEnhanced_ = false;
    bool isDamaged_ = false;
    size_t frames_ = 0;
    size_t unfinished_ = 0; // views that went while tiles waited
};

} // namespace

TEST_F(ViewScriptsGLTest, WhatCompletesIsRight) {
    for (std::uint32_t seed = 1; seed <= scripts() && !HasFailure(); ++seed)
        play(seed);
    EXPECT_GE(frames(), scripts());
    EXPECT_GE(unfinished(), scripts() / 2);
}

TEST_F(ViewScriptsGLTest, WhatThreadsThrowReachesTheGlThreadAndNothingElseSuffers) {
    damage();
    for (std::uint32_t seed = 1; seed <= scripts() && !HasFailure(); ++seed) {
        play(seed);
        expectFailure();
    }
    EXPECT_GE(frames(), scripts() / 2);
}
