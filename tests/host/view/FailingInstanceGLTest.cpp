// Whichever operation of the backend fails, the same drawing on the same instance gives the right bytes afterwards.
#include "host/EnhancedRenderer.h"
#include "host/PictureTargets.h"
#include "host/RegionRenderer.h"
#include "host/view/StoreRenderer.h"
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/FailingInstance.h"
#include "tests/support/LongRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using pictureview::frameOf;
using pictureview::levelsOf;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

using When = FailingInstance::When;

class FailingInstanceGLTest : public PictureViewFixture {
protected:
    using Drawing = std::function<Bytes()>;

    // Lets every operation that the drawing needs fail once, and draws again after each. Operations of destructors may
    // fail unheard: the drawing is whole then.
    void expectRightAfterAnyFailure(Drawing const& draw) {
        for (When const when : {When::Before, When::Midway, When::After}) {
            failing_->failAt(0);
            Bytes const expected = draw();
            std::size_t const operations = failing_->calls();
            ASSERT_GT(operations, 5U);
            std::size_t failures = 0;
            // Each drawing makes its programs anew: without VELMORA_LONG some operations have to do.
            std::size_t const step = isLongRun() ? 1 : operations / 40 + 1;
            for (std::size_t n = 1; n <= operations; n += step) {
                failures += fails(draw, n, when) ? 1U : 0U;
                ASSERT_TRUE(draw() == expected) << "after a failure of operation " << n << " of " << operations;
            }
            EXPECT_GT(failures, operations / step / 2);
        }
    }

    bool fails(Drawing const& draw, std::size_t n, When when) {
        failing_->failAt(n, when);
        bool failed = false;
        try {
            draw();
        } catch (std::exception const&) {
            failed = true;
        }
        failing_->failAt(0);
        return failed;
    }

    template <class Renderer>
    static Bytes drawn(Renderer&& renderer, Picture const& picture) {
        Bytes bytes;
        auto const source = testpictures::source(picture);
        renderer.render(
            *source, {0, 0, picture.width, picture.height},
            [&](std::uint8_t const* rows, std::size_t count) {
                bytes.insert(bytes.end(), rows, rows + count * picture.width * picture.bands);
            },
            [](std::size_t, std::size_t) {});
        return bytes;
    }

    std::shared_ptr<FailingInstance> failing_ = std::make_shared<FailingInstance>(instance_, context_);
};

} // namespace

TEST_F(FailingInstanceGLTest, RegionsAreRightAfterAnyFailure) {
    Picture const picture = testpictures::picture(43, 35, 3, 8, Content::Noise);
    expectRightAfterAnyFailure([&] {
        Bytes bytes = drawn(RegionRenderer(failing_, 16), picture);
        EXPECT_TRUE(bytes == picture.bytes);
        return bytes;
    });
}

TEST_F(FailingInstanceGLTest, EnhancedRegionsAreRightAfterAnyFailure) {
    std::vector<enhancement::Step> const steps = {enhancement::Sharpen{2.0}, enhancement::Truncate{1, false},
                                                  enhancement::Equalise{3.0}, enhancement::Gamma{1.2, 10, 4000}};
    for (std::size_t const bits : {8U, 16U}) {
        Picture const picture = testpictures::picture(43, 35, 3, bits, Content::Noise);
        expectRightAfterAnyFailure([&] { return drawn(EnhancedRenderer(failing_, steps), picture); });
    }
}

TEST_F(FailingInstanceGLTest, StoresAreRightAfterAnyFailure) {
    Picture const picture = testpictures::picture(143, 95, 3, 8, Content::Noise);
    import(picture);
    expectRightAfterAnyFailure([&] {
        Bytes bytes;
        StoreRenderer(failing_, path(), {})
            .render(
                Zoom(), false, {0, 0, picture.width, picture.height},
                [&](std::uint8_t const* rows, std::size_t count) {
                    bytes.insert(bytes.end(), rows, rows + count * picture.width * picture.bands);
                },
                [](std::size_t, std::size_t) {});
        EXPECT_TRUE(bytes == picture.bytes);
        return bytes;
    });
}

// Tiles of all sizes go into targets one after the other, and none at all, which is to be zeros.
TEST_F(FailingInstanceGLTest, TargetsAreRightAfterAnyFailure) {
    using Layout = PictureTargets::Layout;
    PictureTargets targets(failing_);
    std::vector<unsigned char> large(4 * 20 * 20);
    for (std::size_t i = 0; i < large.size(); ++i)
        large[i] = static_cast<unsigned char>(i * 7 + 1);
    std::vector<unsigned char> const small(4 * 3 * 2, 99);
    OwnedTarget const target = targets.target(Layout::kRgba8, {20, 20});
    auto const draw = [&](std::vector<unsigned char> const& pixels, PictureTargets::Size const& size) {
        targets.draw(target, Layout::kRgba8, size, pixels, {0, 0, 20, 20});
        return targets.read(target, Layout::kRgba8, {20, 20});
    };
    EXPECT_TRUE(draw(large, {20, 20}) == large);
    for (When const when : {When::Before, When::Midway, When::After}) {
        for (std::size_t n = 1; n <= 5; ++n) {
            EXPECT_EQ(fails([&] { return draw(large, {20, 20}); }, n, when), n != 4) << n << ", 4: the tile is erased";
            EXPECT_TRUE(draw(small, {3, 2}) == std::vector<unsigned char>(4 * 20 * 20, 99)) << n;
            fails([&] { return draw(large, {20, 20}); }, n, when);
            EXPECT_TRUE(draw({}, {20, 20}) == std::vector<unsigned char>(4 * 20 * 20, 0)) << n;
            EXPECT_TRUE(draw(large, {20, 20}) == large) << n;
        }
    }
}

// The view itself goes on after the failure, and its tiles are rebuilt each time: those of the one place, which is flat,
// go while the other is shown. Where the bands are kept they come from the instance's cache, else from the store.
TEST_F(FailingInstanceGLTest, AViewGoesOnAfterAnyFailure) {
    Picture picture = testpictures::picture(1200, 70, 1, 8, Content::Noise);
    for (std::size_t y = 0; y < picture.height; ++y)
        std::fill_n(&picture.bytes[y * picture.width], 800, std::uint8_t{90});
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    View const first = {Zoom::nearest(0.8, info.levels), 5, 5, 60, 50, false};
    View const second = {Zoom(), 1050, 10, 60, 50, false};
    std::vector<std::pair<View, Bytes>> const both = {{first, frameOf(levels, first)},
                                                      {second, frameOf(levels, second)}};
    for (std::size_t const bandBytes : {std::size_t{1}, kTileBudgetBytes}) {
        Gles3RenderBackend backend(RenderBackend::RGBA32, bandBytes);
        auto const failing = std::make_shared<FailingInstance>(backend.createInstance(context_), context_);
        PictureView::Options small = options();
        small.gpuBytes = 1;
        PictureView view(failing, path(), small);
        auto const showBoth = [&] {
            for (auto const& [wanted, frame] : both)
                ASSERT_TRUE(completed(view, wanted) == frame);
        };
        bool const bandsStay = bandBytes > 1;
        for (When const when :
             bandsStay ? std::vector<When>{When::Before, When::Midway, When::After} : std::vector<When>{When::Before}) {
            showBoth();
            failing->failAt(0);
            showBoth();
            std::size_t const operations = failing->calls();
            ASSERT_GT(operations, 100U);
            for (std::size_t n = 1; n <= operations; ++n) {
                failing->failAt(n, when);
                for (auto const& [wanted, frame] : both) {
                    try {
                        completed(view, wanted);
                    } catch (StandInFailure const&) {
                        // The same view is asked for again.
                        ASSERT_TRUE(completed(view, wanted) == frame) << n << " of " << operations << " failed";
                    }
                }
                failing->failAt(0);
                showBoth();
            }
        }
    }
}
