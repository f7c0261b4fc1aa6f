// Whichever operation of the backend fails, the same drawing on the same instance gives the right bytes afterwards.
#include "host/filter/EnhancedRenderer.h"
#include "host/filter/FilterRunner.h"
#include "host/filter/RegionRenderer.h"
#include "host/view/PictureRenderer.h"
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
            size_t const operations = failing_->calls();
            ASSERT_GT(operations, 5U);
            size_t failures = 0;
            // Each drawing makes its programs anew: without VELMORA_LONG some operations have to do.
            size_t const step = isExhaustiveRun() ? 1 : operations / (isSampleRun() ? 6 : 40) + 1;
            for (size_t n = 1; n <= operations; n += step) {
                failures += fails(draw, n, when) ? 1U : 0U;
                ASSERT_TRUE(draw() == expected) << "after a failure of operation " << n << " of " << operations;
            }
            EXPECT_GT(failures, operations / step / 2);
        }
    }

    bool fails(Drawing const& draw, size_t n, When when) {
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
            [&](std::uint8_t const* rows, size_t count) {
                bytes.insert(bytes.end(), rows, rows + count * picture.width * picture.bands);
            },
            [](size_t, size_t) {});
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
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    std::vector<enhancement::Step> const steps = {enhancement::Sharpen{2.0}, enhancement::Truncate{1, false},
                                                  enhancement::Equalise{3.0}, enhancement::Gamma{1.2, 10, 4000}};
    for (size_t const bits : {8U, 16U}) {
        Picture const picture = testpictures::picture(43, 35, 3, bits, Content::Noise);
        expectRightAfterAnyFailure([&] { return drawn(EnhancedRenderer(failing_, steps), picture); });
    }
}

TEST_F(FailingInstanceGLTest, StoresAreRightAfterAnyFailure) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    Picture const picture = testpictures::picture(143, 95, 3, 8, Content::Noise);
    import(picture);
    expectRightAfterAnyFailure([&] {
        Bytes bytes;
        PictureRenderer(failing_, path(), {})
            .render(
                Zoom(), false, {0, 0, picture.width, picture.height},
                [&](std::uint8_t const* rows, size_t count) {
                    bytes.insert(bytes.end(), rows, rows + count * picture.width * picture.bands);
                },
                [](size_t, size_t) {});
        EXPECT_TRUE(bytes == picture.bytes);
        return bytes;
    });
}

// Tiles of all sizes go into targets one after the other, and none at all, which is to be zeros.
TEST_F(FailingInstanceGLTest, TargetsAreRightAfterAnyFailure) {
    using Layout = SampleLayout;
    FilterRunner targets(failing_);
    std::vector<unsigned char> large(4 * 20 * 20);
    for (size_t i = 0; i < large.size(); ++i)
        large[i] = static_cast<unsigned char>(i * 7 + 1);
    std::vector<unsigned char> const small(4 * 3 * 2, 99);
    OwnedTarget const target = targets.target(Layout::kRgba8, {20, 20});
    auto const draw = [&](std::vector<unsigned char> const& pixels, Size const& size) {
        targets.draw(target, Layout::kRgba8, size, pixels, {0, 0, 20, 20});
        return targets.read(target, Layout::kRgba8, {0, 0, 20, 20});
    };
    EXPECT_TRUE(draw(large, {20, 20}) == large);
    for (When const when : {When::Before, When::Midway, When::After}) {
        for (size_t n = 1; n <= 5; ++n) {
            EXPECT_EQ(fails([&] { return draw(large, {20, 20}); }, n, when), n != 4) << n << ", 4: the tile is erased";
            EXPECT_TRUE(draw(small, {3, 2}) == std::vector<unsigned char>(4 * 20 * 20, 99)) << n;
            fails([&] { return draw(large, {20, 20}); }, n, when);
            EXPECT_TRUE(draw({}, {20, 20}) == std::vector<unsigned char>(4 * 20 * 20, 0)) << n;
            EXPECT_TRUE(draw(large, {20, 20}) == large) << n;
        }
    }
}

namespace {

// A picture of which two places are shown in turn. Tiles of the one, which is flat, go while the other is shown.
class TwoPlacesGLTest : public FailingInstanceGLTest {
protected:
    struct Shown {
        View view;
        Bytes frame;
    };

    void SetUp() override {
        if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
        Picture picture = testpictures::picture(1200, 70, 1, 8, Content::Noise);
        for (size_t y = 0; y < picture.height; ++y)
            std::fill_n(&picture.bytes[y * picture.width], 800, std::uint8_t{90});
        StoreInfo const info = import(picture);
        auto const levels = levelsOf(picture, info.levels);
        for (View const& view :
             {View{Zoom::nearest(0.8, info.levels), 5, 5, 60, 50, false}, View{Zoom(), 1050, 10, 60, 50, false}})
            places_.push_back({view, frameOf(levels, view)});
    }

    // bandBytes: what the instance's cache keeps of what tiles are rebuilt from.
    void open(size_t bandBytes) {
        view_.reset();
        poor_ = std::make_unique<Gles3RenderBackend>(hostfilters::registry(), RenderBackend::RGBA32, bandBytes);
        failing_ = std::make_shared<FailingInstance>(poor_->createInstance(context_), context_);
        PictureView::Options small = options();
        small.gpuBytes = 1;
        view_ = std::make_unique<PictureView>(failing_, path(), small);
    }

    void expectBoth() {
        for (auto const& [wanted, frame] : places_)
            ASSERT_TRUE(completed(*view_, wanted) == frame);
    }

    // Shows both, of which something fails; the same view is asked for again then. Whether it has failed.
    bool showBoth(std::function<void()> const& stop) {
        bool failed = false;
        for (auto const& [wanted, frame] : places_) {
            try {
                completed(*view_, wanted);
            } catch (std::exception const&) {
                stop();
                failed = true;
                EXPECT_TRUE(completed(*view_, wanted) == frame);
            }
        }
        stop();
        return failed;
    }

    std::vector<Shown> places_;
    std::unique_ptr<Gles3RenderBackend> poor_;
    std::unique_ptr<PictureView> view_;
};

} // namespace

// The view itself goes on after the failure. Where the bands are kept its tiles are rebuilt from the instance's cache,
// else from the store.
TEST_F(TwoPlacesGLTest, AViewGoesOnAfterAnyFailure) {
    for (auto const& [bandBytes, when] : std::vector<std::pair<size_t, When>>{{1, When::Before},
                                                                              {kTileBudgetBytes, When::Before},
                                                                              {kTileBudgetBytes, When::Midway},
                                                                              {kTileBudgetBytes, When::After}}) {
        open(bandBytes);
        expectBoth();
        failing_->failAt(0);
        expectBoth();
        size_t const operations = failing_->calls();
        ASSERT_GT(operations, 100U);
        for (size_t n = 1; n <= operations; ++n) {
            SCOPED_TRACE(std::to_string(n) + " of " + std::to_string(operations) + " fails");
            failing_->failAt(n, when);
            showBoth([&] { failing_->failAt(0); });
            expectBoth();
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(TwoPlacesGLTest, AViewGoesOnAfterAnyFailureOfAnAllocation) {
    open(kTileBudgetBytes);
    expectBoth();
    size_t failures = 0;
    for (size_t n = 1;; n += isExhaustiveRun() ? 1 : n / 100 + 1) {
        SCOPED_TRACE("allocation " + std::to_string(n) + " fails");
        size_t reached = 0;
        failing_allocations::failAt(n);
        failures += showBoth([&] { reached = std::max(reached, failing_allocations::stop()); }) ? 1U : 0U;
        expectBoth();
        ASSERT_FALSE(HasFailure());
        if (reached < n) break;
    }
    EXPECT_GT(failures, isSampleRun() ? 5U : 100U);
}
