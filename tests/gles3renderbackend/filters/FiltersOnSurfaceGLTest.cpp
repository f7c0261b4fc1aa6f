// Which way up pictures come out on the host's surface, target 0: the rows of a window count from the top, those of GL
// from the bottom.
#include "host/filter/FilterDescriptions.h"
#include "renderbackend/FilterParameters.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/SurfaceScenes.h"
#include "tests/support/PixelMatchers.h"

namespace {

using namespace filtertest;
using backendtest::failureOf;

class FiltersOnSurfaceGLTest : public ::testing::TestWithParam<std::string> {
protected:
    void expectRefused() {
        size_t const source = rig.uploaded(randomTexels(16, 8, 1), Layout::kFourChannel16);
        Filter const filter = rig.instantiated(description::byName(GetParam()));
        rig.instance()->clear(0, {1, 2, 3, 4});
        std::string const failure = failureOf([&] {
            rig.run(filter, {{{source, 0, 0, false}}, {8, 8}}, 0, FilterClaheParams());
        });
        EXPECT_NE(failure.find("needs targets of 48 or 64 bits"), std::string::npos) << failure;
        Texels surface(16, 16);
        for (size_t i = 0; i < surface.bytes.size(); ++i)
            surface.bytes[i] = static_cast<std::uint8_t>(1 + i % 4);
        EXPECT_TRUE(pixelsEqual(rig.instance()->getPixels(0, {0, 16, 0, 16}), surface.bytes, 16)) << "it has changed";
    }

    FilterRig rig;
};

TEST_P(FiltersOnSurfaceGLTest, RowsAreMirroredOrNotAsTheFilterHasIt) {
    if (orientationOf(GetParam()) == OnSurface::kRefused) return expectRefused();
    EXPECT_TRUE(appearsOnSurface(rig, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(All, FiltersOnSurfaceGLTest, ::testing::ValuesIn(description::names()),
                         [](auto const& row) { return row.param; });

class TilesOnSurfaceGLTest : public FiltersOnSurfaceGLTest {};

TEST_P(TilesOnSurfaceGLTest, RowsStayInGlsOrderWhateverTheFilterDoesElsewhere) {
    EXPECT_TRUE(tileAppearsOnSurface(rig, GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Copies, TilesOnSurfaceGLTest,
                         ::testing::Values("BlitFilter1x16", "BlitFilter3x16", "BlitFilter3x8", "BlitFilter4x8",
                                           "FilterRemoveAlpha8"),
                         [](auto const& row) { return row.param; });

} // namespace
