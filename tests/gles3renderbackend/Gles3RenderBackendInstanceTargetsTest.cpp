// createTarget without the pool: packing, identifiers, failures.
#include "gles3renderbackend/resources/Gles3Target.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

namespace {

using namespace backendtest;

constexpr auto kAboveUndefined = static_cast<RenderBackend::ImageFormatType>(4);

constexpr char const* kCreateTarget =
    "size_t Gles3RenderBackendInstance::createTarget(std::vector<size_t> const& size, size_t bits, "
    "ImageFiltering filter, ImageFormatType format)";

class Gles3RenderBackendInstanceTargetsTest : public BackendRecordingTest {
protected:
    size_t create(Sizes const& size, size_t bits, RenderBackend::ImageFormatType format,
                  RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST) const {
        return instance->createTarget(size, bits, false, filtering, format);
    }

    std::string failureToCreate(Sizes const& size, size_t bits, RenderBackend::ImageFormatType format) const {
        return failureOf([&] { create(size, bits, format); });
    }

    // The text of a failure that is no exception of ours.
    std::string plainFailureToCreate(Sizes const& size, RenderBackend::ImageFormatType format,
                                     RenderBackend::ImageFiltering filtering = RenderBackend::NEAREST) const {
        try {
            create(size, 8, format, filtering);
        } catch (VelmoraException const& failure) {
            return std::string("a VelmoraException: ") + failure.what();
        } catch (std::exception const& failure) {
            return failure.what();
        }
        return "nothing was thrown";
    }
};

TEST_F(Gles3RenderBackendInstanceTargetsTest, PackingFollowsBitsAndFormat) {
    struct Row {
        char const* name;
        RenderBackend::ImageFormatType format;
        size_t bits;
        size_t logicalWidth;
        size_t physicalWidth;
        size_t logicalPerPhysical;
        size_t physicalPerLogical;
    };
    std::vector<Row> const rows = {
        {"RGB24, 1 bit", RenderBackend::RGB24, 1, 48, 2, 24, 1},
        {"RGB24, 7 bits: the remainder of a texel stays unused", RenderBackend::RGB24, 7, 9, 3, 3, 1},
        {"RGB24, 8 bits", RenderBackend::RGB24, 8, 99, 33, 3, 1},
        {"RGB24, 12 bits", RenderBackend::RGB24, 12, 10, 5, 2, 1},
        {"RGB24, 23 bits", RenderBackend::RGB24, 23, 10, 10, 1, 1},
        {"RGB24, 24 bits", RenderBackend::RGB24, 24, 10, 10, 1, 1},
        {"RGB24, 25 bits", RenderBackend::RGB24, 25, 10, 20, 1, 2},
        {"RGB24, 48 bits", RenderBackend::RGB24, 48, 10, 20, 1, 2},
        {"RGB24, 49 bits", RenderBackend::RGB24, 49, 10, 30, 1, 3},
        {"RGBA32, 8 bits", RenderBackend::RGBA32, 8, 12, 3, 4, 1},
        {"RGBA32, 10 bits", RenderBackend::RGBA32, 10, 12, 4, 3, 1},
        {"RGBA32, 16 bits", RenderBackend::RGBA32, 16, 12, 6, 2, 1},
        {"RGBA32, 31 bits", RenderBackend::RGBA32, 31, 12, 12, 1, 1},
        {"RGBA32, 32 bits", RenderBackend::RGBA32, 32, 12, 12, 1, 1},
        {"RGBA32, 33 bits", RenderBackend::RGBA32, 33, 12, 24, 1, 2},
        {"RGBA32, 48 bits", RenderBackend::RGBA32, 48, 12, 24, 1, 2},
        {"RGBA32, 64 bits", RenderBackend::RGBA32, 64, 12, 24, 1, 2},
        {"RGBA32, 96 bits", RenderBackend::RGBA32, 96, 12, 36, 1, 3},
        {"GRAY8, 1 bit", RenderBackend::GRAY8, 1, 16, 2, 8, 1},
        {"GRAY8, 4 bits", RenderBackend::GRAY8, 4, 16, 8, 2, 1},
        {"GRAY8, 8 bits", RenderBackend::GRAY8, 8, 16, 16, 1, 1},
        {"GRAY8, 9 bits", RenderBackend::GRAY8, 9, 16, 32, 1, 2},
        {"GRAY8, 24 bits", RenderBackend::GRAY8, 24, 16, 48, 1, 3},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        size_t const id = create({row.logicalWidth, 50}, row.bits, row.format);
        auto const& target = gles().target(id);
        EXPECT_EQ(target.logicalPerPhysical(), row.logicalPerPhysical);
        EXPECT_EQ(target.physicalPerLogical(), row.physicalPerLogical);
        EXPECT_EQ(target.logicalSize(), (Sizes{row.logicalWidth, 50}));
        EXPECT_EQ(target.format(), row.format);
        EXPECT_EQ(target.ownSurface(), 1U);
        EXPECT_EQ(instance->targetSize(id), (Sizes{row.physicalWidth, 50}));
        auto const& image = gl.texture(target.texture()).image();
        EXPECT_EQ(image.width, row.physicalWidth);
        EXPECT_EQ(image.height, 50U);
    }
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, WidthThatDoesNotFillItsTexelsIsRefused) {
    EXPECT_EQ(failureToCreate({100, 50}, 8, RenderBackend::RGB24),
              std::string("#Name:no integer number of physical pixels for each logical pixel#Location:") +
                  kCreateTarget + "#Description:target size=[100,50]");
    EXPECT_EQ(failureToCreate({7, 3}, 16, RenderBackend::RGBA32),
              std::string("#Name:no integer number of physical pixels for each logical pixel#Location:") +
                  kCreateTarget + "#Description:target size=[7,3]");
    EXPECT_EQ(create({99, 50}, 8, RenderBackend::RGB24), 1U);
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, UndefinedFormatMeansTheFormatOfTheBackend) {
    instance.reset();
    Gles3RenderBackend rgb(RenderBackend::RGB24, 0);
    instance = rgb.createInstance(surface);
    auto const& target = gles().target(create({99, 50}, 8, RenderBackend::UNDEFINED));
    EXPECT_EQ(target.format(), RenderBackend::RGB24);
    EXPECT_EQ(target.logicalPerPhysical(), 3U);
    instance.reset();
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, UndefinedFormatOnAnUndefinedBackendIsRefused) {
    instance.reset();
    Gles3RenderBackend undefined(RenderBackend::UNDEFINED, 0);
    instance = undefined.createInstance(surface);
    gl.forgetCalls();
    EXPECT_EQ(failureToCreate({100, 50}, 8, RenderBackend::UNDEFINED),
              std::string("#Name:undefined pixel format#Location:") + kCreateTarget);
    EXPECT_TRUE(gl.calls().empty());
    EXPECT_EQ(create({99, 50}, 8, RenderBackend::RGB24), 1U) << "a format of its own still works";
    instance.reset();
}

// A width of 100 divides by no packing of 8-bit pixels but one to one.
TEST_F(Gles3RenderBackendInstanceTargetsTest, FormatAboveUndefinedCountsOnePixelATexelAndFailsInTheTexture) {
    EXPECT_EQ(plainFailureToCreate({101, 50}, kAboveUndefined),
              "#Name:Gles3Texture::Gles3Texture: invalid texture format#Location:Gles3Texture::Gles3Texture("
              "std::vector<uint8_t> const& pixels, std::vector<size_t> const& size, RenderBackend::ImageFormatType "
              "textureFormat, RenderBackend::ImageFiltering filtering)");
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, IncompleteFramebufferLeavesAsAPlainException) {
    auto const before = gl.living();
    gl.setFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
    EXPECT_EQ(plainFailureToCreate({100, 50}, RenderBackend::GRAY8),
              "#Name:Failed to setup render to texture#Location:void Gles3Target::bindTextureToFrameBuffer() const");
    EXPECT_EQ(gl.living(), before);
}

// With framebuffer 0 the target would be the host's surface.
TEST_F(Gles3RenderBackendInstanceTargetsTest, TargetWithoutAFramebufferOrTextureOfItsOwnLeavesAsAPlainException) {
    auto const before = gl.living();
    for (std::string const kind : {"framebuffer", "texture"}) {
        gl.failNext(kind == "texture" ? "glGenTextures" : "glGenFramebuffers", GL_OUT_OF_MEMORY);
        EXPECT_EQ(plainFailureToCreate({100, 50}, RenderBackend::GRAY8).find("#Name:GL made no " + kind + "#Location:"),
                  0U);
        EXPECT_FALSE(targetExists(1));
        EXPECT_EQ(gl.living(), before);
    }
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, RefusedFilteringLeavesAsAPlainException) {
    auto const before = gl.living();
    std::string const location = "#Location:void Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, "
                                 "std::vector<size_t> const& size, size_t offset=0)";
    EXPECT_EQ(plainFailureToCreate({100, 64}, RenderBackend::GRAY8, RenderBackend::TRILINEAR),
              "#Name:TRILINEAR filtering is only allowed for power-of-two dimensions" + location);
    EXPECT_EQ(plainFailureToCreate({100, 64}, RenderBackend::GRAY8, static_cast<RenderBackend::ImageFiltering>(3)),
              "#Name:invalid texture filtering type" + location);
    EXPECT_EQ(gl.living(), before);
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, CopiedPlainExceptionKeepsItsText) {
    gl.setFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
    std::exception_ptr caught;
    try {
        create({100, 50}, 8, RenderBackend::GRAY8);
    } catch (...) {
        caught = std::current_exception();
    }
    instance.reset();
    try {
        std::rethrow_exception(caught);
    } catch (std::exception const& failure) {
        EXPECT_STREQ(failure.what(), "#Name:Failed to setup render to texture#Location:void "
                                     "Gles3Target::bindTextureToFrameBuffer() const");
    }
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, TooLargeRequestNamesTheLimitInWholeThousands) {
    struct Row {
        char const* name;
        GLint limitTexels;
        Sizes size;
        size_t bits;
        RenderBackend::ImageFormatType format;
        char const* limits;
    };
    std::vector<Row> const rows = {
        {"too wide", 4096, {4097, 10}, 32, RenderBackend::RGBA32, "width: 4000 & height: 4000"},
        {"too high", 4096, {10, 4097}, 32, RenderBackend::RGBA32, "width: 4000 & height: 4000"},
        {"three pixels per texel", 4096, {12291, 10}, 8, RenderBackend::RGB24, "width: 12000 & height: 4000"},
        {"two texels per pixel", 4096, {2049, 10}, 48, RenderBackend::RGB24, "width: 2000 & height: 4000"},
        {"three texels per pixel: 4096 / 3", 4096, {1366, 10}, 96, RenderBackend::RGBA32, "width: 1000 & height: 4000"},
        {"limit a multiple of 1000", 3000, {3001, 10}, 32, RenderBackend::RGBA32, "width: 3000 & height: 3000"},
        {"limit below 1000", 64, {65, 10}, 32, RenderBackend::RGBA32, "width: 0 & height: 0"},
        {"limit below 1000, 24 pixels per texel", 64, {1560, 10}, 1, RenderBackend::RGB24, "width: 1000 & height: 0"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        gl.setInteger(GL_MAX_TEXTURE_SIZE, row.limitTexels);
        auto const before = gl.living();
        EXPECT_EQ(failureToCreate(row.size, row.bits, row.format),
                  std::string("#Name:Requested size exceeds GLES3Backend capabilities#Location:void "
                              "Gles3Texture::setPixels(std::vector<uint8_t> const& pixels, std::vector<size_t> const& "
                              "size)#Description:Maximum GLES3 supported range size = ") +
                      row.limits);
        EXPECT_EQ(gl.living(), before);
        EXPECT_FALSE(targetExists(1));
    }
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, TargetOfExactlyTheLargestSizeIsMade) {
    gl.setInteger(GL_MAX_TEXTURE_SIZE, 64);
    EXPECT_EQ(instance->targetSize(create({64, 64}, 32, RenderBackend::RGBA32)), (Sizes{64, 64}));
    EXPECT_EQ(instance->targetSize(create({192, 64}, 8, RenderBackend::RGB24)), (Sizes{64, 64}));
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, FailedCreationChangesNothing) {
    size_t const pooled = rgbaTarget(10, 10);
    instance->eraseTarget(pooled);
    auto const before = gl.living();
    gl.setFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
    EXPECT_THROW(rgbaTarget(20, 20), std::exception);
    gl.setFramebufferStatus(GL_FRAMEBUFFER_COMPLETE);
    EXPECT_EQ(gl.living(), before);
    EXPECT_FALSE(targetExists(1));
    gl.forgetCalls();
    EXPECT_EQ(rgbaTarget(10, 10), 1U) << "the pooled target is still there";
    EXPECT_TRUE(gl.calls().empty());
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, IdIsTheSmallestThatIsFree) {
    EXPECT_EQ(rgbaTarget(10, 10), 1U);
    EXPECT_EQ(rgbaTarget(10, 10), 2U);
    EXPECT_EQ(rgbaTarget(10, 10), 3U);
    instance->eraseTarget(2);
    EXPECT_EQ(rgbaTarget(50, 50), 2U);
    EXPECT_EQ(rgbaTarget(50, 50), 4U);
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, TargetZeroIsNotSpecialToErasing) {
    instance->eraseTarget(0);
    EXPECT_FALSE(targetExists(0));
    EXPECT_EQ(rgbaTarget(10, 10), 0U);
    EXPECT_EQ(instance->targetSize(0), (Sizes{10, 10}));
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, IdsMadeByLookingThemUpAreTaken) {
    instance->targetSize(1);
    instance->targetSize(77);
    EXPECT_EQ(rgbaTarget(10, 10), 2U);
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, FlagIsIgnored) {
    size_t const with = instance->createTarget({12, 5}, 16, true, RenderBackend::LINEAR, RenderBackend::RGBA32);
    size_t const without = instance->createTarget({12, 5}, 16, false, RenderBackend::LINEAR, RenderBackend::RGBA32);
    EXPECT_EQ(instance->targetSize(with), instance->targetSize(without));
    EXPECT_EQ(instance->targetAlignment(with), instance->targetAlignment(without));
    EXPECT_EQ(instance->targetFiltering(with), RenderBackend::LINEAR);
    EXPECT_EQ(instance->targetFiltering(without), RenderBackend::LINEAR);
}

TEST_F(Gles3RenderBackendInstanceTargetsTest, ShortSizeAndZeroBitsAreRefusedBeforeAnyGlCall) {
    gl.forgetCalls();
    EXPECT_THROW(create({}, 32, RenderBackend::RGBA32), VelmoraException);
    EXPECT_THROW(create({10}, 32, RenderBackend::RGBA32), VelmoraException);
    EXPECT_THROW(create({10, 10}, 0, RenderBackend::RGBA32), VelmoraException);
    EXPECT_TRUE(gl.calls().empty());
}

} // namespace
