// inputTextureRange: the part of a source that a filter's output shows. Every number here is worked out by hand.
#include "gles3renderbackend/resources/Gles3Target.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

namespace {

using namespace backendtest;

// {left, right, top, bottom} in logical pixels.
struct Sides {
    size_t left = 0;
    size_t right = 0;
    size_t top = 0;
    size_t bottom = 0;
};

struct Scale {
    size_t num;
    size_t den;
};

struct Range {
    double offsetX;
    double offsetY;
    double scaleX;
    double scaleY;
};

class WideBorders final : public Filter {
public:
    explicit WideBorders(Filter const& filter) : Filter(filter) {}
    size_t invalidLeft() const override { return 8; }
    size_t invalidTop() const override { return 4; }
};

class Gles3RenderBackendInstanceTextureRangeTest : public BackendRecordingTest {
protected:
    static Filter filter(Sides const& invalid, Scale const& x, Scale const& y) {
        return {"any", invalid.left, invalid.right, invalid.top, invalid.bottom,        0, x.den, 0, y.den, x.num,
                x.den, y.num,        y.den,         1,           RenderBackend::NEAREST};
    }

    Range rangeOf(FilterSource const& source, Filter const& filter, Sizes const& input, Sides const& clip) const {
        Range range{};
        gles().inputTextureRange(source, filter, input[0], input[1], clip.left, clip.right, clip.top, clip.bottom,
                                 range.offsetX, range.offsetY, range.scaleX, range.scaleY);
        return range;
    }

    static void expectRange(Range const& range, Range const& expected) {
        EXPECT_DOUBLE_EQ(range.offsetX, expected.offsetX);
        EXPECT_DOUBLE_EQ(range.offsetY, expected.offsetY);
        EXPECT_DOUBLE_EQ(range.scaleX, expected.scaleX);
        EXPECT_DOUBLE_EQ(range.scaleY, expected.scaleY);
    }

    Filter const identity = filter({}, {1, 1}, {1, 1});
};

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, IdentityOfTheWholeSourceIsTheWholeTexture) {
    size_t const source = rgbaTarget(200, 100);
    expectRange(rangeOf({source, 0, 0, false}, identity, {200, 100}, {}), {0, 0, 1, 1});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, PositionAndClipsCountPixelsOfTheSource) {
    size_t const source = rgbaTarget(200, 100);
    // From (10 + 4, 20 + 5), 60 - 4 - 6 by 40 - 5 - 15 pixels.
    expectRange(rangeOf({source, 10, 20, false}, identity, {60, 40}, {4, 6, 5, 15}), {0.07, 0.25, 0.25, 0.2});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, BordersScalesAndClipsWorkTogether) {
    size_t const source = rgbaTarget(200, 100);
    // Scaled source: 200 * 2 by 100 / 2. Output: 60 * 2 - 2 - 1 - 5 - 6 = 106 by 40 / 2 - 4 - 3 - 7 - 1 = 5.
    // Start: 10 * 2 + 1 + 5 = 26 of 400, 20 / 2 + 3 + 7 = 20 of 50.
    Filter const scaled = filter({1, 2, 3, 4}, {2, 1}, {1, 2});
    expectRange(rangeOf({source, 10, 20, false}, scaled, {60, 40}, {5, 6, 7, 1}), {0.065, 0.4, 0.265, 0.1});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, ExtentIsTruncatedTheScaledSourceIsNot) {
    size_t const source = rgbaTarget(201, 101);
    // 61 / 2 = 30 of 100.5 by 41 / 2 = 20 of 50.5; the position is not truncated either: 3 / 2 = 1.5.
    expectRange(rangeOf({source, 3, 1, false}, filter({}, {1, 2}, {1, 2}), {61, 41}, {}),
                {1.5 / 100.5, 0.5 / 50.5, 30 / 100.5, 20 / 50.5});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, ScaleThatIsNoWholeNumberIsTakenExactly) {
    size_t const source = rgbaTarget(90, 60);
    // Scaled source: 60 by 90. Start: 3 * 2 / 3 = 2 and 4 * 3 / 2 = 6. Output: 30 * 2 / 3 = 20 by 20 * 3 / 2 = 30.
    expectRange(rangeOf({source, 3, 4, false}, filter({}, {2, 3}, {3, 2}), {30, 20}, {}),
                {2.0 / 60, 6.0 / 90, 20.0 / 60, 30.0 / 90});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, PackedSourceIsMeasuredInLogicalPixels) {
    size_t const packed = instance->createTarget({200, 100}, 16, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    size_t const spread = instance->createTarget({200, 100}, 48, false, RenderBackend::NEAREST, RenderBackend::RGB24);
    for (size_t const source : {packed, spread})
        expectRange(rangeOf({source, 50, 25, false}, identity, {100, 50}, {}), {0.25, 0.25, 0.5, 0.5});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, HostsSurfaceIsMeasuredByItsSize) {
    expectRange(rangeOf({0, 64, 48, false}, identity, {320, 240}, {}), {0.1, 0.1, 0.5, 0.5});
    surface.widthTexels = 1280;
    expectRange(rangeOf({0, 64, 48, false}, identity, {320, 240}, {}), {0.05, 0.1, 0.25, 0.5});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, BordersAreAskedOfTheFilterClass) {
    size_t const source = rgbaTarget(100, 50);
    // Start (2 + 8, 1 + 4), extent 58 - 8 by 29 - 4.
    expectRange(rangeOf({source, 2, 1, false}, WideBorders(identity), {58, 29}, {}), {0.1, 0.1, 0.5, 0.5});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, BordersWiderThanTheInputWrapAsUnsignedNumbersDo) {
    size_t const source = rgbaTarget(64, 32);
    // 2 - 3 is 2^64 - 1, as a double 2^64.
    expectRange(rangeOf({source, 0, 0, false}, filter({3, 0, 0, 0}, {1, 1}, {1, 1}), {2, 32}, {}),
                {3.0 / 64, 0, 18446744073709551616.0 / 64, 1});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, WholeTextureFlagIsNotItsBusiness) {
    size_t const source = rgbaTarget(200, 100);
    expectRange(rangeOf({source, 50, 50, true}, identity, {100, 50}, {}), {0.25, 0.5, 0.5, 0.5});
}

TEST_F(Gles3RenderBackendInstanceTextureRangeTest, UnknownSourceBecomesAnEmptyTarget) {
    expectRange(rangeOf({77, 0, 0, false}, identity, {640, 480}, {}), {0, 0, 1, 1});
    EXPECT_TRUE(targetExists(77));
}

} // namespace
