#include "tests/gles3renderbackend/filters/FilterRig.h"

#include "gles3renderbackend/Gl.h"
#include "tests/support/PixelMatchers.h"

#include <algorithm>
#include <array>

namespace filtertest {

namespace {

::testing::AssertionResult equal(conformance::Comparison const& comparison) {
    return pixelsEqual(comparison.actual.bytes, comparison.expected.bytes,
                       static_cast<size_t>(comparison.expected.width));
}

} // namespace

FilterRig::FilterRig() : TexelRunner(backend_.createInstance(surface_)) {}

int FilterRig::maxTextureSize() {
    GLint size = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &size);
    return size;
}

void FilterRig::makeCopies() {
    for (Layout const layout :
         {Layout::kRgb8, Layout::kRgba8, Layout::kOneChannel16, Layout::kThreeChannel16, Layout::kFourChannel16})
        uploaded(reference::Texels(2, 1), layout);
    eraseTargets();
}

conformance::Scope FilterRig::scope(conformance::Depth depth) {
    std::array<GLint, 2> viewport{};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport.data());
    return {depth, std::min({maxTextureSize(), viewport[0], viewport[1]})};
}

::testing::AssertionResult FilterRig::gives(Filter const& description, std::vector<size_t> const& sources,
                                            reference::Texels const& expected, Layout layout,
                                            SingleFilterParameters const& params) {
    return equal(compare(instantiated(description), wholeRun(sources), expected, layout, params));
}

::testing::AssertionResult FilterRig::givesWithin(Filter const& description, FilterRun const& within,
                                                  reference::Texels const& expected, Layout layout,
                                                  SingleFilterParameters const& params) {
    return equal(compareWithin(instantiated(description), within, expected, layout, params));
}

} // namespace filtertest
