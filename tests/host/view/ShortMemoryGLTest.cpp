// What a view does where there is no memory for all that it has had: it shows the same pixels.
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/LivingGlObjects.h"

#include <chrono>

using pictureview::frameOf;
using pictureview::levelsOf;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

class ShortMemoryGLTest : public PictureViewFixture {
protected:
    // completed() of a view that may never be.
    static bool completes(PictureView& view) {
        auto const end = std::chrono::steady_clock::now() + 60s;
        while (!view.complete() && std::chrono::steady_clock::now() < end) {
            if (!view.advance(50ms)) view.wait(50ms);
        }
        return view.complete();
    }
};

} // namespace

TEST_F(ShortMemoryGLTest, LevelsThatWentAreRebuiltFromBandsThatStayed) {
    Picture const picture = testpictures::picture(1700, 200, 3, 8, Content::Noise);
    StoreInfo const info = import(picture, 256);
    PictureView view(instance_, path(), forgetful());
    View const here = {Zoom(), 10, 20, 100, 80, false};
    completed(view, here);
    completed(view, {Zoom(), 1500, 90, 100, 80, false});
    view.show(here);
    EXPECT_FALSE(view.complete()) << "its level went";
    EXPECT_EQ(view.statistics().waiting, 0U) << "nothing is read again";
    ASSERT_TRUE(completes(view));
    EXPECT_TRUE(view.pixels() == frameOf(levelsOf(picture, info.levels), here));
}

TEST_F(ShortMemoryGLTest, BandsThatWentTooAreReadAgain) {
    Picture const picture = testpictures::picture(1700, 200, 3, 8, Content::Noise);
    StoreInfo const info = import(picture, 256);
    PictureView view(instance_, path(), forgetful());
    View const here = {Zoom(), 10, 20, 100, 80, false};
    completed(view, here);
    completed(view, {Zoom(), 1500, 90, 100, 80, false});
    view.show(here);
    instance_->clearTiles(); // after it was found that nothing need be read
    ASSERT_TRUE(completes(view));
    EXPECT_TRUE(view.pixels() == frameOf(levelsOf(picture, info.levels), here));
}

// More tiles than are kept waiting are read before the parent of any is there: one of them must make room for it.
TEST_F(ShortMemoryGLTest, TilesThatWaitForTheirParentsMakeRoomForThem) {
    Picture const picture = testpictures::picture(15000, 40, 1, 8, Content::Noise); // 30 tiles, and their 15 parents
    StoreInfo const info = import(picture, 256);
    PictureView view(instance_, path(), forgetful());
    auto const whole = [&](double zoom) {
        Zoom const at = Zoom::nearest(zoom, info.levels);
        return View{at, 0, 0, view.sizeAt(at).width, view.sizeAt(at).height, false};
    };
    ASSERT_EQ(whole(0.52).zoom.level(), 0U);
    completed(view, whole(0.5));                        // the parents' bands are in the backend's cache
    completed(view, {Zoom(), 14900, 0, 20, 20, false}); // the parents themselves go
    view.show(whole(0.52));                             // so none of them is read
    instance_->clearTiles();
    while (view.statistics().waiting > 0 && view.advance(0ms))
        view.wait(50ms);
    ASSERT_TRUE(completes(view));
    EXPECT_TRUE(view.pixels() == frameOf(levelsOf(picture, info.levels), whole(0.52)));
}

// Targets that are erased wait in the instance to be used again, many megabytes of them after a large frame.
TEST_F(ShortMemoryGLTest, TargetsOfALargeFrameAreReleasedAfterIt) {
    import(testpictures::picture(3300, 1100, 1, 8, Content::Ramp), 256);
    PictureView view(instance_, path(), forgetful());
    completed(view, {Zoom(), 0, 0, 2500, 1100, false});
    auto const large = living_gl_objects::snapshot().size();
    completed(view, {Zoom(), 3250, 1050, 20, 20, false});
    EXPECT_LT(living_gl_objects::snapshot().size(), large);
}
