#include "tests/gles3renderbackend/filters/FilterRig.h"

#include "gles3renderbackend/Gl.h"
#include "tests/support/PixelMatchers.h"

namespace filtertest {

namespace {

::testing::AssertionResult equal(conformance::Comparison const& comparison) {
    return pixelsEqual(comparison.actual.bytes, comparison.expected.bytes,
                       static_cast<size_t>(comparison.expected.width));
}

} // namespace

FilterRig::FilterRig() : FilterRunner(backend_.createInstance(surface_)) {}

int FilterRig::maxTextureSize() {
    GLint size = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &size);
    return size;
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
