// Frame after frame, with tiles that come and go, enhancements, views and instances made and destroyed: neither memory
// nor GL objects grow.
#include "tests/host/view/PictureViewFixture.h"
#include "tests/support/LivingGlObjects.h"
#include "tests/support/LongRun.h"
#include "tests/support/OptimisedBuild.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <malloc.h>
#if VELMORA_ADDRESS_SANITIZER
#include <sanitizer/allocator_interface.h>
#endif

using pictureview::describe;
using pictureview::frameOf;
using pictureview::levelsOf;
using testpictures::Content;
using testpictures::Picture;

namespace {

// What the process has allocated, the driver's memory among it.
size_t allocatedBytes() {
#if VELMORA_ADDRESS_SANITIZER
    return __sanitizer_get_current_allocated_bytes();
#else
    auto const all = mallinfo2();
    return all.uordblks + all.hblkhd;
#endif
}

// lavapipe and SwiftShader keep memory of their own from frame to frame.
bool measuresMemory() {
    return runsOn("llvmpipe") || runsOn("softpipe");
}

// The frames of one of the test's turns.
size_t framesPerTurn() {
    if (isExhaustiveRun()) return kOptimisedBuild ? 10'000 : 500;
    if (runsOffLlvmpipe()) return 30;
    return kOptimisedBuild ? 300 : 100;
}

class SoakGLTest : public PictureViewFixture {
protected:
    // A turn of the program: an instance, views one after the other, frames with and without enhancements.
    void turn(StoreInfo const& info, std::vector<pictureview::Level> const& levels, size_t frames) {
        Gles3RenderBackend backend(hostfilters::registry(), RenderBackend::RGBA32, kBandBytes);
        auto const instance = backend.createInstance(context_);
        for (size_t shown = 0; shown < frames;) {
            PictureView::Options small = options();
            small.hostBytes = small.gpuBytes = kTileBytes;
            PictureView view(instance, path(), small);
            for (size_t i = 0; i < kFramesPerView && shown < frames; ++i, ++shown) {
                bool const enhanced = i % 8 == 7;
                view.enhance(enhanced ? steps_ : std::vector<enhancement::Step>());
                View wanted = randomView(info);
                wanted.width = 1 + wanted.width % 24;
                wanted.height = 1 + wanted.height % 24;
                Bytes const frame = completed(view, wanted);
                if (!enhanced) {
                    ASSERT_TRUE(frame == frameOf(levels, wanted)) << describe(wanted);
                }
            }
        }
    }

    static constexpr size_t kFramesPerView = 100;
    // Fewer than the picture has: they come and go.
    static constexpr size_t kTileBytes = 4 * 1000 * 1000;
    static constexpr size_t kBandBytes = 2 * 1000 * 1000;

    std::vector<enhancement::Step> const steps_{enhancement::Sharpen{1.0}, enhancement::Gamma{1.5, 0, 4095}};
};

} // namespace

TEST_F(SoakGLTest, NothingGrows) {
    if (isSampleRun()) GTEST_SKIP() << "it runs on llvmpipe";
    constexpr size_t kMostGrowth = 1024 * 1024;
    Picture const picture = testpictures::picture(701, 600, 3, 8, Content::Noise);
    StoreInfo const info = import(picture);
    auto const levels = levelsOf(picture, info.levels);
    size_t const perTurn = framesPerTurn();
    size_t const turns = isExhaustiveRun() ? 100 : 6;
    // The first turns fill what the driver and the C library keep.
    size_t const settled = turns / 3;
    size_t before = 0;
    size_t most = 0;
    size_t objects = 0;
    for (size_t i = 0; i < turns && !HasFatalFailure(); ++i) {
        turn(info, levels, perTurn);
        size_t const bytes = allocatedBytes();
        size_t const living = living_gl_objects::snapshot().size();
        if (i < settled) {
            before = std::max(before, bytes);
            objects = living;
        } else {
            most = std::max(most, bytes);
            EXPECT_EQ(living, objects) << "GL objects after turn " << i;
        }
    }
    size_t const growth = most > before ? most - before : 0;
    std::cout << turns * perTurn << " frames, " << growth << " bytes more than after the first " << settled * perTurn
              << '\n';
    RecordProperty("frames", std::to_string(turns * perTurn));
    RecordProperty("growth", std::to_string(growth));
    if (measuresMemory()) {
        EXPECT_LE(growth, kMostGrowth);
    }
}
