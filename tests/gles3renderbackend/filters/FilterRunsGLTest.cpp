// Every filter over all of its runs beside its plain integer model, as `velmora verify` does.
#include "conformance/Verification.h"
#include "host/filter/FilterDescriptions.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/support/LongRun.h"

namespace {

using conformance::Depth;
using filtertest::FilterRig;

class FilterRunsGLTest : public ::testing::TestWithParam<std::string> {
protected:
    void expectExact(Depth depth) {
        conformance::Outcome const outcome = conformance::verifyFilter(GetParam(), rig_, FilterRig::scope(depth));
        EXPECT_EQ(outcome.failure, "");
        EXPECT_GT(outcome.tally.pixels, 0U);
        EXPECT_EQ(outcome.tally.differingBytes, 0U) << outcome.tally.firstDifference;
    }

private:
    FilterRig rig_;
};

TEST_P(FilterRunsGLTest, EveryFilterIsExact) {
    expectExact(Depth::kThorough);
}

INSTANTIATE_TEST_SUITE_P(All, FilterRunsGLTest, ::testing::ValuesIn(description::names()),
                         [](auto const& row) { return row.param; });

// The filters of 8-bit colours: their domains can be gone through.
class ColourRunsGLTest : public FilterRunsGLTest {};

TEST_P(ColourRunsGLTest, EveryColourIsExact) {
    if (!isLongRun()) GTEST_SKIP() << "all 2^24 colours: VELMORA_LONG is not set";
    expectExact(Depth::kFull);
}

INSTANTIATE_TEST_SUITE_P(All, ColourRunsGLTest,
                         ::testing::Values("Filter3x3Matrix8", "FilterRGBA8ToYCoCg16", "FilterYCoCg16ToRGB16",
                                           "FilterYCoCg16ToRGBA8"),
                         [](auto const& row) { return row.param; });

} // namespace
