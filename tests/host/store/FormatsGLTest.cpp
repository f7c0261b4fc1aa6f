// Pictures of many formats through the GPU: every level of their stores equals the formulas' result.
#include "tests/host/store/FormatPictures.h"
#include "tests/host/view/PictureRendererFixture.h"
#include "tests/support/LongRun.h"

using formatpictures::Format;
using testpictures::Content;

namespace {

class FormatsGLTest : public PictureRendererFixture {};

class FormatPicturesGLTest : public FormatsGLTest, public testing::WithParamInterface<Format> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(Pictures, FormatPicturesGLTest, testing::ValuesIn(formatpictures::all()),
                         [](auto const& test) { return std::string(test.param.name); });

TEST_P(FormatPicturesGLTest, EveryLevelIsExact) {
    bool const isConverted = *GetParam().ending != '\0';
    if (isConverted && !isLongRun()) GTEST_SKIP() << "samples of another one: VELMORA_LONG is not set";
    auto const picture = formatpictures::locate(GetParam(), folder_.path());
    if (picture.missing.empty())
        expectEveryLevel(formatpictures::middleOf(picture.path, isExhaustiveRun() ? 1000 : 150, GetParam().choice), 64);
    else if (formatpictures::areRequired())
        FAIL() << picture.missing;
    else
        GTEST_SKIP() << picture.missing;
}

TEST_F(FormatsGLTest, EveryLevelOfLinesOfAnyBandsAndBitsIsExact) {
    std::optional<size_t> const levels = isExhaustiveRun() ? std::nullopt : std::optional<size_t>(2);
    for (size_t bands = 1; bands <= 4; ++bands)
        for (size_t const bits : {8U, 16U})
            for (auto const& [width, height] : std::vector<std::pair<size_t, size_t>>{{1, 1}, {1, 5000}, {5000, 1}})
                expectEveryLevel(testpictures::picture(width, height, bands, bits, Content::Noise), 256, levels);
}
