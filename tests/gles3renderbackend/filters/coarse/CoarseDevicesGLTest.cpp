// `velmora verify` on GPUs that keep coordinates in 16 bits: it reports every filter that gives wrong bytes there.
#include "conformance/Verification.h"
#include "host/filter/FilterDescriptions.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/gles3renderbackend/filters/coarse/CoarseDevice.h"

#include <algorithm>
#include <iterator>
#include <tuple>

namespace {

using filtertest::FilterRig;
using Quantity = CoarseDevice::Quantity;

// It runs on the CPU and has no stages; all the others read texels at a varying.
constexpr char const* kWithoutVaryings = "FilterCLAHE";

// Those that tell columns or rows apart: two samples share a texel, or a pixel has two texels. The others write all
// alike.
constexpr char const* kWithFragCoord[] = {
    "FilterFirIH53LeGall16", "FilterFirIV53LeGall16", "Filter1x16ToRGB8",
    "FilterInterleave16",    "FilterYCoCg16ToRGB16",  "FilterSharpnessH16",
    "FilterSharpnessV16",    "Filter3x3Matrix16",     "FilterRGBA8ToYCoCg16",
};

bool reads(std::string const& filter, Quantity quantity) {
    if (quantity == Quantity::kVaryings) return filter != kWithoutVaryings;
    return std::find(std::begin(kWithFragCoord), std::end(kWithFragCoord), filter) != std::end(kWithFragCoord);
}

class CoarseDevicesGLTest : public ::testing::TestWithParam<std::tuple<CoarseDevice, std::string>> {
protected:
    CoarseDevicesGLTest() { rig.makeCopies(); }

    FilterRig rig;
};

TEST_P(CoarseDevicesGLTest, IsToldWhereItSpoilsAResult) {
    auto const& [device, filter] = GetParam();
    ShaderEdit const edit(ShaderEdit::Stage::kFragment, emulating(device));
    // The runs of verify that test places.
    conformance::Scope scope = FilterRig::scope(conformance::Depth::kSharp);
    scope.longStrips = true;
    conformance::Outcome const outcome = conformance::verifyFilter(filter, rig, scope);
    ASSERT_EQ(outcome.failure, "");
    ASSERT_EQ(edit.replacements() > 0, reads(filter, device.quantity))
        << "its stage reads something else than kWithoutVaryings and kWithFragCoord of this file say";
    if (reads(filter, device.quantity) && device.tooCoarse)
        EXPECT_GT(outcome.tally.differingBytes, 0U) << device;
    else
        EXPECT_EQ(outcome.tally.differingBytes, 0U) << outcome.tally.firstDifference;
}

std::string nameOf(::testing::TestParamInfo<std::tuple<CoarseDevice, std::string>> const& info) {
    return std::string(std::get<0>(info.param).name) + "_" + std::get<1>(info.param);
}

INSTANTIATE_TEST_SUITE_P(All, CoarseDevicesGLTest,
                         ::testing::Combine(::testing::ValuesIn(coarseDevices()),
                                            ::testing::ValuesIn(description::names())),
                         nameOf);

} // namespace
