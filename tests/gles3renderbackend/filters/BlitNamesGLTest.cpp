#include "host/FilterDescriptions.h"
#include "reference/Blit.h"
#include "tests/gles3renderbackend/filters/FilterInputs.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"

namespace {

using namespace filtertest;

struct Row {
    char const* name;
    Layout in;
    Layout out;
};

class BlitNamesGLTest : public FilterGLTest, public ::testing::WithParamInterface<Row> {
protected:
    // A target without alpha shows opaque pixels.
    static Texels shown(Texels texels) {
        if (GetParam().out != Layout::kRgb8) return texels;
        for (size_t i = 3; i < texels.bytes.size(); i += 4)
            texels.bytes[i] = 255;
        return texels;
    }

    ::testing::AssertionResult copies(Texels const& texels) {
        return rig.gives(description::byName(GetParam().name), {rig.uploaded(texels, GetParam().in)}, shown(texels),
                         GetParam().out);
    }
};

TEST_P(BlitNamesGLTest, EveryPairOfBytesIsCopied) {
    EXPECT_TRUE(copies(packOneChannel16(everySample())));
}

TEST_P(BlitNamesGLTest, OddSizesAndWidestTargetsAreCopied) {
    EXPECT_TRUE(copies(randomTexels(34, 17, 1)));
    EXPECT_TRUE(copies(randomTexels(8192, 2, 2)));
    EXPECT_TRUE(copies(randomTexels(FilterRig::maxTextureSize(), 2, 3)));
}

INSTANTIATE_TEST_SUITE_P(BuiltIn, BlitNamesGLTest,
                         ::testing::Values(Row{"BlitFilter1x16", Layout::kOneChannel16, Layout::kOneChannel16},
                                           Row{"BlitFilter3x16", Layout::kThreeChannel16, Layout::kThreeChannel16},
                                           Row{"BlitFilter3x8", Layout::kRgb8, Layout::kRgb8},
                                           Row{"BlitFilter4x8", Layout::kRgba8, Layout::kRgba8},
                                           Row{"FilterRemoveAlpha8", Layout::kRgba8, Layout::kRgb8},
                                           Row{"MaskFilter3x8", Layout::kRgb8, Layout::kRgb8},
                                           Row{"MaskFilter4x8", Layout::kRgba8, Layout::kRgba8},
                                           Row{"MaskFilter3x16", Layout::kThreeChannel16, Layout::kThreeChannel16}),
                         [](auto const& row) { return std::string(row.param.name); });

// Parts of pictures: positions count logical pixels, the offset texels.
class BlitPartsGLTest : public FilterGLTest, public ::testing::WithParamInterface<Row> {};

TEST_P(BlitPartsGLTest, PartsLandAtTheirOffsetAndNothingElseChanges) {
    // In texels: where the part starts, what is clipped, where it goes. All but the offset even: a pixel
    // may take two texels.
    struct Part {
        int x, left, right;
        size_t offset;
    };
    Texels const texels = randomTexels(40, 9, 4);
    size_t const source = rig.uploaded(texels, GetParam().in);
    auto const logical = [&](int count) { return FilterRig::logicalWidth(GetParam().in, count); };
    for (auto const& part : {Part{0, 0, 0, 0}, Part{6, 0, 0, 1}, Part{2, 4, 2, 3}, Part{10, 2, 6, 4}}) {
        FilterRun const run{{{source, logical(part.x), 1, false}},
                            logical(22),
                            7,
                            logical(part.left),
                            logical(part.right),
                            1,
                            2,
                            {part.offset, 3}};
        Texels const kept = cropped(texels, part.x + part.left, 2, 22 - part.left - part.right, 4);
        EXPECT_TRUE(rig.givesWithin(description::byName(GetParam().name), run, kept, GetParam().out)) << part.x;
    }
}

INSTANTIATE_TEST_SUITE_P(BuiltIn, BlitPartsGLTest,
                         ::testing::Values(Row{"BlitFilter1x16", Layout::kOneChannel16, Layout::kOneChannel16},
                                           Row{"BlitFilter3x16", Layout::kThreeChannel16, Layout::kThreeChannel16},
                                           Row{"BlitFilter3x8", Layout::kRgb8, Layout::kRgb8},
                                           Row{"BlitFilter4x8", Layout::kRgba8, Layout::kRgba8},
                                           Row{"FilterRemoveAlpha8", Layout::kRgba8, Layout::kRgb8}),
                         [](auto const& row) { return std::string(row.param.name); });

} // namespace
