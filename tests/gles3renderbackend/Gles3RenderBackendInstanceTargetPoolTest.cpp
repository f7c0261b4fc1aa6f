// Erased targets and how createTarget hands them out again.
#include "gles3renderbackend/resources/Gles3Target.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"
#include "tests/gles3renderbackend/FailingAllocation.h"

namespace {

using namespace backendtest;

class Gles3RenderBackendInstanceTargetPoolTest : public BackendRecordingTest {
public:
    ~Gles3RenderBackendInstanceTargetPoolTest() override { letAllocationsSucceed(); }

protected:
    size_t create(Sizes const& size, size_t bits = 32, RenderBackend::ImageFormatType format = RenderBackend::RGBA32,
                  RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST) const {
        return instance->createTarget(size, bits, false, filtering, format);
    }

    GLuint framebuffer(size_t target) const { return gles().target(target).framebuffer(); }

    // Framebuffers of targets that are now in the pool, in the order of erasing.
    std::vector<GLuint> pooled(std::vector<Sizes> const& sizes, size_t bits = 32,
                               RenderBackend::ImageFormatType format = RenderBackend::RGBA32) const {
        std::vector<size_t> targets;
        std::vector<GLuint> framebuffers;
        for (auto const& size : sizes) {
            targets.push_back(create(size, bits, format));
            framebuffers.push_back(framebuffer(targets.back()));
        }
        for (size_t const target : targets)
            instance->eraseTarget(target);
        return framebuffers;
    }
};

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, SmallerRequestReusesAnErasedTargetInItsFullSize) {
    GLuint const erased = pooled({{512, 512}})[0];
    size_t const target = create({300, 200});
    EXPECT_EQ(framebuffer(target), erased);
    EXPECT_EQ(instance->targetSize(target), (Sizes{512, 512}));
    EXPECT_EQ(gles().target(target).logicalSize(), (Sizes{512, 512}));
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ReusingMakesNoGlCallSoOldPixelsStay) {
    pooled({{512, 512}});
    gl.forgetCalls();
    create({300, 200});
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ReusedTargetLeavesThePool) {
    GLuint const erased = pooled({{512, 512}})[0];
    EXPECT_EQ(framebuffer(create({512, 512})), erased);
    EXPECT_NE(framebuffer(create({512, 512})), erased);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, OtherFilteringIsNotReused) {
    GLuint const erased = pooled({{512, 512}})[0];
    EXPECT_NE(framebuffer(create({300, 200}, 32, RenderBackend::RGBA32, RenderBackend::LINEAR)), erased);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, OtherFormatIsNotReused) {
    GLuint const erased = pooled({{512, 512}})[0];
    EXPECT_NE(framebuffer(create({300, 200}, 24, RenderBackend::RGB24)), erased);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, UndefinedFormatIsComparedAsTheBackendsFormat) {
    GLuint const erased = pooled({{512, 512}})[0];
    EXPECT_EQ(framebuffer(create({300, 200}, 32, RenderBackend::UNDEFINED)), erased);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, TargetTooSmallInEitherDirectionIsNotReused) {
    auto const erased = pooled({{299, 512}, {512, 199}});
    GLuint const made = framebuffer(create({300, 200}));
    EXPECT_NE(made, erased[0]);
    EXPECT_NE(made, erased[1]);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, FittingTargetOfTheLeastWasteIsReused) {
    auto const erased = pooled({{512, 512}, {301, 200}, {300, 202}, {300, 300}});
    EXPECT_EQ(framebuffer(create({300, 200})), erased[1]); // 200 texels wasted, not 600
    EXPECT_EQ(framebuffer(create({300, 200})), erased[2]);
    EXPECT_EQ(framebuffer(create({300, 200})), erased[3]);
    EXPECT_EQ(framebuffer(create({300, 200})), erased[0]);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, OfTwoTargetsOfEqualWasteTheOneErasedFirstIsReused) {
    auto const erased = pooled({{100, 40}, {40, 100}, {100, 40}}); // all 4000 texels
    EXPECT_EQ(framebuffer(create({30, 30})), erased[0]);
    EXPECT_EQ(framebuffer(create({30, 30})), erased[1]);
    EXPECT_EQ(framebuffer(create({30, 30})), erased[2]);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, OrderOfErasingDecidesTiesNotTheOrderOfCreation) {
    size_t const first = create({40, 40});
    size_t const second = create({40, 40});
    GLuint const erasedFirst = framebuffer(second);
    instance->eraseTarget(second);
    instance->eraseTarget(first);
    EXPECT_EQ(framebuffer(create({40, 40})), erasedFirst);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ReusedTargetTakesThePackingOfTheRequest) {
    GLuint const erased = pooled({{300, 10}}, 24, RenderBackend::RGB24)[0];
    size_t const id = create({99, 10}, 8, RenderBackend::RGB24); // 33 texels wide
    auto const& target = gles().target(id);
    EXPECT_EQ(target.framebuffer(), erased);
    EXPECT_EQ(target.logicalPerPhysical(), 3U);
    EXPECT_EQ(target.physicalPerLogical(), 1U);
    EXPECT_EQ(target.logicalSize(), (Sizes{900, 10})) << "300 texels of three pixels each";
    EXPECT_EQ(instance->targetSize(id), (Sizes{300, 10}));
    EXPECT_EQ(instance->targetAlignment(id), (Sizes{3, 1}));
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, PackedTargetIsReusedForWiderPixels) {
    GLuint const erased = pooled({{600, 10}}, 8, RenderBackend::RGB24)[0]; // 200 texels
    auto const& target = gles().target(create({90, 10}, 48, RenderBackend::RGB24));
    EXPECT_EQ(target.framebuffer(), erased);
    EXPECT_EQ(target.logicalPerPhysical(), 1U);
    EXPECT_EQ(target.physicalPerLogical(), 2U);
    EXPECT_EQ(target.logicalSize(), (Sizes{100, 10}));
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, TargetThatHoldsNoWholeNumberOfPixelsIsNotReused) {
    auto const erased = pooled({{201, 10}, {202, 10}}, 24, RenderBackend::RGB24);
    size_t const id = create({100, 10}, 48, RenderBackend::RGB24); // two texels per pixel
    EXPECT_EQ(framebuffer(id), erased[1]) << "201 texels are no pairs";
    EXPECT_EQ(gles().target(id).logicalSize(), (Sizes{101, 10}));
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, RequestIsComparedInTexels) {
    GLuint const erased = pooled({{33, 10}}, 24, RenderBackend::RGB24)[0];
    EXPECT_EQ(framebuffer(create({99, 10}, 8, RenderBackend::RGB24)), erased) << "99 pixels are 33 texels";
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ReusedTargetGetsTheSmallestFreeId) {
    EXPECT_EQ(create({10, 10}), 1U);
    EXPECT_EQ(create({20, 20}), 2U);
    EXPECT_EQ(create({30, 30}), 3U);
    instance->eraseTarget(3);
    instance->eraseTarget(1);
    EXPECT_EQ(create({30, 30}), 1U);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ErasedTargetKeepsItsGlObjectsUntilThePoolIsCleared) {
    auto const before = gl.living();
    size_t const target = create({10, 10});
    auto const with = gl.living();
    instance->eraseTarget(target);
    EXPECT_EQ(gl.living(), with);
    instance->clearTargets();
    EXPECT_EQ(gl.living(), before);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ClearingThePoolLeavesLivingTargetsAlone) {
    size_t const kept = create({10, 10});
    pooled({{20, 20}});
    instance->clearTargets();
    EXPECT_TRUE(targetExists(kept));
    EXPECT_TRUE(gl.isLiving(framebuffer(kept)));
    gl.forgetCalls();
    create({20, 20});
    EXPECT_EQ(gl.count("glGenFramebuffers"), 1U) << "the pool is empty";
    instance->clearTargets();
    instance->clearTargets();
}

// Nothing of the pool's rule looks at the own-surface flag, so the empty surface fits an empty request.
TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ErasedHostSurfaceIsPooledLikeAnyTarget) {
    instance->eraseTarget(0);
    size_t const target = create({0, 0});
    EXPECT_EQ(target, 0U);
    EXPECT_EQ(gles().target(target).ownSurface(), 0U);
    EXPECT_EQ(instance->targetSize(target), (Sizes{640, 480}));
}

// Destructors call it, and whatever else the host holds must not go with it.
TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ErasingATargetNeverThrowsAndWithoutMemoryReleasesIt) {
    auto const before = gl.living();
    size_t const target = create({10, 10});
    failAllocationAfter(0);
    EXPECT_NO_THROW(instance->eraseTarget(target));
    EXPECT_FALSE(letAllocationsSucceed()) << "the pool needs memory for it";
    EXPECT_FALSE(targetExists(target));
    EXPECT_EQ(gl.living(), before) << "released, not pooled";
    EXPECT_EQ(create({10, 10}), target);
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, ReuseThatRunsOutOfMemoryLeavesPoolAndTableAsTheyWere) {
    GLuint const erased = pooled({{300, 10}}, 24, RenderBackend::RGB24)[0];
    auto const living = gl.living();
    size_t target = 0;
    size_t const failures = failEachAllocation(
        [&] {
            target = create({99, 10}, 8, RenderBackend::RGB24);
        },
        [&] {
            EXPECT_EQ(target, 0U);
            EXPECT_FALSE(targetExists(1));
            EXPECT_EQ(gl.living(), living);
        });
    EXPECT_GE(failures, 2U) << "the entry of the table, the new size";
    EXPECT_EQ(framebuffer(target), erased);
    EXPECT_EQ(gles().target(target).logicalSize(), (Sizes{900, 10}));
}

TEST_F(Gles3RenderBackendInstanceTargetPoolTest, NewTargetThatRunsOutOfMemoryLeavesNothingBehind) {
    auto const living = gl.living();
    size_t const failures = failEachAllocation(
        [&] {
            create({10, 10});
        },
        [&] {
            EXPECT_FALSE(targetExists(1));
            EXPECT_EQ(gl.living(), living);
        });
    EXPECT_GE(failures, 4U) << "two names, two sizes, the entry of the table";
}

} // namespace
