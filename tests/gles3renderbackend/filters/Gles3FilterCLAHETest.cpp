#include "gles3renderbackend/filters/Gles3FilterCLAHE.h"

#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/BackendRecordingTest.h"

#include <utility>

namespace {

using namespace backendtest;

class Gles3FilterCLAHETest : public BackendRecordingTest {
protected:
    Gles3FilterCLAHETest() {
        instance->createFilterInstance(filter);
        gl.forgetCalls();
    }

    void run(size_t width, size_t height, SingleFilterParameters const& params, Sizes const& offset = {0, 0}) const {
        instance->executeFilter(filter, {{source, 0, 0, false}}, width, height, destination, 0, 0, 0, 0, params,
                                offset);
    }

    size_t wideTarget(size_t width, size_t height) const {
        return instance->createTarget({width, height}, 64, false, RenderBackend::NEAREST, RenderBackend::RGBA32);
    }

    size_t source = wideTarget(60, 50);
    size_t destination = wideTarget(60, 50);
    Filter filter = namedFilter("FilterCLAHE");
};

TEST_F(Gles3FilterCLAHETest, FilterHasNoProgram) {
    Filter description = namedFilter("FilterCLAHE");
    Gles3FilterCLAHE const clahe(description);
    EXPECT_EQ(clahe.program(), 0U);
    EXPECT_TRUE(clahe.uniforms().empty());
    EXPECT_EQ(gl.count("glCreateProgram"), 0U);
    EXPECT_EQ(gl.count("glCreateShader"), 0U);
}

TEST_F(Gles3FilterCLAHETest, EqualisedRowsAreUploadedIntoTheDestinationAndTheRowLengthIsReset) {
    Bytes pixels(size_t{8} * 50 * 44, 0);
    for (size_t i = 0; i < pixels.size(); i += 8)
        pixels[i] = 100;
    gl.setReadPixels(pixels);
    FilterClaheParams params;
    params.value = 1.0;
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    run(50, 44, params, {3, 2});
    EXPECT_EQ(gl.last("glTexSubImage2D").text(),
              "glTexSubImage2D(GL_TEXTURE_2D, 0, 3, 2, 100, 44, GL_RGBA, GL_UNSIGNED_BYTE, data)");
    EXPECT_EQ(gl.pixelStore(GL_UNPACK_ROW_LENGTH), 0);
    EXPECT_EQ(gl.pixelStore(GL_UNPACK_ALIGNMENT), 1);
    EXPECT_EQ(gl.count("glTexImage2D"), 0U);
    EXPECT_EQ(gl.count("glDrawElements"), 0U);
    // 6 of each of the 101 greys up to 100, times 255 / 1600.
    auto const& image = gl.texture(gl.boundTexture(gl.activeUnit())).image();
    Bytes const first(image.pixels.begin() + 4 * (2 * 120 + 3), image.pixels.begin() + 4 * (2 * 120 + 3) + 8);
    EXPECT_EQ(first, (Bytes{96, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(Gles3FilterCLAHETest, WrongRecordIsRefusedBeforeAnythingIsReadOrWritten) {
    EXPECT_EQ(failureOf([&] { run(50, 44, FilterSharpness16Params()); }),
              "#Name:Filter parameters cast failed#Location:T& SingleFilterParameters::as<T>()");
    EXPECT_EQ(gl.count("glReadPixels"), 0U);
    EXPECT_EQ(gl.count("glTexSubImage2D"), 0U);
}

TEST_F(Gles3FilterCLAHETest, ThreeByteTexelsAreRefusedEvenWhereAPixelHasTwoOfThem) {
    size_t const threeBytes = instance->createTarget({60, 50}, 48, false, RenderBackend::NEAREST, RenderBackend::RGB24);
    std::string const refused = "#Name:CLAHE needs targets of 48 or 64 bits per pixel in RGBA32#Location:";
    size_t const good = std::exchange(source, threeBytes);
    EXPECT_EQ(failureOf([&] { run(50, 44, FilterClaheParams()); }).rfind(refused, 0), 0U) << "as the source";
    source = good;
    destination = threeBytes;
    EXPECT_EQ(failureOf([&] { run(50, 44, FilterClaheParams()); }).rfind(refused, 0), 0U) << "as the destination";
}

TEST_F(Gles3FilterCLAHETest, AnAreaLargerThanItsSourceIsRefusedBeforeMemoryIsTakenForIt) {
    for (Sizes const& area : {Sizes{61, 50}, Sizes{60, 51}, Sizes{size_t{1} << 40, 50}, Sizes{60, size_t{1} << 62}})
        EXPECT_EQ(failureOf([&] {
                      run(area[0], area[1], FilterClaheParams());
                  }).rfind("#Name:CLAHE's input area is larger than its source#Location:", 0),
                  0u)
            << area[0] << " x " << area[1];
    EXPECT_EQ(gl.count("glReadPixels"), 0U);
}

// GL made it with the lower 32 bits of its sides.
TEST_F(Gles3FilterCLAHETest, ASourceThatSaysMoreThanGlHasIsRefused) {
    size_t const wrapped = size_t{1} << 32U;
    for (Sizes const& size : {Sizes{wrapped + 60, 50}, Sizes{60, wrapped + 50}}) {
        source = wideTarget(size[0], size[1]);
        EXPECT_EQ(failureOf([&] {
                      run(60, 50, FilterClaheParams());
                  }).rfind("#Name:CLAHE's input area is larger than its source#Location:", 0),
                  0u)
            << size[0] << " x " << size[1];
    }
}

// Sums of clips that wrap would leave an output wider than what there is.
TEST_F(Gles3FilterCLAHETest, ClipsBeyondTheAreaLeaveNothing) {
    size_t const huge = static_cast<size_t>(0) - 10;
    instance->executeFilter(filter, {{source, 0, 0, false}}, 50, 44, destination, 20, huge, 20, huge,
                            FilterClaheParams(), {0, 0});
    EXPECT_EQ(gl.count("glTexSubImage2D"), 0U);
}

} // namespace
