// The chain itself, compared with plain arithmetic.
#include "host/filter/EnhancementChain.h"

#include "gles3renderbackend/Gles3RenderBackend.h"
#include "host/filter/FilterDescriptions.h"
#include "host/gl/SurfacelessContext.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Layout = SampleLayout;

class EnhancementChainGLTest : public testing::Test {
protected:
    static constexpr size_t kWidth = 256;

    // Three channels of samples, `height` rows of 256.
    OwnedTarget deep(std::vector<int> const& samples, size_t height) {
        std::vector<unsigned char> bytes;
        for (int const sample : samples) {
            bytes.push_back(static_cast<unsigned char>(sample & 0xFF));
            bytes.push_back(static_cast<unsigned char>(sample >> 8 & 0xFF));
        }
        OwnedTarget const plane = targets_.upload(Layout::kOneChannel16, {kWidth, height}, bytes);
        OwnedTarget result = targets_.target(Layout::kThreeChannel16, {kWidth, height});
        FilterSource const source = {plane.id(), 0, 0, false};
        targets_.run(targets_.prepared(description::filterInterleave16()), {source, source, source}, {kWidth, height},
                     result);
        return result;
    }

    SurfacelessContext context_;
    Gles3RenderBackend backend_{RenderBackend::RGBA32, 1000 * 1000};
    std::shared_ptr<RenderBackendInstance> instance_ = backend_.createInstance(context_);
    FilterRunner targets_{instance_};
};

} // namespace

TEST_F(EnhancementChainGLTest, SamplesOfAnyDepthAreShownAsTheirUpperByte) {
    for (unsigned depth = 9; depth <= 15; ++depth) {
        // All codes, and values beyond them that a wavelet may leave.
        int const end = 1 << depth;
        std::vector<int> samples;
        for (int code = -512; code < std::min(end + 512, 32768); ++code)
            samples.push_back(code);
        size_t const height = samples.size() / kWidth;
        ASSERT_EQ(samples.size() % kWidth, 0U);
        EnhancementChain chain(instance_, {}, {kWidth, height});
        OwnedTarget const shown = chain.draw(deep(samples, height), depth, {0, 0, kWidth, height});
        std::vector<unsigned char> const texels = targets_.read(shown, Layout::kRgba8, {0, 0, kWidth, height});
        size_t wrong = 0;
        for (size_t i = 0; i < samples.size(); ++i) {
            int const expected = std::clamp(samples[i], 0, end - 1) >> (depth - 8);
            for (size_t channel = 0; channel < 3; ++channel)
                wrong += texels[4 * i + channel] != expected ? 1U : 0U;
        }
        EXPECT_EQ(wrong, 0U) << depth << " bits";
    }
}
