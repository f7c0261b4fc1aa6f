// Copies: every byte is kept.
#include "conformance/Checks.h"
#include "conformance/Inputs.h"
#include "conformance/Pointwise.h"
#include "host/filter/FilterDescriptions.h"

#include <string>
#include <utility>
#include <vector>

namespace conformance {

namespace {

using reference::Texels;

struct Copy {
    Layout in;
    Layout out;
};

Pointwise copying(Copy const& copy) {
    return {copy.in, copy.out, [=](Texels const& texels) { return shown(texels, copy.out); }};
}

// In texels, which are copied one by one: those of a pixel also to an odd first texel.
Part inTexels(Layout layout, Part part) {
    auto const pixels = [&](int texels) { return static_cast<int>(logicalWidth(layout, texels)); };
    part.x = pixels(part.x);
    part.width = pixels(part.width);
    part.clipLeft = pixels(part.clipLeft);
    part.clipRight = pixels(part.clipRight);
    return part;
}

void expectTexelParts(Trial& trial, Filter const& filter, Copy const& copy) {
    std::vector<Part> parts = {{6, 1, 22, 7, 4, 2, 1, 2, 3, 3},
                               {0, 1, 22, 7, 0, 0, 1, 2, 0, 3},
                               {6, 1, 22, 7, 0, 0, 1, 2, 1, 3},
                               {2, 1, 22, 7, 4, 2, 1, 2, 3, 3},
                               {10, 1, 22, 7, 2, 6, 1, 2, 4, 3}};
    for (Part& part : parts)
        part = inTexels(copy.in, part);
    if (!trial.thorough()) parts.resize(1);
    expectParts(trial, filter, copying(copy), randomTexels(40, 9, 4), parts);
}

void checkCopy(Trial& trial, std::string const& name, Copy const& copy) {
    Filter const filter = trial.prepared(description::byName(name));
    expectEach(trial, filter, copying(copy), {reference::packOneChannel16(everySample()), randomTexels(34, 17, 1)});
    if (trial.thorough()) expectEach(trial, filter, copying(copy), {randomTexels(2048, 3, 2)});
    expectEverywhere(trial, filter, copying(copy));
    expectTexelParts(trial, filter, copy);
}

// The copy of three channels copies four channels as well, because they take as many texels.
void checkCopyOfPixelsInTwoTexels(Trial& trial) {
    checkCopy(trial, "BlitFilter3x16", {Layout::kThreeChannel16, Layout::kThreeChannel16});
    if (!trial.thorough()) return;
    checkCopy(trial, "BlitFilter3x16", {Layout::kFourChannel16, Layout::kFourChannel16});
}

std::pair<std::string const, Check> copyCheck(std::string const& name, Copy const& copy) {
    return {name, [=](Trial& trial) { checkCopy(trial, name, copy); }};
}

} // namespace

Checks copyChecks() {
    return {copyCheck("BlitFilter1x16", {Layout::kOneChannel16, Layout::kOneChannel16}),
            {"BlitFilter3x16", checkCopyOfPixelsInTwoTexels},
            copyCheck("BlitFilter3x8", {Layout::kRgb8, Layout::kRgb8}),
            copyCheck("BlitFilter4x8", {Layout::kRgba8, Layout::kRgba8}),
            copyCheck("FilterRemoveAlpha8", {Layout::kRgba8, Layout::kRgb8})};
}

} // namespace conformance
