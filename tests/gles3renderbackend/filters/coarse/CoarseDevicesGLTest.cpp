// What `velmora verify` says of GPUs that keep coordinates in 16 bits: every filter that they spoil is told.
#include "conformance/Verification.h"
#include "host/FilterDescriptions.h"
#include "tests/gles3renderbackend/filters/FilterRig.h"
#include "tests/gles3renderbackend/filters/coarse/CoarseDevice.h"

#include <algorithm>
#include <tuple>

namespace {

using filtertest::FilterRig;
using Quantity = CoarseDevice::Quantity;

// The filters that a device cannot spoil, for their stages read nothing of what it keeps.
struct Unaffected {
    char const* filter;
    char const* why;
};

constexpr Unaffected kWithoutVaryings[] = {{"FilterCLAHE", "computed on the CPU: it has no stages"}};

constexpr char const* kAlike = "writes whole pixels, in every column and row alike: it asks for no parity";
constexpr Unaffected kWithoutFragCoord[] = {
    {"BlitFilter1x16", "copies texels, in every column and row alike"},
    {"BlitFilter3x16", "copies texels, in every column and row alike"},
    {"BlitFilter3x8", kAlike},
    {"BlitFilter4x8", kAlike},
    {"FilterYCoCg16ToRGBA8", kAlike},
    {"Filter3x16To4x8", kAlike},
    {"FilterSharpness8", kAlike},
    {"FilterLinear8ToSRGB8", kAlike},
    {"FilterLinear16ToSRGB8", kAlike},
    {"MaskFilter3x8", kAlike},
    {"MaskFilter4x8", kAlike},
    {"MaskFilter3x16", "copies texels, in every column and row alike"},
    {"FilterLinear16TosRGB8", kAlike},
    {"FilterTruncate16", "writes the two samples of a texel from those of one texel, in every column alike"},
    {"Filter3x3Matrix8", kAlike},
    {"FilterRemoveAlpha8", kAlike},
    {"FilterBlackWhiteGamma8", kAlike},
    {"FilterCLAHE", "computed on the CPU: it has no stages"},
};

template <size_t N>
bool isIn(Unaffected const (&list)[N], std::string const& filter) {
    return std::any_of(std::begin(list), std::end(list),
                       [&](Unaffected const& entry) { return entry.filter == filter; });
}

bool reads(std::string const& filter, Quantity quantity) {
    return quantity == Quantity::kVaryings ? !isIn(kWithoutVaryings, filter) : !isIn(kWithoutFragCoord, filter);
}

class CoarseDevicesGLTest : public ::testing::TestWithParam<std::tuple<CoarseDevice, std::string>> {
protected:
    CoarseDevicesGLTest() { rig.makeCopies(); }

    FilterRig rig;
};

TEST_P(CoarseDevicesGLTest, IsToldWhereItSpoilsAResult) {
    auto const& [device, filter] = GetParam();
    ShaderEdit const edit(ShaderEdit::Stage::kFragment, emulating(device));
    conformance::Outcome const outcome =
        conformance::verifyFilter(filter, rig, FilterRig::scope(conformance::Depth::kThorough));
    ASSERT_EQ(outcome.failure, "");
    ASSERT_EQ(edit.replacements() > 0, reads(filter, device.quantity)) << "its stage reads something else now";
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
