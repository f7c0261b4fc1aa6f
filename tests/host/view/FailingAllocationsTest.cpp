// Each `new` fails in turn, in rendering, in a view and in an import: nothing ends the program, no GL object stays
// behind, and what lives goes on.
#include "tests/support/FailingAllocations.h"

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/channels/HostFilters.h"
#include "host/filter/EnhancedRenderer.h"
#include "host/filter/RegionRenderer.h"
#include "host/view/PictureRenderer.h"
#include "renderbackend/RenderContext.h"
#include "tests/host/store/TestPictures.h"
#include "tests/support/LongRun.h"
#include "tests/support/NullGl.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

using failing_allocations::Threads;
using testpictures::Content;
using testpictures::Picture;
using namespace std::chrono_literals;

namespace {

struct FixedContext : RenderContext {
    size_t width() const override { return 100; }
    size_t height() const override { return 100; }
};

class FailingAllocationsTest : public testing::Test {
protected:
    using Work = std::function<void()>;

    void SetUp() override { importPicture(path()); }
    void TearDown() override { EXPECT_EQ(null_gl::livingObjects(), 0U); }

    void importPicture(std::string const& path) const {
        ImportOptions options;
        options.tileSize = 32;
        options.jobs = 2;
        testpictures::import(picture_, path, options);
    }

    // Lets the first, the second, ... `new` of the work fail, until none of it is left to fail. `check` after each.
    // Without VELMORA_LONG many of them are left out: all of the first ones are there.
    static void expectUnharmed(Work const& work, Threads threads, Work const& check) {
        size_t failures = 0;
        for (size_t n = 1;; n += isLongRun() ? 1 : n / 80 + 1) {
            bool const failed = fails(work, n, threads);
            bool const done = failing_allocations::stop() < n;
            failures += failed ? 1U : 0U;
            SCOPED_TRACE("after a failure of allocation " + std::to_string(n));
            ASSERT_NO_THROW(check());
            if (!done) continue;
            EXPECT_FALSE(failed) << "without a failure of an allocation";
            EXPECT_GT(failures, threads == Threads::This ? 60U : 5U);
            return;
        }
    }

    static bool fails(Work const& work, size_t n, Threads threads) {
        failing_allocations::failAt(n, threads);
        try {
            work();
        } catch (std::exception const&) {
            failing_allocations::stop();
            return true;
        }
        return false;
    }

    std::shared_ptr<RenderBackendInstance> instance() { return backend_.createInstance(context_); }

    static PictureView::Options options() {
        PictureView::Options options;
        options.threads = 1;
        options.gpuBytes = 1;
        return options;
    }

    // Until no tile is on its way: what fails behind a complete view is thrown here.
    static void complete(PictureView& view) {
        while (!view.complete() || view.statistics().waiting != 0) {
            if (!view.advance(50ms)) view.wait(50ms);
        }
        view.pixels();
        view.dataMask();
        view.present();
    }

    static std::vector<enhancement::Step> steps() {
        return {enhancement::Sharpen{2.0}, enhancement::Truncate{1, false}, enhancement::Equalise{3.0}};
    }

    template <class Renderer>
    void render(Renderer&& renderer) const {
        auto const source = testpictures::source(picture_);
        renderer.render(
            *source, {0, 0, picture_.width, picture_.height}, [](std::uint8_t const*, size_t) {},
            [](size_t, size_t) {});
    }

    std::string path() const { return folder_.path("a.vlm"); }

    Picture picture_ = testpictures::picture(90, 70, 3, 16, Content::Noise);
    TemporaryFolder folder_;
    FixedContext context_;
    Gles3RenderBackend backend_{hostfilters::registry(), RenderBackend::RGBA32, 1000 * 1000};
};

} // namespace

TEST_F(FailingAllocationsTest, RegionsOfPictures) {
    picture_ = testpictures::picture(90, 70, 3, 8, Content::Noise);
    auto const gl = instance();
    size_t const before = null_gl::livingObjects();
    auto const work = [&] { render(RegionRenderer(gl, 32)); };
    expectUnharmed(work, Threads::This, [&] {
        work();
        EXPECT_EQ(null_gl::livingObjects(), before);
    });
}

TEST_F(FailingAllocationsTest, EnhancedRegionsOfPictures) {
    auto const gl = instance();
    size_t const before = null_gl::livingObjects();
    auto const work = [&] { render(EnhancedRenderer(gl, steps())); };
    expectUnharmed(work, Threads::This, [&] {
        work();
        EXPECT_EQ(null_gl::livingObjects(), before);
    });
}

TEST_F(FailingAllocationsTest, InstancesAndViewsFromTheFirstToTheLast) {
    for (Threads const threads : {Threads::This, Threads::Others}) {
        expectUnharmed(
            [&] {
                PictureView view(instance(), path(), options());
                view.enhance(steps());
                view.show({Zoom::nearest(0.8, view.info().levels), 5, 5, 40, 30, false});
                complete(view);
            },
            threads, [] { EXPECT_EQ(null_gl::livingObjects(), 0U); });
    }
}

TEST_F(FailingAllocationsTest, AViewThatLivesOn) {
    picture_ = testpictures::picture(1200, 40, 1, 8, Content::Noise);
    std::filesystem::remove(path());
    importPicture(path());
    for (Threads const threads : {Threads::This, Threads::Others}) {
        // Nothing is kept: the threads have to read each time.
        Gles3RenderBackend poor(hostfilters::registry(), RenderBackend::RGBA32, 1);
        PictureView::Options forgetful = options();
        forgetful.hostBytes = 1;
        PictureView view(poor.createInstance(context_), path(), forgetful);
        View const first = {Zoom::nearest(0.8, view.info().levels), 5, 5, 40, 30, false};
        View const second = {Zoom(), 1100, 10, 40, 30, true};
        auto const work = [&] {
            view.enhance({});
            view.show(first);
            complete(view);
            view.enhance(steps());
            view.show(second);
            complete(view);
        };
        expectUnharmed(work, threads, [&] {
            complete(view);
            work();
        });
    }
}

TEST_F(FailingAllocationsTest, RegionsOfStores) {
    auto const gl = instance();
    auto const work = [&] {
        PictureRenderer renderer(gl, path(), {});
        renderer.render(
            Zoom(), false, {10, 10, 40, 30}, [](std::uint8_t const*, size_t) {}, [](size_t, size_t) {});
    };
    work(); // sets of envelopes stay in the instance's cache, those of one renderer at a time
    size_t const before = null_gl::livingObjects();
    for (Threads const threads : {Threads::This, Threads::Others}) {
        expectUnharmed(work, threads, [&] {
            EXPECT_NO_THROW(work());
            EXPECT_EQ(null_gl::livingObjects(), before);
        });
    }
}

TEST_F(FailingAllocationsTest, Imports) {
    for (Threads const threads : {Threads::This, Threads::Others}) {
        std::string const made = folder_.path("made.vlm");
        expectUnharmed([&] { importPicture(made); }, threads,
                       [&] {
                           std::vector<std::string> const names = folder_.names();
                           bool const isMade = std::find(names.begin(), names.end(), "made.vlm") != names.end();
                           EXPECT_EQ(names.size(), isMade ? 2U : 1U) << "what is not whole stays behind";
                           for (std::string const& name : names)
                               if (name != "a.vlm") std::filesystem::remove(folder_.path(name));
                       });
    }
}
